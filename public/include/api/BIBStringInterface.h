// The runtime's string atoms: interned texts. Atoms of equal texts give the same text pointer.
#pragma once

#include "api/BIBTable.h"

typedef struct BIBStringAtom BIBStringAtom;

// The atom of a NUL-terminated text, with one reference for the caller; null when memory runs out
// and for a null text. On a pointer that GetCString gave, the atom has that same pointer.
typedef BIBStringAtom* (*BIBNewStringAtomProc)(char const* text);

// Gives a reference up. Accepts null. The text stays readable for a moment after the last one, long
// enough for a caller to copy it.
typedef void (*BIBDeleteStringAtomProc)(BIBStringAtom* atom);

// The text; null for null.
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
