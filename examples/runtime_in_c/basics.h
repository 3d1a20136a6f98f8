// Blocks of memory with the requested size in front of them, string atoms in a tree, and lists.

typedef union Header {
    Size size;
    max_align_t alignment;
} Header;

static void* MemoryRealloc(void* block, Size size) {
    Header* const former = block != NULL ? (Header*)block - 1 : NULL;
    int const fits = size <= PTRDIFF_MAX - sizeof(Header);
    Header* const header = fits ? realloc(former, sizeof(Header) + size) : NULL;
    if (header == NULL) {
        return NULL;
    }
    header->size = size;
    return header + 1;
}

ROW(void MemoryFree(void* block), free(block != NULL ? (Header*)block - 1 : NULL))
ROW(void* MemoryAlloc(Size size), MemoryRealloc(NULL, size))
ROW(Size MemoryGetBlockSize(void* self), self != NULL ? ((Header*)self - 1)->size : 0)

struct Atom {
    long count;
    char text[];
};

ROW(Text AtomGetCString(Atom* self), self != NULL ? self->text : NULL)
ROW(void AtomAddRef(Atom* self), (void)(self != NULL && ++self->count))
ROW(int Compare(void const* a, void const* b), strcmp(((Atom*)a)->text, ((Atom*)b)->text))

static void* gAtoms; // the root of the tree

static Atom* AtomNewStringAtom(Text text) {
    Atom* const made = text != NULL ? calloc(1, sizeof *made + strlen(text) + 1) : NULL;
    if (made == NULL) {
        return NULL;
    }
    strcpy(made->text, text);
    Atom** const place = tsearch(made, &gAtoms, &Compare);
    Atom* const atom = place != NULL ? *place : NULL;
    free(atom != made ? made : NULL);
    AtomAddRef(atom);
    return atom;
}

// A reference is given up 256 calls later, so that a string stays readable for a moment.
static void AtomDeleteStringAtom(Atom* self) {
    static Atom* recent[256];
    static Byte next = 0;
    Atom* const oldest = recent[next];
    recent[next++] = self;
    if (oldest != NULL && --oldest->count == 0) {
        tdelete(oldest, &gAtoms, &Compare);
        free(oldest);
    }
}

// Stores the atom of a text, which may be null. Zero if memory runs out.
ROW(int StoreAtom(Atom** atom, Text text), (*atom = AtomNewStringAtom(text)) || text == NULL)

// What a list has under a key, which may be null. The number rises from item to item.
typedef struct Item {
    Atom* key;
    void* value;
    void* more; // the procedure that deletes an instance, or that is a check
    Size number;
} Item;

typedef struct List {
    Item* items;
    Size count;
} List;

ROW(void* ValueOf(Item const* self), self != NULL ? self->value : NULL)

static Item* Find(List const* list, Text key) {
    for (Size i = 0; key != NULL && i < list->count; ++i) {
        if (list->items[i].key != NULL && strcmp(list->items[i].key->text, key) == 0) {
            return &list->items[i];
        }
    }
    return NULL;
}

// Adds an item at the end. Zero if memory runs out.
static int Add(List* list, Text key, void* value, void* more) {
    static Size lastNumber = 0;
    Item item = {NULL, value, more, ++lastNumber};
    Item* const items = realloc(list->items, (list->count + 1) * sizeof item);
    list->items = items != NULL ? items : list->items;
    if (items == NULL || !StoreAtom(&item.key, key)) {
        return 0;
    }
    items[list->count++] = item;
    return 1;
}

static void Remove(List* list, Item* item) {
    AtomDeleteStringAtom(item->key);
    --list->count;
    memmove(item, item + 1, (Size)(list->items + list->count - item) * sizeof *item);
}

static void Clear(List* list) {
    while (list->count > 0) {
        Remove(list, &list->items[list->count - 1]);
    }
    free(list->items);
}
