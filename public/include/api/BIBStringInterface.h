// The runtime's string atoms: interned strings. Atoms of equal strings have the same string
// pointer.
#pragma once

#include "api/BIBTable.h"

typedef struct BIBStringAtom BIBStringAtom;

// The atom of a NUL-terminated string, with one reference for the caller; null if memory runs out
// and for null. For a pointer that GetCString returned, the atom has that same pointer.
typedef BIBStringAtom* (*BIBNewStringAtomProc)(char const* text);

// Releases a reference. Accepts null. After the last one, the string stays readable for a moment,
// long enough for a caller to copy it.
typedef void (*BIBDeleteStringAtomProc)(BIBStringAtom* atom);

// The string, owned by the atom; null for null.
typedef char const* (*BIBGetCStringProc)(BIBStringAtom* atom);

// Adds a reference. Accepts null.
typedef void (*BIBAddRefStringAtomProc)(BIBStringAtom* atom);

// clang-format off
#define BIB_STRING_INTERFACE_ROWS(ROW)             \
    ROW(NewStringAtom,    BIBNewStringAtomProc)    \
    ROW(DeleteStringAtom, BIBDeleteStringAtomProc) \
    ROW(GetCString,       BIBGetCStringProc)       \
    ROW(AddRef,           BIBAddRefStringAtomProc)
// clang-format on

// The table of "BIBStringInterface".
typedef struct _t_BIBStringInterface {
    BIB_STRING_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBStringInterface;
