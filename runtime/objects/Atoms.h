// Atoms: interned texts.
//
// Equal texts share one atom, and so one text pointer, while the atom is referenced and until 1,024
// other atoms have been released after it. All functions are thread safe.
#pragma once

#include "api/BIBStringInterface.h"

#include <atomic>
#include <cstddef>
#include <string_view>
#include <utility>

// One block holds the atom, its text and a terminating zero byte. All members but the text belong
// to the atom table.
struct BIBStringAtom {
    char const* Text() const noexcept { return fText.data(); }

    std::string_view fText;
    std::size_t fHash;
    BIBStringAtom* fNext; // next atom in the hash chain
    std::atomic<unsigned long> fRefs = 0;
    std::size_t fReleasedAs = 0; // number of its last release
    bool fIsImmortal = false;    // lives until the process ends; not counted
};

namespace bibrt {

// The atom of text, with a reference for the caller. Throws std::bad_alloc. REQUIRES: no zero byte
// in text.
BIBStringAtom* InternText(std::string_view text);

// The text pointer of the atom of text, which is never freed from now on. Throws std::bad_alloc.
char const* InternForever(char const* text);

// The atom of text, without a reference, for comparing pointers; null if there is none.
BIBStringAtom* FindAtom(std::string_view text) noexcept;

// Add and release a reference. Null is ignored.
void AddAtomRef(BIBStringAtom* atom) noexcept;
void ReleaseAtom(BIBStringAtom* atom) noexcept;

// The atom that text belongs to; null for null. REQUIRES: text is the text pointer of an atom.
inline BIBStringAtom* AtomOfText(char const* text) noexcept {
    return text ? FindAtom(text) : nullptr;
}

// The text pointer of an atom; null for null.
inline char const* TextOf(BIBStringAtom const* atom) noexcept {
    return atom ? atom->Text() : nullptr;
}

// The number of referenced atoms, without immortal ones.
unsigned long CountLiveAtoms() noexcept;

// Owns one reference to an atom, or none.
class AtomRef {
public:
    AtomRef() noexcept = default;
    // Adopts a reference of the caller.
    explicit AtomRef(BIBStringAtom* adopted) noexcept : fAtom(adopted) {}
    AtomRef(AtomRef&& other) noexcept : fAtom(std::exchange(other.fAtom, nullptr)) {}
    AtomRef& operator=(AtomRef&& other) noexcept {
        std::swap(fAtom, other.fAtom);
        return *this;
    }
    AtomRef(AtomRef const&) = delete;
    AtomRef& operator=(AtomRef const&) = delete;
    ~AtomRef() { ReleaseAtom(fAtom); }

    // Adds a reference to atom, which may be null, and owns it.
    static AtomRef Share(BIBStringAtom* atom) noexcept {
        AddAtomRef(atom);
        return AtomRef(atom);
    }

    BIBStringAtom* Get() const noexcept { return fAtom; }
    operator BIBStringAtom*() const noexcept { return fAtom; }
    BIBStringAtom* operator->() const noexcept { return fAtom; }
    // Passes the reference to the caller.
    BIBStringAtom* Release() noexcept { return std::exchange(fAtom, nullptr); }

private:
    BIBStringAtom* fAtom = nullptr;
};

} // namespace bibrt
