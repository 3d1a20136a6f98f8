#include "runtime/objects/Atoms.h"

#include <cstdint>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include "runtime/objects/Boundary.h"
#include "runtime/objects/Counting.h"
#include "runtime/objects/Memory.h"
#include "runtime/objects/Tables.h"

namespace bibrt {

namespace {

constexpr std::size_t kFirstBuckets = 256;
constexpr unsigned long kMaxReleased = 1024;

// A hash of a text. Most are short, and what counts is that there is nothing to set up.
std::size_t HashOf(std::string_view text) noexcept {
    constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15U;
    constexpr std::size_t kWordSize = sizeof(std::uint64_t);
    std::uint64_t hash = text.size();
    auto const add = [&hash](std::uint64_t word) {
        hash = (hash ^ word) * kFactor;
        hash ^= hash >> 32;
    };
    auto const wordAt = [text](std::size_t offset) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + offset, kWordSize);
        return word;
    };
    std::size_t offset = 0;
    for (; offset + kWordSize < text.size(); offset += kWordSize) {
        add(wordAt(offset));
    }
    std::uint64_t last = 0;
    if (text.size() >= kWordSize) {
        // It may hold bytes of the one before.
        last = wordAt(text.size() - kWordSize);
    } else {
        for (char const c : text) {
            last = last << 8 | static_cast<unsigned char>(c);
        }
    }
    add(last);
    // A multiplication carries upwards only: the high bits of the last word must come down.
    add(0);
    return hash;
}

// The table of all atoms. Counts fall to zero and rise from it under the lock only, so that an atom
// that is found cannot be on its way out.
class AtomTable {
public:
    BIBStringAtom* Intern(std::string_view text);
    BIBStringAtom const* Find(std::string_view text) noexcept;
    void MakeImmortal(BIBStringAtom& atom) noexcept;
    void AddFromZero(BIBStringAtom& atom) noexcept;
    void DropToZero(BIBStringAtom& atom) noexcept;
    unsigned long CountLive() noexcept;

private:
    BIBStringAtom*& Bucket(std::size_t hash) noexcept {
        return fBuckets[hash & (fBuckets.size() - 1)];
    }
    BIBStringAtom* Search(std::string_view text, std::size_t hash) noexcept;
    BIBStringAtom* Create(std::string_view text, std::size_t hash);
    void Grow() noexcept;
    void Distribute(BIBStringAtom* atom) noexcept;
    void Retain(BIBStringAtom& atom) noexcept;
    void Park(BIBStringAtom& atom) noexcept;
    void Unpark(BIBStringAtom& atom) noexcept;
    void Evict(BIBStringAtom& atom) noexcept;

    std::mutex fLock;
    ResidentVector<BIBStringAtom*> fBuckets = ResidentVector<BIBStringAtom*>(kFirstBuckets);
    std::size_t fCount = 0;
    unsigned long fLive = 0;
    // The released atoms, first in, first out.
    BIBStringAtom* fNewest = nullptr;
    BIBStringAtom* fOldest = nullptr;
    unsigned long fReleased = 0;
};

// Changes a count that stays above zero by that: one above floor. False where it is not, which is
// the table's business.
bool ChangeSharedCount(BIBStringAtom& atom, long floor, long change) noexcept {
    std::atomic_ref const refs(atom.fRefs);
    long before = refs.load(std::memory_order_relaxed);
    while (before > floor) {
        if (refs.compare_exchange_weak(before, before + change, std::memory_order_release)) {
            return true;
        }
    }
    return false;
}

// In bytes, with its text behind it.
std::size_t SizeOfAtom(std::size_t length) noexcept {
    return sizeof(BIBStringAtom) + length + 1;
}

// Never destroyed: atoms may be released by whatever runs last in the process.
AtomTable& Table() {
    static auto* const kTable = new AtomTable;
    return *kTable;
}

BIBStringAtom* AtomTable::Search(std::string_view text, std::size_t hash) noexcept {
    BIBStringAtom* atom = Bucket(hash);
    while (atom && (atom->fHash != hash || text != std::string_view(atom->Text(), atom->fLength))) {
        atom = atom->fNextInBucket;
    }
    return atom;
}

BIBStringAtom* AtomTable::Intern(std::string_view text) {
    std::size_t const hash = HashOf(text);
    std::lock_guard const guard(fLock);
    BIBStringAtom* atom = Search(text, hash);
    if (!atom) {
        atom = Create(text, hash);
    }
    Retain(*atom);
    return atom;
}

BIBStringAtom const* AtomTable::Find(std::string_view text) noexcept {
    std::size_t const hash = HashOf(text);
    std::lock_guard const guard(fLock);
    return Search(text, hash);
}

BIBStringAtom* AtomTable::Create(std::string_view text, std::size_t hash) {
    void* const block = AllocResident(SizeOfAtom(text.size()));
    if (!block) {
        throw std::bad_alloc();
    }
    auto* const atom = new (block) BIBStringAtom{
        .fRefs = 0,
        .fNextInBucket = nullptr,
        .fNewer = nullptr,
        .fOlder = nullptr,
        .fHash = hash,
        .fLength = text.size(),
        .fIsReleased = false,
        .fIsImmortal = false};
    char* const copy = reinterpret_cast<char*>(atom + 1);
    text.copy(copy, text.size());
    copy[text.size()] = '\0';
    if (++fCount > fBuckets.size()) {
        Grow();
    }
    atom->fNextInBucket = std::exchange(Bucket(hash), atom);
    return atom;
}

// Without the memory for more buckets the chains stay longer, which is no failure.
void AtomTable::Grow() noexcept {
    AtRow(/*failure=*/false, [&] {
        ResidentVector<BIBStringAtom*> old(fBuckets.size() * 2);
        fBuckets.swap(old);
        for (BIBStringAtom* const chain : old) {
            Distribute(chain);
        }
        return true;
    });
}

// Puts every atom of a chain into its bucket.
void AtomTable::Distribute(BIBStringAtom* atom) noexcept {
    while (atom) {
        BIBStringAtom* const next = atom->fNextInBucket;
        atom->fNextInBucket = std::exchange(Bucket(atom->fHash), atom);
        atom = next;
    }
}

void AtomTable::Retain(BIBStringAtom& atom) noexcept {
    if (atom.fIsImmortal) {
        return;
    }
    if (std::atomic_ref(atom.fRefs).fetch_add(1, std::memory_order_relaxed) == 0) {
        ++fLive;
        Unpark(atom);
    }
}

void AtomTable::AddFromZero(BIBStringAtom& atom) noexcept {
    std::lock_guard const guard(fLock);
    Retain(atom);
}

void AtomTable::DropToZero(BIBStringAtom& atom) noexcept {
    std::lock_guard const guard(fLock);
    std::atomic_ref const refs(atom.fRefs);
    if (refs.load(std::memory_order_relaxed) <= 0) {
        return;
    }
    if (refs.fetch_sub(1, std::memory_order_acq_rel) != 1) {
        return;
    }
    --fLive;
    Park(atom);
}

void AtomTable::Park(BIBStringAtom& atom) noexcept {
    atom.fIsReleased = true;
    atom.fNewer = nullptr;
    atom.fOlder = fNewest;
    (fNewest ? fNewest->fNewer : fOldest) = &atom;
    fNewest = &atom;
    if (++fReleased > kMaxReleased) {
        Evict(*fOldest);
    }
}

void AtomTable::Unpark(BIBStringAtom& atom) noexcept {
    if (!atom.fIsReleased) {
        return;
    }
    atom.fIsReleased = false;
    (atom.fNewer ? atom.fNewer->fOlder : fNewest) = atom.fOlder;
    (atom.fOlder ? atom.fOlder->fNewer : fOldest) = atom.fNewer;
    --fReleased;
}

void AtomTable::Evict(BIBStringAtom& atom) noexcept {
    Unpark(atom);
    BIBStringAtom** link = &Bucket(atom.fHash);
    while (*link != &atom) {
        link = &(*link)->fNextInBucket;
    }
    *link = atom.fNextInBucket;
    --fCount;
    FreeResident(&atom);
}

void AtomTable::MakeImmortal(BIBStringAtom& atom) noexcept {
    std::lock_guard const guard(fLock);
    if (!std::exchange(atom.fIsImmortal, true)) {
        --fLive;
    }
}

unsigned long AtomTable::CountLive() noexcept {
    std::lock_guard const guard(fLock);
    return fLive;
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

BIBStringAtom const* FindAtom(std::string_view text) noexcept {
    return Table().Find(text);
}

void AddAtomRef(BIBStringAtom* atom) noexcept {
    if (!atom || atom->fIsImmortal) {
        return;
    }
    if (!ChangeSharedCount(*atom, 0, 1)) {
        Table().AddFromZero(*atom);
    }
}

void ReleaseAtom(BIBStringAtom* atom) noexcept {
    if (!atom || atom->fIsImmortal) {
        return;
    }
    if (!ChangeSharedCount(*atom, 1, -1)) {
        Table().DropToZero(*atom);
    }
}

BIBStringAtom* AtomOfText(char const* text) noexcept {
    return text ? reinterpret_cast<BIBStringAtom*>(const_cast<char*>(text)) - 1 : nullptr;
}

char const* TextOf(BIBStringAtom const* atom) noexcept {
    return atom ? atom->Text() : nullptr;
}

unsigned long CountLiveAtoms() noexcept {
    return Table().CountLive();
}

BIBRT_DEFINE_TABLE(
    StringTable, "BIBStringInterface", _t_BIBStringInterface, BIB_STRING_INTERFACE_ROWS, 4)

} // namespace bibrt
