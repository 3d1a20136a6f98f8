#include "bib/POSNumber.h"

namespace BIB_T_NMT {

BIB_DEFINE_GLOBAL_PROCS(POSNumberInterface, POS_NUMBER_INTERFACE_ROWS, 3)

CPOSNumber::CPOSNumber(double value)
    : CPOSObject(AsObject(GetProcs() != nullptr ? fProcs->NewPOSNumber(value) : nullptr)) {}

CPOSNumber::CPOSNumber(CPOSObject const& object, bool quiet) : CPOSObject(object) {
    Narrow(
        GetProcs() != nullptr && fProcs->IsPOSNumber(*this) != 0,
        quiet,
        "downcast from CPOSObject to CPOSNumber failed");
}

_t_POSNumberInterface const* CPOSNumber::GetProcs() {
    return Renew(fProcs, GetGlobalPOSNumberInterfaceProcs());
}

} // namespace BIB_T_NMT
