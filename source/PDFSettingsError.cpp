#include "source/PDFSettingsError.h"

namespace PDFSettingsImpl {

CPDFSettingsError::CPDFSettingsError() : CPDFSettingsError("Error", kFileError) {}

CPDFSettingsError::CPDFSettingsError(char const* message, long id)
    : CBIBError(message, "PDFSettings", id, nullptr, nullptr) {}

BIB_T_NMT::CBIBError NeverEmpty(BIB_T_NMT::CBIBError const& error) {
    return error.IsValid() ? error : BIB_T_NMT::CBIBError::GetMemError();
}

void ThrowIfFalse(bool condition, char const* message) {
    if (!condition) {
        throw CPDFSettingsError(message, kInternalError);
    }
}

} // namespace PDFSettingsImpl
