#include "bib/BIBContainer.h"

namespace BIB_T_NMT {

CBIBCPPCheck::CBIBCPPCheck() noexcept : fValue(kConstructed) {
    CBIBContainer::Close();
}

bool CBIBContainer::Init() {
    if (!fCPPCheck.HasRun()) {
        return false;
    }
    TBIBInterfaceClient<BIBContainerInterface>::CheckInterface();
    fPrimaryOffset = GetProcs<BIBContainerInterface>()->GetOffsetToPrimaryInstance();
    return true;
}

void CBIBContainer::Close() noexcept {
    TBIBInterfaceClient<BIBContainerInterface>::GetProcTable_Mutable()->Release =
        &BIBContainerNoOpRelease;
}

BIBPrimaryRecord const& CBIBContainer::PrimaryRecord(BIBContainer const* container) noexcept {
    return *reinterpret_cast<BIBPrimaryRecord const*>(
        reinterpret_cast<char const*>(container) + fPrimaryOffset);
}

char const* CBIBContainer::GetSignature(BIBContainer const* container) {
    char const* const signature =
        container != nullptr ? PrimaryRecord(container).signature : nullptr;
    if (signature == nullptr) {
        ThrowNoSignatureException();
    }
    return signature;
}

void* CBIBContainer::GetInstance(BIBContainer const* container, CBIBStringAtom const& name) {
    // Interned strings are equal if and only if their pointers are.
    if (container != nullptr && PrimaryRecord(container).instanceName == name.c_str()) {
        return PrimaryRecord(container).instance;
    }
    return BCGetInstance(container, name);
}

void* CBIBContainer::BCGetInstance(BIBContainer const* container, CBIBStringAtom const& name) {
    void* result = nullptr;
    ThrowOnFailure(GetProcs<BIBContainerInterface>()->NGetInstance(&result, container, name));
    return result;
}

void* CBIBContainer::GetMethod(
    BIBContainer const* container,
    CBIBStringAtom const& name,
    CBIBStringAtom const& procType,
    bool mustExist) {
    void* result = nullptr;
    long const optional = mustExist ? 0 : 1;
    ThrowOnFailure(
        GetProcs<BIBContainerInterface>()->GetMethod(&result, container, name, procType, optional));
    return result;
}

BIBContainer* CBIBContainer::NewFullContainer(
    void* instance,
    CBIBStringAtom const& instanceName,
    void (*deleteProc)(void*),
    CBIBStringAtom const& signature,
    BIBContainerNotifyProc containerProc,
    BIBInstanceNotifyProc instanceProc,
    void* clientData) {
    BIBContainer* result = nullptr;
    ThrowOnFailure(GetProcs<BIBContainerInterface>()->NewFullContainer(
        &result,
        instance,
        instanceName,
        deleteProc,
        signature,
        containerProc,
        instanceProc,
        clientData));
    return result;
}

void CBIBContainer::ThrowInvalidContainerException() {
    CBIBError::ThrowError("invalid container", "", 0, nullptr, nullptr);
}

void CBIBContainer::ThrowNoSignatureException() {
    CBIBError::ThrowError("couldn't get signature", "", 0, nullptr, nullptr);
}

void BIBContainerNoOpRelease(BIBContainer* /*container*/) noexcept {}

BIBContainerBaseGeneric::BIBContainerBaseGeneric(BIBContainer* container) : fContainer(container) {
    if (!CBIBContainer::AddRef(container)) {
        fContainer = nullptr;
        CBIBContainer::ThrowInvalidContainerException();
    }
}

BIBContainerBaseGeneric::BIBContainerBaseGeneric(BIBContainerBaseGeneric const& other)
    : fContainer(other.fContainer) {
    if (!CBIBContainer::AddRef(fContainer)) {
        fContainer = nullptr;
        if (other.IsValid()) {
            CBIBContainer::ThrowInvalidContainerException();
        }
    }
}

} // namespace BIB_T_NMT
