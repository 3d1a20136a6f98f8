// A stream of the third level with its methods.
#pragma once

#include "conformance/Runtime.h"

#include <string>

namespace conformance {

// Owns a reference. What does not begin with Try throws Failure for an error.
class Stream {
public:
    Stream(Runtime const& runtime, BIBPositionableStream* stream)
        : fRuntime(runtime),
          fHeld(runtime.Hold(stream)),
          fSimple(runtime.Methods<_t_BIBSimpleStreamInterface>(stream)),
          fRewindable(runtime.Methods<_t_BIBRewindableStreamInterface>(stream)),
          fPositionable(runtime.Methods<_t_BIBPositionableStreamInterface>(stream)) {}

    BIBError* TryWrite(std::string const& text) const {
        return fSimple.Write(
            As<BIBSimpleStream>(Self()),
            reinterpret_cast<unsigned char const*>(text.data()),
            text.size());
    }
    void Write(std::string const& text) const { fRuntime.Succeed("Write", TryWrite(text)); }

    BIBError* TryRead(std::string& text, unsigned long size) const {
        text.assign(size, '\0');
        unsigned long count = 0;
        BIBError* const error = fSimple.Read(
            As<BIBSimpleStream>(Self()),
            &count,
            reinterpret_cast<unsigned char*>(text.data()),
            size);
        text.resize(count <= size ? count : size);
        return error;
    }
    std::string Read(unsigned long size) const {
        std::string text;
        fRuntime.Succeed("Read", TryRead(text, size));
        return text;
    }

    BIBError* TrySeek(long offset, BIBPositionableStream_SeekOrigin origin) const {
        return fPositionable.Seek(Self(), offset, origin);
    }
    void Seek(long offset, BIBPositionableStream_SeekOrigin origin) const {
        fRuntime.Succeed("Seek", TrySeek(offset, origin));
    }
    BIBError* TryRewind() const { return fRewindable.Rewind(As<BIBRewindableStream>(Self())); }
    void Rewind() const { fRuntime.Succeed("Rewind", TryRewind()); }
    unsigned long Mark() const {
        unsigned long position = 0;
        fRuntime.Succeed("Mark", fPositionable.Mark(Self(), &position));
        return position;
    }
    std::string ReadAll() const {
        Seek(0, kBIBSeekFromStart);
        return Read(1000000);
    }
    BIBError* TrySecond(BIBPositionableStream** stream) const {
        return fPositionable.CreateIndependentlyPositionableStream(Self(), stream);
    }
    BIBPositionableStream* Second() const {
        BIBPositionableStream* stream = nullptr;
        fRuntime.Succeed("CreateIndependentlyPositionableStream", TrySecond(&stream));
        return stream;
    }

    BIBPositionableStream* Self() const noexcept { return fHeld; }

private:
    Runtime const& fRuntime;
    Held<BIBPositionableStream> fHeld;
    _t_BIBSimpleStreamInterface fSimple;
    _t_BIBRewindableStreamInterface fRewindable;
    _t_BIBPositionableStreamInterface fPositionable;
};

inline BIBPositionableStream* NewMemoryStream(Runtime const& runtime) {
    BIBPositionableStream* stream = nullptr;
    runtime.Succeed(
        "NewPositionableMemoryStream", runtime.Streams().NewPositionableMemoryStream(&stream));
    return stream;
}

} // namespace conformance
