// The object notation: values from text.

typedef struct Reader {
    char const* start;
    char const* next;
    char* text; // of the last word or text
    char const* problem;
} Reader;

static char const kBlanks[] = " \t\r\n\f\v";

static void* Stop(Reader* self, char const* problem) {
    self->problem = self->problem != NULL ? self->problem : problem;
    return NULL;
}

static void SkipBlanks(Reader* self) {
    self->next += strspn(self->next, kBlanks);
    while (*self->next == '%') {
        self->next += strcspn(self->next, "\r\n");
        self->next += strspn(self->next, kBlanks);
    }
}

static char ReadEscape(Reader* self) {
    char const c = *++self->next;
    if (c < '0' || c > '7') {
        return c == 'n' ? '\n' : c == 'r' ? '\r' : c == 't' ? '\t' : c;
    }
    int code = c - '0';
    for (int i = 0; i < 2 && self->next[1] >= '0' && self->next[1] <= '7'; ++i) {
        code = code * 8 + *++self->next - '0';
    }
    return (char)code;
}

// A text in parentheses, or a word. Zero if there is none.
static int ReadToken(Reader* self) {
    unsigned long length = 0;
    if (*self->next != '(') {
        length = strcspn(self->next, " \t\r\n\f\v<>[]()%");
        memcpy(self->text, self->next, length);
        self->next += length;
        self->text[length] = '\0';
        return length > 0 || Stop(self, "expected a value") != NULL;
    }
    for (int open = 1; *++self->next != '\0';) {
        open += *self->next == '(' ? 1 : *self->next == ')' ? -1 : 0;
        if (open == 0) {
            ++self->next;
            self->text[length] = '\0';
            return 1;
        }
        self->text[length] = *self->next == '\\' ? ReadEscape(self) : *self->next;
        if (self->text[length++] == '\0') {
            break;
        }
    }
    return Stop(self, "expected the end of a text, and no zero byte in it") != NULL;
}

static POSObject* ReadScalar(Reader* self) {
    int const isWord = *self->next != '(';
    if (!ReadToken(self)) {
        return NULL;
    }
    char* end = NULL;
    double const number = strtod(self->text, &end);
    int const isNumber =
        isWord && *end == '\0' && self->text[strspn(self->text, "+-.0123456789eE")] == '\0';
    return isNumber ? (POSObject*)NumberNewPOSNumber(number)
                    : (POSObject*)StringNewPOSString(self->text);
}

static POSObject* ReadValue(Reader* self, int levels) {
    int const isDict = *self->next == '<';
    if (!isDict && *self->next != '[') {
        return ReadScalar(self);
    }
    if (levels == 0) {
        return Stop(self, "nested too deeply");
    }
    ++self->next;
    POSObject* const collection = NewValue(isDict ? kDict : kArray, NULL, NULL, 0);
    for (int isStored = collection != NULL; isStored;) {
        SkipBlanks(self);
        if (*self->next == (isDict ? '>' : ']')) {
            ++self->next;
            return collection;
        }
        BIBStringAtom* const key = isDict && ReadToken(self) ? AtomNewStringAtom(self->text) : NULL;
        SkipBlanks(self);
        POSObject* const value = !isDict || key != NULL ? ReadValue(self, levels - 1) : NULL;
        isStored = value != NULL && (isDict ? DictPut((POSDict*)collection, key, value)
                                            : ArrayAppend((POSArray*)collection, value));
        AtomDeleteStringAtom(key);
        ContainerDeleteUnownedContainer(isStored ? NULL : (BIBContainer*)value);
    }
    ContainerDeleteUnownedContainer((BIBContainer*)collection);
    return Stop(self, "out of memory");
}

// Numbers have a point, whatever the language of the program.
static locale_t UseNumbersWithPoint(void) {
    static locale_t numbers = (locale_t)0;
    numbers = numbers != (locale_t)0 ? numbers : newlocale(LC_ALL_MASK, "C", (locale_t)0);
    return uselocale(numbers);
}

static char const* Message(Reader const* self) {
    static _Thread_local char message[200];
    unsigned long line = 1;
    char const* lineStart = self->start;
    for (char const* p = self->start; p < self->next; ++p) {
        line += *p == '\n';
        lineStart = *p == '\n' ? p + 1 : lineStart;
    }
    snprintf(
        message,
        sizeof message,
        "line %lu, column %lu: %s",
        line,
        (unsigned long)(self->next - lineStart) + 1,
        self->problem);
    return message;
}

static POSObject* ObjectCreateFromText(char const* objectText, char const** errorText) {
    Reader reader = {objectText, objectText, malloc(strlen(objectText) + 1), NULL};
    locale_t const former = UseNumbersWithPoint();
    SkipBlanks(&reader);
    POSObject* value = reader.text != NULL ? ReadValue(&reader, kMostLevels) : NULL;
    uselocale(former);
    free(reader.text);
    SkipBlanks(&reader);
    if (value == NULL) {
        Stop(&reader, "out of memory");
    } else if (*reader.next != '\0') {
        ContainerDeleteUnownedContainer((BIBContainer*)value);
        value = Stop(&reader, "expected the end");
    }
    if (errorText != NULL) {
        *errorText = reader.problem != NULL ? Message(&reader) : NULL;
    }
    return value;
}

// Nothing but a debugger needs the way back.

static BIBError*
ObjectDebugDumpWithHeader(POSObject* object, BIBPositionableStream* stream, char const* header) {
    (void)object;
    (void)stream;
    (void)header;
    return Fail("this runtime writes no notation");
}

static BIBError* ObjectDebugDump(POSObject* object, BIBPositionableStream* stream) {
    return ObjectDebugDumpWithHeader(object, stream, NULL);
}

static BIBError* ObjectDebugDumpRewind(POSObject* object, BIBPositionableStream* stream) {
    return ObjectDebugDumpWithHeader(object, stream, NULL);
}
