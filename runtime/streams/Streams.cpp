#include "runtime/streams/Streams.h"

#include "runtime/objects/Errors.h"

#include <limits>

namespace bibrt {

// Each level inherits the methods of the one below; a stream on a source is also a source of data.
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

// The target of a seek by offset from base, or an error. length is where the data end.
BIBError* FindTarget(unsigned long base, long offset, unsigned long length, unsigned long& target) {
    // The magnitude by way of unsigned arithmetic, which has one for the least number too.
    unsigned long const distance =
        offset < 0 ? 0UL - static_cast<unsigned long>(offset) : static_cast<unsigned long>(offset);
    if (offset < 0 && distance > base) {
        return Failure("seek to a position before the start of the stream");
    }
    if (offset >= 0 && (base > length || distance > length - base)) {
        return Failure("seek to a position behind the end of the stream");
    }
    target = offset < 0 ? base - distance : base + distance;
    return target <= length ? nullptr : Failure("seek to a position behind the end of the stream");
}

// A stream that keeps its own position on a source.
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

    BIBError* Write(unsigned char const* buffer, unsigned long size) override;

    BIBError* Rewind() override {
        fPosition = 0;
        return nullptr;
    }

    BIBError* Mark(unsigned long& position) override {
        position = fPosition;
        return nullptr;
    }

    BIBError* Seek(long offset, BIBPositionableStream_SeekOrigin origin) override;

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
    Vector<unsigned char> fBlock; // what NextBlock gave last
};

BIBError* SourceBody::Write(unsigned char const* buffer, unsigned long size) {
    unsigned long length = 0;
    if (BIBError* const error = fSource->GetLength(length)) {
        return error;
    }
    // The data of a file or a host may have been cut short meanwhile.
    if (fPosition > length) {
        return Failure("the position lies behind the end of the stream");
    }
    if (size > kMaxPosition - fPosition) {
        return Failure("the stream would grow beyond what a position can tell");
    }
    BIBError* const error = fSource->WriteAt(fPosition, buffer, size);
    if (!error) {
        fPosition += size;
    }
    return error;
}

BIBError* SourceBody::Seek(long offset, BIBPositionableStream_SeekOrigin origin) {
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

} // namespace

void BodyDeleter::operator()(StreamBody* body) const noexcept {
    DeleteObject(body);
}

BIBPositionableStream* MakeSourceStream(SourcePtr source) {
    return NewObject<BIBPositionableStream>(
        gSourceStreamType, MakeBody<SourceBody>(std::move(source)));
}

bool IsStream(BIBContainer const* container) noexcept {
    return container && container->fType->fDestroy == &DestroyAs<BIBPositionableStream>;
}

} // namespace bibrt
