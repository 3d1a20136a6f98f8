// Values: their contents are bytes, or the parts of an array, without keys, or of a dictionary.

static Object* NewValue(Kind kind, Text typeName, void const* bytes, Size size) {
    Object* const self = NewObject(kind, "POSObjectStatics", typeName, size);
    if (self != NULL && size > 0) {
        memcpy(self->data, bytes, size);
    }
    return self;
}

ROW(int IsKind(Object const* self, Kind kind), self != NULL && self->kind == kind)
ROW(long NumberIsPOSNumber(Object* self), IsKind(self, kNumber))
ROW(long StringIsPOSString(Object* self), IsKind(self, kString))
ROW(long UnicodeStringIsPOSUnicodeString(Object* self), IsKind(self, kUnicode))
ROW(long BinDataIsPOSBinData(Object* self), IsKind(self, kBinary))
ROW(long ArrayIsPOSArray(Object* self), IsKind(self, kArray))
ROW(long DictIsPOSDict(Object* self), IsKind(self, kDict))
ROW(double NumberGet(Object* self), *(double const*)self->data)
ROW(Text StringGet(Object* self), self->data)
ROW(unsigned short const* UnicodeStringGet(Object* self), self->data)
ROW(Text BinDataGetTypeName(Object* self), self->name->text)
ROW(Byte const* BinDataGetBinData(Object* self), self->data)
ROW(Size BinDataGetSize(Object* self), self->size)
ROW(Size ArrayCount(Object* self), self->parts.count)

ROW(Object* NumberNewPOSNumber(double value), NewValue(kNumber, NULL, &value, sizeof value))
ROW(Object* StringNewPOSString(Text text), NewValue(kString, NULL, text, text ? strlen(text) : 0))
ROW(Object* BinDataNewPOSBinData(Text type, Byte const* data, Size size),
    NewValue(kBinary, type, data, size))
ROW(Object* ArrayNewPOSArray(void), NewValue(kArray, NULL, NULL, 0))
ROW(Object* DictNewPOSDict(void), NewValue(kDict, NULL, NULL, 0))

static Object* UnicodeStringNewPOSUnicodeString(unsigned short const* text) {
    Size count = 0;
    while (text != NULL && text[count] != 0) {
        ++count;
    }
    return NewValue(kUnicode, NULL, text, count * sizeof *text);
}

// Replaces a part, or removes it where value is null.
static long Replace(Object* self, Item* item, Object* value) {
    Object* const former = ValueOf(item);
    if (item != NULL && value != NULL) {
        ContainerAddRef(value);
        item->value = value;
    } else if (item != NULL) {
        Remove(&self->parts, item);
    }
    ContainerRelease(former);
    return item != NULL;
}

// Stores a value under a key, or without a key at the end.
static long Put(Object* self, Text key, Object* value) {
    Item* const former = Find(&self->parts, key);
    if (value == NULL || former != NULL) {
        return value != NULL && Replace(self, former, value);
    }
    return Add(&self->parts, key, value, NULL) ? ContainerAddRef(value) : 0;
}

// The same with a new value, which is destroyed if it was not stored.
ROW(long PutNew(Object* self, Text key, Object* value), Put(self, key, value) || Discard(value))
ROW(Object* HeldBy(Object* self), self->parts.items[0].value)
ROW(Item* ItemAt(Object* self, Size i), i < self->parts.count ? &self->parts.items[i] : NULL)
ROW(Object* ArrayGetAt(Object* self, Size index), ValueOf(ItemAt(self, index)))
ROW(long ArraySetAt(Object* self, Size index, Object* value),
    value ? Replace(self, ItemAt(self, index), value) : 0)
ROW(long ArrayAppend(Object* self, Object* value), Put(self, NULL, value))
ROW(long ArrayRemove(Object* self, Size index), Replace(self, ItemAt(self, index), NULL))
ROW(Object* FindPart(Object* self, Text key), ValueOf(Find(&self->parts, key)))
ROW(Item* ItemUnder(Object* self, Atom* key), Find(&self->parts, AtomGetCString(key)))
ROW(Object* DictGet(Object* self, Atom* key), ValueOf(ItemUnder(self, key)))
ROW(long DictPut(Object* self, Atom* key, Object* value), key ? Put(self, key->text, value) : 0)
ROW(long DictRemove(Object* self, Atom* key), Replace(self, ItemUnder(self, key), NULL))

static Object* DictDeepGet(Object* self, Atom* path) {
    char* const keys = path != NULL ? strdup(path->text) : NULL;
    Object* found = keys != NULL ? self : NULL;
    for (char *rest = keys, *key; found != NULL && (key = strsep(&rest, "/")) != NULL;) {
        char* end = key;
        Size const index = *key >= '0' && *key <= '9' ? strtoul(key, &end, 10) : 0;
        Object* const element = end > key && *end == '\0' ? ArrayGetAt(found, index) : NULL;
        found = found->kind == kDict ? FindPart(found, key) : element;
    }
    free(keys);
    return found;
}

static Object* CloneLevels(Object* self, int levels) {
    Text const typeName = AtomGetCString(self->name);
    Object* const copy = levels > 0 ? NewValue(self->kind, typeName, self->data, self->size) : NULL;
    for (Size i = 0; copy != NULL && i < self->parts.count; ++i) {
        Item const* const part = ItemAt(self, i);
        if (!PutNew(copy, AtomGetCString(part->key), CloneLevels(part->value, levels - 1))) {
            return Discard(copy);
        }
    }
    return copy;
}

static int AreEqual(Object* one, Object* other, int levels) {
    int areEqual = levels > 0 && other != NULL && one->kind == other->kind &&
                   one->name == other->name && one->size == other->size &&
                   one->parts.count == other->parts.count &&
                   (memcmp(one->data, other->data, one->size) == 0 ||
                    (one->kind == kNumber && NumberGet(one) == NumberGet(other)));
    for (Size i = 0; areEqual && i < one->parts.count; ++i) {
        Item const* const part = ItemAt(one, i);
        Object* const match = part->key ? DictGet(other, part->key) : ArrayGetAt(other, i);
        areEqual = AreEqual(part->value, match, levels - 1);
    }
    return areEqual;
}

ROW(Object* ObjectClone(Object* self), CloneLevels(self, kMostLevels))
ROW(long ObjectIsEqual(Object* self, Object* other), AreEqual(self, other, kMostLevels))

// An object with a reference on another one: on the dictionary of a cursor, for example.
static Object* NewHolder(Text signature, Object* part) {
    Object* const self = NewObject(kOther, signature, NULL, 0);
    return self == NULL || Put(self, NULL, part) ? self : Discard(self);
}

// Moves a cursor to the first key behind a number: numbers rise, so it survives every change.
static void MoveBehind(Object* self, Size number) {
    Item const* item = HeldBy(self)->parts.items;
    Item const* const end = item + HeldBy(self)->parts.count;
    while (item < end && item->number <= number) {
        ++item;
    }
    AtomDeleteStringAtom(self->name);
    self->name = item < end ? item->key : NULL;
    self->number = item < end ? item->number : 0;
    AtomAddRef(self->name);
}

ROW(Object* CursorNewPOSDictIterator(Object* dict), NewHolder("Cursor", dict))
ROW(void CursorBegin(Object* self), MoveBehind(self, 0))
ROW(void CursorNext(Object* self), self->name != NULL ? MoveBehind(self, self->number) : (void)0)
ROW(long CursorIsDone(Object* self), self->name == NULL)
ROW(Text CursorCurKey(Object* self), AtomGetCString(self->name))
