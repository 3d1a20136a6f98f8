// Streams as containers, and the data behind them. What differs between the kinds of streams stands
// in the body; the rows are the same for all. Not thread safe.
#pragma once

#include "api/BIBStreamInterface.h"
#include "runtime/objects/Container.h"

#include <memory>

namespace bibrt {

// The data behind positionable streams: bytes that can be read and written at any offset.
// Independent streams share one source; it goes with the last of them.
class StreamSource {
public:
    virtual ~StreamSource() = default;

    // Each gives null or an error with a reference for the caller. They throw std::bad_alloc, and
    // what a caller's procedure throws.

    // Reads up to size bytes at offset; bytesRead is how many, fewer than size only at the end.
    virtual BIBError* ReadAt(
        unsigned long offset,
        unsigned char* buffer,
        unsigned long size,
        unsigned long& bytesRead) = 0;

    // Writes all size bytes at offset, which is not behind the end.
    virtual BIBError*
    WriteAt(unsigned long offset, unsigned char const* buffer, unsigned long size) = 0;

    // The number of bytes.
    virtual BIBError* GetLength(unsigned long& length) = 0;
};

using SourcePtr = std::shared_ptr<StreamSource>;

// An empty source in memory that grows by doubling. Throws std::bad_alloc.
SourcePtr MakeMemorySource();

// A source that reads buffer and holds a reference on it. Throws std::bad_alloc.
SourcePtr MakeBufferSource(BIBSharedBuffer* buffer);

// A source on the file at path, or an error; writable as in BIBNewPositionableFileStreamProc.
// Throws std::bad_alloc.
BIBError* OpenFileSource(SourcePtr& result, char const* path, bool writable);

// What a stream does. Each operation gives null or an error with a reference for the caller; each
// throws std::bad_alloc, and what a caller's procedure throws.
class StreamBody {
public:
    virtual ~StreamBody() = default;

    virtual BIBError* Read(unsigned char* buffer, unsigned long size, unsigned long& bytesRead) = 0;
    virtual BIBError* Write(unsigned char const* buffer, unsigned long size) = 0;
    virtual BIBError* Rewind() = 0;
    virtual BIBError* Mark(unsigned long& position) = 0;
    virtual BIBError* Seek(long offset, BIBPositionableStream_SeekOrigin origin) = 0;

    // The source of the data for a second stream with a position of its own.
    virtual BIBError* GetSource(SourcePtr& result) = 0;

    // Up to a block of bytes, from the position on, that stay until the next call.
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

// A stream on source with a position of its own, at the start; unowned. Throws std::bad_alloc.
BIBPositionableStream* MakeSourceStream(SourcePtr source);

// A host's own stream of the level that type names; unowned. Throws std::bad_alloc, and then
// clientData stays the caller's.
BIBPositionableStream*
MakeClientStream(ContainerType const& type, BIBClientStreamProcs const& procs, void* clientData);

} // namespace bibrt
