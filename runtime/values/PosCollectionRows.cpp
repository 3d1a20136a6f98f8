#include "api/POSCollectionInterfaces.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "runtime/objects/Boundary.h"
#include "runtime/objects/Tables.h"
#include "runtime/values/PosCollections.h"

namespace bibrt {

namespace {

bool IsArray(POSObject const* object) noexcept {
    return IsOfType(object, gArrayType);
}

bool IsDict(POSObject const* object) noexcept {
    return IsOfType(object, gDictType);
}

POSArray* NewPOSArray() {
    return AtRow<POSArray*>(nullptr, [] { return MakeArray(); });
}

long IsPOSArray(POSObject* object) {
    return IsArray(object) ? 1 : 0;
}

POSObject* GetAt(POSArray* self, unsigned long index) {
    return IsArray(self) && index < self->fItems.size() ? self->fItems[index] : nullptr;
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
    // Last of all: what the release calls may come back to this array.
    ReleaseContainer(std::exchange(self->fItems[index], ref.Release()));
    return 1;
}

long Append(POSArray* self, POSObject* value) {
    return IsArray(self) && value && AppendTo(*self, *value) ? 1 : 0;
}

long Remove(POSArray* self, unsigned long index) {
    POSObject* const old = GetAt(self, index);
    if (!old) {
        return 0;
    }
    self->fItems.erase(self->fItems.begin() + static_cast<std::ptrdiff_t>(index));
    ReleaseContainer(old);
    return 1;
}

POSDict* NewPOSDict() {
    return AtRow<POSDict*>(nullptr, [] { return MakeDict(); });
}

long IsPOSDict(POSObject* object) {
    return IsDict(object) ? 1 : 0;
}

POSObject* Get(POSDict* self, BIBStringAtom* key) {
    return IsDict(self) ? self->fEntries.Get(key) : nullptr;
}

// The element whose position step spells in digits, or null.
POSObject* GetAtStep(POSArray* array, std::string_view step) noexcept {
    unsigned long index = 0;
    auto const [end, fault] = std::from_chars(step.data(), step.data() + step.size(), index);
    bool const isIndex = fault == std::errc() && end == step.data() + step.size();
    return isIndex ? GetAt(array, index) : nullptr;
}

// What lies one step of a path below value, or null.
POSObject* Descend(POSObject* value, std::string_view step) noexcept {
    if (IsDict(value)) {
        // A text that is no atom is the key of no dictionary.
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

} // namespace

BIBRT_DEFINE_TABLE(
    ArrayTable, "POSArrayInterface", _t_POSArrayInterface, POS_ARRAY_INTERFACE_ROWS, 7)

BIBRT_DEFINE_TABLE(DictTable, "POSDictInterface", _t_POSDictInterface, POS_DICT_INTERFACE_ROWS, 6)

} // namespace bibrt
