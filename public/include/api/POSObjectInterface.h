// The runtime's value objects in general: what every value can do, and making one from text.
//
// Values are containers and follow their ownership rules: a new value comes unowned, a value that
// is read out of another is borrowed, a value that is put into another is counted by it.
#pragma once

#include "api/BIBContainerInterface.h"
#include "api/BIBStreamInterface.h"
#include "api/BIBTable.h"

typedef struct POSObject POSObject;

// A deep copy, unowned; null on failure.
typedef POSObject* (*POSObjectCloneProc)(POSObject* self);

// Non-zero when both are of one type and have equal contents. Dictionaries are equal whatever the
// order of their keys. Zero when other is null.
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

// The same behind a comment line that holds header.
typedef BIBError* (*POSObjectDebugDumpWithHeaderProc)(
    POSObject* object, BIBPositionableStream* stream, char const* header);

// The same as DebugDump, and moves the stream to its start afterwards.
typedef BIBError* (*POSObjectDebugDumpRewindProc)(POSObject* object, BIBPositionableStream* stream);

// Makes a value from a NUL-terminated text in the object notation, unowned. A text that does not
// parse gives null and, if errorText is not null, a message in *errorText that names line and
// column and stays readable until the thread's next call of CreateFromText.
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
