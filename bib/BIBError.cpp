#include "bib/BIBError.h"

#include <utility>

namespace BIB_T_NMT {

CBIBError::CBIBError(BRVErrorID id) : fError(GetProcs<BIBErrorInterface>()->GetCoreError(id)) {}

CBIBError::CBIBError(
    char const* message, char const* component, long id, void* info, void (*infoFreeProc)(void*))
    : fError(GetProcs<BIBErrorInterface>()->NewError(message, component, id, info, infoFreeProc)) {}

CBIBError& CBIBError::operator=(CBIBError const& other) noexcept {
    CBIBError copy(other);
    std::swap(fError, copy.fError);
    return *this;
}

CBIBStringAtom CBIBError::GetErrorMessage() const {
    if (!IsValid()) {
        return CBIBStringAtom("Invalid CBIBError");
    }
    return CBIBStringAtom(GetProcs<BIBErrorInterface>()->GetErrorMessage(fError), /*adopt=*/false);
}

char const* CBIBError::what() const {
    // The atom is released before its string is read. A valid error keeps its message alive; any
    // other string stays readable in the runtime for a moment.
    return GetErrorMessage().c_str();
}

void CBIBError::ThrowError(
    char const* message, char const* component, long id, void* info, void (*infoFreeProc)(void*)) {
    throw CBIBError(message, component, id, info, infoFreeProc);
}

bool CBIBError::Init() {
    if (PeekProcs<BIBErrorInterface>() == nullptr) {
        // An incomplete load may have left null slots, which the destructors of the static errors
        // would call.
        Kill();
        return false;
    }
    fUnknownError = CBIBError(kBRVUnknownError);
    fMemError = CBIBError(kBRVMemoryError);
    return fUnknownError.IsValid();
}

void CBIBError::Close() {
    fUnknownError = CBIBError();
    fMemError = CBIBError();
}

void CBIBError::Kill() noexcept {
    auto* const procs = TBIBInterfaceClient<BIBErrorInterface>::GetProcTable_Mutable();
    procs->AddRef = &NoOpErrorAddRefRelease<BIBError*>;
    procs->Release = &NoOpErrorAddRefRelease<void>;
}

void BIBThrowError(BIBError* error) {
    CBIBError const adopted(error);
    throw CBIBError(adopted);
}

void BIBThrowMissingInterfaceError() {
    if (GetProcs<BIBErrorInterface>()->NewError == nullptr) {
        // The error interface is not bound yet, so no valid error can be made.
        throw CBIBError();
    }
    CBIBError::ThrowError("Missing Interface", "BIB", 0, nullptr, nullptr);
}

} // namespace BIB_T_NMT
