// Arrays and dictionaries as values, and walking through them.
#pragma once

#include "api/POSCollectionInterfaces.h"
#include "runtime/values/DictStorage.h"

struct POSArray : POSObject {
    POSArray() noexcept : POSObject(bibrt::gArrayType) {}

    bibrt::Vector<bibrt::Ref<POSObject>> fItems;
};

struct POSDict : POSObject {
    POSDict() noexcept : POSObject(bibrt::gDictType) {}

    bibrt::DictStorage fEntries;
};

namespace bibrt {

// New empty collections, unowned. They throw std::bad_alloc.
POSArray* MakeArray();
POSDict* MakeDict();

// Adds value to the end of array, or puts it under key. False when value is invalid or memory runs
// out: then the collection becomes invalid, since it lacks what it should hold.
bool AppendTo(POSArray& array, POSObject& value) noexcept;
bool PutInto(POSDict& dict, BIBStringAtom& key, POSObject& value) noexcept;

// The same for either kind; key is null for an array.
bool AddTo(POSObject& collection, BIBStringAtom* key, POSObject& value) noexcept;

// The number of values in a collection.
std::size_t CountChildren(POSObject const& collection) noexcept;

// Makes room for count values. Throws std::bad_alloc.
void ReserveChildren(POSObject& collection, std::size_t count);

// A value in a collection and its key, null in an array.
struct Child {
    BIBStringAtom* fKey;
    POSObject* fValue;
};

// The next child of collection at or behind position, which moves behind it; a null value at the
// end.
Child NextChild(POSObject& collection, std::size_t& position) noexcept;

} // namespace bibrt
