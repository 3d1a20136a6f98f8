#include "bib/BIBVTab.h"

#include <new>

namespace BIB_T_NMT {

int BIBLoadMethodTable(
    _t_BIBFTabEntry const* table,
    unsigned long count,
    BIBContainer const* container,
    int mustExist,
    void** methods) {
    for (unsigned long slot = 0; slot < count; ++slot) {
        CBIBStringAtom const procType(table[slot].procType);
        CBIBStringAtom const name(table[slot].name);
        void* const method = CBIBContainer::GetMethod(container, name, procType, mustExist != 0);
        StoreProc(methods, slot, method);
        if (mustExist != 0 && method == nullptr) {
            return 0;
        }
    }
    return 1;
}

BIBVTabGeneric* BIBVTabGeneric::NewBIBVTab(unsigned long methodCount, List& list) {
    void* const block =
        CBIBClientBase::operator new(sizeof(BIBVTabGeneric) + methodCount * sizeof(void*));
    return ::new (block) BIBVTabGeneric(list);
}

void BIBVTabGeneric::Reload(BIBContainer const* container, BIBMethodLoader loader) {
    fUnregisterCount = *gBIBUnregisterCount;
    fSignature = CBIBContainer::GetSignature(container);
    fLoaded = loader(container, 1, Slots()) != 0;
}

class BIBVTabListGeneric::AutoRemove {
public:
    explicit AutoRemove(BIBVTabGeneric* element) noexcept : fElement(element) {}
    AutoRemove(AutoRemove const&) = delete;
    AutoRemove& operator=(AutoRemove const&) = delete;
    ~AutoRemove() { delete fElement; }

    void Commit() noexcept { fElement = nullptr; }

private:
    BIBVTabGeneric* fElement;
};

BIBVTabGeneric* BIBVTabListGeneric::Find(char const* signature) const noexcept {
    BIBVTabGeneric* entry = GetFirstElement();
    while (entry != nullptr && !entry->HasSignature(signature)) {
        entry = entry->GetNextElement();
    }
    return entry;
}

BIBVTabGeneric*
BIBVTabListGeneric::AddLoaded(BIBContainer const* container, BIBMethodLoader loader) {
    BIBVTabGeneric* const entry = BIBVTabGeneric::NewBIBVTab(fMethodCount, *this);
    AutoRemove guard(entry);
    entry->Reload(container, loader);
    guard.Commit();
    return entry;
}

void* BIBVTabListGeneric::GetVTabDynamic(BIBContainer const* container, BIBMethodLoader loader) {
    BIBVTabGeneric* entry = Find(CBIBContainer::GetSignature(container));
    if (entry == nullptr) {
        entry = AddLoaded(container, loader);
    } else if (entry->IsStale()) {
        entry->Reload(container, loader);
    }
    return entry->GetVTab();
}

void* BIBVTabListGeneric::GetVTab(BIBContainer const* container, BIBMethodLoader loader) {
    void* const vtab = GetVTabDynamic(container, loader);
    if (vtab == nullptr) {
        CBIBContainer::ThrowInvalidContainerException();
    }
    return vtab;
}

} // namespace BIB_T_NMT
