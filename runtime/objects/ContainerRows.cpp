#include "api/BIBContainerInterface.h"

#include "api/POSObjectInterface.h"
#include "runtime/objects/Boundary.h"
#include "runtime/objects/Container.h"
#include "runtime/objects/Methods.h"
#include "runtime/objects/Registry.h"
#include "runtime/objects/Tables.h"
#include "runtime/values/PosObject.h"

namespace bibrt {

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
    if (!result) {
        return BadArgument();
    }
    *result = nullptr;
    if (!instanceName) {
        return Failure("an instance needs a name");
    }
    return AtStatusRow([&]() -> BIBError* {
        Unowned<BIBContainer> container = MakeHostContainer(signature);
        AddInstance(*container, instance, instanceName, deleteProc);
        *result = container.release();
        return nullptr;
    });
}

BIBError* NewContainer(BIBContainer** result, BIBStringAtom* signature) {
    if (!result) {
        return BadArgument();
    }
    *result = nullptr;
    return AtStatusRow([&]() -> BIBError* {
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

// Looks a method up in one of the two ways of the registry.
template <class Find>
BIBError* GetMethodBy(
    Find find,
    void** result,
    BIBContainer const* container,
    BIBStringAtom const* name,
    BIBStringAtom const* procType,
    long optional) {
    if (!result) {
        return BadArgument();
    }
    *result = nullptr;
    if (!container || !name || !procType) {
        return BadArgument();
    }
    if (char const* const signature = container->fPrimary.signature) {
        *result = find(ProcName{signature, TextOf(name), TextOf(procType)});
    }
    return *result || optional ? nullptr : Failure("no such method");
}

BIBError* GetMethod(
    void** result,
    BIBContainer const* container,
    BIBStringAtom* name,
    BIBStringAtom* procType,
    long optional) {
    auto const find = [](ProcName const& method) { return Registry::The().FindMethod(method); };
    return GetMethodBy(find, result, container, name, procType, optional);
}

BIBError* GetParentMethod(
    void** result,
    BIBContainer const* container,
    BIBStringAtom* name,
    BIBStringAtom* procType,
    long optional) {
    auto const find = [](ProcName const& method) {
        return Registry::The().FindParentMethod(method);
    };
    return GetMethodBy(find, result, container, name, procType, optional);
}

void* GetInstance(BIBContainer const* container, BIBStringAtom* name) {
    void* instance = nullptr;
    if (container && name) {
        FindInstance(*container, name, instance);
    }
    return instance;
}

BIBError* NGetInstance(void** result, BIBContainer const* container, BIBStringAtom* name) {
    if (!result) {
        return BadArgument();
    }
    *result = nullptr;
    if (!container || !name) {
        return BadArgument();
    }
    return FindInstance(*container, name, *result) ? nullptr : Failure("no such instance");
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

BIBRT_DEFINE_TABLE(
    ContainerTable,
    "BIBContainerInterface",
    _t_BIBContainerInterface,
    BIB_CONTAINER_INTERFACE_ROWS,
    16)

} // namespace bibrt
