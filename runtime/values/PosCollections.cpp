#include "runtime/values/PosCollections.h"

#include "runtime/objects/Boundary.h"

namespace bibrt {

constinit ContainerType gArrayType = {
    "POSArray", "POSArrayValue", "POSObjectVirtualInterface", &DestroyAs<POSArray>};
constinit ContainerType gDictType = {
    "POSDict", "POSDictValue", "POSObjectVirtualInterface", &DestroyAs<POSDict>};

namespace {

// Stores a reference on value by way of store. Where that fails, value is left as it was, unowned
// if it was so, and the collection is marked.
template <class Store>
bool StoreIn(POSObject& collection, POSObject& value, Store store) noexcept {
    Ref<POSObject> ref(&value);
    bool const isStored = ref && AtRow(/*failure=*/false, [&] {
                              store(ref);
                              return true;
                          });
    if (!isStored) {
        DropContainerRef(ref.Release());
        collection.fIsInvalid = true;
    }
    return isStored;
}

} // namespace

POSArray* MakeArray() {
    return NewObject<POSArray>();
}

POSDict* MakeDict() {
    return NewObject<POSDict>();
}

bool AppendTo(POSArray& array, POSObject& value) noexcept {
    return StoreIn(array, value, [&](Ref<POSObject>& ref) {
        array.fItems.push_back(ref.Get());
        ref.Release();
    });
}

bool PutInto(POSDict& dict, BIBStringAtom& key, POSObject& value) noexcept {
    return StoreIn(dict, value, [&](Ref<POSObject>& ref) { dict.fEntries.Put(&key, ref); });
}

bool AddTo(POSObject& collection, BIBStringAtom* key, POSObject& value) noexcept {
    return key ? PutInto(static_cast<POSDict&>(collection), *key, value)
               : AppendTo(static_cast<POSArray&>(collection), value);
}

std::size_t CountChildren(POSObject const& collection) noexcept {
    return IsOfType(&collection, gDictType)
               ? static_cast<POSDict const&>(collection).fEntries.Count()
               : static_cast<POSArray const&>(collection).fItems.size();
}

void ReserveChildren(POSObject& collection, std::size_t count) {
    if (count == 0) {
        return;
    }
    if (IsOfType(&collection, gDictType)) {
        static_cast<POSDict&>(collection).fEntries.Reserve(count);
    } else {
        static_cast<POSArray&>(collection).fItems.reserve(count);
    }
}

Child NextChild(POSObject& collection, std::size_t& position) noexcept {
    if (IsOfType(&collection, gDictType)) {
        DictEntry const* const entry = static_cast<POSDict&>(collection).fEntries.Next(position);
        return entry ? Child{entry->fKey, entry->fValue} : Child{};
    }
    auto const& items = static_cast<POSArray&>(collection).fItems;
    return position < items.size() ? Child{nullptr, items[position++]} : Child{};
}

} // namespace bibrt

POSArray::~POSArray() {
    for (POSObject* const item : fItems) {
        bibrt::ReleaseContainer(item);
    }
}
