// The runtime's compound values, arrays and dictionaries, and the cursor over a dictionary.
//
// A stored value is counted by the collection; a value that is read is borrowed. A collection that
// lost a value because memory ran out becomes an invalid container: no reference can be added to it
// and it has no clone, so the loss cannot go unseen.
#pragma once

#include "api/BIBStringInterface.h"
#include "api/BIBTable.h"
#include "api/POSObjectInterface.h"

typedef struct POSArray POSArray;
typedef struct POSDict POSDict;
// A container, but no value.
typedef struct POSDictIterator POSDictIterator;

// A new empty array, unowned; null when memory runs out.
typedef POSArray* (*POSArrayNewPOSArrayProc)(void);
// Non-zero for an array; zero for any other value and for null.
typedef long (*POSArrayIsPOSArrayProc)(POSObject* object);
// The element, borrowed; null when index is out of range.
typedef POSObject* (*POSArrayGetAtProc)(POSArray* self, unsigned long index);
typedef unsigned long (*POSArrayCountProc)(POSArray* self);
// Replaces an element. Non-zero on success; zero for an index out of range or a null value.
typedef long (*POSArraySetAtProc)(POSArray* self, unsigned long index, POSObject* value);
// Adds an element at the end. Non-zero on success; zero for a null value or when memory runs out.
typedef long (*POSArrayAppendProc)(POSArray* self, POSObject* value);
// Takes an element out. Non-zero on success; zero for an index out of range.
typedef long (*POSArrayRemoveProc)(POSArray* self, unsigned long index);

// A new empty dictionary, unowned; null when memory runs out.
typedef POSDict* (*POSDictNewPOSDictProc)(void);
// Non-zero for a dictionary; zero for any other value and for null.
typedef long (*POSDictIsPOSDictProc)(POSObject* object);
// The value under key, borrowed; null when there is none.
typedef POSObject* (*POSDictGetProc)(POSDict* self, BIBStringAtom* key);
// The value at a path of keys and array positions, as in "OtherNamespaces/0/Namespace", borrowed;
// null when there is none.
typedef POSObject* (*POSDictDeepGetProc)(POSDict* self, BIBStringAtom* path);
// Stores value under key; a key that is there keeps its place in the order. Non-zero on success;
// zero for a null key or value or when memory runs out.
typedef long (*POSDictPutProc)(POSDict* self, BIBStringAtom* key, POSObject* value);
// Takes a key out. Non-zero when it was there.
typedef long (*POSDictRemoveProc)(POSDict* self, BIBStringAtom* key);

// A cursor over the keys in the order in which they were first put, unowned, standing before Begin
// on no key; null when memory runs out. It holds a reference on dict and survives every change to
// it: a key that is removed under the cursor stays its current key until it moves.
typedef POSDictIterator* (*POSDictIteratorNewPOSDictIteratorProc)(POSDict* dict);
typedef void (*POSDictIteratorBeginProc)(POSDictIterator* self);
typedef void (*POSDictIteratorNextProc)(POSDictIterator* self);
// Non-zero when no current key remains.
typedef long (*POSDictIteratorIsDoneProc)(POSDictIterator* self);
// The current key, readable until the cursor moves; null when done.
typedef char const* (*POSDictIteratorCurKeyProc)(POSDictIterator* self);

// clang-format off
#define POS_ARRAY_INTERFACE_ROWS(ROW)         \
    ROW(NewPOSArray, POSArrayNewPOSArrayProc) \
    ROW(IsPOSArray,  POSArrayIsPOSArrayProc)  \
    ROW(GetAt,       POSArrayGetAtProc)       \
    ROW(Count,       POSArrayCountProc)       \
    ROW(SetAt,       POSArraySetAtProc)       \
    ROW(Append,      POSArrayAppendProc)      \
    ROW(Remove,      POSArrayRemoveProc)

#define POS_DICT_INTERFACE_ROWS(ROW)        \
    ROW(NewPOSDict, POSDictNewPOSDictProc)  \
    ROW(IsPOSDict,  POSDictIsPOSDictProc)   \
    ROW(Get,        POSDictGetProc)         \
    ROW(DeepGet,    POSDictDeepGetProc)     \
    ROW(Put,        POSDictPutProc)         \
    ROW(Remove,     POSDictRemoveProc)

#define POS_DICT_ITERATOR_INTERFACE_ROWS(ROW)                       \
    ROW(NewPOSDictIterator, POSDictIteratorNewPOSDictIteratorProc)  \
    ROW(Begin,              POSDictIteratorBeginProc)               \
    ROW(Next,               POSDictIteratorNextProc)                \
    ROW(IsDone,             POSDictIteratorIsDoneProc)              \
    ROW(CurKey,             POSDictIteratorCurKeyProc)
// clang-format on

// The tables of "POSArrayInterface", "POSDictInterface" and "POSDictIteratorInterface".
typedef struct _t_POSArrayInterface {
    POS_ARRAY_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_POSArrayInterface;

typedef struct _t_POSDictInterface {
    POS_DICT_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_POSDictInterface;

typedef struct _t_POSDictIteratorInterface {
    POS_DICT_ITERATOR_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_POSDictIteratorInterface;
