#include "bib/POSArray.h"

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

} // namespace BIB_T_NMT
