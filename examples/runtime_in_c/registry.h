// The lookup: procedures under three names, which are joined to one key, each behind its length.

static List gProcs;
// Each signature with its parent.
static List gParents;
static unsigned long gUnregisterCount = 1;

static BIBStringAtom* JoinNames(char const* interface, char const* name, char const* type) {
    char* text = NULL;
    int const isNull = interface == NULL || name == NULL || type == NULL;
    if (isNull ||
        asprintf(&text, "%zu %s%zu %s%s", strlen(interface), interface, strlen(name), name, type) <
            0) {
        return NULL;
    }
    BIBStringAtom* const key = AtomNewStringAtom(text);
    free(text);
    return key;
}

void* BIBRuntimeLookup(char const* interfaceName, char const* procName, char const* procType) {
    BIBStringAtom* const key = JoinNames(interfaceName, procName, procType);
    Item const* const item = key != NULL ? ListFind(&gProcs, key) : NULL;
    AtomDeleteStringAtom(key);
    return item != NULL ? item->value : NULL;
}

static int BIBRegisterProcAddress(
    char const* interfaceName, char const* procName, char const* procType, void* proc) {
    BIBStringAtom* const key = JoinNames(interfaceName, procName, procType);
    int const isFree = key != NULL && ListFind(&gProcs, key) == NULL;
    int const isAdded = isFree && ListAdd(&gProcs, key, proc, NULL);
    AtomDeleteStringAtom(key);
    return isAdded;
}

static int BIBUnregisterInterface(char const* interfaceName) {
    char* prefix = NULL;
    int const length = asprintf(&prefix, "%zu %s", strlen(interfaceName), interfaceName);
    if (length < 0) {
        return 0;
    }
    for (unsigned long i = gProcs.count; i-- > 0;) {
        char const* const key = AtomGetCString(gProcs.items[i].key);
        if (strncmp(key, prefix, (unsigned long)length) == 0) {
            ListRemove(&gProcs, &gProcs.items[i]);
        }
    }
    free(prefix);
    BIBStringAtom* const signature = AtomNewStringAtom(interfaceName);
    Item* const parent = ListFind(&gParents, signature);
    if (parent != NULL) {
        AtomDeleteStringAtom(parent->value);
        ListRemove(&gParents, parent);
    }
    AtomDeleteStringAtom(signature);
    gUnregisterCount += gUnregisterCount == ULONG_MAX ? 2 : 1;
    return 1;
}

static unsigned long* BIBGetUnregisterCountAddr(void) {
    return &gUnregisterCount;
}

static int BIBReportError(char const* message) {
    return fprintf(stderr, "%s\n", message) >= 0;
}

static int BIBIsMultiThreaded(void) {
    return 0;
}
