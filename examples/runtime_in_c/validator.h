// A small validator: kinds, required settings, nested structures and checks. It ignores all other
// parts of rules.

typedef struct Validator {
    POSDict* schema;
    List checks; // with their user data
    int isBroken;
} Validator;

// One validation, at the path of a value. It owns nothing, since an exception of a callback may
// leave it at any call.
typedef struct Walk {
    Validator const* validator;
    POSValidatorErrorCallback errorProc;
    long errors;
    int isAtEnd; // the message that memory ran out is the last one
    char path[1001];
} Walk;

static void Report(Walk* self, char const* message) {
    ++self->errors;
    if (self->errorProc != NULL && !self->isAtEnd) {
        self->errorProc(message);
    }
}

static void ReportAt(Walk* self, char const* format, char const* argument) {
    char message[sizeof self->path + 400];
    int const length = snprintf(message, sizeof message, "%s ", self->path);
    snprintf(message + length, sizeof message - (unsigned long)length, format, argument);
    Report(self, message);
}

static void ReportOutOfMemory(Walk* self) {
    Report(self, "out-of-memory");
    self->isAtEnd = 1;
}

// Goes to a part of the value, whose name follows a slash. Gives the length of the path before.
static unsigned long Enter(Walk* self, char const* name) {
    unsigned long const length = strlen(self->path);
    char const* const slash = length > 0 ? "/" : "";
    char const* const step = *name != '\0' ? name : "_";
    snprintf(self->path + length, sizeof self->path - length, "%s%s", slash, step);
    for (char* p = self->path + length; *p != '\0'; ++p) {
        *p = (unsigned char)*p <= ' ' || *p == '\x7F' ? '_' : *p;
    }
    return length;
}

static char const* TextOf(POSObject* object) {
    return IsKind(object, kString) ? StringGet((POSString*)object) : NULL;
}

static int IsText(POSObject* object, char const* text) {
    return IsKind(object, kString) && strcmp(TextOf(object), text) == 0;
}

static int IsBinaryOf(POSObject* object, char const* typeName) {
    return IsKind(object, kBinary) && strcmp(ValueOf(object)->typeName->text, typeName) == 0;
}

// Whether a value is of a kind; -1 for a word that is no kind.
static int MatchesKind(POSObject* value, char const* kind) {
    int const isNumber = IsKind(value, kNumber);
    double const number = isNumber ? NumberGet((POSNumber*)value) : 0.5;
    int const isBoolean = IsText(value, "true") || IsText(value, "false");
    struct {
        char const* kind;
        int matches;
    } const kKinds[] = {
        {"any", 1},
        {"boolean", isBoolean},
        {"number", isNumber},
        {"integer",
         number - number == 0 &&
             (number <= -9e15 || number >= 9e15 || (double)(long long)number == number)},
        {"name", IsKind(value, kString) && !isBoolean},
        {"string", IsBinaryOf(value, "JoboptionsString")},
        {"hexstring", IsBinaryOf(value, "JoboptionsUnicodeString")},
        {"array", IsKind(value, kArray)},
        {"dictionary", IsKind(value, kDict)}};
    for (unsigned long i = 0; i < sizeof kKinds / sizeof *kKinds; ++i) {
        if (strcmp(kKinds[i].kind, kind) == 0) {
            return kKinds[i].matches;
        }
    }
    return -1;
}

static void ReleaseBuffer(BIBSharedBuffer** buffer) {
    BufferRelease(*buffer);
}

// The buffer is released also where the check leaves by an exception.
static void CallCheck(Walk* self, Item const* check, POSObject* value, BIBStringAtom* key) {
    __attribute__((cleanup(ReleaseBuffer))) BIBSharedBuffer* buffer =
        BufferNewBuffer(256, NULL, NULL, NULL, NULL);
    if (buffer == NULL) {
        ReportOutOfMemory(self);
        return;
    }
    char* const message = memset(BufferGetBuffer(buffer), 0, 256);
    if (!((POSValidatorCheckCallback)check->value)(value, key, buffer, check->more)) {
        message[255] = '\0';
        ReportAt(self, "%s", *message != '\0' ? message : "is not allowed");
    }
}

static void
ValidateValue(Walk* self, POSObject* value, POSObject* rule, BIBStringAtom* key, int levels);

// Validates the settings that a structure, or its part "optional", has rules for.
static void ValidateSettings(
    Walk* self, POSObject* settings, POSObject* rules, POSObject* required, int levels) {
    int const areRequired = required == NULL;
    if (!IsKind(rules, kDict)) {
        unsigned long const length = Enter(self, "optional");
        ReportAt(self, "cannot be validated: the schema has no dictionary there", NULL);
        self->path[length] = '\0';
        return;
    }
    for (unsigned long i = 0; i < ValueOf(rules)->items.count; ++i) {
        Item const rule = ValueOf(rules)->items.items[i];
        POSObject* const setting = DictGet((POSDict*)settings, rule.key);
        if (areRequired && strcmp(rule.key->text, "optional") == 0) {
            ValidateSettings(self, settings, rule.value, rules, levels);
            continue;
        }
        // A setting that is both required and optional is required.
        if (!areRequired && strcmp(rule.key->text, "optional") != 0 &&
            DictGet((POSDict*)required, rule.key) != NULL) {
            continue;
        }
        unsigned long const length = Enter(self, rule.key->text);
        if (setting != NULL) {
            ValidateValue(self, setting, rule.value, rule.key, levels);
        } else if (areRequired) {
            ReportAt(self, "expected a value, found nothing", NULL);
        }
        self->path[length] = '\0';
    }
}

static char const* TypeOf(POSObject* rule) {
    char const* const type = TextOf(IsKind(rule, kDict) ? Find(rule, "type") : rule);
    return type != NULL ? type : "";
}

// The structure of that name, or null. The empty word names nothing.
static POSObject* FindStructure(Walk const* self, char const* type) {
    POSObject* const found = *type != '\0' ? Find((POSObject*)self->validator->schema, type) : NULL;
    return IsKind(found, kDict) ? found : NULL;
}

static Item const* FindCheck(Walk const* self, char const* type) {
    return *type != '\0' ? FindText(&self->validator->checks, type) : NULL;
}

static void
ValidateValue(Walk* self, POSObject* value, POSObject* rule, BIBStringAtom* key, int levels) {
    char const* const type = TypeOf(rule);
    int const matches = MatchesKind(value, type);
    POSObject* const structure = matches < 0 ? FindStructure(self, type) : NULL;
    Item const* const check = matches < 0 && structure == NULL ? FindCheck(self, type) : NULL;
    if (levels == 0) {
        ReportAt(self, "is nested too deeply", NULL);
    } else if (matches == 0 || (structure != NULL && !IsKind(value, kDict))) {
        ReportAt(self, "expected another kind of value: %s", type);
    } else if (matches < 0 && structure == NULL && check == NULL) {
        ReportAt(self, "cannot be validated: the schema says %s", type);
    } else if (check != NULL) {
        CallCheck(self, check, value, key);
    } else if (structure != NULL) {
        ValidateSettings(self, value, structure, NULL, levels - 1);
    }
}

static long EndWalk(Walk* self) {
    if (self->validator->isBroken) {
        ReportOutOfMemory(self);
    }
    return self->errors == 0;
}

static long ValidatorValidate(
    POSValidator* self,
    POSObject* object,
    BIBStringAtom* key,
    POSValidatorErrorCallback errorProc) {
    Walk walk = {InstanceOf(self), errorProc, 0, 0, ""};
    if (object == NULL || key == NULL) {
        return 0;
    }
    POSObject* const structure = DictGet(walk.validator->schema, key);
    Enter(&walk, key->text);
    if (!IsKind(structure, kDict)) {
        ReportAt(&walk, "cannot be validated: the schema has no such structure", NULL);
    } else if (!IsKind(object, kDict)) {
        ReportAt(&walk, "expected a dictionary", NULL);
    } else {
        walk.path[0] = '\0';
        ValidateSettings(&walk, object, structure, NULL, kMostLevels);
    }
    return EndWalk(&walk);
}

static void CheckRule(Walk* self, POSObject* rule) {
    char const* const type = TypeOf(rule);
    if (MatchesKind(NULL, type) < 0 && FindStructure(self, type) == NULL &&
        FindCheck(self, type) == NULL) {
        ReportAt(self, "is not a kind, structure or registered check: %s", type);
    }
}

static void CheckRules(Walk* self, POSObject* rules, int isStructure) {
    for (unsigned long i = 0; IsKind(rules, kDict) && i < ValueOf(rules)->items.count; ++i) {
        Item const rule = ValueOf(rules)->items.items[i];
        unsigned long const length = Enter(self, rule.key->text);
        if (isStructure && strcmp(rule.key->text, "optional") == 0) {
            CheckRules(self, rule.value, 0);
        } else {
            CheckRule(self, rule.value);
        }
        self->path[length] = '\0';
    }
}

static long ValidatorValidateSchema(POSValidator* self, POSValidatorErrorCallback errorProc) {
    Walk walk = {InstanceOf(self), errorProc, 0, 0, ""};
    List const* const structures = &ValueOf(walk.validator->schema)->items;
    for (unsigned long i = 0; i < structures->count; ++i) {
        Enter(&walk, structures->items[i].key->text);
        CheckRules(&walk, structures->items[i].value, 1);
        walk.path[0] = '\0';
    }
    return EndWalk(&walk);
}

static long ValidatorRegisterCallbackProc(
    POSValidator* self,
    BIBStringAtom* name,
    POSValidatorCheckCallback check,
    void const* userData) {
    if (self == NULL || name == NULL || check == NULL) {
        return 0;
    }
    Validator* const validator = InstanceOf(self);
    Item* const former = ListFind(&validator->checks, name);
    if (former != NULL) {
        former->value = (void*)check;
        former->more = (void*)userData;
    } else if (!ListAdd(&validator->checks, name, (void*)check, (void*)userData)) {
        validator->isBroken = 1;
    }
    return !validator->isBroken;
}

static void DeleteValidator(void* instance) {
    Validator* const self = instance;
    while (self->checks.count > 0) {
        ListRemove(&self->checks, self->checks.items);
    }
    free(self->checks.items);
    ContainerRelease((BIBContainer*)self->schema);
    free(self);
}

static POSValidator* ValidatorNewPOSStructValidator(POSDict* schema) {
    Validator* const self = IsKind((POSObject*)schema, kDict) ? calloc(1, sizeof *self) : NULL;
    void* const validator = Contain(self, "Validator", &DeleteValidator);
    if (validator != NULL) {
        ContainerAddRef((BIBContainer*)schema);
        self->schema = schema;
    }
    return validator;
}
