// Containers: the reference-counted base of all objects that a client gets handles to.
//
// Only reference counts are thread safe.
#pragma once

#include "api/BIBContainerInterface.h"
#include "runtime/objects/Atoms.h"
#include "runtime/objects/Memory.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

namespace bibrt {

// The properties shared by all containers of one type. The address identifies the type.
struct ContainerType {
    char const* fInstanceName; // name of the primary instance, or null
    char const* fSignature;    // or null
    char const* fParent;       // the parent of the signature, or null
    void (*fDestroy)(BIBContainer*) noexcept;
    bool fIsScalar = false; // references no other container
};

// One entry of a container's list of instances, the newest first.
struct ContainerInstance {
    ContainerInstance(
        ContainerInstance* next,
        void* instance,
        BIBStringAtom* name,
        void (*deleteProc)(void*)) noexcept
        : fNext(next),
          fInstance(instance),
          fName(AtomRef::Share(name)),
          fDeleteProc(deleteProc) {}

    ContainerInstance* fNext;
    void* fInstance;
    AtomRef fName;
    void (*fDeleteProc)(void*);
};

} // namespace bibrt

// A container carries named instances: pairs of a name and a pointer to a client's object, with a
// procedure that deletes the object when the container is destroyed. One instance is the primary
// one; fPrimary has it, and the signature, for fast access. The signature names the interface in
// the registry where the methods of the container are found. A new container is unowned: its count
// is 0. Derived structures have no virtual function, so that each begins with its BIBContainer.
struct BIBContainer : bibrt::Counted<BIBContainer> {
    // REQUIRES: the names in type are interned.
    explicit BIBContainer(bibrt::ContainerType const& type) noexcept;
    BIBContainer(BIBContainer const&) = delete;
    BIBContainer& operator=(BIBContainer const&) = delete;
    ~BIBContainer();

    long fRefs = 0;
    BIBPrimaryRecord fPrimary; // owns references to its names' atoms, except those of the type
    bibrt::ContainerType const* fType;
    bibrt::ContainerInstance* fInstances = nullptr;
    BIBContainer* fNextDoomed = nullptr; // next in the list of containers to be destroyed
    bool fIsInvalid = false;             // no reference can be added
};

namespace bibrt {

// The type of containers made by hosts. Each has its own instance name and signature.
extern ContainerType gHostContainerType;

// Destroys a container that was created as a T; for ContainerType::fDestroy.
template <class T>
void DestroyAs(BIBContainer* container) noexcept {
    DeleteObject(static_cast<T*>(container));
}

// Calls a caller's delete procedure; does nothing if proc is null. Containers that the procedure
// releases are destroyed before that release returns, as the procedure expects. An exception of the
// procedure is swallowed: a destruction left halfway would leak more than the exception could
// report.
void CallDeleteProc(void (*proc)(void*), void* data) noexcept;

// Adds a reference. False for null and for an invalid container.
bool AddContainerRef(BIBContainer* container) noexcept;

// Releases a reference, and destroys the container with the last one. Does nothing for null and for
// a container without a reference. The use of stack does not grow with the nesting of containers:
// containers that lose their last reference during a destruction are destroyed after it.
void ReleaseContainer(BIBContainer* container) noexcept;

// Releases a reference but never destroys the container. Null is ignored.
void DropContainerRef(BIBContainer* container) noexcept;

// Destroys the container if it has no reference. True if so. Null is ignored.
bool DeleteUnownedContainer(BIBContainer* container) noexcept;

// Adds an instance; it becomes the primary one if there is none. Throws std::bad_alloc.
void AddInstance(
    BIBContainer& container, void* instance, BIBStringAtom* name, void (*deleteProc)(void*));

// Stores the instance of that name in result. False if there is none, with result unchanged.
bool FindInstance(BIBContainer const& container, BIBStringAtom const* name, void*& result) noexcept;

struct UnownedDeleter {
    void operator()(BIBContainer* container) const noexcept { DeleteUnownedContainer(container); }
};

// Owns a new container until release(), or until another owner has added a reference.
template <class T>
using Unowned = std::unique_ptr<T, UnownedDeleter>;

// Owns a reference to a container, or none.
template <class T>
class Ref {
public:
    // Adds a reference to container; owns none for null and for an invalid container.
    explicit Ref(T* container) noexcept
        : fContainer(AddContainerRef(container) ? container : nullptr) {}
    Ref(Ref&& other) noexcept : fContainer(std::exchange(other.fContainer, nullptr)) {}
    Ref(Ref const&) = delete;
    Ref& operator=(Ref const&) = delete;
    Ref& operator=(Ref&& other) noexcept {
        std::swap(fContainer, other.fContainer);
        return *this;
    }
    ~Ref() { ReleaseContainer(fContainer); }

    T* Get() const noexcept { return fContainer; }
    operator T*() const noexcept { return fContainer; }
    T* operator->() const noexcept { return fContainer; }
    // Passes the reference to the caller.
    T* Release() noexcept { return std::exchange(fContainer, nullptr); }

private:
    T* fContainer;
};

// The method of that name under the container's signature or one of its parents. Null if there is
// none, or if the container has no signature.
void* FindContainerMethod(
    BIBContainer const& container, char const* name, char const* procType) noexcept;

// As FindContainerMethod, cast to the type that procType names.
template <class Proc>
Proc FindTypedMethod(
    BIBContainer const& container, char const* name, char const* procType) noexcept {
    return reinterpret_cast<Proc>(FindContainerMethod(container, name, procType));
}

} // namespace bibrt
