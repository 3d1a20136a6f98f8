// Containers: the static operations on them, and the reference-counted handles that own references
// to them.
//
// A container that is returned across the boundary carries no reference for the receiver. The
// receiver's handle adds one, and UnownedReturn() removes one when the container is returned to the
// host. Nothing else changes a count.
#pragma once

#include "api/BIBContainerInterface.h"
#include "bib/BIBError.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/BIBStringAtom.h"

#include <cstdint>
#include <utility>

namespace BIB_T_NMT {

BIB_DECLARE_INTERFACE(BIBContainerInterface, BIBContainerTraits, BIB_CONTAINER_INTERFACE_ROWS, 16);

// Records that static construction has run.
class CBIBCPPCheck {
public:
    CBIBCPPCheck() noexcept;

    bool HasRun() const noexcept { return fValue == kConstructed; }

private:
    static constexpr std::int32_t kConstructed = 13;

    std::int32_t fValue;
};

// The operations on containers. All members are static.
class CBIBContainer {
public:
    // Binds the table and reads the offset of the primary record. Returns false if static
    // construction has not run; throws the CBIBError "Missing Interface".
    static bool Init();

    // Makes Release a no-op until the table is bound.
    static void Close() noexcept;

    static CBIBCPPCheck& GetCPPCheck() noexcept { return fCPPCheck; }

    // Adds a reference. Returns whether it was added.
    static bool AddRef(BIBContainer* container) {
        return GetProcs<BIBContainerInterface>()->AddRef(container) != 0;
    }

    static void Release(BIBContainer* container) {
        GetProcs<BIBContainerInterface>()->Release(container);
    }

    static void DecrementWithoutDelete(BIBContainer* container) {
        GetProcs<BIBContainerInterface>()->DecrementWithoutDelete(container);
    }

    // The interned string of the container's signature. Throws the CBIBError "couldn't get
    // signature".
    static char const* GetSignature(BIBContainer const* container);

    // The instance with that name; the primary instance needs no runtime call. Throws the runtime's
    // error if there is none.
    static void* GetInstance(BIBContainer const* container, CBIBStringAtom const& name);

    // As GetInstance, always through the runtime.
    static void* BCGetInstance(BIBContainer const* container, CBIBStringAtom const& name);

    // The method of the container's signature. If there is none: null, or the runtime's error is
    // thrown if mustExist.
    static void* GetMethod(
        BIBContainer const* container,
        CBIBStringAtom const& name,
        CBIBStringAtom const& procType,
        bool mustExist);

    // A new container, unowned, that owns instance and destroys it through deleteProc. Throws the
    // runtime's error; the caller then still owns instance.
    static BIBContainer* NewFullContainer(
        void* instance,
        CBIBStringAtom const& instanceName,
        void (*deleteProc)(void*),
        CBIBStringAtom const& signature,
        BIBContainerNotifyProc containerProc,
        BIBInstanceNotifyProc instanceProc,
        void* clientData);

    // Throw the CBIBError "invalid container" and "couldn't get signature".
    [[noreturn]] static void ThrowInvalidContainerException();
    [[noreturn]] static void ThrowNoSignatureException();

private:
    static BIBPrimaryRecord const& PrimaryRecord(BIBContainer const* container) noexcept;

    static long fPrimaryOffset; // in bytes, from a container's address
    static CBIBCPPCheck fCPPCheck;
};

// CBIBContainer::GetInstance, cast to T*.
template <class T>
T* TBIBGetInstance(BIBContainer const* container, CBIBStringAtom const& name) {
    return static_cast<T*>(CBIBContainer::GetInstance(container, name));
}

// Fills the Release slot until the table is bound.
void BIBContainerNoOpRelease(BIBContainer* container) noexcept;

// Owns one reference to a container, or none: an invalid handle. Use it on one thread at a time.
class BIBContainerBaseGeneric {
public:
    // An invalid handle.
    BIBContainerBaseGeneric() noexcept = default;

    // Adds a reference. Throws the CBIBError "invalid container" if none can be added, also for
    // null.
    explicit BIBContainerBaseGeneric(BIBContainer* container);

    // As above, but a copy of an invalid handle is an invalid handle.
    BIBContainerBaseGeneric(BIBContainerBaseGeneric const& other);

    // Moves the reference and leaves other invalid.
    BIBContainerBaseGeneric(BIBContainerBaseGeneric&& other) noexcept
        : fContainer(std::exchange(other.fContainer, nullptr)) {}

    BIBContainerBaseGeneric& operator=(BIBContainerBaseGeneric const&) = delete;
    BIBContainerBaseGeneric& operator=(BIBContainerBaseGeneric&&) = delete;

    ~BIBContainerBaseGeneric() { CBIBContainer::Release(fContainer); }

    bool IsValid() const noexcept { return fContainer != nullptr; }

    // The container, borrowed.
    operator BIBContainer*() const noexcept { return fContainer; }

    void swap(BIBContainerBaseGeneric& other) noexcept { std::swap(fContainer, other.fContainer); }

    // Releases the reference and leaves the handle invalid.
    void Invalidate() {
        CBIBContainer::Release(fContainer);
        fContainer = nullptr;
    }

    // Removes the reference without destroying the container, returns the container, and leaves the
    // handle invalid. Returns null for an invalid handle.
    BIBContainer* UnownedReturn() {
        CBIBContainer::DecrementWithoutDelete(fContainer);
        return std::exchange(fContainer, nullptr);
    }

protected:
    BIBContainer* fContainer = nullptr;
};

// The same for a container of the runtime type T.
template <class T>
class TBIBContainerBase : public BIBContainerBaseGeneric {
public:
    TBIBContainerBase() noexcept = default;

    explicit TBIBContainerBase(T* container)
        : BIBContainerBaseGeneric(reinterpret_cast<BIBContainer*>(container)) {}

    TBIBContainerBase(TBIBContainerBase const&) = default;
    TBIBContainerBase(TBIBContainerBase&&) noexcept = default;
    ~TBIBContainerBase() = default;

    TBIBContainerBase& operator=(TBIBContainerBase const& other) {
        // Takes the new reference before it releases the old one: both may be to one container.
        TBIBContainerBase copy(other);
        swap(copy);
        return *this;
    }

    // Leaves other invalid.
    TBIBContainerBase& operator=(TBIBContainerBase&& other) noexcept {
        TBIBContainerBase taken(std::move(other));
        swap(taken);
        return *this;
    }

    // The container, borrowed.
    operator T*() const noexcept { return reinterpret_cast<T*>(fContainer); }

    // See BIBContainerBaseGeneric.
    T* UnownedReturn() { return reinterpret_cast<T*>(BIBContainerBaseGeneric::UnownedReturn()); }
};

} // namespace BIB_T_NMT
