// The runtime's compound values, arrays and dictionaries, and the cursor over a dictionary.
//
// A collection owns a reference to each stored value; a value that is read is borrowed. If a
// collection loses a value because memory runs out, it becomes an invalid container: no reference
// can be added to it and it cannot be cloned, so the loss cannot go unnoticed.
#pragma once

#include "api/BIBStringInterface.h"
#include "api/BIBTable.h"
#include "api/POSObjectInterface.h"

typedef struct POSArray POSArray;
typedef struct POSDict POSDict;
// A container, but not a value.
typedef struct POSDictIterator POSDictIterator;

// A new empty array, unowned; null if memory runs out.
typedef POSArray* (*POSArrayNewPOSArrayProc)(void);
// Nonzero for an array; zero for any other value and for null.
typedef long (*POSArrayIsPOSArrayProc)(POSObject* object);
// The element, borrowed; null if index is out of range.
typedef POSObject* (*POSArrayGetAtProc)(POSArray* self, unsigned long index);
typedef unsigned long (*POSArrayCountProc)(POSArray* self);
// Replaces an element. Nonzero on success; zero for an index out of range or a null value.
typedef long (*POSArraySetAtProc)(POSArray* self, unsigned long index, POSObject* value);
// Adds an element at the end. Nonzero on success; zero for a null value or if memory runs out.
typedef long (*POSArrayAppendProc)(POSArray* self, POSObject* value);
// Removes an element. Nonzero on success; zero for an index out of range.
typedef long (*POSArrayRemoveProc)(POSArray* self, unsigned long index);

// A new empty dictionary, unowned; null if memory runs out.
typedef POSDict* (*POSDictNewPOSDictProc)(void);
// Nonzero for a dictionary; zero for any other value and for null.
typedef long (*POSDictIsPOSDictProc)(POSObject* object);
// The value under key, borrowed; null if there is none.
typedef POSObject* (*POSDictGetProc)(POSDict* self, BIBStringAtom* key);
// The value at a path of keys and array indexes, such as "OtherNamespaces/0/Namespace", borrowed;
// null if there is none.
typedef POSObject* (*POSDictDeepGetProc)(POSDict* self, BIBStringAtom* path);
// Stores value under key; an existing key keeps its position in the order. Nonzero on success; zero
// for a null key or value or if memory runs out.
typedef long (*POSDictPutProc)(POSDict* self, BIBStringAtom* key, POSObject* value);
// Removes a key. Nonzero if it existed.
typedef long (*POSDictRemoveProc)(POSDict* self, BIBStringAtom* key);

// A cursor over the keys in the order in which they were first stored, unowned; null if memory runs
// out. It has no current key before Begin. It owns a reference to dict and survives every change to
// it: a key that is removed under the cursor stays its current key until the cursor moves.
typedef POSDictIterator* (*POSDictIteratorNewPOSDictIteratorProc)(POSDict* dict);
typedef void (*POSDictIteratorBeginProc)(POSDictIterator* self);
typedef void (*POSDictIteratorNextProc)(POSDictIterator* self);
// Nonzero if there is no current key.
typedef long (*POSDictIteratorIsDoneProc)(POSDictIterator* self);
// The current key, valid until the cursor moves; null at the end.
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
