// The runtime's values in general: the methods of every value, and making a value from text.
//
// Values are containers and follow their ownership rules: a new value is unowned, a value that is
// read from another is borrowed, and a value that is stored in another is referenced by it.
#pragma once

#include "api/BIBContainerInterface.h"
#include "api/BIBStreamInterface.h"
#include "api/BIBTable.h"

typedef struct POSObject POSObject;

// A deep copy, unowned; null on failure.
typedef POSObject* (*POSObjectCloneProc)(POSObject* self);

// Nonzero if both have the same type and equal contents. The order of keys does not matter for
// dictionaries. Zero if other is null.
typedef long (*POSObjectIsEqualProc)(POSObject* self, POSObject* other);

// clang-format off
#define POS_OBJECT_VIRTUAL_INTERFACE_ROWS(ROW) \
    ROW(Clone,   POSObjectCloneProc)           \
    ROW(IsEqual, POSObjectIsEqualProc)
// clang-format on

// The methods that every value has under its signature.
typedef struct _t_POSObjectVirtualInterface {
    POS_OBJECT_VIRTUAL_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_POSObjectVirtualInterface;

// Writes object to stream in the object notation, at the stream's position.
typedef BIBError* (*POSObjectDebugDumpProc)(POSObject* object, BIBPositionableStream* stream);

// The same, after a comment line with header.
typedef BIBError* (*POSObjectDebugDumpWithHeaderProc)(
    POSObject* object, BIBPositionableStream* stream, char const* header);

// As DebugDump, then moves the stream to its start.
typedef BIBError* (*POSObjectDebugDumpRewindProc)(POSObject* object, BIBPositionableStream* stream);

// Makes a value, unowned, from a NUL-terminated string in the object notation. If the text does not
// parse: null, and if errorText is not null, a message with line and column in *errorText, which
// stays readable until the thread's next call of CreateFromText.
typedef POSObject* (*POSObjectCreateFromTextProc)(char const* objectText, char const** errorText);

// clang-format off
#define POS_OBJECT_STATICS_ROWS(ROW)                           \
    ROW(DebugDump,           POSObjectDebugDumpProc)           \
    ROW(DebugDumpWithHeader, POSObjectDebugDumpWithHeaderProc) \
    ROW(DebugDumpRewind,     POSObjectDebugDumpRewindProc)     \
    ROW(CreateFromText,      POSObjectCreateFromTextProc)
// clang-format on

// The table of "POSObjectStatics".
typedef struct _t_POSObjectStatics {
    POS_OBJECT_STATICS_ROWS(BIB_TABLE_SLOT)
} _t_POSObjectStatics;
