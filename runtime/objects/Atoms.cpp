#include "runtime/objects/Atoms.h"

#include "runtime/objects/Errors.h"
#include "runtime/objects/Memory.h"
#include "runtime/objects/Tables.h"

#include <array>
#include <cstdlib>
#include <mutex>
#include <vector>

namespace bibrt {

namespace {

constexpr std::size_t kFirstChains = 256;
constexpr std::size_t kMaxReleased = 1024;

// The table of all atoms, a hash table with chaining. Interning a text looks it up under the lock
// and either adds a reference to its atom or creates the atom. When the count of an atom drops to
// 0, the atom is not freed: it stays in the table and takes the next slot of a ring of kMaxReleased
// slots. The atom that was in this slot, released kMaxReleased releases ago, is freed then. So a
// text that is interned again soon gets its old atom and text pointer back; an atom that is
// referenced again leaves its slot. Counts above 0 change without the lock (ChangeAbove); the steps
// from 0 to 1 and from 1 to 0 are made under the lock only, so an atom found by a search cannot be
// freed meanwhile. Immortal atoms are never counted and never freed.
//
// The standard containers allocate two or three blocks per atom and search twice to erase one,
// which makes reading a file with many keys a quarter slower.
class AtomTable {
public:
    BIBStringAtom* Find(std::string_view text) noexcept {
        std::size_t const hash = std::hash<std::string_view>()(text);
        std::lock_guard const guard(fLock);
        return FindLocked(text, hash);
    }

    BIBStringAtom* Intern(std::string_view text) {
        std::size_t const hash = std::hash<std::string_view>()(text);
        std::lock_guard const guard(fLock);
        BIBStringAtom* atom = FindLocked(text, hash);
        if (!atom) {
            atom = CreateLocked(text, hash);
        }
        AddLocked(*atom);
        return atom;
    }

    void MakeImmortal(BIBStringAtom& atom) noexcept {
        std::lock_guard const guard(fLock);
        if (!std::exchange(atom.fIsImmortal, true)) {
            --fLive;
        }
    }

    void AddFromZero(BIBStringAtom& atom) noexcept {
        std::lock_guard const guard(fLock);
        AddLocked(atom);
    }

    void DropToZero(BIBStringAtom& atom) noexcept {
        std::lock_guard const guard(fLock);
        if (atom.fIsImmortal || atom.fRefs == 0 || --atom.fRefs != 0) {
            return;
        }
        --fLive;
        atom.fReleasedAs = fReleases++;
        if (BIBStringAtom* const oldest = std::exchange(PlaceOf(atom), &atom)) {
            EraseLocked(oldest);
        }
    }

    unsigned long CountLive() noexcept {
        std::lock_guard const guard(fLock);
        return fLive;
    }

private:
    // The link to the first atom of a chain that isWanted accepts, or the null link at its end.
    template <class IsWanted>
    BIBStringAtom*& SearchLocked(std::size_t hash, IsWanted isWanted) noexcept {
        BIBStringAtom** link = &fChains[hash % fChains.size()];
        while (*link && !isWanted(**link)) {
            link = &(*link)->fNext;
        }
        return *link;
    }

    BIBStringAtom* FindLocked(std::string_view text, std::size_t hash) noexcept {
        return SearchLocked(hash, [=](BIBStringAtom const& atom) {
            return atom.fHash == hash && atom.fText == text;
        });
    }

    BIBStringAtom* CreateLocked(std::string_view text, std::size_t hash) {
        ExpectMemory();
        if (fCount == fChains.size()) {
            GrowLocked();
        }
        void* const block = std::malloc(sizeof(BIBStringAtom) + text.size() + 1);
        if (!block) {
            throw std::bad_alloc();
        }
        char* const copy = static_cast<char*>(block) + sizeof(BIBStringAtom);
        text.copy(copy, text.size());
        copy[text.size()] = '\0';
        ++fCount;
        BIBStringAtom*& chain = fChains[hash % fChains.size()];
        return chain = new (block) BIBStringAtom{{copy, text.size()}, hash, chain};
    }

    void GrowLocked() {
        std::vector<BIBStringAtom*> old(fChains.size() * 2);
        old.swap(fChains);
        for (BIBStringAtom* atom : old) {
            while (atom) {
                BIBStringAtom*& chain = fChains[atom->fHash % fChains.size()];
                atom = std::exchange(atom->fNext, std::exchange(chain, atom));
            }
        }
    }

    void EraseLocked(BIBStringAtom* atom) noexcept {
        SearchLocked(atom->fHash, [=](BIBStringAtom const& other) { return &other == atom; }) =
            atom->fNext;
        --fCount;
        std::free(atom);
    }

    void AddLocked(BIBStringAtom& atom) noexcept {
        if (atom.fIsImmortal || ++atom.fRefs != 1) {
            return;
        }
        ++fLive;
        // A new atom is not in the ring, so its slot number 0 may be the slot of another atom.
        if (BIBStringAtom*& place = PlaceOf(atom); place == &atom) {
            place = nullptr;
        }
    }

    BIBStringAtom*& PlaceOf(BIBStringAtom const& atom) noexcept {
        return fReleased[atom.fReleasedAs % kMaxReleased];
    }

    std::mutex fLock;
    std::vector<BIBStringAtom*> fChains = std::vector<BIBStringAtom*>(kFirstChains);
    std::size_t fCount = 0;
    std::array<BIBStringAtom*, kMaxReleased> fReleased{};
    std::size_t fReleases = 0;
    unsigned long fLive = 0;
};

// Never destroyed: atoms may be released by the last code that runs in the process.
AtomTable& Table() {
    static auto* const kTable = new AtomTable;
    return *kTable;
}

// Adds change to a count above minimum, without the lock. False, with nothing changed, for another
// count.
bool ChangeAbove(unsigned long least, BIBStringAtom& atom, long change) noexcept {
    unsigned long refs = atom.fRefs.load(std::memory_order_relaxed);
    while (refs > least) {
        auto const changed = refs + static_cast<unsigned long>(change);
        if (atom.fRefs.compare_exchange_weak(refs, changed, std::memory_order_acq_rel)) {
            return true;
        }
    }
    return false;
}

// The rows of the table.

BIBStringAtom* NewStringAtom(char const* text) {
    return text ? AtRow<BIBStringAtom*>(nullptr, [&] { return InternText(text); }) : nullptr;
}

void DeleteStringAtom(BIBStringAtom* atom) {
    ReleaseAtom(atom);
}

char const* GetCString(BIBStringAtom* atom) {
    return TextOf(atom);
}

void AddRef(BIBStringAtom* atom) {
    AddAtomRef(atom);
}

} // namespace

BIBStringAtom* InternText(std::string_view text) {
    return Table().Intern(text);
}

char const* InternForever(char const* text) {
    BIBStringAtom* const atom = InternText(text);
    Table().MakeImmortal(*atom);
    return atom->Text();
}

BIBStringAtom* FindAtom(std::string_view text) noexcept {
    return Table().Find(text);
}

void AddAtomRef(BIBStringAtom* atom) noexcept {
    if (atom && !ChangeAbove(0, *atom, 1)) {
        Table().AddFromZero(*atom);
    }
}

void ReleaseAtom(BIBStringAtom* atom) noexcept {
    if (atom && !ChangeAbove(1, *atom, -1)) {
        Table().DropToZero(*atom);
    }
}

unsigned long CountLiveAtoms() noexcept {
    return Table().CountLive();
}

BIBRT_DEFINE_TABLE(BIBStringInterface, BIB_STRING_INTERFACE_ROWS, 4)

} // namespace bibrt
