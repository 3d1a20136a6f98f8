// The tables of the runtime and of the component, as far as the host API calls them, and references
// on the counted objects that they give. A pointer that comes out of a table is wrapped at once.
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

// The component's table, named as the headers name the others.
struct _t_PDFSettingsInterface {
    PDF_SETTINGS_INTERFACE_ROWS(BIB_TABLE_SLOT)
};

// What it does without settings.
struct _t_PDFSettingsStatics {
    PDF_SETTINGS_STATICS_ROWS(BIB_TABLE_SLOT)
};

// The members of Tables, each with the interface that it is a table of and the list of its rows.
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

// The members of Bindings beyond those.
#define PDFSETTINGS_COMPONENT_TABLES(TABLE) \
    TABLE(settings, PDFSettingsInterface, PDF_SETTINGS_INTERFACE_ROWS) \
    TABLE(statics, PDFSettingsStatics, PDF_SETTINGS_STATICS_ROWS)

#define PDFSETTINGS_TABLE(member, interfaceName, ROWS) _t_##interfaceName member;

// What a runtime has. Every procedure is found when this is made, so that no call meets a missing
// one later.
struct Tables {
    // Throws Error (kComponent) with the name of the first row that lookup does not have.
    explicit Tables(BIBLookupProc lookup);

    PDFSETTINGS_RUNTIME_TABLES(PDFSETTINGS_TABLE)
};

// What a runtime has on which the component is started.
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

// A reference on a container.
template <class T>
using Ref = std::unique_ptr<T, ReleaseContainer<T>>;

// References on what is no container: each comes with the row that gives it up.
using AtomRef = std::unique_ptr<BIBStringAtom, BIBDeleteStringAtomProc>;
using BufferRef = std::unique_ptr<BIBSharedBuffer, BIBSharedBuffReleaseProc>;

// Throws Error (kComponent) with the message of error, whose reference it takes over, or
// std::bad_alloc for the memory error. Null: does nothing.
void ThrowIfError(Tables const& tables, BIBError* error);

// Throws Error (kComponent) with a message of the runtime, or std::bad_alloc where it says so.
[[noreturn]] void ThrowReported(std::string const& message);

// A reference on an object that nobody owns yet, or that is borrowed. Throws std::bad_alloc for
// null and for a container that has become invalid: both mean that memory ran out.
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

// The atom of text up to a zero byte. Throws std::bad_alloc.
AtomRef MakeAtom(Tables const& tables, std::string const& text);

// A stream over a copy of bytes. Throws std::bad_alloc and as ThrowIfError.
Ref<BIBPositionableStream> MakeStream(Tables const& tables, std::string_view bytes);

// What stream holds from its position on. Throws Error with the stream's reason.
std::string ReadStream(Tables const& tables, BIBPositionableStream* stream);

} // namespace pdfsettings::detail
