// String atoms: interned texts, equal if and only if their text pointers are.
#pragma once

#include "api/BIBStringInterface.h"

namespace BIB_T_NMT {

// One counted reference on an atom of the runtime, with its text; or empty. Not copied: each use
// makes its own.
class CBIBStringAtom {
public:
    // An empty handle.
    CBIBStringAtom() noexcept = default;

    // The atom of a NUL-terminated text. Throws the memory error when there is none to be had.
    explicit CBIBStringAtom(char const* text);

    // A handle on atom, which may be null. adopt: the caller's reference goes over to the handle.
    CBIBStringAtom(BIBStringAtom* atom, bool adopt);

    CBIBStringAtom(CBIBStringAtom const&) = delete;
    CBIBStringAtom& operator=(CBIBStringAtom const&) = delete;

    // Exchanges the atom for that of text. A failure is not noticed here: the handle is then empty.
    CBIBStringAtom& operator=(char const* text);

    ~CBIBStringAtom();

    // The text, which belongs to the atom; null for an empty handle.
    char const* c_str() const noexcept { return fCString; }

    // The atom, not counted.
    operator BIBStringAtom*() const noexcept { return fAtom; }

    // Throws the memory error.
    [[noreturn]] static void ThrowBadAlloc();

private:
    BIBStringAtom* fAtom = nullptr;
    char const* fCString = nullptr;
};

} // namespace BIB_T_NMT
