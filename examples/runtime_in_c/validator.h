// A small validator: kinds, required settings, nested structures and checks. It ignores all other
// parts of rules. It owns nothing while it runs, since an exception of a callback may end it.

typedef struct Walk {
    Object* validator;
    POSValidatorErrorCallback errorProc;
    long errors;
} Walk;

// Where a walk is: at a setting, in another one, and so on. The outermost place has no name.
typedef struct Place {
    Walk* walk;
    struct Place const* outer;
    Text name;
    int levels; // that may follow
} Place;

// Reports a text at a place. Of a path of more than 1,000 bytes the end is left.
static void Report(Place const* place, Text text, Text detail) {
    Walk* const walk = place->walk;
    char path[1002] = "";
    char* start = path + sizeof path - 1;
    for (; place->name != NULL && start > path; place = place->outer) {
        Text const name = *place->name != '\0' ? place->name : "_";
        for (Size i = strlen(name); i-- > 0 && start > path;) {
            *--start = (Byte)name[i] <= ' ' || name[i] == '\x7F' ? '_' : name[i];
        }
        if (place->outer->name != NULL && start > path) {
            *--start = '/';
        }
    }
    memcpy(path, "...", start == path ? 3 : 0);
    char message[sizeof path + 400];
    snprintf(message, sizeof message, "%s%s%s", start, text, detail);
    ++walk->errors;
    if (walk->errorProc != NULL) {
        walk->errorProc(message);
    }
}

// Whether a value is of a kind; -1 for a word that is no kind.
static int MatchesKind(Object* value, Text kind) {
    Text const word = IsKind(value, kString) ? value->data : "";
    Text const binary = IsKind(value, kBinary) ? value->name->text : "";
    double const number = IsKind(value, kNumber) ? NumberGet(value) : 0.5;
    int const isBoolean = strcmp(word, "true") == 0 || strcmp(word, "false") == 0;
    // Large numbers have no fraction, and may not fit an integer.
    int const isWhole = number - number == 0 &&
                        (number <= -9e15 || number >= 9e15 || (double)(long long)number == number);
    return strcmp(kind, "any") == 0          ? 1
           : strcmp(kind, "boolean") == 0    ? isBoolean
           : strcmp(kind, "number") == 0     ? IsKind(value, kNumber)
           : strcmp(kind, "integer") == 0    ? isWhole
           : strcmp(kind, "name") == 0       ? IsKind(value, kString) && !isBoolean
           : strcmp(kind, "string") == 0     ? strcmp(binary, "JoboptionsString") == 0
           : strcmp(kind, "hexstring") == 0  ? strcmp(binary, "JoboptionsUnicodeString") == 0
           : strcmp(kind, "array") == 0      ? IsKind(value, kArray)
           : strcmp(kind, "dictionary") == 0 ? IsKind(value, kDict)
                                             : -1;
}

// Checks are parts of the validator: buffers for their messages, with their data as instances.
static void CallCheck(Place const* place, Item const* check, Object* value, Atom* key) {
    Object* const message = check->value;
    Text const text = memset(message->data, 0, message->size);
    void const* const userData = message->primary.instance;
    if (!((POSValidatorCheckCallback)check->more)(value, key, message, userData)) {
        Report(place, *text != '\0' ? " " : " is not allowed", text);
    }
}

static void ApplyRules(Place const* outer, Object* rules, Object* required, Object* settings);

// Applies a rule to a value. Without a value, checks the rule alone.
static void ApplyRule(Place const* place, Item const* rule, Object* value) {
    Object* const validator = place->walk->validator;
    Object* const word = IsKind(rule->value, kDict) ? FindPart(rule->value, "type") : rule->value;
    Text const type = IsKind(word, kString) ? word->data : "";
    int const matches = MatchesKind(value, type);
    Object* const structure = FindPart(HeldBy(validator), type);
    int const isStructure = matches < 0 && IsKind(structure, kDict);
    Item const* const check = Find(&validator->parts, type);
    if (*type == '\0' || (matches < 0 && !isStructure && check == NULL)) {
        Report(place, " has a rule that is no kind, structure or registered check: ", type);
    } else if (value != NULL && (matches == 0 || (isStructure && !IsKind(value, kDict)))) {
        Report(place, " expected another kind of value: ", type);
    } else if (value != NULL && isStructure && place->levels == 0) {
        Report(place, " is nested too deeply", "");
    } else if (value != NULL && isStructure) {
        ApplyRules(place, structure, NULL, value);
    } else if (value != NULL && matches < 0) {
        CallCheck(place, check, value, rule->key);
    }
}

// Applies the rules of a structure to settings, or those of its part "optional", for which required
// is the structure. Without settings, checks the rules alone.
static void ApplyRules(Place const* outer, Object* rules, Object* required, Object* settings) {
    for (Size i = 0; i < rules->parts.count; ++i) {
        Item const* const rule = ItemAt(rules, i);
        Place const place = {outer->walk, outer, rule->key->text, outer->levels - 1};
        Object* const value = settings != NULL ? DictGet(settings, rule->key) : NULL;
        Object* const other = required != NULL ? DictGet(required, rule->key) : NULL;
        int const isOptional = required == NULL && strcmp(place.name, "optional") == 0;
        if (isOptional && IsKind(rule->value, kDict)) {
            ApplyRules(settings != NULL ? outer : &place, rule->value, rules, settings);
        } else if (isOptional) {
            Report(&place, " is no dictionary in the schema", "");
        } else if (settings == NULL || (value != NULL && (other == NULL || other == rules))) {
            ApplyRule(&place, rule, value);
        } else if (value == NULL && required == NULL) {
            Report(&place, " expected a value, found nothing", "");
        }
    }
}

static long
ValidatorValidate(Object* self, Object* object, Atom* key, POSValidatorErrorCallback errorProc) {
    Walk walk = {self, errorProc, 0};
    Place const root = {&walk, NULL, NULL, kMostLevels};
    Place const place = {&walk, &root, AtomGetCString(key), kMostLevels};
    Object* const structure = DictGet(HeldBy(self), key);
    if (object == NULL || key == NULL) {
        return 0;
    }
    if (self->number > 0) {
        Report(&root, "out-of-memory", "");
    } else if (!IsKind(structure, kDict) || !IsKind(object, kDict)) {
        Report(&place, " cannot be validated: expected a structure and a dictionary", "");
    } else {
        ApplyRules(&root, structure, NULL, object);
    }
    return walk.errors == 0;
}

static long ValidatorValidateSchema(Object* self, POSValidatorErrorCallback errorProc) {
    Walk walk = {self, errorProc, 0};
    Place const root = {&walk, NULL, NULL, kMostLevels};
    Object* const schema = HeldBy(self);
    for (Size i = 0; self->number == 0 && i < schema->parts.count; ++i) {
        Item const* const structure = ItemAt(schema, i);
        Place const place = {&walk, &root, structure->key->text, kMostLevels};
        if (IsKind(structure->value, kDict)) {
            ApplyRules(&place, structure->value, NULL, NULL);
        }
    }
    if (self->number > 0) {
        Report(&root, "out-of-memory", "");
    }
    return walk.errors == 0;
}

static long ValidatorRegisterCallbackProc(
    Object* self, Atom* name, POSValidatorCheckCallback check, void const* userData) {
    if (self == NULL || name == NULL || check == NULL) {
        return 0;
    }
    self->number += FindPart(self, name->text) == NULL &&
                    !PutNew(self, name->text, NewObject(kOther, NULL, NULL, 256));
    Item* const item = Find(&self->parts, name->text);
    if (item != NULL) {
        item->more = (void*)check;
        ((Object*)item->value)->primary.instance = (void*)userData;
    }
    return self->number == 0;
}

ROW(Object* ValidatorNewPOSStructValidator(Object* schema),
    IsKind(schema, kDict) ? NewHolder("POSStructValidatorInterface", schema) : NULL)
