// String atoms: interned strings, which are equal if and only if their pointers are.
#pragma once

#include "api/BIBStringInterface.h"

namespace BIB_T_NMT {

// Owns one reference to an atom of the runtime, or none: an empty handle. Keeps a pointer to the
// atom's string. Not copyable: each user makes its own.
class CBIBStringAtom {
public:
    // An empty handle.
    CBIBStringAtom() noexcept = default;

    // The atom of a NUL-terminated string. Throws the memory error if the runtime makes none.
    explicit CBIBStringAtom(char const* text);

    // A handle to atom, which may be null. With adopt, the handle takes ownership of the caller's
    // reference; without, it adds one.
    CBIBStringAtom(BIBStringAtom* atom, bool adopt);

    CBIBStringAtom(CBIBStringAtom const&) = delete;
    CBIBStringAtom& operator=(CBIBStringAtom const&) = delete;

    // Replaces the atom with that of text. A failure is not reported: the handle is then empty.
    CBIBStringAtom& operator=(char const* text);

    ~CBIBStringAtom();

    // The string, owned by the atom; null for an empty handle.
    char const* c_str() const noexcept { return fCString; }

    // The atom, borrowed.
    operator BIBStringAtom*() const noexcept { return fAtom; }

    // Throws the memory error.
    [[noreturn]] static void ThrowBadAlloc();

private:
    BIBStringAtom* fAtom = nullptr;
    char const* fCString = nullptr;
};

} // namespace BIB_T_NMT
