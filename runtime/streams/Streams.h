// Streams as containers, and the data behind them. The body implements one kind of stream; the rows
// are common to all kinds. Not thread safe.
#pragma once

#include "api/BIBStreamInterface.h"
#include "runtime/objects/Container.h"

#include <memory>

namespace bibrt {

// The data of positionable streams: bytes that can be read and written at any offset. Independent
// streams share one source, which is deleted with the last of them.
class StreamSource {
public:
    virtual ~StreamSource() = default;

    // Each function returns null, or an error with a reference for the caller. They throw
    // std::bad_alloc, and what a caller's procedure throws.

    // Reads up to size bytes at offset. Sets bytesRead to their number, less than size only at the
    // end.
    virtual BIBError* ReadAt(
        unsigned long offset,
        unsigned char* buffer,
        unsigned long size,
        unsigned long& bytesRead) = 0;

    // Writes all size bytes at offset. REQUIRES: offset is not past the end.
    virtual BIBError*
    WriteAt(unsigned long offset, unsigned char const* buffer, unsigned long size) = 0;

    // Sets length to the number of bytes.
    virtual BIBError* GetLength(unsigned long& length) = 0;
};

using SourcePtr = std::shared_ptr<StreamSource>;

// An empty source in memory, which grows by doubling. Throws std::bad_alloc.
SourcePtr MakeMemorySource();

// A read-only source on buffer, to which it adds a reference. Throws std::bad_alloc.
SourcePtr MakeBufferSource(BIBSharedBuffer* buffer);

// A source on the file at path. Returns null or an error. writable: as in
// BIBNewPositionableFileStreamProc. Throws std::bad_alloc.
BIBError* OpenFileSource(SourcePtr& result, char const* path, bool writable);

// The operations of one kind of stream. Each function returns null, or an error with a reference
// for the caller. They throw std::bad_alloc, and what a caller's procedure throws.
class StreamBody {
public:
    virtual ~StreamBody() = default;

    virtual BIBError* Read(unsigned char* buffer, unsigned long size, unsigned long& bytesRead) = 0;
    virtual BIBError* Write(unsigned char const* buffer, unsigned long size) = 0;
    virtual BIBError* Rewind() = 0;
    virtual BIBError* Mark(unsigned long& position) = 0;
    virtual BIBError* Seek(long offset, BIBPositionableStream_SeekOrigin origin) = 0;

    // The source of the data, for a second stream with its own position.
    virtual BIBError* GetSource(SourcePtr& result) = 0;

    // Up to a block of bytes at the current position, valid until the next call.
    virtual BIBError* NextBlock(unsigned char const*& block, unsigned long& size) = 0;
};

struct BodyDeleter {
    void operator()(StreamBody* body) const noexcept { DeleteObject(body); }
};
using BodyPtr = std::unique_ptr<StreamBody, BodyDeleter>;

extern ContainerType gSimpleStreamType;
extern ContainerType gRewindableStreamType;
extern ContainerType gPositionableStreamType;
extern ContainerType gSourceStreamType;

// Whether container is a stream of any level.
bool IsStream(BIBContainer const* container) noexcept;

} // namespace bibrt

struct BIBSimpleStream : BIBContainer {
    BIBSimpleStream(bibrt::ContainerType const& type, bibrt::BodyPtr body) noexcept
        : BIBContainer(type),
          fBody(std::move(body)) {}

    bibrt::BodyPtr fBody; // never null
};

struct BIBRewindableStream : BIBSimpleStream {
    using BIBSimpleStream::BIBSimpleStream;
};

struct BIBPositionableStream : BIBRewindableStream {
    using BIBRewindableStream::BIBRewindableStream;
};

namespace bibrt {

// A new stream on source with its own position, at the start; unowned. Throws std::bad_alloc.
BIBPositionableStream* MakeSourceStream(SourcePtr source);

// A new stream on a host's procedures, of the level that type names; unowned, and owner of
// clientData. Throws std::bad_alloc; clientData then remains the caller's.
BIBPositionableStream*
MakeClientStream(ContainerType const& type, BIBClientStreamProcs const& procs, void* clientData);

} // namespace bibrt
