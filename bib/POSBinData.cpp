#include "bib/POSBinData.h"

namespace BIB_T_NMT {

BIB_DEFINE_GLOBAL_PROCS(POSBinDataInterface, POS_BIN_DATA_INTERFACE_ROWS, 5)

CPOSBinData::CPOSBinData(char const* typeName, unsigned char const* data, unsigned long size)
    : CPOSObject(
          AsObject(GetProcs() != nullptr ? fProcs->NewPOSBinData(typeName, data, size) : nullptr)) {
}

CPOSBinData::CPOSBinData(CPOSObject const& object, bool quiet) : CPOSObject(object) {
    Narrow(
        GetProcs() != nullptr && fProcs->IsPOSBinData(*this) != 0,
        quiet,
        "downcast from CPOSObject to CPOSBinData failed");
}

_t_POSBinDataInterface const* CPOSBinData::GetProcs() {
    return Renew(fProcs, GetGlobalPOSBinDataInterfaceProcs());
}

} // namespace BIB_T_NMT
