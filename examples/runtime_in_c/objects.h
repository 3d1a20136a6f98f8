// Objects: one structure is behind all containers, and behind shared buffers and errors.

typedef enum Kind { kOther, kNumber, kString, kUnicode, kBinary, kArray, kDict, kGrowing } Kind;
typedef void (*DeleteProc)(void*);

struct Object {
    _Alignas(max_align_t) long count;
    BIBPrimaryRecord primary;
    List instances; // by name, with the procedures that delete them
    Kind kind;
    Atom* signature;       // of an error its component
    Atom* name;            // the type of binary data, a cursor's key, or the message of an error
    void* data;            // behind the object, or a client's
    Size size;             // of the data
    DeleteProc deleteProc; // of the data; may be null
    Size number;           // of a cursor's key; a position; an id; of checks that are missing
    List parts;            // what it references: elements, entries, the dictionary of a cursor
    BIBClientStreamProcs procs;
    Object* next; // in a chain of objects without references
};

ROW(void Call(DeleteProc proc, void* data), proc != NULL ? proc(data) : (void)0)
// Removes a reference. Nonzero if it was the last one.
ROW(int Decrement(Object* self), self != NULL && self->count > 0 && --self->count == 0)

// Gives 1. What only the object references joins a chain and is destroyed after it, so that depth
// needs no stack.
static int Destroy(Object* self) {
    for (Object* next; self != NULL; self = next) {
        // A deleteProc may take a reference and release it: that is not the last release once more.
        self->count = 1;
        for (Size i = 0; i < self->instances.count; ++i) {
            Call((DeleteProc)self->instances.items[i].more, self->instances.items[i].value);
        }
        Call(self->deleteProc, self->data);
        next = self->next;
        for (Size i = 0; i < self->parts.count; ++i) {
            Object* const part = self->parts.items[i].value;
            if (Decrement(part)) {
                part->count = 1;
                part->next = next;
                next = part;
            }
        }
        Clear(&self->instances);
        Clear(&self->parts);
        AtomDeleteStringAtom(self->signature);
        AtomDeleteStringAtom(self->name);
        free(self);
    }
    return 1;
}

ROW(Atom* NameOf(Object* self), self != NULL ? self->name : NULL)
ROW(long ContainerAddRef(Object* self), self != NULL ? ++self->count : 0)
ROW(long ContainerDeleteUnownedContainer(Object* self), self && !self->count && Destroy(self))
ROW(void ContainerDecrementWithoutDelete(Object* self), (void)Decrement(self))
ROW(void ContainerRelease(Object* self), (void)(Decrement(self) && Destroy(self)))

// Destroys a new object that nothing references after all, and gives null.
ROW(void* Discard(Object* self), (ContainerDeleteUnownedContainer(self), NULL))

// An object that nothing references, with size bytes behind it and two more, which are all zero;
// null if memory runs out. The texts may be null.
static Object* NewObject(Kind kind, Text signature, Text name, Size size) {
    Object* const self = size < PTRDIFF_MAX / 2 ? calloc(1, sizeof *self + size + 2) : NULL;
    if (!self || !StoreAtom(&self->signature, signature) || !StoreAtom(&self->name, name)) {
        return Discard(self);
    }
    self->kind = kind;
    self->data = self + 1;
    self->size = size;
    self->primary.signature = AtomGetCString(self->signature);
    return self;
}

static Object* BufferNewBuffer(
    Size size, void* block, DeleteProc proc, BIBSharedBuffPurgeProc purge, void* client) {
    Object* const self = NewObject(kOther, NULL, NULL, block != NULL ? 0 : size);
    if (self != NULL) {
        self->count = 1; // for the caller, as below
        self->size = size;
        self->data = block != NULL ? block : self->data;
        self->deleteProc = block != NULL ? proc : NULL;
    }
    return self;
}

ROW(void BufferAddRef(Object* self), (void)ContainerAddRef(self))
ROW(void BufferRelease(Object* self), ContainerRelease(self))
ROW(int BufferDeleteUnowned(Object* self), self != NULL && self->count == 1 && Destroy(self))
ROW(void* BufferGetBuffer(Object* self), self != NULL ? self->data : NULL)
ROW(Size BufferGetSize(Object* self), self != NULL ? self->size : 0)

static Object* ErrorNewError(Text message, Text component, long id, void* info, DeleteProc proc) {
    Object* const self = NewObject(kOther, component, message, 0);
    if (self != NULL) {
        self->count = 1;
        self->number = (Size)id;
        self->data = info;
        self->deleteProc = proc;
    }
    return self;
}

static Object* gCoreErrors[2]; // made before they are needed
ROW(Object* ErrorAddRef(Object* self), ContainerAddRef(self) != 0 ? self : NULL)
ROW(void ErrorRelease(Object* self), ContainerRelease(self))
ROW(Object* ErrorGetCoreError(BRVErrorID id), (Size)id < 2 ? ErrorAddRef(gCoreErrors[id]) : NULL)
ROW(Atom* ErrorGetErrorMessage(Object* self), NameOf(self))
ROW(Atom* ErrorGetComponent(Object* self), self->signature)
ROW(long ErrorGetID(Object* self), (long)self->number)
ROW(void* ErrorGetErrorInfo(Object* self), self->data)

ROW(Object* FailUnless(int isDone), isDone ? NULL : ErrorGetCoreError(kBRVMemoryError))
// Never null, which would mean success.
ROW(Object* Fail(Text text), ErrorNewError(text, "runtime_in_c", 100, NULL, NULL) ?: FailUnless(0))
// Fails without a result, or for a lack of memory where there is none.
ROW(Object* Refuse(Object** result, Text message), (*result = NULL, Fail(message)))
ROW(Object* Give(Object** result, Object* made), FailUnless((*result = made) != NULL))
