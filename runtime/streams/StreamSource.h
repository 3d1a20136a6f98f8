// The data behind positionable streams: bytes that can be read and written at any offset.
//
// Independent streams share one source; it goes with the last of them. Not thread safe.
#pragma once

#include "api/BIBStreamInterface.h"

#include <memory>

namespace bibrt {

class StreamSource {
public:
    StreamSource() = default;
    StreamSource(StreamSource const&) = delete;
    StreamSource& operator=(StreamSource const&) = delete;
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

} // namespace bibrt
