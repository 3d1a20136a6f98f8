#include "bib/POSString.h"

namespace BIB_T_NMT {

BIB_DEFINE_GLOBAL_PROCS(POSStringInterface, POS_STRING_INTERFACE_ROWS, 3)

CPOSString::CPOSString(char const* text)
    : CPOSObject(AsObject(GetProcs() != nullptr ? fProcs->NewPOSString(text) : nullptr)) {}

CPOSString::CPOSString(CPOSObject const& object, bool quiet) : CPOSObject(object) {
    Narrow(
        GetProcs() != nullptr && fProcs->IsPOSString(*this) != 0,
        quiet,
        "downcast from CPOSObject to CPOSString failed");
}

_t_POSStringInterface const* CPOSString::GetProcs() {
    return Renew(fProcs, GetGlobalPOSStringInterfaceProcs());
}

} // namespace BIB_T_NMT
