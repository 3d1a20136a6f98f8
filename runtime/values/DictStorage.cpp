#include "runtime/values/DictStorage.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <new>

namespace bibrt {

namespace {

// Up to this many entries a linear search is as fast as the index.
constexpr std::size_t kFewEntries = 8;

// The index stores positions in 32 bits, to be small in the CPU cache.
constexpr std::size_t kMaxCapacity = std::numeric_limits<std::uint32_t>::max();

} // namespace

std::size_t DictStorage::SlotOf(BIBStringAtom const* key) const noexcept {
    // The high bits of the product depend on all bits of the address.
    std::uint64_t const address = reinterpret_cast<std::uintptr_t>(key);
    auto slot = static_cast<std::size_t>((address * 0x9E3779B97F4A7C15u) >> 32);
    for (;; ++slot) {
        slot &= fIndex.size() - 1;
        if (fIndex[slot] == 0 || fEntries[fIndex[slot] - 1].fKey == key) {
            return slot;
        }
    }
}

std::size_t DictStorage::Find(BIBStringAtom const* key) const noexcept {
    if (!key || fCount == 0) {
        return 0;
    }
    if (!fIndex.empty()) {
        return fIndex[SlotOf(key)];
    }
    auto const found = std::ranges::find(fEntries, key, &DictEntry::Key);
    return found == fEntries.end() ? 0 : static_cast<std::size_t>(found - fEntries.begin()) + 1;
}

POSObject* DictStorage::Get(BIBStringAtom const* key) const noexcept {
    std::size_t const found = Find(key);
    return found == 0 ? nullptr : fEntries[found - 1].fValue.Get();
}

void DictStorage::Put(BIBStringAtom* key, Ref<POSObject>& value) {
    if (std::size_t const found = Find(key)) {
        // The caller releases the old value last: releasing it may call back into this dictionary.
        std::swap(fEntries[found - 1].fValue, value);
        return;
    }
    Reserve(fCount + 1);
    if (fEntries.size() == fEntries.capacity()) {
        CloseGaps();
    }
    fEntries.push_back({std::move(value), AtomRef::Share(key), ++fLastNumber});
    ++fCount;
    AddToIndex(fEntries.size() - 1);
}

bool DictStorage::Remove(BIBStringAtom const* key) noexcept {
    std::size_t const found = Find(key);
    if (found == 0) {
        return false;
    }
    // Released last: this may call back into the dictionary.
    AtomRef const oldKey(std::move(fEntries[found - 1].fKey));
    Ref const oldValue(std::move(fEntries[found - 1].fValue));
    --fCount;
    while (fFirst < fEntries.size() && !fEntries[fFirst].fKey) {
        ++fFirst;
    }
    if (fEntries.size() > kFewEntries && fCount < fEntries.size() / 2) {
        CloseGaps();
    }
    return true;
}

void DictStorage::Reserve(std::size_t count) {
    std::size_t const wanted = count + count / 3 + 1;
    if (wanted <= fEntries.capacity()) {
        return;
    }
    if (wanted > kMaxCapacity) {
        throw std::bad_alloc();
    }
    std::size_t const doubled = std::min(fEntries.capacity() * 2, kMaxCapacity);
    std::size_t const capacity = std::max({wanted, doubled, kFewEntries});
    // Gaps keep their slots until CloseGaps, so at least half of the slots are always free.
    Vector<std::uint32_t> index(capacity > kFewEntries ? std::bit_ceil(capacity * 2) : 0);
    fEntries.reserve(capacity);
    fIndex.swap(index);
    FillIndex();
}

void DictStorage::CloseGaps() noexcept {
    std::erase_if(fEntries, [](DictEntry const& entry) { return !entry.fKey; });
    fFirst = 0;
    std::ranges::fill(fIndex, 0U);
    FillIndex();
}

// REQUIRES: every slot is free.
void DictStorage::FillIndex() noexcept {
    for (std::size_t position = 0; position < fEntries.size(); ++position) {
        AddToIndex(position);
    }
}

void DictStorage::AddToIndex(std::size_t position) noexcept {
    BIBStringAtom const* const key = fEntries[position].fKey;
    if (key && !fIndex.empty()) {
        fIndex[SlotOf(key)] = static_cast<std::uint32_t>(position + 1);
    }
}

DictEntry const* DictStorage::Next(std::size_t& position) const noexcept {
    position = std::max(position, fFirst);
    while (position < fEntries.size()) {
        DictEntry const& entry = fEntries[position++];
        if (entry.fKey) {
            return &entry;
        }
    }
    return nullptr;
}

DictEntry const*
DictStorage::NextAfter(unsigned long number, std::size_t& position) const noexcept {
    bool const isInPlace =
        position > 0 && position <= fEntries.size() && fEntries[position - 1].fNumber == number;
    if (!isInPlace) {
        auto const found = std::ranges::upper_bound(fEntries, number, {}, &DictEntry::fNumber);
        position = static_cast<std::size_t>(found - fEntries.begin());
    }
    return Next(position);
}

} // namespace bibrt
