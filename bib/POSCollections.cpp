#include "bib/POSCollections.h"

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
    return HandleOn(value, quiet, "CPOSArray::GetAt subscript failed");
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
    return HandleOn(fProcs->Get(As<POSDict>(), key), quiet, "CPOSDict::Get failed");
}

unsigned int CPOSDict::NumKeys() const {
    unsigned int count = 0;
    CPOSDictIterator const iterator(*this);
    for (iterator.Begin(); !iterator.IsDone(); iterator.Next()) {
        ++count;
    }
    return count;
}

BIB_DEFINE_GLOBAL_PROCS(POSDictIteratorInterface, POS_DICT_ITERATOR_INTERFACE_ROWS, 5)

CPOSDictIterator::CPOSDictIterator(CPOSDict const& dict)
    : TBIBContainerBase(GetProcs() != nullptr ? fProcs->NewPOSDictIterator(dict) : nullptr) {}

} // namespace BIB_T_NMT
