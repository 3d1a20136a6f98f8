// Handles to the runtime's validators.
#pragma once

#include "api/POSValidatorInterface.h"
#include "bib/BIBContainer.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/BIBVTab.h"
#include "bib/POSCollections.h"

namespace BIB_T_NMT {

BIB_DECLARE_GLOBAL_PROCS(POSStructValidatorInterface);

class CPOSValidatorTerminate;

// Loads the method table that every validator has: see TBIBMethodLoader.
int ConstructPOSValidatorVirtualInterfaceMethods(
    BIBContainer const* container, int mustExist, _t_POSValidatorVirtualInterface* table);

// Owns one reference to a validator.
class CPOSValidator : public TBIBContainerBase<POSValidator> {
public:
    // Throws CBIBError, also for null.
    explicit CPOSValidator(POSValidator* validator);
    virtual ~CPOSValidator() = default;

    // Validates object against the entry key of the schema. errorProc receives each message during
    // the call, on this thread. Returns whether the object is valid.
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

    // Owned by the cache.
    _t_POSValidatorVirtualInterface* fVTab = nullptr;

    static TBIBVTabList<_t_POSValidatorVirtualInterface> fVTabList;
    static CPOSValidatorTerminate fTerm;
};

// The terminator of the method-table cache.
class CPOSValidatorTerminate : public TVTabTerminate<
                                   CPOSValidator,
                                   CPOSValidator::fVTabList,
                                   &CPOSValidator::fVTab,
                                   &ConstructPOSValidatorVirtualInterfaceMethods> {};

// A validator for a schema dictionary, to which named checks can be added.
class CPOSStructValidator : public CPOSValidator {
public:
    // Throws the CBIBError "invalid container" if the runtime rejects the schema.
    explicit CPOSStructValidator(CPOSDict const& schema);

    // Registers the check that the schema refers to by name. Returns the runtime's result.
    long RegisterExtraValidationProc(
        CBIBStringAtom const& name, POSValidatorCheckCallback check, void const* userData);

    BIB_KEEP_GLOBAL_PROCS(POSStructValidatorInterface)
};

} // namespace BIB_T_NMT
