// The runtime's streams: containers that transfer bytes, at three levels, and the factory for them.
//
// A stream's methods are found by its signature: it has the methods of its own level and of the
// lower levels. A short read means the end of the data and is not an error.
#pragma once

#include "api/BIBErrorInterface.h"
#include "api/BIBSharedBuffInterface.h"
#include "api/BIBTable.h"

// All three are containers.
typedef struct BIBSimpleStream BIBSimpleStream;
typedef struct BIBRewindableStream BIBRewindableStream;
typedef struct BIBPositionableStream BIBPositionableStream;

// The origin of an offset of Seek.
typedef enum BIBPositionableStream_SeekOrigin {
    kBIBSeekFromStart = 0,
    kBIBSeekFromCurrent = 1,
    kBIBSeekFromEnd = 2,
    // Fixes the width of the enumeration.
    kBIBSeekOriginWidth = 0x7FFFFFFF
} BIBPositionableStream_SeekOrigin;

// Reads up to size bytes into buffer; *bytesRead is the number read, less than size only at the
// end.
typedef BIBError* (*BIBSimpleStreamReadProc)(
    BIBSimpleStream* self, unsigned long* bytesRead, unsigned char* buffer, unsigned long size);

// Writes all size bytes at the position, or returns an error.
typedef BIBError* (*BIBSimpleStreamWriteProc)(
    BIBSimpleStream* self, unsigned char const* buffer, unsigned long size);

// clang-format off
#define BIB_SIMPLE_STREAM_INTERFACE_ROWS(ROW) \
    ROW(Read,  BIBSimpleStreamReadProc)       \
    ROW(Write, BIBSimpleStreamWriteProc)
// clang-format on

// The methods of the first level.
typedef struct _t_BIBSimpleStreamInterface {
    BIB_SIMPLE_STREAM_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBSimpleStreamInterface;

// A second stream for the same data, with its own position, at the start. *result is unowned.
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

// The additional methods of the second level.
typedef struct _t_BIBRewindableStreamInterface {
    BIB_REWINDABLE_STREAM_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBRewindableStreamInterface;

// A second stream for the same data, with its own position, at the start. *result is unowned.
typedef BIBError* (*BIBPositionableStreamCreateIndependentlyPositionableStreamProc)(
    BIBPositionableStream* self, BIBPositionableStream** result);

// *position is the distance from the start in bytes.
typedef BIBError* (*BIBPositionableStreamMarkProc)(
    BIBPositionableStream* self, unsigned long* position);

// Moves to offset bytes from origin. A target before the start or after the end is an error and
// does not change the position.
typedef BIBError* (*BIBPositionableStreamSeekProc)(
    BIBPositionableStream* self, long offset, BIBPositionableStream_SeekOrigin origin);

// clang-format off
#define BIB_POSITIONABLE_STREAM_INTERFACE_ROWS(ROW)                         \
    ROW(CreateIndependentlyPositionableStream,                              \
        BIBPositionableStreamCreateIndependentlyPositionableStreamProc)     \
    ROW(Mark, BIBPositionableStreamMarkProc)                                \
    ROW(Seek, BIBPositionableStreamSeekProc)
// clang-format on

// The additional methods of the third level.
typedef struct _t_BIBPositionableStreamInterface {
    BIB_POSITIONABLE_STREAM_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBPositionableStreamInterface;

// The procedures from which a host makes its own stream. Procedures that the level does not need
// may be null; if read or write is missing, the stream's Read or Write returns an error. They have
// the contracts of the methods above, with clientData instead of the stream. deleteProc (may be
// null) is called on clientData when the stream's last reference is released.
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

// An empty memory stream that grows on writing. *result is unowned, here and below.
typedef BIBError* (*BIBNewPositionableMemoryStreamProc)(BIBPositionableStream** result);

// A stream that reads buffer and owns a reference to it. Writing to it is an error.
typedef BIBError* (*BIBNewPositionableBufferStreamProc)(
    BIBPositionableStream** result, BIBSharedBuffer* buffer);

// A stream for the file at path, in UTF-8. With writable zero, the file must exist and writing is
// an error. Otherwise a missing file is created, and an existing one keeps its bytes.
typedef BIBError* (*BIBNewPositionableFileStreamProc)(
    BIBPositionableStream** result, char const* path, int writable);

// Streams implemented by the host. procs is copied. On an error the caller still owns clientData.
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
