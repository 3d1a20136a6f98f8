#include "bib/POSCollections.h"

#include "bib/POSException.h"

namespace BIB_T_NMT {

BIB_DEFINE_GLOBAL_PROCS(POSArrayInterface, POS_ARRAY_INTERFACE_ROWS, 7)

CPOSArray::CPOSArray()
    : CPOSObject(AsObject(GetProcs() != nullptr ? fProcs->NewPOSArray() : nullptr)) {}

CPOSArray::CPOSArray(CPOSObject const& object, bool quiet) : CPOSObject(object) {
    Narrow(
        GetProcs() != nullptr && fProcs->IsPOSArray(*this) != 0,
        quiet,
        "downcast from CPOSObject to CPOSArray failed");
}

CPOSObject CPOSArray::GetAt(unsigned long index, bool quiet) const {
    POSObject* const value = fProcs->GetAt(As<POSArray>(), index);
    if (value != nullptr) {
        return CPOSObject(value);
    }
    if (!quiet) {
        _POSSignalError("CPOSArray::GetAt subscript failed");
    }
    return CPOSObject();
}

_t_POSArrayInterface const* CPOSArray::GetProcs() {
    return Renew(fProcs, GetGlobalPOSArrayInterfaceProcs());
}

BIB_DEFINE_GLOBAL_PROCS(POSDictInterface, POS_DICT_INTERFACE_ROWS, 6)

CPOSDict::CPOSDict()
    : CPOSObject(AsObject(GetProcs() != nullptr ? fProcs->NewPOSDict() : nullptr)) {}

CPOSDict::CPOSDict(POSDict* dict) : CPOSObject(AsObject(dict)) {
    if (GetProcs() == nullptr) {
        Invalidate();
    }
}

CPOSDict::CPOSDict(CPOSObject const& object, bool quiet) : CPOSObject(object) {
    Narrow(
        GetProcs() != nullptr && fProcs->IsPOSDict(*this) != 0,
        quiet,
        "downcast from CPOSObject to CPOSDict failed");
}

CPOSObject CPOSDict::Get(CBIBStringAtom const& key, bool quiet) const {
    POSObject* const value = fProcs->Get(As<POSDict>(), key);
    if (value != nullptr) {
        return CPOSObject(value);
    }
    if (!quiet) {
        _POSSignalError("CPOSDict::Get failed");
    }
    return CPOSObject();
}

CPOSObject CPOSDict::Get(char const* key, bool quiet) const {
    return Get(CBIBStringAtom(key), quiet);
}

CPOSDict CPOSDict::GetDict(CBIBStringAtom const& key, bool quiet) const {
    return CPOSDict(Get(key, quiet), quiet);
}

CPOSDict CPOSDict::GetDict(char const* key, bool quiet) const {
    return GetDict(CBIBStringAtom(key), quiet);
}

CPOSArray CPOSDict::GetArray(CBIBStringAtom const& key, bool quiet) const {
    return CPOSArray(Get(key, quiet), quiet);
}

CPOSArray CPOSDict::GetArray(char const* key, bool quiet) const {
    return GetArray(CBIBStringAtom(key), quiet);
}

CPOSUnicodeString CPOSDict::GetUnicodeString(CBIBStringAtom const& key, bool quiet) const {
    return CPOSUnicodeString(Get(key, quiet), quiet);
}

bool CPOSDict::HasKey(CBIBStringAtom const& key) const {
    return fProcs->Get(As<POSDict>(), key) != nullptr;
}

bool CPOSDict::HasKey(char const* key) const {
    return HasKey(CBIBStringAtom(key));
}

long CPOSDict::Put(CBIBStringAtom const& key, CPOSObject const& value) const {
    return fProcs->Put(As<POSDict>(), key, value);
}

long CPOSDict::Put(char const* key, CPOSObject const& value) const {
    return Put(CBIBStringAtom(key), value);
}

long CPOSDict::Remove(CBIBStringAtom const& key) const {
    return fProcs->Remove(As<POSDict>(), key);
}

long CPOSDict::Remove(char const* key) const {
    return Remove(CBIBStringAtom(key));
}

unsigned int CPOSDict::NumKeys() const {
    unsigned int count = 0;
    CPOSDictIterator const iterator(*this);
    for (iterator.Begin(); !iterator.IsDone(); iterator.Next()) {
        ++count;
    }
    return count;
}

_t_POSDictInterface const* CPOSDict::GetProcs() {
    return Renew(fProcs, GetGlobalPOSDictInterfaceProcs());
}

BIB_DEFINE_GLOBAL_PROCS(POSDictIteratorInterface, POS_DICT_ITERATOR_INTERFACE_ROWS, 5)

CPOSDictIterator::CPOSDictIterator(CPOSDict const& dict)
    : TBIBContainerBase(GetProcs() != nullptr ? fProcs->NewPOSDictIterator(dict) : nullptr) {}

_t_POSDictIteratorInterface const* CPOSDictIterator::GetProcs() {
    return Renew(fProcs, GetGlobalPOSDictIteratorInterfaceProcs());
}

} // namespace BIB_T_NMT
