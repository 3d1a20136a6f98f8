#include "bib/POSValidator.h"

namespace BIB_T_NMT {

BIB_DEFINE_GLOBAL_PROCS(POSStructValidatorInterface, POS_STRUCT_VALIDATOR_INTERFACE_ROWS, 3)

BIB_DEFINE_METHOD_LOADER(POSValidatorVirtualInterface, POS_VALIDATOR_VIRTUAL_INTERFACE_ROWS, 1)

CPOSValidator::CPOSValidator(POSValidator* validator) : TBIBContainerBase(validator) {
    fTerm.InitVTab(this);
}

bool CPOSValidator::Validate(
    CPOSObject const& object,
    CBIBStringAtom const& key,
    POSValidatorErrorCallback errorProc) const {
    return fVTab->Validate(*this, object, key, errorProc) != 0;
}

CPOSStructValidator::CPOSStructValidator(CPOSDict const& schema)
    : CPOSValidator(GetProcs() != nullptr ? fProcs->NewPOSStructValidator(schema) : nullptr) {}

long CPOSStructValidator::RegisterExtraValidationProc(
    CBIBStringAtom const& name, POSValidatorCheckCallback check, void const* userData) {
    return fProcs->RegisterCallbackProc(*this, name, check, userData);
}

} // namespace BIB_T_NMT
