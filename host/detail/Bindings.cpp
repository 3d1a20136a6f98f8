#include "host/detail/Bindings.h"

#include "api/BIBRuntime.h"

#include "pdfsettings/Error.h"

#include <cstring>

namespace pdfsettings::detail {

namespace {

// Looks up the rows of one interface.
class Rows {
public:
    Rows(BIBLookupProc lookup, char const* interfaceName)
        : fLookup(lookup),
          fInterfaceName(interfaceName) {}

    template <class Proc>
    Proc Find(char const* operation, char const* procType) const {
        void* const proc = fLookup(fInterfaceName, operation, procType);
        if (proc == nullptr) {
            throw Error(
                Fault::kComponent,
                std::string("missing procedure ") + fInterfaceName + "/" + operation + " of type " +
                    procType);
        }
        return reinterpret_cast<Proc>(proc);
    }

private:
    BIBLookupProc fLookup;
    char const* fInterfaceName;
};

} // namespace

// Fills a table from its list of rows.
#define PDFSETTINGS_FOUND_ROW(operation, procType) rows.Find<procType>(#operation, #procType),
#define PDFSETTINGS_FIND_TABLE(member, interfaceName, ROWS) \
    { \
        Rows const rows(lookup, #interfaceName); \
        this->member = {ROWS(PDFSETTINGS_FOUND_ROW)}; \
    }

Tables::Tables(BIBLookupProc lookup){PDFSETTINGS_RUNTIME_TABLES(PDFSETTINGS_FIND_TABLE)}

Tables const& RuntimeTables() {
    static Tables const kTables(&BIBRuntimeLookup);
    return kTables;
}

Bindings::Bindings(BIBLookupProc lookup) : Tables(lookup) {
    PDFSETTINGS_COMPONENT_TABLES(PDFSETTINGS_FIND_TABLE)
}

void ThrowIfError(Tables const& tables, BIBError* error) {
    std::unique_ptr<BIBError, BIBErrorReleaseProc> const held(error, tables.errors.Release);
    if (held != nullptr) {
        std::string const message =
            tables.atoms.GetCString(tables.errors.GetErrorMessage(held.get()));
        ThrowReported(message);
    }
}

void ThrowReported(std::string const& message) {
    // A container is invalid if it could not be completed; the component reports an unknown error
    // if it has no memory for a message. Both mean that memory ran out.
    if (message == "out of memory" || message == "invalid container" ||
        message == "unknown BIB error") {
        throw std::bad_alloc();
    }
    throw Error(Fault::kComponent, message);
}

AtomRef MakeAtom(Tables const& tables, std::string const& text) {
    AtomRef atom(tables.atoms.NewStringAtom(text.c_str()), tables.atoms.DeleteStringAtom);
    if (atom == nullptr) {
        throw std::bad_alloc();
    }
    return atom;
}

Ref<BIBPositionableStream> MakeStream(Tables const& tables, std::string_view bytes) {
    BufferRef const buffer(
        tables.buffers.NewBuffer(bytes.size(), nullptr, nullptr, nullptr, nullptr),
        tables.buffers.Release);
    if (buffer == nullptr) {
        throw std::bad_alloc();
    }
    if (!bytes.empty()) {
        std::memcpy(tables.buffers.GetBuffer(buffer.get()), bytes.data(), bytes.size());
    }
    BIBPositionableStream* stream = nullptr;
    ThrowIfError(tables, tables.streams.NewPositionableBufferStream(&stream, buffer.get()));
    return Share(tables, stream);
}

namespace {

BIBSimpleStreamReadProc FindRead(Tables const& tables, BIBPositionableStream* stream) {
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

std::string ReadStream(Tables const& tables, BIBPositionableStream* stream) {
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
