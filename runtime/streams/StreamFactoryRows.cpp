#include "api/BIBStreamInterface.h"

#include "runtime/objects/Boundary.h"
#include "runtime/objects/Tables.h"
#include "runtime/streams/Streams.h"

namespace bibrt {

namespace {

BIBError* NewPositionableMemoryStream(BIBPositionableStream** result) {
    if (!result) {
        return BadArgument();
    }
    *result = nullptr;
    return AtStatusRow([&]() -> BIBError* {
        *result = MakeSourceStream(MakeMemorySource());
        return nullptr;
    });
}

BIBError* NewPositionableBufferStream(BIBPositionableStream** result, BIBSharedBuffer* buffer) {
    if (!result) {
        return BadArgument();
    }
    *result = nullptr;
    if (!buffer) {
        return BadArgument();
    }
    return AtStatusRow([&]() -> BIBError* {
        *result = MakeSourceStream(MakeBufferSource(buffer));
        return nullptr;
    });
}

BIBError*
NewPositionableFileStream(BIBPositionableStream** result, char const* path, int writable) {
    if (!result) {
        return BadArgument();
    }
    *result = nullptr;
    if (!path) {
        return BadArgument();
    }
    return AtStatusRow([&] {
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
    if (!result) {
        return BadArgument();
    }
    *result = nullptr;
    if (!procs) {
        return BadArgument();
    }
    return AtStatusRow([&]() -> BIBError* {
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

BIBRT_DEFINE_TABLE(
    StreamFactoryTable,
    "BIBStreamFactoryInterface",
    _t_BIBStreamFactoryInterface,
    BIB_STREAM_FACTORY_INTERFACE_ROWS,
    6)

} // namespace bibrt
