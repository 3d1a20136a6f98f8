// The runtime's errors: reference-counted objects with a message, a component, an id and optional
// info.
//
// A procedure that reports failure as a BIBError* transfers one reference to the caller; null means
// success.
#pragma once

#include "api/BIBStringInterface.h"
#include "api/BIBTable.h"

typedef struct BIBError BIBError;

// The runtime's predefined errors, as returned by GetCoreError.
typedef enum BRVErrorID {
    kBRVUnknownError = 0,
    kBRVMemoryError = 1,
    // Fixes the width of the enumeration.
    kBRVErrorIDWidth = 0x7FFFFFFF
} BRVErrorID;

// Makes an error and copies the strings. infoFreeProc (may be null) is called on info when the last
// reference is released. One reference for the caller; null if memory runs out, and then info is
// not freed.
typedef BIBError* (*BIBNewErrorProc)(
    char const* message, char const* component, long id, void* info, void (*infoFreeProc)(void*));

// The error with that id, with one reference for the caller; null if there is none.
typedef BIBError* (*BIBGetCoreErrorProc)(BRVErrorID id);

// Adds a reference and returns error. Accepts null.
typedef BIBError* (*BIBErrorAddRefProcV2)(BIBError* error);

// Releases a reference. Accepts null.
typedef void (*BIBErrorReleaseProc)(BIBError* error);

// The message, or the component's name; borrowed from the error.
typedef BIBStringAtom* (*BIBErrorGetMessageProc)(BIBError* error);
typedef BIBStringAtom* (*BIBErrorGetComponentProc)(BIBError* error);

// The id passed at creation.
typedef long (*BIBErrorGetIDProc)(BIBError* error);

// The info passed at creation, owned by the error.
typedef void* (*BIBGetErrorInfoProc)(BIBError* error);

// clang-format off
#define BIB_ERROR_INTERFACE_ROWS(ROW)              \
    ROW(NewError,        BIBNewErrorProc)          \
    ROW(GetCoreError,    BIBGetCoreErrorProc)      \
    ROW(AddRef,          BIBErrorAddRefProcV2)     \
    ROW(Release,         BIBErrorReleaseProc)      \
    ROW(GetErrorMessage, BIBErrorGetMessageProc)   \
    ROW(GetComponent,    BIBErrorGetComponentProc) \
    ROW(GetID,           BIBErrorGetIDProc)        \
    ROW(GetErrorInfo,    BIBGetErrorInfoProc)
// clang-format on

// The table of "BIBErrorInterface".
typedef struct _t_BIBErrorInterface {
    BIB_ERROR_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBErrorInterface;
