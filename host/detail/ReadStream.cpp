#include "host/detail/ReadStream.h"

#include "host/detail/Ref.h"

namespace pdfsettings::detail {

namespace {

BIBSimpleStreamReadProc FindRead(Bindings const& tables, BIBPositionableStream* stream) {
    AtomRef const name = MakeAtom(tables, "Read");
    AtomRef const procType = MakeAtom(tables, "BIBSimpleStreamReadProc");
    void* method = nullptr;
    ThrowIfError(
        tables,
        tables.containers.GetMethod(
            &method, AsContainer(stream), name.get(), procType.get(), /*optional=*/0));
    return reinterpret_cast<BIBSimpleStreamReadProc>(method);
}

} // namespace

std::string ReadStream(Bindings const& tables, BIBPositionableStream* stream) {
    BIBSimpleStreamReadProc const read = FindRead(tables, stream);
    auto* const self = reinterpret_cast<BIBSimpleStream*>(stream);
    std::string text;
    char buffer[16384];
    unsigned long size = sizeof buffer;
    while (size == sizeof buffer) {
        auto* const target = reinterpret_cast<unsigned char*>(buffer);
        ThrowIfError(tables, read(self, &size, target, sizeof buffer));
        text.append(buffer, size);
    }
    return text;
}

} // namespace pdfsettings::detail
