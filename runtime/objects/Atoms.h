// Interned texts.
//
// One text has one atom, and so one text pointer, as long as anybody holds it and until 1,024 more
// have been released: it comes back when its text is asked for again. Everything here is thread
// safe.
#pragma once

#include "api/BIBStringInterface.h"

#include <atomic>
#include <cstddef>
#include <string_view>
#include <utility>

// In one block with its text, a zero byte behind it. All but the text belongs to the table of
// atoms.
struct BIBStringAtom {
    char const* Text() const noexcept { return fText.data(); }

    std::string_view fText;
    std::size_t fHash;
    BIBStringAtom* fNext; // in its chain
    std::atomic<unsigned long> fRefs = 0;
    std::size_t fReleasedAs = 0; // of a released one: which release it was
    bool fIsImmortal = false;    // never counted
};

namespace bibrt {

// The atom of text with a reference for the caller. Throws std::bad_alloc. REQUIRES: no NUL in
// text.
BIBStringAtom* InternText(std::string_view text);

// The text of the atom of text, which then lives as long as the process. Throws std::bad_alloc.
char const* InternForever(char const* text);

// The atom of text if there is one, without a reference: good for a comparison of pointers.
BIBStringAtom* FindAtom(std::string_view text) noexcept;

// Adds a reference, gives one up. Both accept null.
void AddAtomRef(BIBStringAtom* atom) noexcept;
void ReleaseAtom(BIBStringAtom* atom) noexcept;

// The atom whose text it is; null for null. REQUIRES: text is the text pointer of an atom.
inline BIBStringAtom* AtomOfText(char const* text) noexcept {
    return text ? FindAtom(text) : nullptr;
}

// The text; null for null.
inline char const* TextOf(BIBStringAtom const* atom) noexcept {
    return atom ? atom->Text() : nullptr;
}

// The atoms that somebody holds.
unsigned long CountLiveAtoms() noexcept;

// One reference on an atom, or none.
class AtomRef {
public:
    AtomRef() noexcept = default;
    // Takes over a reference of the caller's.
    explicit AtomRef(BIBStringAtom* adopted) noexcept : fAtom(adopted) {}
    AtomRef(AtomRef&& other) noexcept : fAtom(std::exchange(other.fAtom, nullptr)) {}
    AtomRef& operator=(AtomRef&& other) noexcept {
        std::swap(fAtom, other.fAtom);
        return *this;
    }
    AtomRef(AtomRef const&) = delete;
    AtomRef& operator=(AtomRef const&) = delete;
    ~AtomRef() { ReleaseAtom(fAtom); }

    // A reference of its own on atom (may be null).
    static AtomRef Share(BIBStringAtom* atom) noexcept {
        AddAtomRef(atom);
        return AtomRef(atom);
    }

    BIBStringAtom* Get() const noexcept { return fAtom; }
    operator BIBStringAtom*() const noexcept { return fAtom; }
    BIBStringAtom* operator->() const noexcept { return fAtom; }
    // Hands the reference to the caller.
    BIBStringAtom* Release() noexcept { return std::exchange(fAtom, nullptr); }

private:
    BIBStringAtom* fAtom = nullptr;
};

} // namespace bibrt
