// The entries of a dictionary, in the order in which their keys were first put.
//
// Entries are in one vector, ordered by an increasing number, and are found through a hash index of
// positions. Removing an entry leaves a gap. Gaps are closed when they are many, so that iterating
// is linear in the number of keys. The vector reserves a third more than the number of keys: a key
// that is removed and put again needs no memory, and gaps are not closed too often. Not thread
// safe.
#pragma once

#include "runtime/values/PosObject.h"

#include <cstdint>

namespace bibrt {

struct DictEntry {
    BIBStringAtom const* Key() const noexcept { return fKey; }

    Ref<POSObject> fValue;
    AtomRef fKey; // null in a gap
    unsigned long fNumber;
};

class DictStorage {
public:
    std::size_t Count() const noexcept { return fCount; }

    // The value of key, borrowed, or null.
    POSObject* Get(BIBStringAtom const* key) const noexcept;

    // Stores value under key. An existing key keeps its position, and its old value is swapped into
    // value. Throws std::bad_alloc, with nothing changed.
    void Put(BIBStringAtom* key, Ref<POSObject>& value);

    // Removes key. False if there is no such key.
    bool Remove(BIBStringAtom const* key) noexcept;

    // Reserves memory for count keys. Throws std::bad_alloc.
    void Reserve(std::size_t count);

    // The first entry at position or later; moves position past it. Null at the end.
    DictEntry const* Next(std::size_t& position) const noexcept;

    // The first entry with a number above this one. position is a hint from the last step, and is
    // set to the position after the entry. Null at the end.
    DictEntry const* NextAfter(unsigned long number, std::size_t& position) const noexcept;

private:
    std::size_t SlotOf(BIBStringAtom const* key) const noexcept;
    // The position of key plus one; 0 if there is no such key.
    std::size_t Find(BIBStringAtom const* key) const noexcept;
    void CloseGaps() noexcept;
    void FillIndex() noexcept;
    void AddToIndex(std::size_t position) noexcept;

    Vector<DictEntry> fEntries;
    // An open-addressing hash table with linear probing: positions plus one, 0 for a free slot.
    // Empty while there are few entries.
    Vector<std::uint32_t> fIndex;
    std::size_t fCount = 0; // without gaps
    std::size_t fFirst = 0; // all entries before this are gaps
    unsigned long fLastNumber = 0;
};

} // namespace bibrt
