#include "runtime/values/DictStorage.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <stdexcept>

namespace bibrt {

namespace {

constexpr std::size_t kFewEntries = 8;
constexpr std::size_t kManyEntries = 128;

// Positions must fit an index slot.
constexpr std::size_t kMaxEntries = std::numeric_limits<std::uint32_t>::max() - 1;

std::size_t WithSpare(std::size_t count) noexcept {
    return count + count / 3 + 1;
}

} // namespace

DictStorage::~DictStorage() {
    for (DictEntry const& entry : fEntries) {
        if (entry.fKey) {
            ReleaseAtom(entry.fKey);
            ReleaseContainer(entry.fValue);
        }
    }
}

std::size_t DictStorage::FirstSlot(BIBStringAtom const* key) const noexcept {
    // The high bits of the product depend on all bits of the address.
    auto const product = reinterpret_cast<std::uintptr_t>(key) * 0x9E3779B97F4A7C15u;
    return (product >> 32) & (fIndex.size() - 1);
}

std::size_t DictStorage::Find(BIBStringAtom const* key) const noexcept {
    if (fIndex.empty()) {
        auto const found =
            std::find_if(fEntries.begin(), fEntries.end(), [key](DictEntry const& entry) {
                return entry.fKey == key;
            });
        return found == fEntries.end() ? kNone : static_cast<std::size_t>(found - fEntries.begin());
    }
    std::size_t slot = FirstSlot(key);
    while (fIndex[slot] != 0 && fEntries[fIndex[slot] - 1].fKey != key) {
        slot = (slot + 1) & (fIndex.size() - 1);
    }
    return fIndex[slot] == 0 ? kNone : fIndex[slot] - 1;
}

POSObject* DictStorage::Get(BIBStringAtom const* key) const noexcept {
    std::size_t const position = key ? Find(key) : kNone;
    return position == kNone ? nullptr : fEntries[position].fValue;
}

void DictStorage::Put(BIBStringAtom* key, Ref<POSObject>& value) {
    std::size_t const position = Find(key);
    if (position == kNone) {
        Append(key, value);
        return;
    }
    POSObject* const old = std::exchange(fEntries[position].fValue, value.Release());
    // Last of all: what the release calls may come back to this dictionary.
    ReleaseContainer(old);
}

void DictStorage::Append(BIBStringAtom* key, Ref<POSObject>& value) {
    Reserve(fCount + 1);
    if (fEntries.size() == fEntries.capacity()) {
        CloseGaps();
    }
    AddAtomRef(key);
    fEntries.push_back({key, value.Release(), ++fLastNumber});
    ++fCount;
    if (!fIndex.empty()) {
        AddToIndex(fEntries.size() - 1);
    }
}

void DictStorage::Reserve(std::size_t count) {
    std::size_t const wanted = WithSpare(count);
    if (wanted <= fEntries.capacity()) {
        return;
    }
    if (wanted > kMaxEntries) {
        throw std::length_error("too many keys");
    }
    // Settings have about a hundred keys: to get there takes few steps.
    std::size_t const growth = fEntries.capacity() < kManyEntries ? 4 : 2;
    std::size_t const capacity = std::max({wanted, fEntries.capacity() * growth, kFewEntries});
    if (capacity > kFewEntries) {
        // Gaps keep their slots until they are closed: half of the slots stay free at the worst.
        Vector<std::uint32_t> index(std::bit_ceil(capacity * 2));
        fEntries.reserve(capacity);
        fIndex.swap(index);
        FillIndex();
    } else {
        fEntries.reserve(capacity);
    }
}

bool DictStorage::Remove(BIBStringAtom const* key) noexcept {
    std::size_t const position = key ? Find(key) : kNone;
    if (position == kNone) {
        return false;
    }
    DictEntry& entry = fEntries[position];
    AtomRef const oldKey(std::exchange(entry.fKey, nullptr));
    POSObject* const old = std::exchange(entry.fValue, nullptr);
    --fCount;
    while (fFirst < fEntries.size() && !fEntries[fFirst].fKey) {
        ++fFirst;
    }
    if (fEntries.size() > kFewEntries && fEntries.size() - fCount > fEntries.size() / 2) {
        CloseGaps();
    }
    // Last of all: what the release calls may come back to this dictionary.
    ReleaseContainer(old);
    return true;
}

void DictStorage::CloseGaps() noexcept {
    std::erase_if(fEntries, [](DictEntry const& entry) { return !entry.fKey; });
    fFirst = 0;
    FillIndex();
}

void DictStorage::FillIndex() noexcept {
    if (fIndex.empty()) {
        return;
    }
    std::fill(fIndex.begin(), fIndex.end(), 0U);
    for (std::size_t position = 0; position < fEntries.size(); ++position) {
        if (fEntries[position].fKey) {
            AddToIndex(position);
        }
    }
}

void DictStorage::AddToIndex(std::size_t position) noexcept {
    std::size_t slot = FirstSlot(fEntries[position].fKey);
    while (fIndex[slot] != 0) {
        slot = (slot + 1) & (fIndex.size() - 1);
    }
    fIndex[slot] = static_cast<std::uint32_t>(position + 1);
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
        auto const found = std::upper_bound(
            fEntries.begin(),
            fEntries.end(),
            number,
            [](unsigned long wanted, DictEntry const& entry) { return wanted < entry.fNumber; });
        position = static_cast<std::size_t>(found - fEntries.begin());
    }
    return Next(position);
}

} // namespace bibrt
