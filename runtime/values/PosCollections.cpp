#include "runtime/values/PosCollections.h"

#include "api/POSCollectionInterfaces.h"
#include "runtime/objects/Errors.h"
#include "runtime/objects/Tables.h"

#include <algorithm>
#include <charconv>
#include <string_view>

// A cursor over the keys of a dictionary. It stores the number of its entry and a reference to the
// key's atom, never a pointer into the storage, so it stays valid when the dictionary changes.
struct POSDictIterator : BIBContainer {
    explicit POSDictIterator(bibrt::Ref<POSDict> dict) noexcept
        : BIBContainer(bibrt::gDictIteratorType),
          fDict(std::move(dict)) {}

    bibrt::Ref<POSDict> fDict;
    bibrt::AtomRef fKey; // null before Begin and at the end
    unsigned long fNumber = 0;
    std::size_t fPosition = 0; // after the entry, unless entries have moved
};

namespace bibrt {

constinit ContainerType gArrayType = {
    "POSArray", "POSArrayValue", "POSObjectVirtualInterface", &DestroyAs<POSArray>};
constinit ContainerType gDictType = {
    "POSDict", "POSDictValue", "POSObjectVirtualInterface", &DestroyAs<POSDict>};
constinit ContainerType gDictIteratorType = {
    "POSDictIterator", "POSDictIteratorCursor", nullptr, &DestroyAs<POSDictIterator>};

namespace {

// Calls store with a reference to value. On failure, value keeps its former count (an unowned one
// is not destroyed), and the collection becomes invalid.
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

bool AppendTo(POSArray& array, POSObject& value) noexcept {
    return StoreIn(
        array, value, [&](Ref<POSObject>& ref) { array.fItems.push_back(std::move(ref)); });
}

bool PutInto(POSDict& dict, BIBStringAtom& key, POSObject& value) noexcept {
    return StoreIn(dict, value, [&](Ref<POSObject>& ref) { dict.fEntries.Put(&key, ref); });
}

bool IsArray(POSObject const* object) noexcept {
    return IsOfType(object, gArrayType);
}

bool IsDict(POSObject const* object) noexcept {
    return IsOfType(object, gDictType);
}

POSArray* NewPOSArray() {
    return AtRow<POSArray*>(nullptr, [] { return NewObject<POSArray>(); });
}

long IsPOSArray(POSObject* object) {
    return IsArray(object) ? 1 : 0;
}

POSObject* GetAt(POSArray* self, unsigned long index) {
    return IsArray(self) && index < self->fItems.size() ? self->fItems[index].Get() : nullptr;
}

unsigned long Count(POSArray* self) {
    return IsArray(self) ? self->fItems.size() : 0;
}

long SetAt(POSArray* self, unsigned long index, POSObject* value) {
    if (!value || !GetAt(self, index)) {
        return 0;
    }
    Ref<POSObject> ref(value);
    if (!ref) {
        self->fIsInvalid = true;
        return 0;
    }
    // ref releases the old value last: this may call back into the array.
    self->fItems[index] = std::move(ref);
    return 1;
}

long Append(POSArray* self, POSObject* value) {
    return IsArray(self) && value && AppendTo(*self, *value) ? 1 : 0;
}

long Remove(POSArray* self, unsigned long index) {
    if (!GetAt(self, index)) {
        return 0;
    }
    // Released last, for the same reason.
    Ref const old(std::move(self->fItems[index]));
    self->fItems.erase(self->fItems.begin() + static_cast<std::ptrdiff_t>(index));
    return 1;
}

POSDict* NewPOSDict() {
    return AtRow<POSDict*>(nullptr, [] { return NewObject<POSDict>(); });
}

long IsPOSDict(POSObject* object) {
    return IsDict(object) ? 1 : 0;
}

POSObject* Get(POSDict* self, BIBStringAtom* key) {
    return IsDict(self) ? self->fEntries.Get(key) : nullptr;
}

// The element whose index step spells in digits, or null.
POSObject* GetAtStep(POSArray* array, std::string_view step) noexcept {
    unsigned long index = 0;
    auto const [end, error] = std::from_chars(step.data(), step.data() + step.size(), index);
    bool const isIndex = error == std::errc() && end == step.data() + step.size();
    return isIndex ? GetAt(array, index) : nullptr;
}

// The value one step of a path below value, or null.
POSObject* Descend(POSObject* value, std::string_view step) noexcept {
    if (IsDict(value)) {
        // A text without an atom is no dictionary's key.
        return static_cast<POSDict*>(value)->fEntries.Get(FindAtom(step));
    }
    return IsArray(value) ? GetAtStep(static_cast<POSArray*>(value), step) : nullptr;
}

POSObject* DeepGet(POSDict* self, BIBStringAtom* path) {
    if (!path) {
        return nullptr;
    }
    std::string_view rest = TextOf(path);
    POSObject* value = self;
    while (value) {
        std::size_t const slash = rest.find('/');
        value = Descend(value, rest.substr(0, slash));
        if (slash == std::string_view::npos) {
            return value;
        }
        rest.remove_prefix(slash + 1);
    }
    return nullptr;
}

long Put(POSDict* self, BIBStringAtom* key, POSObject* value) {
    return IsDict(self) && key && value && PutInto(*self, *key, *value) ? 1 : 0;
}

long Remove(POSDict* self, BIBStringAtom* key) {
    return IsDict(self) && self->fEntries.Remove(key) ? 1 : 0;
}

bool IsCursor(POSDictIterator const* self) noexcept {
    return IsOfType(self, gDictIteratorType);
}

void MoveTo(POSDictIterator& cursor, DictEntry const* entry) noexcept {
    cursor.fKey = AtomRef::Share(entry ? entry->fKey.Get() : nullptr);
    cursor.fNumber = entry ? entry->fNumber : cursor.fNumber;
}

POSDictIterator* NewPOSDictIterator(POSDict* dict) {
    Ref<POSDict> ref(IsOfType(dict, gDictType) ? dict : nullptr);
    if (!ref) {
        return nullptr;
    }
    return AtRow<POSDictIterator*>(
        nullptr, [&] { return NewObject<POSDictIterator>(std::move(ref)); });
}

void Begin(POSDictIterator* self) {
    if (IsCursor(self)) {
        MoveTo(*self, self->fDict->fEntries.NextAfter(0, self->fPosition));
    }
}

void Next(POSDictIterator* self) {
    if (IsCursor(self) && self->fKey) {
        MoveTo(*self, self->fDict->fEntries.NextAfter(self->fNumber, self->fPosition));
    }
}

long IsDone(POSDictIterator* self) {
    return IsCursor(self) && self->fKey ? 0 : 1;
}

char const* CurKey(POSDictIterator* self) {
    return IsCursor(self) ? TextOf(self->fKey) : nullptr;
}

} // namespace

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

BIBRT_DEFINE_TABLE(POSArrayInterface, POS_ARRAY_INTERFACE_ROWS, 7)

BIBRT_DEFINE_TABLE(POSDictInterface, POS_DICT_INTERFACE_ROWS, 6)

BIBRT_DEFINE_TABLE(POSDictIteratorInterface, POS_DICT_ITERATOR_INTERFACE_ROWS, 5)

} // namespace bibrt
