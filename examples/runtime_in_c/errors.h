// Errors. The predefined ones are made before they are needed.

struct BIBError {
    long count;
    BIBStringAtom* message;
    BIBStringAtom* component;
    long id;
    void* info;
    void (*infoFreeProc)(void*);
};

static BIBError* gCoreErrors[2];

ROW(BIBStringAtom*, ErrorGetErrorMessage, BIBError*, self->message)
ROW(BIBStringAtom*, ErrorGetComponent, BIBError*, self->component)
ROW(long, ErrorGetID, BIBError*, self->id)
ROW(void*, ErrorGetErrorInfo, BIBError*, self->info)

static BIBError* ErrorAddRef(BIBError* error) {
    if (error != NULL) {
        ++error->count;
    }
    return error;
}

static void ErrorRelease(BIBError* error) {
    if (error == NULL || --error->count > 0) {
        return;
    }
    if (error->infoFreeProc != NULL) {
        error->infoFreeProc(error->info);
    }
    AtomDeleteStringAtom(error->message);
    AtomDeleteStringAtom(error->component);
    free(error);
}

static BIBError* ErrorNewError(
    char const* message, char const* component, long id, void* info, void (*infoFreeProc)(void*)) {
    BIBError const contents = {
        1, AtomNewStringAtom(message), AtomNewStringAtom(component), id, info, infoFreeProc};
    BIBError* const error = malloc(sizeof *error);
    if (error == NULL || contents.message == NULL || contents.component == NULL) {
        AtomDeleteStringAtom(contents.message);
        AtomDeleteStringAtom(contents.component);
        free(error);
        return NULL;
    }
    *error = contents;
    return error;
}

static BIBError* ErrorGetCoreError(BRVErrorID id) {
    int const isKnown = id == kBRVUnknownError || id == kBRVMemoryError;
    return isKnown ? ErrorAddRef(gCoreErrors[id]) : NULL;
}

static BIBError* FailOfMemory(void) {
    return ErrorGetCoreError(kBRVMemoryError);
}

// Never null, which would mean success.
static BIBError* Fail(char const* message) {
    BIBError* const error = ErrorNewError(message, "runtime_in_c", 100, NULL, NULL);
    return error != NULL ? error : FailOfMemory();
}
