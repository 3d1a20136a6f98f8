#include "runtime/objects/Errors.h"

#include "runtime/objects/Container.h"
#include "runtime/objects/Memory.h"
#include "runtime/objects/Tables.h"

namespace bibrt {

namespace {

constexpr char const* kComponent = "BIB";

// Set at the start of the runtime, before any row can be called, and never freed.
BIBError* gUnknownError = nullptr;
BIBError* gMemoryError = nullptr;

void MakeCoreError(BIBError*& slot, char const* message, BRVErrorID id) {
    if (slot) {
        return;
    }
    BIBStringAtom* const text = AtomOfText(InternForever(message));
    BIBStringAtom* const component = AtomOfText(InternForever(kComponent));
    slot = new BIBError(AtomRef(text), AtomRef(component), id);
    slot->MakeImmortal();
}

BIBError* MakeError(char const* message, char const* component, long id) {
    AtomRef messageAtom(InternText(message ? message : ""));
    AtomRef componentAtom(InternText(component ? component : ""));
    return NewObject<BIBError>(std::move(messageAtom), std::move(componentAtom), id);
}

// The rows of the table.

BIBError* NewError(
    char const* message, char const* component, long id, void* info, void (*infoFreeProc)(void*)) {
    BIBError* const error =
        AtRow<BIBError*>(nullptr, [&] { return MakeError(message, component, id); });
    if (error) {
        error->fInfo = info;
        error->fInfoFreeProc = infoFreeProc;
    }
    return error;
}

BIBError* GetCoreError(BRVErrorID id) {
    switch (id) {
    case kBRVUnknownError:
        return gUnknownError;
    case kBRVMemoryError:
        return gMemoryError;
    default:
        return nullptr;
    }
}

BIBError* AddRef(BIBError* error) {
    if (error && !error->fIsImmortal) {
        ++error->fRefs;
    }
    return error;
}

void Release(BIBError* error) {
    ReleaseError(error);
}

BIBStringAtom* GetErrorMessage(BIBError* error) {
    return error ? error->fMessage.Get() : nullptr;
}

BIBStringAtom* GetComponent(BIBError* error) {
    return error ? error->fComponent.Get() : nullptr;
}

long GetID(BIBError* error) {
    return error ? error->fID : 0;
}

void* GetErrorInfo(BIBError* error) {
    return error ? error->fInfo : nullptr;
}

} // namespace

BIBError* Failure(char const* message) noexcept {
    return AtRow<BIBError*>(gMemoryError, [&] { return MakeError(message, kComponent, 0); });
}

BIBError* MemoryError() noexcept {
    return gMemoryError;
}

BIBError* BadArgument() noexcept {
    return Failure("bad argument");
}

void ReleaseError(BIBError* error) noexcept {
    if (error && !error->fIsImmortal && --error->fRefs == 0) {
        DeleteObject(error);
    }
}

void StartErrors() {
    MakeCoreError(gUnknownError, "unknown error", kBRVUnknownError);
    MakeCoreError(gMemoryError, "out of memory", kBRVMemoryError);
}

BIBRT_DEFINE_TABLE(BIBErrorInterface, BIB_ERROR_INTERFACE_ROWS, 8)

} // namespace bibrt

BIBError::~BIBError() {
    bibrt::CallDeleteProc(fInfoFreeProc, fInfo);
}
