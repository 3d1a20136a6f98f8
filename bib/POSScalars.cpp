#include "bib/POSScalars.h"

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

BIB_DEFINE_GLOBAL_PROCS(POSUnicodeStringInterface, POS_UNICODE_STRING_INTERFACE_ROWS, 3)

CPOSUnicodeString::CPOSUnicodeString(unsigned short const* text)
    : CPOSObject(AsObject(GetProcs() != nullptr ? fProcs->NewPOSUnicodeString(text) : nullptr)) {}

CPOSUnicodeString::CPOSUnicodeString(CPOSObject const& object, bool quiet) : CPOSObject(object) {
    Narrow(
        GetProcs() != nullptr && fProcs->IsPOSUnicodeString(*this) != 0,
        quiet,
        "downcast from CPOSObject to CPOSUnicodeString failed");
}

_t_POSUnicodeStringInterface const* CPOSUnicodeString::GetProcs() {
    return Renew(fProcs, GetGlobalPOSUnicodeStringInterfaceProcs());
}

unsigned int CPOSUnicodeString::GetLength(unsigned short const* text) noexcept {
    unsigned int length = 0;
    while (text[length] != 0) {
        ++length;
    }
    return length;
}

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
