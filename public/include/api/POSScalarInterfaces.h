// The runtime's scalar values: numbers, 8-bit strings, 16-bit strings and typed binary data.
//
// Each "Is" procedure returns nonzero for a value of its type, and zero for any other value and for
// null. Each "New" procedure returns an unowned value, or null if memory runs out. What a pointer
// result points to is owned by the value.
#pragma once

#include "api/BIBTable.h"
#include "api/POSObjectInterface.h"

typedef struct POSNumber POSNumber;
typedef struct POSString POSString;
typedef struct POSUnicodeString POSUnicodeString;
typedef struct POSBinData POSBinData;

typedef POSNumber* (*POSNumberNewPOSNumberProc)(double value);
typedef long (*POSNumberIsPOSNumberProc)(POSObject* object);
typedef double (*POSNumberGetProc)(POSNumber* self);

// text is NUL-terminated and copied; null counts as empty.
typedef POSString* (*POSStringNewPOSStringProc)(char const* text);
typedef long (*POSStringIsPOSStringProc)(POSObject* object);
typedef char const* (*POSStringGetProc)(POSString* self);

// text is UTF-16 in the machine's byte order, terminated by a zero unit, and copied; null counts as
// empty.
typedef POSUnicodeString* (*POSUnicodeStringNewPOSUnicodeStringProc)(unsigned short const* text);
typedef long (*POSUnicodeStringIsPOSUnicodeStringProc)(POSObject* object);
typedef unsigned short const* (*POSUnicodeStringGetProc)(POSUnicodeString* self);

// typeName and the size bytes at data are copied; data may be null if size is 0.
typedef POSBinData* (*POSBinDataNewPOSBinDataProc)(
    char const* typeName, unsigned char const* data, unsigned long size);
typedef long (*POSBinDataIsPOSBinDataProc)(POSObject* object);
typedef char const* (*POSBinDataGetTypeNameProc)(POSBinData* self);
typedef unsigned char const* (*POSBinDataGetBinDataProc)(POSBinData* self);
typedef unsigned long (*POSBinDataGetSizeProc)(POSBinData* self);

// clang-format off
#define POS_NUMBER_INTERFACE_ROWS(ROW)            \
    ROW(NewPOSNumber, POSNumberNewPOSNumberProc)  \
    ROW(IsPOSNumber,  POSNumberIsPOSNumberProc)   \
    ROW(Get,          POSNumberGetProc)

#define POS_STRING_INTERFACE_ROWS(ROW)            \
    ROW(NewPOSString, POSStringNewPOSStringProc)  \
    ROW(IsPOSString,  POSStringIsPOSStringProc)   \
    ROW(Get,          POSStringGetProc)

#define POS_UNICODE_STRING_INTERFACE_ROWS(ROW)                         \
    ROW(NewPOSUnicodeString, POSUnicodeStringNewPOSUnicodeStringProc)  \
    ROW(IsPOSUnicodeString,  POSUnicodeStringIsPOSUnicodeStringProc)   \
    ROW(Get,                 POSUnicodeStringGetProc)

#define POS_BIN_DATA_INTERFACE_ROWS(ROW)            \
    ROW(NewPOSBinData, POSBinDataNewPOSBinDataProc) \
    ROW(IsPOSBinData,  POSBinDataIsPOSBinDataProc)  \
    ROW(GetTypeName,   POSBinDataGetTypeNameProc)   \
    ROW(GetBinData,    POSBinDataGetBinDataProc)    \
    ROW(GetSize,       POSBinDataGetSizeProc)
// clang-format on

// The tables of "POSNumberInterface", "POSStringInterface", "POSUnicodeStringInterface" and
// "POSBinDataInterface".
typedef struct _t_POSNumberInterface {
    POS_NUMBER_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_POSNumberInterface;

typedef struct _t_POSStringInterface {
    POS_STRING_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_POSStringInterface;

typedef struct _t_POSUnicodeStringInterface {
    POS_UNICODE_STRING_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_POSUnicodeStringInterface;

typedef struct _t_POSBinDataInterface {
    POS_BIN_DATA_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_POSBinDataInterface;
