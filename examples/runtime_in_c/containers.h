// Containers: instances by name, and methods, which are registered under the signature.

static Object* ContainerRegisterInstance(Object* self, void* data, Atom* name, DeleteProc proc) {
    if (Find(&self->instances, AtomGetCString(name)) != NULL) {
        return Fail("the container has an instance with that name");
    }
    int const isAdded = Add(&self->instances, AtomGetCString(name), data, (void*)proc);
    if (isAdded && self->instances.count == 1) {
        self->primary.instanceName = AtomGetCString(name);
        self->primary.instance = data;
    }
    return FailUnless(isAdded);
}

ROW(Object* ContainerNewContainer(Object** result, Atom* signature),
    Give(result, NewObject(kOther, AtomGetCString(signature), NULL, 0)))

static Object* ContainerNewFullContainer(
    Object** result,
    void* instance,
    Atom* name,
    DeleteProc deleteProc,
    Atom* signature,
    BIBContainerNotifyProc containerProc,
    BIBInstanceNotifyProc instanceProc,
    void* client) {
    Object* error = ContainerNewContainer(result, signature);
    if (error == NULL && instance != NULL) {
        error = ContainerRegisterInstance(*result, instance, name, deleteProc);
    }
    *result = error == NULL ? *result : Discard(*result);
    return error;
}

ROW(Atom* ParentOf(Atom* signature), NameOf(FindPart(&gInterfaces, AtomGetCString(signature))))

static Object* ContainerRegisterInterface(Atom* signature, Atom* parent) {
    Object* const interface = ObjectOf(AtomGetCString(signature));
    Atom* above = parent;
    while (above != NULL && above != signature) {
        above = ParentOf(above);
    }
    if (above != NULL || (ParentOf(signature) != NULL && ParentOf(signature) != parent)) {
        return Fail("the signature has another parent, or would be its own");
    }
    if (interface != NULL && interface->name == NULL) {
        AtomAddRef(parent);
        interface->name = parent;
    }
    return FailUnless(interface != NULL);
}

static Object* FindMethod(void** result, Atom* signature, Text name, Text type, long optional) {
    for (*result = NULL; signature != NULL && *result == NULL; signature = ParentOf(signature)) {
        *result = BIBRuntimeLookup(signature->text, name, type);
    }
    return *result != NULL || optional ? NULL : Fail("the container has no such method");
}

ROW(Object* ContainerGetMethod(
        void** result, Object const* self, Atom* name, Atom* type, long optional),
    FindMethod(result, self->signature, name->text, type->text, optional))
ROW(Object* ContainerGetParentMethod(
        void** result, Object const* self, Atom* name, Atom* type, long optional),
    FindMethod(result, ParentOf(self->signature), name->text, type->text, optional))

static Object* ContainerCloneContainer(Object** result, Object const* source) {
    void* method = NULL;
    Object* const error = FindMethod(&method, source->signature, "Clone", "POSObjectCloneProc", 0);
    *result = error == NULL ? ((POSObjectCloneProc)method)((Object*)source) : NULL;
    return error != NULL ? error : FailUnless(*result != NULL);
}

ROW(void* ContainerGetInstance(Object const* self, Atom* name),
    ValueOf(Find(&self->instances, AtomGetCString(name))))
ROW(Object* ContainerNGetInstance(void** result, Object const* self, Atom* name),
    (*result = ContainerGetInstance(self, name)) ? NULL
                                                 : Fail("the container has no such instance"))
ROW(long ContainerGetOffsetToPrimaryInstance(void), offsetof(Object, primary))
ROW(Atom* ContainerGetSignature(Object const* self), self->signature)
ROW(long const* ContainerDebugGetRefCountAddr(Object const* self), &self->count)
ROW(int Inherit(Text level, Text lower),
    ContainerRegisterInterface(AtomNewStringAtom(level), AtomNewStringAtom(lower)) == NULL)
