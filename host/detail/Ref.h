// References on the runtime's counted objects. A pointer that comes out of a table is wrapped at
// once.
#pragma once

#include "host/detail/Bindings.h"

#include <memory>
#include <string>

namespace pdfsettings::detail {

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
