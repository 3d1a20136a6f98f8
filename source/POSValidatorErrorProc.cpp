#include "source/POSValidatorErrorProc.h"

#include <cstring>

#include "bib/BIBMemoryBuffer.h"
#include "bib/POSString.h"

using BIB_T_NMT::CBIBMemory;
using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSString;

namespace PDFSettingsImpl {

namespace {

CPOSString MakeKey(char const* begin, char const* end) {
    auto const length = static_cast<unsigned long>(end - begin);
    BIB_T_NMT::TBIBMemoryBuffer<char, CBIBMemory> key(begin, length + 1);
    key[length] = '\0';
    return CPOSString(key.GetBuffer());
}

} // namespace

POSValidatorErrorProc* POSValidatorErrorProc::gPOSValidatorErrorProc = nullptr;

// What the runtime answers to a storing says nothing certain, so the outcome is looked at: a list
// that lost an error would make settings pass that are not valid.
void POSValidatorErrorProc::Append(CPOSDict const& record) const {
    unsigned long const count = fErrors.Count();
    fErrors.Append(record);
    if (fErrors.Count() != count + 1 || !record.HasKey("Key") || !record.HasKey("ErrorMsg")) {
        CBIBMemory::ThrowMemError();
    }
}

void POSValidatorErrorProc::errproc(char const* message) {
    CPOSDict const record;
    char const* const space = std::strchr(message, ' ');
    if (space == nullptr) {
        // There is no key to report under; a record that went missing must not look like success.
        CBIBMemory::ThrowMemError();
    }
    record.Put("Key", MakeKey(message, space));
    record.Put("ErrorMsg", CPOSString(space + 1));
    gPOSValidatorErrorProc->Append(record);
}

} // namespace PDFSettingsImpl
