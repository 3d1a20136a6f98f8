// The types of streams, their methods, and their methods as sources of data.
#include "runtime/streams/Streams.h"

#include "api/BIBDataInterface.h"
#include "api/BIBStreamInterface.h"
#include "runtime/objects/Errors.h"
#include "runtime/objects/FailurePoint.h"
#include "runtime/objects/Tables.h"

#include <limits>

// The interfaces for sources of data are implemented by streams on a source.
struct BIBDataBlockStream : BIBPositionableStream {};
struct BIBSizedDataStore : BIBPositionableStream {};
struct BIBDataStore : BIBPositionableStream {};

namespace bibrt {

// Each level inherits the methods of the one below. A stream on a source is also a source of data.
constinit ContainerType gSimpleStreamType = {
    "BIBSimpleStream", "BIBSimpleStreamObject", nullptr, &DestroyAs<BIBPositionableStream>};
constinit ContainerType gRewindableStreamType = {
    "BIBRewindableStream",
    "BIBRewindableStreamObject",
    "BIBSimpleStreamObject",
    &DestroyAs<BIBPositionableStream>};
constinit ContainerType gPositionableStreamType = {
    "BIBPositionableStream",
    "BIBPositionableStreamObject",
    "BIBRewindableStreamObject",
    &DestroyAs<BIBPositionableStream>};
constinit ContainerType gSourceStreamType = {
    "BIBSourceStream",
    "BIBSourceStreamObject",
    "BIBPositionableStreamObject",
    &DestroyAs<BIBPositionableStream>};

namespace {

constexpr std::size_t kBlockSize = 4096;
constexpr unsigned long kMaxPosition = std::numeric_limits<long>::max();

// Sets target to the position at offset from base, or returns an error and leaves it. length: the
// end of the data.
BIBError* FindTarget(unsigned long base, long offset, unsigned long length, unsigned long& target) {
    // The magnitude in unsigned arithmetic, which is defined for the minimum of long too.
    unsigned long const distance =
        offset < 0 ? 0UL - static_cast<unsigned long>(offset) : static_cast<unsigned long>(offset);
    if (offset < 0 && distance > base) {
        return Failure("seek to a position before the start of the stream");
    }
    if (offset >= 0 && (base > length || distance > length - base)) {
        return Failure("seek to a position behind the end of the stream");
    }
    // A file that another program cut off may end before the position.
    if (offset < 0 && base - distance > length) {
        return Failure("seek to a position behind the end of the stream");
    }
    target = offset < 0 ? base - distance : base + distance;
    return nullptr;
}

// A stream on a source, with its own position.
class SourceBody final : public StreamBody {
public:
    explicit SourceBody(SourcePtr source) noexcept : fSource(std::move(source)) {}

    BIBError* Read(unsigned char* buffer, unsigned long size, unsigned long& bytesRead) override {
        BIBError* const error = fSource->ReadAt(fPosition, buffer, size, bytesRead);
        if (!error) {
            fPosition += bytesRead;
        }
        return error;
    }

    BIBError* Write(unsigned char const* buffer, unsigned long size) override {
        unsigned long length = 0;
        if (BIBError* const error = fSource->GetLength(length)) {
            return error;
        }
        // A file or a host's data may have become shorter.
        if (fPosition > length) {
            return Failure("the position is behind the end of the stream");
        }
        if (size > kMaxPosition - fPosition) {
            return Failure("the stream would grow beyond the largest position");
        }
        BIBError* const error = fSource->WriteAt(fPosition, buffer, size);
        if (!error) {
            fPosition += size;
        }
        return error;
    }

    BIBError* Rewind() override {
        fPosition = 0;
        return nullptr;
    }

    BIBError* Mark(unsigned long& position) override {
        position = fPosition;
        return nullptr;
    }

    BIBError* Seek(long offset, BIBPositionableStream_SeekOrigin origin) override {
        unsigned long length = 0;
        if (BIBError* const error = fSource->GetLength(length)) {
            return error;
        }
        switch (origin) {
        case kBIBSeekFromStart:
            return FindTarget(0, offset, length, fPosition);
        case kBIBSeekFromCurrent:
            return FindTarget(fPosition, offset, length, fPosition);
        case kBIBSeekFromEnd:
            return FindTarget(length, offset, length, fPosition);
        default:
            return Failure("seek from an unknown origin");
        }
    }

    BIBError* GetSource(SourcePtr& result) override {
        result = fSource;
        return nullptr;
    }

    BIBError* NextBlock(unsigned char const*& block, unsigned long& size) override {
        fBlock.resize(kBlockSize);
        block = fBlock.data();
        return Read(fBlock.data(), kBlockSize, size);
    }

private:
    SourcePtr fSource;
    unsigned long fPosition = 0;
    Vector<unsigned char> fBlock; // the last block that NextBlock returned
};

// Counts the operation, fails if a failure is injected, and otherwise runs work on the stream's
// body.
template <class Work>
BIBError* AtStreamRow(BIBSimpleStream* self, bool areArgumentsGood, Work work) {
    if (!IsStream(self) || !areArgumentsGood) {
        return BadArgument();
    }
    if (gStreamPoint.Attempt()) {
        return Failure("stream operation failed");
    }
    return AtStatusRow([&] { return work(*self->fBody); });
}

BIBError*
Read(BIBSimpleStream* self, unsigned long* bytesRead, unsigned char* buffer, unsigned long size) {
    if (bytesRead) {
        *bytesRead = 0;
    }
    return AtStreamRow(self, bytesRead && (buffer || size == 0), [&](StreamBody& body) {
        return body.Read(buffer, size, *bytesRead);
    });
}

BIBError* Write(BIBSimpleStream* self, unsigned char const* buffer, unsigned long size) {
    return AtStreamRow(
        self, buffer || size == 0, [&](StreamBody& body) { return body.Write(buffer, size); });
}

// Makes a second stream on the data of self.
template <class Stream>
BIBError* CreateIndependent(Stream* self, Stream** result) {
    if (result) {
        *result = nullptr;
    }
    return AtStreamRow(self, result != nullptr, [&](StreamBody& body) {
        SourcePtr source;
        BIBError* const error = body.GetSource(source);
        if (!error) {
            *result = MakeSourceStream(std::move(source));
        }
        return error;
    });
}

BIBError*
CreateIndependentlyRewindableStream(BIBRewindableStream* self, BIBRewindableStream** result) {
    return CreateIndependent(self, result);
}

BIBError* Rewind(BIBRewindableStream* self) {
    return AtStreamRow(
        self, /*areArgumentsGood=*/true, [](StreamBody& body) { return body.Rewind(); });
}

BIBError*
CreateIndependentlyPositionableStream(BIBPositionableStream* self, BIBPositionableStream** result) {
    return CreateIndependent(self, result);
}

BIBError* Mark(BIBPositionableStream* self, unsigned long* position) {
    return AtStreamRow(
        self, position != nullptr, [&](StreamBody& body) { return body.Mark(*position); });
}

BIBError* Seek(BIBPositionableStream* self, long offset, BIBPositionableStream_SeekOrigin origin) {
    return AtStreamRow(self, /*areArgumentsGood=*/true, [&](StreamBody& body) {
        return body.Seek(offset, origin);
    });
}

BIBError* GetNextBlock(BIBDataBlockStream* self, unsigned char const** block, unsigned long* size) {
    return AtStreamRow(
        self, block && size, [&](StreamBody& body) { return body.NextBlock(*block, *size); });
}

BIBError* Rewind(BIBDataBlockStream* self) {
    return Rewind(static_cast<BIBRewindableStream*>(self));
}

BIBError* GetSize(BIBSizedDataStore* self, unsigned long* size) {
    return AtStreamRow(self, size != nullptr, [&](StreamBody& body) {
        SourcePtr source;
        BIBError* const error = body.GetSource(source);
        return error ? error : source->GetLength(*size);
    });
}

BIBError* GetBlock(
    BIBDataStore* self,
    unsigned long offset,
    unsigned char* buffer,
    unsigned long size,
    unsigned long* bytesRead) {
    if (bytesRead) {
        *bytesRead = 0;
    }
    return AtStreamRow(self, bytesRead && (buffer || size == 0), [&](StreamBody& body) {
        SourcePtr source;
        BIBError* const error = body.GetSource(source);
        return error ? error : source->ReadAt(offset, buffer, size, *bytesRead);
    });
}

BIBError* NewPositionableMemoryStream(BIBPositionableStream** result) {
    return AtResultRow(result, /*areArgumentsGood=*/true, [&]() -> BIBError* {
        *result = MakeSourceStream(MakeMemorySource());
        return nullptr;
    });
}

BIBError* NewPositionableBufferStream(BIBPositionableStream** result, BIBSharedBuffer* buffer) {
    return AtResultRow(result, buffer != nullptr, [&]() -> BIBError* {
        *result = MakeSourceStream(MakeBufferSource(buffer));
        return nullptr;
    });
}

BIBError*
NewPositionableFileStream(BIBPositionableStream** result, char const* path, int writable) {
    return AtResultRow(result, path != nullptr, [&] {
        SourcePtr source;
        BIBError* const error = OpenFileSource(source, path, writable != 0);
        if (!error) {
            *result = MakeSourceStream(std::move(source));
        }
        return error;
    });
}

template <class Stream>
BIBError* NewClientStream(
    Stream** result,
    ContainerType const& type,
    BIBClientStreamProcs const* procs,
    void* clientData) {
    return AtResultRow(result, procs != nullptr, [&]() -> BIBError* {
        *result = MakeClientStream(type, *procs, clientData);
        return nullptr;
    });
}

BIBError* NewClientSimpleStream(
    BIBSimpleStream** result, BIBClientStreamProcs const* procs, void* clientData) {
    return NewClientStream(result, gSimpleStreamType, procs, clientData);
}

BIBError* NewClientRewindableStream(
    BIBRewindableStream** result, BIBClientStreamProcs const* procs, void* clientData) {
    return NewClientStream(result, gRewindableStreamType, procs, clientData);
}

BIBError* NewClientPositionableStream(
    BIBPositionableStream** result, BIBClientStreamProcs const* procs, void* clientData) {
    return NewClientStream(result, gPositionableStreamType, procs, clientData);
}

} // namespace

BIBPositionableStream* MakeSourceStream(SourcePtr source) {
    return NewObject<BIBPositionableStream>(
        gSourceStreamType, BodyPtr(NewObject<SourceBody>(std::move(source))));
}

bool IsStream(BIBContainer const* container) noexcept {
    return container && container->fType->fDestroy == &DestroyAs<BIBPositionableStream>;
}

BIBRT_DEFINE_OBJECT_TABLE(
    BIBSimpleStreamInterface, "BIBSimpleStreamObject", BIB_SIMPLE_STREAM_INTERFACE_ROWS, 2)

BIBRT_DEFINE_OBJECT_TABLE(
    BIBRewindableStreamInterface,
    "BIBRewindableStreamObject",
    BIB_REWINDABLE_STREAM_INTERFACE_ROWS,
    2)

BIBRT_DEFINE_OBJECT_TABLE(
    BIBPositionableStreamInterface,
    "BIBPositionableStreamObject",
    BIB_POSITIONABLE_STREAM_INTERFACE_ROWS,
    3)

BIBRT_DEFINE_OBJECT_TABLE(
    BIBDataBlockStreamInterface, "BIBSourceStreamObject", BIB_DATA_BLOCK_STREAM_INTERFACE_ROWS, 2)

BIBRT_DEFINE_OBJECT_TABLE(
    BIBSizedDataStoreInterface, "BIBSourceStreamObject", BIB_SIZED_DATA_STORE_INTERFACE_ROWS, 1)

BIBRT_DEFINE_OBJECT_TABLE(
    BIBDataStoreInterface, "BIBSourceStreamObject", BIB_DATA_STORE_INTERFACE_ROWS, 1)

BIBRT_DEFINE_TABLE(BIBStreamFactoryInterface, BIB_STREAM_FACTORY_INTERFACE_ROWS, 6)

} // namespace bibrt
