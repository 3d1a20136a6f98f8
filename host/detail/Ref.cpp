#include "host/detail/Ref.h"

#include "pdfsettings/Error.h"

#include <cstring>

namespace pdfsettings::detail {

void ThrowOutOfMemory() {
    throw Error("out of memory");
}

void ThrowIfError(Bindings const& tables, BIBError* error) {
    std::unique_ptr<BIBError, BIBErrorReleaseProc> const held(error, tables.errors.Release);
    if (held != nullptr) {
        throw Error(tables.atoms.GetCString(tables.errors.GetErrorMessage(held.get())));
    }
}

AtomRef MakeAtom(Bindings const& tables, std::string const& text) {
    AtomRef atom(tables.atoms.NewStringAtom(WholeText(text)), tables.atoms.DeleteStringAtom);
    if (atom == nullptr) {
        ThrowOutOfMemory();
    }
    return atom;
}

BufferRef MakeBuffer(Bindings const& tables, std::string_view bytes) {
    BufferRef buffer(
        tables.buffers.NewBuffer(bytes.size(), nullptr, nullptr, nullptr, nullptr),
        tables.buffers.Release);
    if (buffer == nullptr) {
        ThrowOutOfMemory();
    }
    if (!bytes.empty()) {
        std::memcpy(tables.buffers.GetBuffer(buffer.get()), bytes.data(), bytes.size());
    }
    return buffer;
}

char const* WholeText(std::string const& text) {
    if (text.find('\0') != std::string::npos) {
        throw Error("a text of this kind cannot hold a NUL byte");
    }
    return text.c_str();
}

} // namespace pdfsettings::detail
