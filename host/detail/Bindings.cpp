#include "host/detail/Bindings.h"

#include "pdfsettings/Error.h"

#include <cstring>

namespace pdfsettings::detail {

namespace {

// Finds the rows of one interface.
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

// A table is filled by its list of rows.
#define PDFSETTINGS_FOUND_ROW(operation, procType) rows.Find<procType>(#operation, #procType),
#define PDFSETTINGS_FIND_TABLE(member, interfaceName, ROWS) \
    { \
        Rows const rows(lookup, #interfaceName); \
        this->member = {ROWS(PDFSETTINGS_FOUND_ROW)}; \
    }

Bindings::Bindings(BIBLookupProc lookup) {
    PDFSETTINGS_TABLES(PDFSETTINGS_FIND_TABLE)
}

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
