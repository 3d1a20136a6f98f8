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

// The members of Bindings, each with the interface that it is a table of and the list of its rows.
#define PDFSETTINGS_TABLES(TABLE) \
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
    TABLE(validators, POSStructValidatorInterface, POS_STRUCT_VALIDATOR_INTERFACE_ROWS) \
    TABLE(settings, PDFSettingsInterface, PDF_SETTINGS_INTERFACE_ROWS) \
    TABLE(statics, PDFSettingsStatics, PDF_SETTINGS_STATICS_ROWS)

// Every procedure is found when this is made, so that no call meets a missing one later.
struct Bindings {
    // Throws Error with the name of the first row that lookup does not have.
    // REQUIRES: the component is started on lookup.
    explicit Bindings(BIBLookupProc lookup);

#define PDFSETTINGS_TABLE(member, interfaceName, ROWS) _t_##interfaceName member;
    PDFSETTINGS_TABLES(PDFSETTINGS_TABLE)
#undef PDFSETTINGS_TABLE
};

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

// Throws the error of a runtime that has no memory left.
[[noreturn]] void ThrowOutOfMemory();

// Throws Error with the message of error, whose reference it takes over. Null: does nothing.
void ThrowIfError(Bindings const& tables, BIBError* error);

// A reference on an object that nobody owns yet, or that is borrowed. Throws Error for null and for
// a container that has become invalid: both mean that memory ran out.
template <class T>
Ref<T> Share(Bindings const& tables, T* object) {
    if (object == nullptr) {
        ThrowOutOfMemory();
    }
    if (tables.containers.AddRef(AsContainer(object)) == 0) {
        tables.containers.DeleteUnownedContainer(AsContainer(object));
        ThrowOutOfMemory();
    }
    return Ref<T>(object, ReleaseContainer<T>{tables.containers.Release});
}

// The atom of text. Throws Error when memory runs out and for a text that holds a NUL byte.
AtomRef MakeAtom(Bindings const& tables, std::string const& text);

// A buffer that holds a copy of bytes. Throws Error when memory runs out.
BufferRef MakeBuffer(Bindings const& tables, std::string_view bytes);

// text, for a procedure that reads up to a NUL byte. Throws Error when text holds one itself.
char const* WholeText(std::string const& text);

} // namespace pdfsettings::detail
