// The lookup: each interface is an object with procedures and, as its name, the parent interface.

static Object gInterfaces;        // its parts, under their names
static Size gUnregisterCount = 1; // always odd, so never zero

// The key of a procedure, with a length in front. Null for a null name, and if memory runs out.
static char* JoinNames(Text name, Text type) {
    char* key = NULL;
    int const areNames = name != NULL && type != NULL;
    return areNames && asprintf(&key, "%zu %s%s", strlen(name), name, type) >= 0 ? key : NULL;
}

void* BIBRuntimeLookup(Text interface, Text name, Text type) {
    Object* const object = FindPart(&gInterfaces, interface);
    char* const key = object != NULL ? JoinNames(name, type) : NULL;
    void* const proc = key != NULL ? ValueOf(Find(&object->instances, key)) : NULL;
    free(key);
    return proc;
}

// The object of an interface, which is made if it is missing; null if memory runs out.
static Object* ObjectOf(Text interface) {
    if (interface != NULL && FindPart(&gInterfaces, interface) == NULL) {
        PutNew(&gInterfaces, interface, NewObject(kOther, NULL, NULL, 0));
    }
    return FindPart(&gInterfaces, interface);
}

static int BIBRegisterProcAddress(Text interface, Text name, Text type, void* proc) {
    Object* const object = ObjectOf(interface);
    char* const key = object != NULL ? JoinNames(name, type) : NULL;
    int const isFree = key != NULL && Find(&object->instances, key) == NULL;
    int const isAdded = isFree && Add(&object->instances, key, proc, NULL);
    free(key);
    return isAdded;
}

static int BIBUnregisterInterface(Text interface) {
    gUnregisterCount += 2;
    return Replace(&gInterfaces, Find(&gInterfaces.parts, interface), NULL) != 0;
}

ROW(Size* BIBGetUnregisterCountAddr(void), &gUnregisterCount)
ROW(int BIBReportError(Text message), fprintf(stderr, "%s\n", message) >= 0)
ROW(int BIBIsMultiThreaded(void), 0)
