// The runtime's errors: counted objects with a message, a component, an id and optional info.
//
// A procedure that reports its failure as a BIBError* hands one reference to the caller; null means
// success.
#pragma once

#include "api/BIBStringInterface.h"
#include "api/BIBTable.h"

typedef struct BIBError BIBError;

// The runtime's own errors, as GetCoreError gives them.
typedef enum BRVErrorID {
    kBRVUnknownError = 0,
    kBRVMemoryError = 1,
    // Fixes the width of the enumeration.
    kBRVErrorIDWidth = 0x7FFFFFFF
} BRVErrorID;

// Makes an error; the texts are copied. infoFreeProc (may be null) is called on info with the last
// reference. One reference for the caller; null when memory runs out, and then info is not freed.
typedef BIBError* (*BIBNewErrorProc)(
    char const* message, char const* component, long id, void* info, void (*infoFreeProc)(void*));

// The error of that id with one reference for the caller; null when there is none.
typedef BIBError* (*BIBGetCoreErrorProc)(BRVErrorID id);

// Adds a reference and returns error. Accepts null.
typedef BIBError* (*BIBErrorAddRefProcV2)(BIBError* error);

// Gives a reference up. Accepts null.
typedef void (*BIBErrorReleaseProc)(BIBError* error);

// The message, or the component's name; borrowed from the error.
typedef BIBStringAtom* (*BIBErrorGetMessageProc)(BIBError* error);
typedef BIBStringAtom* (*BIBErrorGetComponentProc)(BIBError* error);

// The id given at creation.
typedef long (*BIBErrorGetIDProc)(BIBError* error);

// The info given at creation; it belongs to the error.
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
