// The keys and values of a dictionary in the order in which the keys were put.
//
// Entries stand in one vector in growing order of their numbers. A removed one leaves a gap, which
// is closed when there are many, so that a walk takes time in proportion to the keys. Few entries
// are searched one by one, many through an index of positions. The vector has room for a third more
// than the keys that it ever held: a key that is removed and put again needs no memory, and closing
// gaps does not come too often. Not thread safe.
#pragma once

#include <cstdint>

#include "runtime/values/PosObject.h"

namespace bibrt {

struct DictEntry {
    BIBStringAtom* fKey; // with a reference; null in a gap
    POSObject* fValue;   // with a reference
    unsigned long fNumber;
};

class DictStorage {
public:
    DictStorage() noexcept = default;
    DictStorage(DictStorage const&) = delete;
    DictStorage& operator=(DictStorage const&) = delete;
    ~DictStorage();

    std::size_t Count() const noexcept { return fCount; }

    // The value under key, borrowed, or null.
    POSObject* Get(BIBStringAtom const* key) const noexcept;

    // Stores value under key and takes its reference over; a key that is there keeps its place.
    // Throws std::bad_alloc, and then nothing has changed.
    void Put(BIBStringAtom* key, Ref<POSObject>& value);

    // Takes key out. False when it is not there.
    bool Remove(BIBStringAtom const* key) noexcept;

    // Makes room for count keys. Throws std::bad_alloc.
    void Reserve(std::size_t count);

    // The first entry at or behind position; position moves behind it. Null at the end.
    DictEntry const* Next(std::size_t& position) const noexcept;

    // The first entry with a greater number than this; position, where it was looked for last,
    // becomes the place behind it. Null at the end.
    DictEntry const* NextAfter(unsigned long number, std::size_t& position) const noexcept;

private:
    static constexpr std::size_t kNone = std::size_t(-1);

    std::size_t Find(BIBStringAtom const* key) const noexcept;
    void Append(BIBStringAtom* key, Ref<POSObject>& value);
    void CloseGaps() noexcept;
    void FillIndex() noexcept;
    void AddToIndex(std::size_t position) noexcept;
    std::size_t FirstSlot(BIBStringAtom const* key) const noexcept;

    Vector<DictEntry> fEntries;
    Vector<std::uint32_t> fIndex; // positions plus one, 0 for a free slot; empty while few entries
    std::size_t fCount = 0;       // the entries that are no gaps
    std::size_t fFirst = 0;       // every entry before it is a gap
    unsigned long fLastNumber = 0;
};

} // namespace bibrt
