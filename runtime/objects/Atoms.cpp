#include "runtime/objects/Atoms.h"

#include "runtime/objects/Errors.h"
#include "runtime/objects/Memory.h"
#include "runtime/objects/Tables.h"

#include <array>
#include <mutex>
#include <unordered_set>

namespace bibrt {

namespace {

constexpr std::size_t kMaxReleased = 1024;

struct ByText {
    using is_transparent = void; // NOLINT(readability-identifier-naming): the standard's name

    // Not noexcept: for such hashes the standard library keeps the results.
    std::size_t operator()(std::string_view text) const {
        return std::hash<std::string_view>()(text);
    }
    bool operator()(std::string_view text, std::string_view other) const noexcept {
        return text == other;
    }
};

// Counts fall to zero and rise from it under the lock only, so that an atom that is found cannot be
// on its way out. A released atom stands in a ring, where the release of another one finds it
// kMaxReleased releases later, unless somebody holds it again by then.
class AtomTable {
public:
    BIBStringAtom* Find(std::string_view text) noexcept {
        std::lock_guard const guard(fLock);
        return FindLocked(text);
    }

    BIBStringAtom* Intern(std::string_view text) {
        std::lock_guard const guard(fLock);
        BIBStringAtom* atom = FindLocked(text);
        if (!atom) {
            ExpectMemory();
            atom = Changeable(*fAtoms.emplace(text).first);
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
        BIBStringAtom* const oldest = std::exchange(PlaceOf(atom), &atom);
        if (oldest) {
            fAtoms.erase(fAtoms.find(oldest->fText));
        }
    }

    unsigned long CountLive() noexcept {
        std::lock_guard const guard(fLock);
        return fLive;
    }

private:
    // A set takes its elements for constant, since it does not know what tells them apart.
    static BIBStringAtom* Changeable(BIBStringAtom const& atom) noexcept {
        return const_cast<BIBStringAtom*>(&atom);
    }

    BIBStringAtom* FindLocked(std::string_view text) {
        auto const found = fAtoms.find(text);
        return found == fAtoms.end() ? nullptr : Changeable(*found);
    }

    void AddLocked(BIBStringAtom& atom) noexcept {
        if (atom.fIsImmortal || ++atom.fRefs != 1) {
            return;
        }
        ++fLive;
        // A new one was never released.
        if (BIBStringAtom*& place = PlaceOf(atom); place == &atom) {
            place = nullptr;
        }
    }

    BIBStringAtom*& PlaceOf(BIBStringAtom const& atom) noexcept {
        return fReleased[atom.fReleasedAs % kMaxReleased];
    }

    std::mutex fLock;
    std::unordered_set<BIBStringAtom, ByText, ByText> fAtoms;
    std::array<BIBStringAtom*, kMaxReleased> fReleased{};
    std::size_t fReleases = 0;
    unsigned long fLive = 0;
};

// Never destroyed: atoms may be released by whatever runs last in the process.
AtomTable& Table() {
    static auto* const kTable = new AtomTable;
    return *kTable;
}

// Changes a count that stays above least, which needs no lock. False when it is not above.
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

// The rows.

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
