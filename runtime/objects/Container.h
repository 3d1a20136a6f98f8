// The counted record under every object of the runtime that a client holds a handle on.
//
// Reference counts are thread safe; nothing else of a container is.
#pragma once

#include "api/BIBContainerInterface.h"
#include "runtime/objects/Atoms.h"
#include "runtime/objects/Memory.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

namespace bibrt {

// What containers of one kind have in common. A container's kind is told by the address of its
// type.
struct ContainerType {
    char const* fInstanceName; // name of the primary instance; null for none
    char const* fSignature;    // null for none
    char const* fParent;       // the parent of the signature; null for none
    void (*fDestroy)(BIBContainer*) noexcept;
    bool fIsScalar = false; // holds no other container
};

// An instance in a container, in a list that begins with the newest.
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

// A new container is unowned: its count is 0. Derived structures have no virtual function, so that
// each begins with its container.
struct BIBContainer : bibrt::Counted<BIBContainer> {
    // REQUIRES: the texts of type are interned.
    explicit BIBContainer(bibrt::ContainerType const& type) noexcept;
    BIBContainer(BIBContainer const&) = delete;
    BIBContainer& operator=(BIBContainer const&) = delete;
    ~BIBContainer();

    long fRefs = 0;
    BIBPrimaryRecord fPrimary; // its texts hold a reference on their atoms
    bibrt::ContainerType const* fType;
    bibrt::ContainerInstance* fInstances = nullptr;
    BIBContainer* fNextDoomed = nullptr; // among the containers that wait to be destroyed
    bool fIsInvalid = false;             // no reference can be added any more
};

namespace bibrt {

// Containers of hosts; name and signature come with each.
extern ContainerType gHostContainerType;

// Destroys a container that was made as a T, for ContainerType::fDestroy.
template <class T>
void DestroyAs(BIBContainer* container) noexcept {
    DeleteObject(static_cast<T*>(container));
}

// Calls a caller's procedure that frees data; accepts a null proc. What the procedure releases is
// destroyed before that release returns, as it expects. An exception of it goes no further: half a
// destruction would leave more behind than the exception could tell.
void CallDeleteProc(void (*proc)(void*), void* data) noexcept;

// Adds a reference. False for null and for an invalid container.
bool AddContainerRef(BIBContainer* container) noexcept;

// Gives a reference up and destroys the container with the last one; without one, nothing happens.
// Accepts null. The stack does not grow with the nesting of containers: what falls while a
// container is being destroyed waits until that is done.
void ReleaseContainer(BIBContainer* container) noexcept;

// Gives a reference up and never destroys. Accepts null.
void DropContainerRef(BIBContainer* container) noexcept;

// Destroys the container if nobody has a reference on it. Accepts null. True when it did so.
bool DeleteUnownedContainer(BIBContainer* container) noexcept;

// Adds an instance; a container without a primary instance takes it as such. Throws std::bad_alloc.
void AddInstance(
    BIBContainer& container, void* instance, BIBStringAtom* name, void (*deleteProc)(void*));

// The instance of that name through result. False when there is none.
bool FindInstance(BIBContainer const& container, BIBStringAtom const* name, void*& result) noexcept;

struct UnownedDeleter {
    void operator()(BIBContainer* container) const noexcept { DeleteUnownedContainer(container); }
};

// Holds a new container until it has been handed on, by release() or by a reference of somebody
// else.
template <class T>
using Unowned = std::unique_ptr<T, UnownedDeleter>;

// A counted reference, or none.
template <class T>
class Ref {
public:
    // Adds a reference to container; none for null and for an invalid container.
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
    // Hands the reference to the caller.
    T* Release() noexcept { return std::exchange(fContainer, nullptr); }

private:
    T* fContainer;
};

// The method under the container's signature or a parent of it; null for none and for a container
// without a signature.
void* FindContainerMethod(
    BIBContainer const& container, char const* name, char const* procType) noexcept;

// The same with the type that the proc type names.
template <class Proc>
Proc FindTypedMethod(
    BIBContainer const& container, char const* name, char const* procType) noexcept {
    return reinterpret_cast<Proc>(FindContainerMethod(container, name, procType));
}

} // namespace bibrt
