#include "bib/POSUnicodeString.h"

namespace BIB_T_NMT {

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

} // namespace BIB_T_NMT
