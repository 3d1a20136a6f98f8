// Values: all have one structure.

typedef enum Kind { kNumber, kString, kUnicode, kBinary, kArray, kDict } Kind;

typedef struct Value {
    Kind kind;
    BIBStringAtom* typeName; // of binary data
    void* bytes;             // a double, a string with its zero, or binary data
    unsigned long size;
    List items; // of an array, without keys, or of a dictionary
    struct Value* nextDoomed;
} Value;

static char const kValueSignature[] = "Value";

ROW(Value*, ValueOf, void const*, InstanceOf(self))

// What a destroyed collection held is destroyed after it, not within: so depth needs no stack.
static void DeleteValue(void* instance) {
    static Value* doomed = NULL;
    static int isDestroying = 0;
    ((Value*)instance)->nextDoomed = doomed;
    doomed = instance;
    if (isDestroying) {
        return;
    }
    isDestroying = 1;
    while (doomed != NULL) {
        Value* const value = doomed;
        doomed = value->nextDoomed;
        while (value->items.count > 0) {
            Item* const last = &value->items.items[value->items.count - 1];
            ContainerRelease(last->value);
            ListRemove(&value->items, last);
        }
        free(value->items.items);
        AtomDeleteStringAtom(value->typeName);
        free(value->bytes);
        free(value);
    }
    isDestroying = 0;
}

// An unowned value; null if memory runs out. Bytes and type name may be null.
static void* NewValue(Kind kind, char const* typeName, void const* bytes, unsigned long size) {
    Value* const value = calloc(1, sizeof *value);
    void* const copy = malloc(size + 1);
    if (value == NULL || copy == NULL) {
        free(value);
        free(copy);
        return NULL;
    }
    if (size > 0) {
        memcpy(copy, bytes, size);
    }
    *value = (Value){kind, AtomNewStringAtom(typeName), copy, size, {NULL, 0, 0}, NULL};
    if (typeName != NULL && value->typeName == NULL) {
        DeleteValue(value);
        return NULL;
    }
    return Contain(value, kValueSignature, &DeleteValue);
}

static int IsKind(POSObject const* object, Kind kind) {
    BIBContainer const* const container = (BIBContainer const*)object;
    return container != NULL && container->signature != NULL &&
           strcmp(container->signature->text, kValueSignature) == 0 &&
           ValueOf(object)->kind == kind;
}

ROW(long, NumberIsPOSNumber, POSObject*, IsKind(self, kNumber))
ROW(long, StringIsPOSString, POSObject*, IsKind(self, kString))
ROW(long, UnicodeStringIsPOSUnicodeString, POSObject*, IsKind(self, kUnicode))
ROW(long, BinDataIsPOSBinData, POSObject*, IsKind(self, kBinary))
ROW(long, ArrayIsPOSArray, POSObject*, IsKind(self, kArray))
ROW(long, DictIsPOSDict, POSObject*, IsKind(self, kDict))
ROW(double, NumberGet, POSNumber*, *(double const*)ValueOf(self)->bytes)
ROW(char const*, StringGet, POSString*, ValueOf(self)->bytes)
ROW(unsigned short const*, UnicodeStringGet, POSUnicodeString*, ValueOf(self)->bytes)
ROW(char const*, BinDataGetTypeName, POSBinData*, ValueOf(self)->typeName->text)
ROW(unsigned char const*, BinDataGetBinData, POSBinData*, ValueOf(self)->bytes)
ROW(unsigned long, BinDataGetSize, POSBinData*, ValueOf(self)->size)
ROW(unsigned long, ArrayCount, POSArray*, ValueOf(self)->items.count)

static POSNumber* NumberNewPOSNumber(double value) {
    return NewValue(kNumber, NULL, &value, sizeof value);
}

static POSString* StringNewPOSString(char const* text) {
    return NewValue(kString, NULL, text != NULL ? text : "", text != NULL ? strlen(text) + 1 : 1);
}

static POSUnicodeString* UnicodeStringNewPOSUnicodeString(unsigned short const* text) {
    static unsigned short const kEmpty[] = {0};
    unsigned short const* const units = text != NULL ? text : kEmpty;
    unsigned long count = 1;
    while (units[count - 1] != 0) {
        ++count;
    }
    return NewValue(kUnicode, NULL, units, count * sizeof *units);
}

static POSBinData*
BinDataNewPOSBinData(char const* typeName, unsigned char const* data, unsigned long size) {
    return NewValue(kBinary, typeName, data, size);
}

static POSArray* ArrayNewPOSArray(void) {
    return NewValue(kArray, NULL, NULL, 0);
}

static POSDict* DictNewPOSDict(void) {
    return NewValue(kDict, NULL, NULL, 0);
}

static long AddItem(void* collection, BIBStringAtom* key, POSObject* value) {
    return value != NULL && ListAdd(&ValueOf(collection)->items, key, value, NULL)
               ? ContainerAddRef((BIBContainer*)value)
               : 0;
}

static long ReplaceItem(Item* item, POSObject* value) {
    BIBContainer* const former = item->value;
    if (value == NULL) {
        return 0;
    }
    ContainerAddRef((BIBContainer*)value);
    item->value = value;
    ContainerRelease(former);
    return 1;
}

static long RemoveItem(void* collection, Item* item) {
    if (item == NULL) {
        return 0;
    }
    BIBContainer* const value = item->value;
    ListRemove(&ValueOf(collection)->items, item);
    ContainerRelease(value);
    return 1;
}

static Item* ItemAt(POSArray* self, unsigned long index) {
    List const* const items = &ValueOf(self)->items;
    return index < items->count ? &items->items[index] : NULL;
}

static POSObject* ArrayGetAt(POSArray* self, unsigned long index) {
    Item const* const item = ItemAt(self, index);
    return item != NULL ? item->value : NULL;
}

static long ArraySetAt(POSArray* self, unsigned long index, POSObject* value) {
    Item* const item = ItemAt(self, index);
    return item != NULL ? ReplaceItem(item, value) : 0;
}

static long ArrayAppend(POSArray* self, POSObject* value) {
    return AddItem(self, NULL, value);
}

static long ArrayRemove(POSArray* self, unsigned long index) {
    return RemoveItem(self, ItemAt(self, index));
}

static POSObject* DictGet(POSDict* self, BIBStringAtom* key) {
    Item const* const item = ListFind(&ValueOf(self)->items, key);
    return item != NULL ? item->value : NULL;
}

static long DictPut(POSDict* self, BIBStringAtom* key, POSObject* value) {
    Item* const item = ListFind(&ValueOf(self)->items, key);
    return item != NULL ? ReplaceItem(item, value) : key != NULL ? AddItem(self, key, value) : 0;
}

static long DictRemove(POSDict* self, BIBStringAtom* key) {
    return RemoveItem(self, ListFind(&ValueOf(self)->items, key));
}

// The value under a key of a dictionary, or at an index of an array; null if there is none.
static POSObject* Find(POSObject* object, char const* key) {
    char* end = NULL;
    unsigned long const index = strtoul(key, &end, 10);
    if (IsKind(object, kArray)) {
        int const isIndex = *key >= '0' && *key <= '9' && *end == '\0';
        return isIndex ? ArrayGetAt((POSArray*)object, index) : NULL;
    }
    Item const* const item = IsKind(object, kDict) ? FindText(&ValueOf(object)->items, key) : NULL;
    return item != NULL ? item->value : NULL;
}

static POSObject* DictDeepGet(POSDict* self, BIBStringAtom* path) {
    char* const keys = path != NULL ? strdup(path->text) : NULL;
    POSObject* object = keys != NULL ? (POSObject*)self : NULL;
    for (char *rest = keys, *key; object != NULL && (key = strsep(&rest, "/")) != NULL;) {
        object = Find(object, key);
    }
    free(keys);
    return object;
}

// The methods of all values.

static POSObject* CloneLevels(POSObject* self, int levels) {
    Value const* const value = ValueOf(self);
    POSObject* const copy =
        levels > 0
            ? NewValue(value->kind, AtomGetCString(value->typeName), value->bytes, value->size)
            : NULL;
    for (unsigned long i = 0; copy != NULL && i < value->items.count; ++i) {
        POSObject* const item = CloneLevels(value->items.items[i].value, levels - 1);
        if (!AddItem(copy, value->items.items[i].key, item)) {
            ContainerDeleteUnownedContainer((BIBContainer*)item);
            ContainerDeleteUnownedContainer((BIBContainer*)copy);
            return NULL;
        }
    }
    return copy;
}

ROW(POSObject*, ValueClone, POSObject*, CloneLevels(self, kMostLevels))

static int AreEqual(Value const* one, Value const* other, int levels) {
    if (levels == 0 || one->kind != other->kind || one->typeName != other->typeName ||
        one->size != other->size || one->items.count != other->items.count) {
        return 0;
    }
    int areEqual = memcmp(one->bytes, other->bytes, one->size) == 0;
    if (one->kind == kNumber) {
        return areEqual || *(double const*)one->bytes == *(double const*)other->bytes;
    }
    for (unsigned long i = 0; areEqual && i < one->items.count; ++i) {
        Item const* const item = &one->items.items[i];
        Item const* const match =
            one->kind == kDict ? ListFind(&other->items, item->key) : &other->items.items[i];
        areEqual =
            match != NULL && AreEqual(ValueOf(item->value), ValueOf(match->value), levels - 1);
    }
    return areEqual;
}

static long ValueIsEqual(POSObject* self, POSObject* other) {
    return other != NULL && IsKind(other, ValueOf(self)->kind) &&
           AreEqual(ValueOf(self), ValueOf(other), kMostLevels);
}

// Cursors remember the number of their key, and numbers rise: so they survive every change.
typedef struct Cursor {
    POSDict* dict;
    BIBStringAtom* key;
    unsigned long number;
} Cursor;

static void DeleteCursor(void* instance) {
    Cursor* const self = instance;
    AtomDeleteStringAtom(self->key);
    ContainerRelease((BIBContainer*)self->dict);
    free(self);
}

static POSDictIterator* CursorNewPOSDictIterator(POSDict* dict) {
    Cursor* const self = calloc(1, sizeof *self);
    void* const cursor = Contain(self, "Cursor", &DeleteCursor);
    if (cursor != NULL) {
        ContainerAddRef((BIBContainer*)dict);
        self->dict = dict;
    }
    return cursor;
}

// Moves to the first key behind a number.
static void MoveBehind(Cursor* self, unsigned long number) {
    List const* const items = &ValueOf(self->dict)->items;
    unsigned long i = 0;
    while (i < items->count && items->items[i].number <= number) {
        ++i;
    }
    AtomDeleteStringAtom(self->key);
    self->key = i < items->count ? items->items[i].key : NULL;
    self->number = i < items->count ? items->items[i].number : items->lastNumber;
    AtomAddRef(self->key);
}

ROW(Cursor*, CursorOf, POSDictIterator*, InstanceOf(self))

static void CursorBegin(POSDictIterator* self) {
    MoveBehind(InstanceOf(self), 0);
}

static void CursorNext(POSDictIterator* self) {
    Cursor* const cursor = InstanceOf(self);
    if (cursor->key != NULL) {
        MoveBehind(cursor, cursor->number);
    }
}

ROW(long, CursorIsDone, POSDictIterator*, CursorOf(self)->key == NULL)
ROW(char const*, CursorCurKey, POSDictIterator*, AtomGetCString(CursorOf(self)->key))
