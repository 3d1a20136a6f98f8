// Containers: a count, a signature, and instances by name, the first of which is the primary one.

struct BIBContainer {
    long count;
    BIBPrimaryRecord primary;
    BIBStringAtom* signature;
    List instances; // with their delete procedures
};

static void* InstanceOf(void const* container) {
    return ((BIBContainer const*)container)->primary.instance;
}

static BIBError* ContainerRegisterInstance(
    BIBContainer* container, void* instance, BIBStringAtom* name, void (*deleteProc)(void*)) {
    if (ListFind(&container->instances, name) != NULL) {
        return Fail("the container has an instance with that name");
    }
    if (!ListAdd(&container->instances, name, instance, (void*)deleteProc)) {
        return FailOfMemory();
    }
    if (container->instances.count == 1) {
        container->primary.instanceName = AtomGetCString(name);
        container->primary.instance = instance;
    }
    return NULL;
}

static void Destroy(BIBContainer* container) {
    // A deleteProc may take a reference and release it: that is not the last release once more.
    container->count = 1;
    while (container->instances.count > 0) {
        Item const first = container->instances.items[0];
        if (first.more != NULL) {
            ((void (*)(void*))first.more)(first.value);
        }
        ListRemove(&container->instances, &container->instances.items[0]);
    }
    free(container->instances.items);
    AtomDeleteStringAtom(container->signature);
    free(container);
}

static BIBError* ContainerNewFullContainer(
    BIBContainer** result,
    void* instance,
    BIBStringAtom* instanceName,
    void (*deleteProc)(void*),
    BIBStringAtom* signature,
    BIBContainerNotifyProc containerProc,
    BIBInstanceNotifyProc instanceProc,
    void* clientData) {
    (void)containerProc;
    (void)instanceProc;
    (void)clientData;
    *result = NULL;
    BIBContainer* const container = calloc(1, sizeof *container);
    if (container == NULL) {
        return FailOfMemory();
    }
    AtomAddRef(signature);
    container->signature = signature;
    container->primary.signature = AtomGetCString(signature);
    BIBError* const error =
        instance != NULL ? ContainerRegisterInstance(container, instance, instanceName, deleteProc)
                         : NULL;
    if (error != NULL) {
        Destroy(container);
        return error;
    }
    *result = container;
    return NULL;
}

static BIBError* ContainerNewContainer(BIBContainer** result, BIBStringAtom* signature) {
    return ContainerNewFullContainer(result, NULL, NULL, NULL, signature, NULL, NULL, NULL);
}

// An unowned container around an instance of this runtime. If memory runs out, or instance is null,
// null, and the instance is destroyed.
static void* Contain(void* instance, char const* signature, void (*deleteProc)(void*)) {
    BIBStringAtom* const name = AtomNewStringAtom(signature);
    BIBContainer* container = NULL;
    if (instance != NULL && name != NULL) {
        ErrorRelease(ContainerNewFullContainer(
            &container, instance, name, deleteProc, name, NULL, NULL, NULL));
    }
    if (instance != NULL && container == NULL) {
        deleteProc(instance);
    }
    AtomDeleteStringAtom(name);
    return container;
}

ROW(long, ContainerAddRef, BIBContainer*, self != NULL ? ++self->count : 0)

static void ContainerDecrementWithoutDelete(BIBContainer* container) {
    if (container != NULL && container->count > 0) {
        --container->count;
    }
}

static long ContainerDeleteUnownedContainer(BIBContainer* container) {
    if (container == NULL || container->count > 0) {
        return 0;
    }
    Destroy(container);
    return 1;
}

static void ContainerRelease(BIBContainer* container) {
    if (container != NULL && container->count > 0 && --container->count == 0) {
        Destroy(container);
    }
}

static BIBStringAtom* ParentOf(BIBStringAtom* signature) {
    Item const* const parent = ListFind(&gParents, signature);
    return parent != NULL ? parent->value : NULL;
}

static BIBError*
ContainerRegisterInterface(BIBStringAtom* signature, BIBStringAtom* parentSignature) {
    BIBStringAtom* const former = ParentOf(signature);
    if (former != NULL) {
        return former == parentSignature ? NULL : Fail("the signature has another parent");
    }
    for (BIBStringAtom* parent = parentSignature; parent != NULL; parent = ParentOf(parent)) {
        if (parent == signature) {
            return Fail("a signature cannot be its own parent");
        }
    }
    if (!ListAdd(&gParents, signature, parentSignature, NULL)) {
        return FailOfMemory();
    }
    AtomAddRef(parentSignature);
    return NULL;
}

static BIBError*
FindMethod(void** result, BIBStringAtom* signature, char const* name, char const* type) {
    *result = NULL;
    for (; signature != NULL && *result == NULL; signature = ParentOf(signature)) {
        *result = BIBRuntimeLookup(AtomGetCString(signature), name, type);
    }
    return *result != NULL ? NULL : Fail("the container has no such method");
}

static BIBError* Optional(long optional, BIBError* error) {
    ErrorRelease(optional ? error : NULL);
    return optional ? NULL : error;
}

static BIBError* ContainerGetMethod(
    void** result,
    BIBContainer const* container,
    BIBStringAtom* name,
    BIBStringAtom* procType,
    long optional) {
    BIBStringAtom* const signature = container->signature;
    return Optional(optional, FindMethod(result, signature, name->text, procType->text));
}

static BIBError* ContainerGetParentMethod(
    void** result,
    BIBContainer const* container,
    BIBStringAtom* name,
    BIBStringAtom* procType,
    long optional) {
    BIBStringAtom* const parent = ParentOf(container->signature);
    return Optional(optional, FindMethod(result, parent, name->text, procType->text));
}

static BIBError* ContainerCloneContainer(BIBContainer** result, BIBContainer const* source) {
    void* method = NULL;
    *result = NULL;
    BIBError* const error = FindMethod(&method, source->signature, "Clone", "POSObjectCloneProc");
    if (error != NULL) {
        return error;
    }
    *result = (BIBContainer*)((POSObjectCloneProc)method)((POSObject*)source);
    return *result != NULL ? NULL : FailOfMemory();
}

static BIBError*
ContainerNGetInstance(void** result, BIBContainer const* container, BIBStringAtom* name) {
    Item const* const item = ListFind(&container->instances, name);
    *result = item != NULL ? item->value : NULL;
    return item != NULL ? NULL : Fail("the container has no instance with that name");
}

static void* ContainerGetInstance(BIBContainer const* container, BIBStringAtom* name) {
    Item const* const item = ListFind(&container->instances, name);
    return item != NULL ? item->value : NULL;
}

static long ContainerGetOffsetToPrimaryInstance(void) {
    return offsetof(BIBContainer, primary);
}

ROW(BIBStringAtom*, ContainerGetSignature, BIBContainer const*, self->signature)
ROW(long const*, ContainerDebugGetRefCountAddr, BIBContainer const*, &self->count)
