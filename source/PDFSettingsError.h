// The component's own errors.
#pragma once

#include "bib/BIBError.h"

namespace PDFSettingsImpl {

// The ids of the component's errors.
enum PDFSettingsErrorID : long {
    kFileError = 2,     // a whole file could not be read or written
    kPlatformError = 3, // the operating system failed
    kSchemaError = 4,   // the schema cannot be used
    kInvalidFile = 6,   // the text is not job options text
    kInternalError = 7, // an internal check failed
    kWriteError = 8     // saving failed for a reason from outside the component
};

// An error with component "PDFSettings". Thrown by value.
class CPDFSettingsError : public BIB_T_NMT::CBIBError {
public:
    // Message "Error", id kFileError: the failure of a whole-file operation.
    CPDFSettingsError() : CPDFSettingsError("Error", kFileError) {}

    // The message is copied.
    CPDFSettingsError(char const* message, long id)
        : CBIBError(message, "PDFSettings", id, nullptr, nullptr) {}
};

// error, or the runtime's memory error if error is invalid, because memory ran out when it was
// made: a caller must not mistake that for success.
inline BIB_T_NMT::CBIBError NeverEmpty(BIB_T_NMT::CBIBError const& error) {
    return error.IsValid() ? error : BIB_T_NMT::CBIBError::GetMemError();
}

// Throws CPDFSettingsError(message, kInternalError) unless condition holds.
inline void ThrowIfFalse(bool condition, char const* message) {
    if (!condition) {
        throw CPDFSettingsError(message, kInternalError);
    }
}

} // namespace PDFSettingsImpl
