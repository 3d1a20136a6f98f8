// String atoms in a table of hashes, and lists whose keys are atoms.

struct BIBStringAtom {
    long count;
    BIBStringAtom* next;
    char text[];
};

enum { kBuckets = 1024, kRecent = 256 };

static BIBStringAtom* gBuckets[kBuckets];
// The references that were released last are given up as many releases later, so that a string
// stays readable for a moment.
static BIBStringAtom* gRecent[kRecent];
static unsigned gNextRecent;

// Where the pointer to the atom of text is, or belongs.
static BIBStringAtom** PlaceOfAtom(char const* text) {
    unsigned long hash = 5381;
    for (char const* p = text; *p != '\0'; ++p) {
        hash = hash * 33 + (unsigned char)*p;
    }
    BIBStringAtom** place = &gBuckets[hash % kBuckets];
    while (*place != NULL && strcmp((*place)->text, text) != 0) {
        place = &(*place)->next;
    }
    return place;
}

static void AtomAddRef(BIBStringAtom* atom) {
    if (atom != NULL) {
        ++atom->count;
    }
}

static BIBStringAtom* AtomNewStringAtom(char const* text) {
    if (text == NULL) {
        return NULL;
    }
    BIBStringAtom** const place = PlaceOfAtom(text);
    if (*place == NULL) {
        unsigned long const size = strlen(text) + 1;
        *place = calloc(1, sizeof **place + size);
        if (*place == NULL) {
            return NULL;
        }
        memcpy((*place)->text, text, size);
    }
    AtomAddRef(*place);
    return *place;
}

static void AtomDeleteStringAtom(BIBStringAtom* atom) {
    if (atom == NULL) {
        return;
    }
    BIBStringAtom* const oldest = gRecent[gNextRecent];
    gRecent[gNextRecent] = atom;
    gNextRecent = (gNextRecent + 1) % kRecent;
    if (oldest != NULL && --oldest->count == 0) {
        *PlaceOfAtom(oldest->text) = oldest->next;
        free(oldest);
    }
}

ROW(char const*, AtomGetCString, BIBStringAtom*, self != NULL ? self->text : NULL)

// What a list holds under a key: procedures, instances, checks, entries, and elements (no key).
// The number rises from item to item.
typedef struct Item {
    BIBStringAtom* key;
    void* value;
    void* more;
    unsigned long number;
} Item;

typedef struct List {
    Item* items;
    unsigned long count;
    unsigned long lastNumber;
} List;

static Item* ListFind(List const* list, BIBStringAtom* key) {
    for (unsigned long i = 0; i < list->count; ++i) {
        if (list->items[i].key == key) {
            return &list->items[i];
        }
    }
    return NULL;
}

static Item* FindText(List const* list, char const* key) {
    for (unsigned long i = 0; i < list->count; ++i) {
        if (strcmp(list->items[i].key->text, key) == 0) {
            return &list->items[i];
        }
    }
    return NULL;
}

// Adds an item at the end, and references its key. Zero if memory runs out.
static int ListAdd(List* list, BIBStringAtom* key, void* value, void* more) {
    unsigned long const count = list->count;
    if ((count & (count - 1)) == 0) { // a power of two: full
        Item* const items = realloc(list->items, (count != 0 ? 2 * count : 1) * sizeof *items);
        if (items == NULL) {
            return 0;
        }
        list->items = items;
    }
    AtomAddRef(key);
    list->items[list->count++] = (Item){key, value, more, ++list->lastNumber};
    return 1;
}

static void ListRemove(List* list, Item* item) {
    AtomDeleteStringAtom(item->key);
    --list->count;
    memmove(item, item + 1, (size_t)(list->items + list->count - item) * sizeof *item);
}
