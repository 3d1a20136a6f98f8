// The keys and values of a dictionary in the order in which the keys were put.
//
// Entries stand in one vector in growing order of their numbers, and are found through an index of
// positions. A removed one leaves a gap, which is closed when there are many, so that a walk takes
// time in proportion to the keys. The vector has room for a third more than the keys that it ever
// held: a key that is removed and put again needs no memory, and closing gaps does not come too
// often. Not thread safe.
#pragma once

#include "runtime/values/PosObject.h"

#include <cstdint>

namespace bibrt {

struct DictEntry {
    BIBStringAtom const* Key() const noexcept { return fKey; }

    Ref<POSObject> fValue;
    AtomRef fKey; // none in a gap
    unsigned long fNumber;
};

class DictStorage {
public:
    std::size_t Count() const noexcept { return fCount; }

    // The value under key, borrowed, or null.
    POSObject* Get(BIBStringAtom const* key) const noexcept;

    // Stores value under key; a key that is there keeps its place. Then value is what the key had
    // before. Throws std::bad_alloc, and then nothing has changed.
    void Put(BIBStringAtom* key, Ref<POSObject>& value);

    // Takes key out. False when it is not there.
    bool Remove(BIBStringAtom const* key) noexcept;

    // Makes room for count keys. Throws std::bad_alloc.
    void Reserve(std::size_t count);

    // The first entry at or behind position; position moves behind it. Null at the end.
    DictEntry const* Next(std::size_t& position) const noexcept;

    // The first entry with a greater number than this; position, where the last step ended, becomes
    // the place behind it. Null at the end.
    DictEntry const* NextAfter(unsigned long number, std::size_t& position) const noexcept;

private:
    std::size_t SlotOf(BIBStringAtom const* key) const noexcept;
    // The position of key plus one; 0 when it is not there.
    std::size_t Find(BIBStringAtom const* key) const noexcept;
    void CloseGaps() noexcept;
    void FillIndex() noexcept;
    void AddToIndex(std::size_t position) noexcept;

    Vector<DictEntry> fEntries;
    // Positions plus one, 0 for a free slot. A search starts at a slot that the key determines and
    // ends at its own or a free one. Empty while the entries are few.
    Vector<std::uint32_t> fIndex;
    std::size_t fCount = 0; // the entries that are no gaps
    std::size_t fFirst = 0; // every entry before it is a gap
    unsigned long fLastNumber = 0;
};

} // namespace bibrt
