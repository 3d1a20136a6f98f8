// The tables of the runtime and the component, as far as the host API uses them, and owned
// references to the counted objects that they return. Wrap each pointer from a table at once.
#pragma once

#include "api/BIBBootstrap.h"
#include "api/BIBContainerInterface.h"
#include "api/BIBErrorInterface.h"
#include "api/BIBSharedBuffInterface.h"
#include "api/BIBStreamInterface.h"
#include "api/BIBStringInterface.h"
#include "api/PDFSettings.h"
#include "api/POSCollectionInterfaces.h"
#include "api/POSObjectInterface.h"
#include "api/POSScalarInterfaces.h"
#include "api/POSValidatorInterface.h"

#include <memory>
#include <new>
#include <string>
#include <string_view>

namespace pdfsettings::detail {

// The component's table, named like those in the headers.
struct _t_PDFSettingsInterface {
    PDF_SETTINGS_INTERFACE_ROWS(BIB_TABLE_SLOT)
};

// The component's procedures that need no settings.
struct _t_PDFSettingsStatics {
    PDF_SETTINGS_STATICS_ROWS(BIB_TABLE_SLOT)
};

// The members of Tables, each with its interface and its list of rows.
#define PDFSETTINGS_RUNTIME_TABLES(TABLE) \
    TABLE(containers, BIBContainerInterface, BIB_CONTAINER_INTERFACE_ROWS) \
    TABLE(errors, BIBErrorInterface, BIB_ERROR_INTERFACE_ROWS) \
    TABLE(buffers, BIBSharedBuffInterface, BIB_SHARED_BUFF_INTERFACE_ROWS) \
    TABLE(streams, BIBStreamFactoryInterface, BIB_STREAM_FACTORY_INTERFACE_ROWS) \
    TABLE(atoms, BIBStringInterface, BIB_STRING_INTERFACE_ROWS) \
    TABLE(objects, POSObjectStatics, POS_OBJECT_STATICS_ROWS) \
    TABLE(numbers, POSNumberInterface, POS_NUMBER_INTERFACE_ROWS) \
    TABLE(strings, POSStringInterface, POS_STRING_INTERFACE_ROWS) \
    TABLE(unicodeStrings, POSUnicodeStringInterface, POS_UNICODE_STRING_INTERFACE_ROWS) \
    TABLE(binData, POSBinDataInterface, POS_BIN_DATA_INTERFACE_ROWS) \
    TABLE(arrays, POSArrayInterface, POS_ARRAY_INTERFACE_ROWS) \
    TABLE(dicts, POSDictInterface, POS_DICT_INTERFACE_ROWS) \
    TABLE(iterators, POSDictIteratorInterface, POS_DICT_ITERATOR_INTERFACE_ROWS) \
    TABLE(validators, POSStructValidatorInterface, POS_STRUCT_VALIDATOR_INTERFACE_ROWS)

// The additional members of Bindings.
#define PDFSETTINGS_COMPONENT_TABLES(TABLE) \
    TABLE(settings, PDFSettingsInterface, PDF_SETTINGS_INTERFACE_ROWS) \
    TABLE(statics, PDFSettingsStatics, PDF_SETTINGS_STATICS_ROWS)

#define PDFSETTINGS_TABLE(member, interfaceName, ROWS) _t_##interfaceName member;

// The runtime's tables. All procedures are looked up by the constructor, so that a missing one is
// detected at once.
struct Tables {
    // Throws Error (kComponent) with the name of the first row that lookup does not find.
    explicit Tables(BIBLookupProc lookup);

    PDFSETTINGS_RUNTIME_TABLES(PDFSETTINGS_TABLE)
};

// The tables of the in-process runtime. What needs no component, such as a schema, uses them
// whatever runtime the component is running on.
Tables const& RuntimeTables();

// The tables of a runtime on which the component is running.
struct Bindings : Tables {
    explicit Bindings(BIBLookupProc lookup);

    PDFSETTINGS_COMPONENT_TABLES(PDFSETTINGS_TABLE)
};

#undef PDFSETTINGS_TABLE

// Values, streams and settings are all containers.
template <class T>
BIBContainer* AsContainer(T* object) {
    return reinterpret_cast<BIBContainer*>(object);
}

template <class T>
struct ReleaseContainer {
    BIBReleaseContainerProc release;

    void operator()(T* object) const { release(AsContainer(object)); }
};

// Owns a reference to a container.
template <class T>
using Ref = std::unique_ptr<T, ReleaseContainer<T>>;

// References to objects that are not containers. Each deleter is the row that releases the
// reference.
using AtomRef = std::unique_ptr<BIBStringAtom, BIBDeleteStringAtomProc>;
using BufferRef = std::unique_ptr<BIBSharedBuffer, BIBSharedBuffReleaseProc>;

// If error is not null, releases it and throws Error (kComponent) with its message, or
// std::bad_alloc for the memory error.
void ThrowIfError(Tables const& tables, BIBError* error);

// Throws Error (kComponent) with a message of the runtime, or std::bad_alloc if the message means
// that memory ran out.
[[noreturn]] void ThrowReported(std::string const& message);

// A new reference to object, which is unowned or borrowed. Throws std::bad_alloc for null and for
// an invalid container: both mean that memory ran out.
template <class T>
Ref<T> Share(Tables const& tables, T* object) {
    if (object == nullptr) {
        throw std::bad_alloc();
    }
    if (tables.containers.AddRef(AsContainer(object)) == 0) {
        tables.containers.DeleteUnownedContainer(AsContainer(object));
        throw std::bad_alloc();
    }
    return Ref<T>(object, ReleaseContainer<T>{tables.containers.Release});
}

// The atom of text, which ends at its first zero byte. Throws std::bad_alloc.
AtomRef MakeAtom(Tables const& tables, std::string const& text);

// A stream with a copy of bytes. Throws std::bad_alloc and as ThrowIfError.
Ref<BIBPositionableStream> MakeStream(Tables const& tables, std::string_view bytes);

// The bytes of stream from its current position. Throws Error with the stream's reason.
std::string ReadStream(Tables const& tables, BIBPositionableStream* stream);

} // namespace pdfsettings::detail
