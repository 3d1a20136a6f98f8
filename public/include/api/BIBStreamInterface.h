// The runtime's streams: containers that transfer bytes, on three levels, and the factory for them.
//
// Streams are found by signature: under the signature of a stream stand the methods of its own
// level and of the levels below. A short read means the end of the data and is no error.
#pragma once

#include "api/BIBErrorInterface.h"
#include "api/BIBSharedBuffInterface.h"
#include "api/BIBTable.h"

// All three are containers.
typedef struct BIBSimpleStream BIBSimpleStream;
typedef struct BIBRewindableStream BIBRewindableStream;
typedef struct BIBPositionableStream BIBPositionableStream;

// What an offset of Seek is counted from.
typedef enum BIBPositionableStream_SeekOrigin {
    kBIBSeekFromStart = 0,
    kBIBSeekFromCurrent = 1,
    kBIBSeekFromEnd = 2,
    // Fixes the width of the enumeration.
    kBIBSeekOriginWidth = 0x7FFFFFFF
} BIBPositionableStream_SeekOrigin;

// Reads up to size bytes into buffer; *bytesRead is how many. Fewer than size only at the end.
typedef BIBError* (*BIBSimpleStreamReadProc)(
    BIBSimpleStream* self, unsigned long* bytesRead, unsigned char* buffer, unsigned long size);

// Writes all size bytes at the position or reports an error.
typedef BIBError* (*BIBSimpleStreamWriteProc)(
    BIBSimpleStream* self, unsigned char const* buffer, unsigned long size);

// clang-format off
#define BIB_SIMPLE_STREAM_INTERFACE_ROWS(ROW) \
    ROW(Read,  BIBSimpleStreamReadProc)       \
    ROW(Write, BIBSimpleStreamWriteProc)
// clang-format on

// The methods of a stream of the first level.
typedef struct _t_BIBSimpleStreamInterface {
    BIB_SIMPLE_STREAM_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBSimpleStreamInterface;

// A second stream on the same data with a position of its own, at the start. *result is unowned.
typedef BIBError* (*BIBRewindableStreamCreateIndependentlyRewindableStreamProc)(
    BIBRewindableStream* self, BIBRewindableStream** result);

// Moves to the start.
typedef BIBError* (*BIBRewindableStreamRewindProc)(BIBRewindableStream* self);

// clang-format off
#define BIB_REWINDABLE_STREAM_INTERFACE_ROWS(ROW)                           \
    ROW(CreateIndependentlyRewindableStream,                                \
        BIBRewindableStreamCreateIndependentlyRewindableStreamProc)         \
    ROW(Rewind, BIBRewindableStreamRewindProc)
// clang-format on

// The methods that the second level adds.
typedef struct _t_BIBRewindableStreamInterface {
    BIB_REWINDABLE_STREAM_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBRewindableStreamInterface;

// A second stream on the same data with a position of its own, at the start. *result is unowned.
typedef BIBError* (*BIBPositionableStreamCreateIndependentlyPositionableStreamProc)(
    BIBPositionableStream* self, BIBPositionableStream** result);

// *position is the distance from the start in bytes.
typedef BIBError* (*BIBPositionableStreamMarkProc)(
    BIBPositionableStream* self, unsigned long* position);

// Moves to offset bytes from origin. A target before the start or behind the end is an error and
// leaves the position as it was.
typedef BIBError* (*BIBPositionableStreamSeekProc)(
    BIBPositionableStream* self, long offset, BIBPositionableStream_SeekOrigin origin);

// clang-format off
#define BIB_POSITIONABLE_STREAM_INTERFACE_ROWS(ROW)                         \
    ROW(CreateIndependentlyPositionableStream,                              \
        BIBPositionableStreamCreateIndependentlyPositionableStreamProc)     \
    ROW(Mark, BIBPositionableStreamMarkProc)                                \
    ROW(Seek, BIBPositionableStreamSeekProc)
// clang-format on

// The methods that the third level adds.
typedef struct _t_BIBPositionableStreamInterface {
    BIB_POSITIONABLE_STREAM_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBPositionableStreamInterface;

// What a host gives to make a stream of its own. Procedures that the level does not need may be
// null; a missing read or write makes the stream's Read or Write report an error. They work as the
// methods above, with clientData in place of the stream. deleteProc (may be null) is called on
// clientData with the stream's last reference.
// NOLINTBEGIN(readability-identifier-naming): plain C
typedef struct BIBClientStreamProcs {
    BIBError* (*read)(
        void* clientData, unsigned long* bytesRead, unsigned char* buffer, unsigned long size);
    BIBError* (*write)(void* clientData, unsigned char const* buffer, unsigned long size);
    BIBError* (*rewind)(void* clientData);
    BIBError* (*mark)(void* clientData, unsigned long* position);
    BIBError* (*seek)(void* clientData, long offset, BIBPositionableStream_SeekOrigin origin);
    void (*deleteProc)(void* clientData);
} BIBClientStreamProcs;
// NOLINTEND(readability-identifier-naming)

// An empty stream in memory that grows as it is written. *result is unowned, here and below.
typedef BIBError* (*BIBNewPositionableMemoryStreamProc)(BIBPositionableStream** result);

// A stream that reads buffer and holds a reference on it. Writing to it is an error.
typedef BIBError* (*BIBNewPositionableBufferStreamProc)(
    BIBPositionableStream** result, BIBSharedBuffer* buffer);

// A stream on the file at path, in UTF-8. With writable zero the file must exist and writing is an
// error; otherwise it is created where missing and keeps its bytes.
typedef BIBError* (*BIBNewPositionableFileStreamProc)(
    BIBPositionableStream** result, char const* path, int writable);

// Streams of the host's own making. procs is copied. On an error clientData stays the caller's.
typedef BIBError* (*BIBNewClientSimpleStreamProc)(
    BIBSimpleStream** result, BIBClientStreamProcs const* procs, void* clientData);
typedef BIBError* (*BIBNewClientRewindableStreamProc)(
    BIBRewindableStream** result, BIBClientStreamProcs const* procs, void* clientData);
typedef BIBError* (*BIBNewClientPositionableStreamProc)(
    BIBPositionableStream** result, BIBClientStreamProcs const* procs, void* clientData);

// clang-format off
#define BIB_STREAM_FACTORY_INTERFACE_ROWS(ROW)                           \
    ROW(NewPositionableMemoryStream, BIBNewPositionableMemoryStreamProc) \
    ROW(NewPositionableBufferStream, BIBNewPositionableBufferStreamProc) \
    ROW(NewPositionableFileStream,   BIBNewPositionableFileStreamProc)   \
    ROW(NewClientSimpleStream,       BIBNewClientSimpleStreamProc)       \
    ROW(NewClientRewindableStream,   BIBNewClientRewindableStreamProc)   \
    ROW(NewClientPositionableStream, BIBNewClientPositionableStreamProc)
// clang-format on

// The table of "BIBStreamFactoryInterface".
typedef struct _t_BIBStreamFactoryInterface {
    BIB_STREAM_FACTORY_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBStreamFactoryInterface;
