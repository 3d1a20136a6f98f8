// The object notation: values from text.

#define BLANKS " \t\r\n\f\v"

typedef struct Reader {
    char const* next;
    char* token; // the last word or text
} Reader;

// Numbers have a point, whatever the language of the program.
static locale_t gNumbers;

static void SkipBlanks(Reader* self) {
    while (*self->next != '\0' && strchr(BLANKS "%", *self->next) != NULL) {
        self->next += *self->next == '%' ? strcspn(self->next, "\r\n") : 1;
    }
}

static char ReadEscape(Reader* self) {
    char const c = *++self->next;
    int code = c - '0';
    if (c < '0' || c > '7') {
        return c == 'n' ? '\n' : c == 'r' ? '\r' : c == 't' ? '\t' : c;
    }
    for (int i = 0; i < 2 && self->next[1] >= '0' && self->next[1] <= '7'; ++i) {
        code = code * 8 + *++self->next - '0';
    }
    return (char)code;
}

// A text in parentheses, or a word. Zero if there is none, and for a text with a zero byte.
static int ReadToken(Reader* self) {
    char* end = self->token;
    if (*self->next != '(') {
        end = stpncpy(end, self->next, strcspn(self->next, BLANKS "<>[]()%"));
        self->next += end - self->token;
        *end = '\0';
        return end > self->token;
    }
    int open = 1;
    do {
        ++self->next;
        open += *self->next == '(' ? 1 : *self->next == ')' ? -1 : 0;
        *end = open == 0 ? '\0' : *self->next == '\\' ? ReadEscape(self) : *self->next;
    } while (*end++ != '\0');
    self->next += open == 0;
    return open == 0;
}

static Object* NewScalar(Text token, int isWord) {
    char* end = NULL;
    double const number = strtod_l(token, &end, gNumbers);
    int const isNumber = *end == '\0' && token[strspn(token, "+-.0123456789eE")] == '\0';
    return isWord && isNumber ? NumberNewPOSNumber(number) : StringNewPOSString(token);
}

static Object* ReadValue(Reader* self, int levels) {
    int const isDict = *self->next == '<';
    if (!isDict && *self->next != '[') {
        int const isWord = *self->next != '(';
        return ReadToken(self) ? NewScalar(self->token, isWord) : NULL;
    }
    Object* const collection = levels > 0 ? NewValue(isDict ? kDict : kArray, NULL, NULL, 0) : NULL;
    ++self->next;
    for (int isStored = collection != NULL; isStored;) {
        SkipBlanks(self);
        if (*self->next == (isDict ? '>' : ']')) {
            ++self->next;
            return collection;
        }
        Atom* const key = isDict && ReadToken(self) ? AtomNewStringAtom(self->token) : NULL;
        SkipBlanks(self);
        Object* const value = !isDict || key != NULL ? ReadValue(self, levels - 1) : NULL;
        isStored = PutNew(collection, AtomGetCString(key), value) != 0;
        AtomDeleteStringAtom(key);
    }
    return Discard(collection);
}

static Text MessageAt(Text text, Text end) {
    static char message[100];
    Size line = 1;
    for (Text p; (p = memchr(text, '\n', (Size)(end - text))) != NULL; text = p + 1) {
        ++line;
    }
    snprintf(message, sizeof message, "line %lu, column %td: cannot read on", line, end - text + 1);
    return message;
}

static Object* ObjectCreateFromText(Text objectText, char const** errorText) {
    Reader reader = {objectText, malloc(strlen(objectText) + 1)};
    SkipBlanks(&reader);
    Object* const value = reader.token != NULL ? ReadValue(&reader, kMostLevels) : NULL;
    free(reader.token);
    SkipBlanks(&reader);
    int const isRead = value != NULL && *reader.next == '\0';
    if (errorText != NULL) {
        *errorText = isRead ? NULL : MessageAt(objectText, reader.next);
    }
    return isRead ? value : Discard(value);
}

// Nothing but a debugger needs the way back.
ROW(Object* ObjectDebugDump(Object* self, Object* stream), Fail("this runtime writes no notation"))
ROW(Object* ObjectDebugDumpRewind(Object* self, Object* stream), ObjectDebugDump(self, stream))
ROW(Object* ObjectDebugDumpWithHeader(Object* self, Object* stream, Text header),
    ObjectDebugDump(self, stream))
