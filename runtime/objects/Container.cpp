#include "runtime/objects/Container.h"

#include "api/BIBContainerInterface.h"
#include "api/POSObjectInterface.h"
#include "runtime/objects/Errors.h"
#include "runtime/objects/Registry.h"
#include "runtime/objects/Tables.h"
#include "runtime/values/PosObject.h"

BIBContainer::BIBContainer(bibrt::ContainerType const& type) noexcept
    : fPrimary{type.fInstanceName, type.fSignature, type.fInstanceName ? this : nullptr},
      fType(&type) {}

BIBContainer::~BIBContainer() {
    while (bibrt::ContainerInstance* const entry = fInstances) {
        fInstances = entry->fNext;
        bibrt::CallDeleteProc(entry->fDeleteProc, entry->fInstance);
        bibrt::DeleteObject(entry);
    }
    // The names of a type are immortal atoms.
    if (fPrimary.instanceName != fType->fInstanceName) {
        bibrt::ReleaseAtom(bibrt::AtomOfText(fPrimary.instanceName));
    }
    if (fPrimary.signature != fType->fSignature) {
        bibrt::ReleaseAtom(bibrt::AtomOfText(fPrimary.signature));
    }
}

namespace bibrt {

constinit ContainerType gHostContainerType = {
    .fInstanceName = nullptr,
    .fSignature = nullptr,
    .fParent = nullptr,
    .fDestroy = &DestroyAs<BIBContainer>};

namespace {

// Iterative destruction. A container that loses its last reference goes into a list of its thread,
// linked through fNextDoomed, which needs no memory. The first call of Destroy on the thread takes
// containers from the list and destroys them one by one. Destroying a collection releases its
// children; a child that loses its last reference only joins the list, because Destroy is running
// already, and returns at once. So the stack does not grow with the nesting. Scalars reference no
// container and are destroyed immediately. A delete procedure of a client may rely on the effects
// of a release that it makes; CallDeleteProc therefore gives it an empty list of its own, which is
// processed before that release returns.
struct Doomed {
    BIBContainer* fFirst = nullptr;
    bool fIsRunning = false;
};

constinit thread_local Doomed gDoomed;

// Removes one reference if there is any. Returns the count before.
long TakeOne(BIBContainer& container) noexcept {
    std::atomic_ref const refs(container.fRefs);
    long before = refs;
    while (before > 0 && !refs.compare_exchange_weak(before, before - 1)) {
    }
    return before;
}

void Destroy(BIBContainer* container) noexcept {
    if (container->fType->fIsScalar) {
        container->fType->fDestroy(container);
        return;
    }
    Doomed& doomed = gDoomed;
    container->fNextDoomed = std::exchange(doomed.fFirst, container);
    if (doomed.fIsRunning) {
        return;
    }
    doomed.fIsRunning = true;
    while (doomed.fFirst) {
        BIBContainer* const next = doomed.fFirst;
        doomed.fFirst = next->fNextDoomed;
        next->fType->fDestroy(next);
    }
    doomed.fIsRunning = false;
}

} // namespace

void CallDeleteProc(void (*proc)(void*), void* data) noexcept {
    if (!proc) {
        return;
    }
    Doomed const waiting = std::exchange(gDoomed, {});
    try {
        proc(data);
    } catch (...) { // NOLINT(bugprone-empty-catch)
    }
    gDoomed = waiting;
}

bool AddContainerRef(BIBContainer* container) noexcept {
    if (!container || container->fIsInvalid) {
        return false;
    }
    ++std::atomic_ref(container->fRefs);
    return true;
}

void ReleaseContainer(BIBContainer* container) noexcept {
    if (container && TakeOne(*container) == 1) {
        Destroy(container);
    }
}

void DropContainerRef(BIBContainer* container) noexcept {
    if (container) {
        TakeOne(*container);
    }
}

bool DeleteUnownedContainer(BIBContainer* container) noexcept {
    if (!container || std::atomic_ref(container->fRefs) > 0) {
        return false;
    }
    Destroy(container);
    return true;
}

void AddInstance(
    BIBContainer& container, void* instance, BIBStringAtom* name, void (*deleteProc)(void*)) {
    container.fInstances =
        NewObject<ContainerInstance>(container.fInstances, instance, name, deleteProc);
    if (!container.fPrimary.instanceName) {
        AddAtomRef(name);
        container.fPrimary.instanceName = TextOf(name);
        container.fPrimary.instance = instance;
    }
}

bool FindInstance(
    BIBContainer const& container, BIBStringAtom const* name, void*& result) noexcept {
    if (container.fPrimary.instanceName && container.fPrimary.instanceName == TextOf(name)) {
        result = container.fPrimary.instance;
        return true;
    }
    ContainerInstance const* entry = container.fInstances;
    while (entry && entry->fName != name) {
        entry = entry->fNext;
    }
    if (entry) {
        result = entry->fInstance;
    }
    return entry != nullptr;
}

void* FindContainerMethod(
    BIBContainer const& container, char const* name, char const* procType) noexcept {
    char const* const signature = container.fPrimary.signature;
    return signature ? Registry::The().FindMethod({signature, name, procType}) : nullptr;
}

namespace {

Unowned<BIBContainer> MakeHostContainer(BIBStringAtom* signature) {
    Unowned<BIBContainer> container(NewObject<BIBContainer>(gHostContainerType));
    AddAtomRef(signature);
    container->fPrimary.signature = TextOf(signature);
    return container;
}

BIBError* NewFullContainer(
    BIBContainer** result,
    void* instance,
    BIBStringAtom* instanceName,
    void (*deleteProc)(void*),
    BIBStringAtom* signature,
    BIBContainerNotifyProc /*containerProc*/,
    BIBInstanceNotifyProc /*instanceProc*/,
    void* /*clientData*/) {
    return AtResultRow(result, /*areArgumentsGood=*/true, [&]() -> BIBError* {
        if (!instanceName) {
            return Failure("an instance needs a name");
        }
        Unowned<BIBContainer> container = MakeHostContainer(signature);
        AddInstance(*container, instance, instanceName, deleteProc);
        *result = container.release();
        return nullptr;
    });
}

BIBError* NewContainer(BIBContainer** result, BIBStringAtom* signature) {
    return AtResultRow(result, /*areArgumentsGood=*/true, [&]() -> BIBError* {
        *result = MakeHostContainer(signature).release();
        return nullptr;
    });
}

BIBError* CloneContainer(BIBContainer** result, BIBContainer const* source) {
    if (!result) {
        return BadArgument();
    }
    *result = nullptr;
    if (!source) {
        return BadArgument();
    }
    auto const clone = FindTypedMethod<POSObjectCloneProc>(*source, "Clone", "POSObjectCloneProc");
    if (!clone) {
        return Failure("no such method");
    }
    *result = clone(static_cast<POSObject*>(const_cast<BIBContainer*>(source)));
    return *result ? nullptr : Failure("the container could not be cloned");
}

long AddRef(BIBContainer* container) {
    return AddContainerRef(container) ? 1 : 0;
}

void Release(BIBContainer* container) {
    ReleaseContainer(container);
}

void DecrementWithoutDelete(BIBContainer* container) {
    DropContainerRef(container);
}

long DeleteUnownedContainer(BIBContainer* container) {
    return bibrt::DeleteUnownedContainer(container) ? 1 : 0;
}

BIBError* RegisterInterface(BIBStringAtom* signature, BIBStringAtom* parentSignature) {
    if (!signature || !parentSignature) {
        return BadArgument();
    }
    return AtStatusRow([&]() -> BIBError* {
        switch (Registry::The().SetParent(TextOf(signature), TextOf(parentSignature))) {
        case Registry::ParentResult::kCircle:
            return Failure("the parents of the signature would form a circle");
        case Registry::ParentResult::kHasOther:
            return Failure("the signature has another parent");
        default:
            return nullptr;
        }
    });
}

BIBError* RegisterInstance(
    BIBContainer* container, void* instance, BIBStringAtom* name, void (*deleteProc)(void*)) {
    if (!container || !name) {
        return BadArgument();
    }
    void* present = nullptr;
    if (FindInstance(*container, name, present)) {
        return Failure("the instance name is in use");
    }
    return AtStatusRow([&]() -> BIBError* {
        AddInstance(*container, instance, name, deleteProc);
        return nullptr;
    });
}

// Finds a method by one of the two searches of the registry.
BIBError* GetMethodBy(
    void* (Registry::*find)(ProcName const&) const noexcept,
    void** result,
    BIBContainer const* container,
    BIBStringAtom const* name,
    BIBStringAtom const* procType,
    long optional) {
    return AtResultRow(result, container && name && procType, [&] {
        if (char const* const signature = container->fPrimary.signature) {
            *result = (Registry::The().*find)({signature, TextOf(name), TextOf(procType)});
        }
        return *result || optional ? nullptr : Failure("no such method");
    });
}

BIBError* GetMethod(
    void** result,
    BIBContainer const* container,
    BIBStringAtom* name,
    BIBStringAtom* procType,
    long optional) {
    return GetMethodBy(&Registry::FindMethod, result, container, name, procType, optional);
}

BIBError* GetParentMethod(
    void** result,
    BIBContainer const* container,
    BIBStringAtom* name,
    BIBStringAtom* procType,
    long optional) {
    return GetMethodBy(&Registry::FindParentMethod, result, container, name, procType, optional);
}

void* GetInstance(BIBContainer const* container, BIBStringAtom* name) {
    void* instance = nullptr;
    if (container && name) {
        FindInstance(*container, name, instance);
    }
    return instance;
}

BIBError* NGetInstance(void** result, BIBContainer const* container, BIBStringAtom* name) {
    return AtResultRow(result, container && name, [&] {
        return FindInstance(*container, name, *result) ? nullptr : Failure("no such instance");
    });
}

BIBStringAtom* GetSignature(BIBContainer const* container) {
    return container ? AtomOfText(container->fPrimary.signature) : nullptr;
}

long const* DebugGetRefCountAddr(BIBContainer const* container) {
    return container ? &container->fRefs : nullptr;
}

long GetOffsetToPrimaryInstance() {
    return offsetof(BIBContainer, fPrimary);
}

} // namespace

BIBRT_DEFINE_TABLE(BIBContainerInterface, BIB_CONTAINER_INTERFACE_ROWS, 16)

} // namespace bibrt
