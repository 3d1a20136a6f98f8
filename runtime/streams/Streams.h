// Streams as containers. What differs between the kinds stands in the body; the rows are the same
// for all. Not thread safe.
#pragma once

#include "api/BIBStreamInterface.h"
#include "runtime/objects/Container.h"
#include "runtime/streams/StreamSource.h"

#include <memory>

namespace bibrt {

class StreamBody;

struct BodyDeleter {
    void operator()(StreamBody* body) const noexcept;
};
using BodyPtr = std::unique_ptr<StreamBody, BodyDeleter>;

// What a stream does. Each operation gives null or an error with a reference for the caller; each
// throws std::bad_alloc, and what a caller's procedure throws.
class StreamBody {
public:
    StreamBody() = default;
    StreamBody(StreamBody const&) = delete;
    StreamBody& operator=(StreamBody const&) = delete;
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

// The body in a block of its own. Throws std::bad_alloc.
template <class Body, class... Args>
BodyPtr MakeBody(Args&&... args) {
    return BodyPtr(NewObject<Body>(std::forward<Args>(args)...));
}

} // namespace bibrt
