// Handles on the runtime's validators.
#pragma once

#include "api/POSValidatorInterface.h"
#include "bib/BIBContainer.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/BIBVTab.h"
#include "bib/POSCollections.h"

namespace BIB_T_NMT {

BIB_DECLARE_GLOBAL_PROCS(POSStructValidatorInterface);

class CPOSValidatorTerminate;

// Loader of the method table that every validator has: see TBIBMethodLoader.
int ConstructPOSValidatorVirtualInterfaceMethods(
    BIBContainer const* container, int mustExist, _t_POSValidatorVirtualInterface* table);

// One counted reference on a validator.
class CPOSValidator : public TBIBContainerBase<POSValidator> {
public:
    // Throws CBIBError, for null too.
    explicit CPOSValidator(POSValidator* validator);
    virtual ~CPOSValidator() = default;

    // Checks object against the entry key of the schema. errorProc gets each message, during the
    // call and on this thread. Whether the object passed.
    bool Validate(
        CPOSObject const& object,
        CBIBStringAtom const& key,
        POSValidatorErrorCallback errorProc) const;

    static TBIBVTabList<_t_POSValidatorVirtualInterface>& GetVTabList() noexcept {
        return fVTabList;
    }
    static CPOSValidatorTerminate& GetTerm() noexcept { return fTerm; }

private:
    friend CPOSValidatorTerminate;

    // Belongs to the cache.
    _t_POSValidatorVirtualInterface* fVTab = nullptr;

    static TBIBVTabList<_t_POSValidatorVirtualInterface> fVTabList;
    static CPOSValidatorTerminate fTerm;
};

// The terminator of the cache.
class CPOSValidatorTerminate : public TVTabTerminate<
                                   CPOSValidator,
                                   CPOSValidator::fVTabList,
                                   &CPOSValidator::fVTab,
                                   &ConstructPOSValidatorVirtualInterfaceMethods> {};

// A validator on a schema dictionary, to which named checks can be added.
class CPOSStructValidator : public CPOSValidator {
public:
    // Throws the CBIBError "invalid container" when the runtime refuses the schema.
    explicit CPOSStructValidator(CPOSDict const& schema);

    // Registers the check that the schema calls name. The runtime's answer is handed on.
    long RegisterExtraValidationProc(
        CBIBStringAtom const& name, POSValidatorCheckCallback check, void const* userData);

    BIB_KEEP_GLOBAL_PROCS(POSStructValidatorInterface)
};

} // namespace BIB_T_NMT
