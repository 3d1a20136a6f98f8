// How settings are judged: the receiver of the runtime validator"s messages, and the component's
// own checks.
#pragma once

#include "bib/BIBClient.h"
#include "bib/POSCollections.h"

namespace PDFSettingsImpl {

// Makes records of a validator's messages for as long as it lives. The runtime's callback takes a
// message and nothing else, so the one that lives is found through a pointer of the whole process:
// at most one lives at a time, whatever the thread.
class POSValidatorErrorProc : public BIB_T_NMT::CBIBClientBase {
public:
    // The records go to errors, which outlives this.
    explicit POSValidatorErrorProc(BIB_T_NMT::CPOSArray const& errors) noexcept : fErrors(errors) {
        gPOSValidatorErrorProc = this;
    }
    POSValidatorErrorProc(POSValidatorErrorProc const&) = delete;
    POSValidatorErrorProc& operator=(POSValidatorErrorProc const&) = delete;
    virtual ~POSValidatorErrorProc() { gPOSValidatorErrorProc = nullptr; }

    // Appends a record for message, a key, a space and a text: a dictionary with the 8-bit strings
    // "Key" and "ErrorMsg". Throws the memory error, for a message without a space too; it passes
    // through the validator. REQUIRES: an instance lives.
    // NOLINTNEXTLINE(readability-identifier-naming): its fixed name
    static void errproc(char const* message);

    // The one that lives, or null.
    // NOLINTNEXTLINE(readability-identifier-naming): its fixed name
    static POSValidatorErrorProc* gPOSValidatorErrorProc;

private:
    void Append(BIB_T_NMT::CPOSDict const& record) const;

    BIB_T_NMT::CPOSArray const& fErrors;
};

} // namespace PDFSettingsImpl
