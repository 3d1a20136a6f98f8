#include "runtime/objects/Atoms.h"

#include "runtime/objects/Errors.h"
#include "runtime/objects/Memory.h"
#include "runtime/objects/Tables.h"

#include <mutex>
#include <unordered_map>

namespace bibrt {

namespace {

constexpr std::size_t kMaxReleased = 1024;

// An atom goes from list to list with its node, which takes no memory.
struct AtomTable {
    std::mutex fLock;
    std::unordered_map<std::string_view, BIBStringAtom*> fByText; // each key is the atom's own
    std::list<BIBStringAtom> fHeld;
    std::list<BIBStringAtom> fReleased; // first in, first out
    std::list<BIBStringAtom> fImmortal;
};

// Never destroyed: atoms may be released by whatever runs last in the process.
AtomTable& Table() {
    static auto* const kTable = new AtomTable;
    return *kTable;
}

// A new atom, which stands among the released ones.
BIBStringAtom* CreateLocked(std::string_view text) {
    ExpectMemory();
    std::list<BIBStringAtom> created;
    BIBStringAtom& atom = created.emplace_back(text);
    atom.fPlace = created.begin();
    Table().fByText.emplace(atom.fText, &atom);
    Table().fReleased.splice(Table().fReleased.end(), created);
    return &atom;
}

void AddRefLocked(BIBStringAtom& atom) noexcept {
    if (!atom.fIsImmortal && ++atom.fRefs == 1) {
        Table().fHeld.splice(Table().fHeld.end(), Table().fReleased, atom.fPlace);
    }
}

// Changes a count that stays above least: only the first reference and the last one move an atom to
// another list, under the lock. False when the count is not above it.
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
    AtomTable& table = Table();
    std::lock_guard const guard(table.fLock);
    auto const found = table.fByText.find(text);
    BIBStringAtom* const atom = found == table.fByText.end() ? CreateLocked(text) : found->second;
    AddRefLocked(*atom);
    return atom;
}

char const* InternForever(char const* text) {
    BIBStringAtom* const atom = InternText(text);
    AtomTable& table = Table();
    std::lock_guard const guard(table.fLock);
    if (!std::exchange(atom->fIsImmortal, true)) {
        table.fImmortal.splice(table.fImmortal.end(), table.fHeld, atom->fPlace);
    }
    return atom->Text();
}

BIBStringAtom* FindAtom(std::string_view text) noexcept {
    std::lock_guard const guard(Table().fLock);
    auto const found = Table().fByText.find(text);
    return found == Table().fByText.end() ? nullptr : found->second;
}

void AddAtomRef(BIBStringAtom* atom) noexcept {
    if (!atom || ChangeAbove(0, *atom, 1)) {
        return;
    }
    std::lock_guard const guard(Table().fLock);
    AddRefLocked(*atom);
}

void ReleaseAtom(BIBStringAtom* atom) noexcept {
    if (!atom || ChangeAbove(1, *atom, -1)) {
        return;
    }
    AtomTable& table = Table();
    std::lock_guard const guard(table.fLock);
    if (atom->fIsImmortal || atom->fRefs == 0 || --atom->fRefs != 0) {
        return;
    }
    table.fReleased.splice(table.fReleased.end(), table.fHeld, atom->fPlace);
    if (table.fReleased.size() > kMaxReleased) {
        table.fByText.erase(table.fReleased.front().fText);
        table.fReleased.pop_front();
    }
}

unsigned long CountLiveAtoms() noexcept {
    std::lock_guard const guard(Table().fLock);
    return Table().fHeld.size();
}

BIBRT_DEFINE_TABLE(BIBStringInterface, BIB_STRING_INTERFACE_ROWS, 4)

} // namespace bibrt
