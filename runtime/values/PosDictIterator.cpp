// The cursor over the keys of a dictionary.
//
// It remembers the number of its entry and holds the key's atom, never a place in the storage: so
// it stands firm whatever happens to the dictionary.
#include "api/POSCollectionInterfaces.h"

#include "runtime/objects/Boundary.h"
#include "runtime/objects/Tables.h"
#include "runtime/values/PosCollections.h"

struct POSDictIterator : BIBContainer {
    explicit POSDictIterator(bibrt::Ref<POSDict> dict) noexcept
        : BIBContainer(bibrt::gDictIteratorType),
          fDict(std::move(dict)) {}

    bibrt::Ref<POSDict> fDict;
    bibrt::AtomRef fKey; // none before Begin and at the end
    unsigned long fNumber = 0;
    std::size_t fPosition = 0; // a guess that saves the search for fNumber
    bool fIsAtEnd = false;
};

namespace bibrt {

constinit ContainerType gDictIteratorType = {
    "POSDictIterator", "POSDictIteratorCursor", nullptr, &DestroyAs<POSDictIterator>};

namespace {

bool IsCursor(POSDictIterator const* self) noexcept {
    return IsOfType(self, gDictIteratorType);
}

void MoveTo(POSDictIterator& cursor, DictEntry const* entry) noexcept {
    cursor.fIsAtEnd = !entry;
    cursor.fKey = AtomRef::Share(entry ? entry->fKey : nullptr);
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
        self->fPosition = 0;
        MoveTo(*self, self->fDict->fEntries.Next(self->fPosition));
    }
}

void Next(POSDictIterator* self) {
    if (IsCursor(self) && !self->fIsAtEnd) {
        MoveTo(*self, self->fDict->fEntries.NextAfter(self->fNumber, self->fPosition));
    }
}

long IsDone(POSDictIterator* self) {
    return IsCursor(self) && self->fKey.Get() ? 0 : 1;
}

char const* CurKey(POSDictIterator* self) {
    return IsCursor(self) ? TextOf(self->fKey.Get()) : nullptr;
}

} // namespace

BIBRT_DEFINE_TABLE(
    DictIteratorTable,
    "POSDictIteratorInterface",
    _t_POSDictIteratorInterface,
    POS_DICT_ITERATOR_INTERFACE_ROWS,
    5)

} // namespace bibrt
