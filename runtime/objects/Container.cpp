#include "runtime/objects/Container.h"

#include "runtime/objects/Counting.h"

namespace bibrt {

constinit ContainerType gHostContainerType = {
    .fInstanceName = nullptr,
    .fSignature = nullptr,
    .fParent = nullptr,
    .fDestroy = &DestroyAs<BIBContainer>};

namespace {

constinit Counter gLiveContainers;

// The containers that this thread has still to destroy, and whether it is at it.
struct Doomed {
    BIBContainer* fFirst = nullptr;
    bool fIsRunning = false;
};

constinit thread_local Doomed gDoomed;

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
    std::atomic_ref(container->fRefs).fetch_add(1, std::memory_order_relaxed);
    return true;
}

void ReleaseContainer(BIBContainer* container) noexcept {
    if (container && TakeOne(std::atomic_ref(container->fRefs)) == 1) {
        Destroy(container);
    }
}

void DropContainerRef(BIBContainer* container) noexcept {
    if (container) {
        TakeOne(std::atomic_ref(container->fRefs));
    }
}

bool DeleteUnownedContainer(BIBContainer* container) noexcept {
    if (!container || std::atomic_ref(container->fRefs).load(std::memory_order_acquire) > 0) {
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
    while (entry && entry->fName.Get() != name) {
        entry = entry->fNext;
    }
    if (entry) {
        result = entry->fInstance;
    }
    return entry != nullptr;
}

unsigned long CountLiveContainers() noexcept {
    return gLiveContainers.Get();
}

} // namespace bibrt

BIBContainer::BIBContainer(bibrt::ContainerType const& type) noexcept
    : fPrimary{type.fInstanceName, type.fSignature, type.fInstanceName ? this : nullptr},
      fType(&type) {
    bibrt::gLiveContainers.Up();
}

BIBContainer::~BIBContainer() {
    while (bibrt::ContainerInstance* const entry = fInstances) {
        fInstances = entry->fNext;
        bibrt::CallDeleteProc(entry->fDeleteProc, entry->fInstance);
        bibrt::DeleteObject(entry);
    }
    // The texts of a type are there forever.
    if (fPrimary.instanceName != fType->fInstanceName) {
        bibrt::ReleaseAtom(bibrt::AtomOfText(fPrimary.instanceName));
    }
    if (fPrimary.signature != fType->fSignature) {
        bibrt::ReleaseAtom(bibrt::AtomOfText(fPrimary.signature));
    }
    bibrt::gLiveContainers.Down();
}
