#include "source/PDFSettingsRegistration.h"

#include <iterator>

#include "bib/BIBClient.h"
#include "bib/BIBTable.h"
#include "source/PDFSettingsInterface.h"
#include "source/PDFSettingsStatics.h"

using BIB_T_NMT::_t_BIBFTabRegEntry;

namespace PDFSettingsImpl {

namespace {

constexpr char kStaticsName[] = "PDFSettingsStatics";
constexpr char kVirtualInterfaceName[] = "PDFSettingsVirtualInterface";

template <unsigned long Size>
bool Register(_t_BIBFTabRegEntry const (&rows)[Size], char const* interfaceName) {
    // The closing row is not registered.
    return BIB_T_NMT::BIBRegisterProcTable(rows, Size - 1, interfaceName) != 0;
}

} // namespace

// The address of a boundary procedure, checked against its proc type.
#define BIB_TABLE_PROC(operation, procType) \
    {#operation, \
     #procType, \
     reinterpret_cast<void*>(static_cast<procType>(&_##procType##_##operation))},

bool RegisterPDFSettingsStaticsProcs() {
    static _t_BIBFTabRegEntry const kRows[] = {
        PDF_SETTINGS_STATICS_ROWS(BIB_TABLE_PROC){"", "", nullptr}};
    static_assert(std::size(kRows) == 2 + 1);
    return Register(kRows, kStaticsName);
}

bool RegisterPDFSettingsInterfaceProcs() {
    static _t_BIBFTabRegEntry const kRows[] = {
        PDF_SETTINGS_INTERFACE_ROWS(BIB_TABLE_PROC){"", "", nullptr}};
    static_assert(std::size(kRows) == 9 + 1);
    return Register(kRows, PDFSettingsObject::GetInterfaceName());
}

bool RegisterPDFSettingsImpl() {
    return RegisterPDFSettingsStaticsProcs() && RegisterPDFSettingsInterfaceProcs();
}

void UnregisterPDFSettingsImpl() {
    BIB_T_NMT::BIBUnregisterInterface(kStaticsName);
    BIB_T_NMT::BIBUnregisterInterface(PDFSettingsObject::GetInterfaceName());
    BIB_T_NMT::BIBUnregisterInterface(kVirtualInterfaceName);
}

} // namespace PDFSettingsImpl
