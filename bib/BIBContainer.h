// Containers: the static operations on them and the counted handles that everything is held by.
//
// A container that is handed across as a result carries no count for the receiver. The receiver's
// handle adds one, and UnownedReturn() gives one up on the way back out; nothing else moves a
// count.
#pragma once

#include "api/BIBContainerInterface.h"
#include "bib/BIBError.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/BIBStringAtom.h"

#include <cstdint>
#include <utility>

namespace BIB_T_NMT {

BIB_DECLARE_INTERFACE(BIBContainerInterface, BIBContainerTraits, BIB_CONTAINER_INTERFACE_ROWS, 16);

// Proof that static construction has run.
class CBIBCPPCheck {
public:
    CBIBCPPCheck() noexcept;

    bool HasRun() const noexcept { return fValue == kConstructed; }

private:
    static constexpr std::int32_t kConstructed = 13;

    std::int32_t fValue;
};

// The operations on containers. No instances.
class CBIBContainer {
public:
    // Binds the table and reads the place of the primary record. False when static construction has
    // not run; throws the CBIBError "Missing Interface".
    static bool Init();

    // Makes Release harmless until the table is bound.
    static void Close() noexcept;

    static CBIBCPPCheck& GetCPPCheck() noexcept { return fCPPCheck; }

    // Whether a reference was added.
    static bool AddRef(BIBContainer* container) {
        return GetProcs<BIBContainerInterface>()->AddRef(container) != 0;
    }

    static void Release(BIBContainer* container) {
        GetProcs<BIBContainerInterface>()->Release(container);
    }

    static void DecrementWithoutDelete(BIBContainer* container) {
        GetProcs<BIBContainerInterface>()->DecrementWithoutDelete(container);
    }

    // The interned text of the container's signature. Throws the CBIBError "couldn't get
    // signature".
    static char const* GetSignature(BIBContainer const* container);

    // The instance of that name, without a runtime call if it is the primary one. Throws the
    // runtime's error when there is none.
    static void* GetInstance(BIBContainer const* container, CBIBStringAtom const& name);

    // The same, always through the runtime.
    static void* BCGetInstance(BIBContainer const* container, CBIBStringAtom const& name);

    // The method of the container's signature. None: null, or the runtime's error if it must exist.
    static void* GetMethod(
        BIBContainer const* container,
        CBIBStringAtom const& name,
        CBIBStringAtom const& procType,
        bool mustExist);

    // A new container, unowned, that owns instance and destroys it through deleteProc. Throws the
    // runtime's error, and then instance stays the caller's.
    static BIBContainer* NewFullContainer(
        void* instance,
        CBIBStringAtom const& instanceName,
        void (*deleteProc)(void*),
        CBIBStringAtom const& signature,
        BIBContainerNotifyProc containerProc,
        BIBInstanceNotifyProc instanceProc,
        void* clientData);

    // Throw the CBIBErrors "invalid container" and "couldn't get signature".
    [[noreturn]] static void ThrowInvalidContainerException();
    [[noreturn]] static void ThrowNoSignatureException();

private:
    static BIBPrimaryRecord const& PrimaryRecord(BIBContainer const* container) noexcept;

    static long fPrimaryOffset; // in bytes, from a container's address
    static CBIBCPPCheck fCPPCheck;
};

// CBIBContainer::GetInstance as a T*.
template <class T>
T* TBIBGetInstance(BIBContainer const* container, CBIBStringAtom const& name) {
    return static_cast<T*>(CBIBContainer::GetInstance(container, name));
}

// Stands in the Release slot until the table is bound.
void BIBContainerNoOpRelease(BIBContainer* container) noexcept;

// One counted reference on a container, or none: an invalid handle. A value of one thread.
class BIBContainerBaseGeneric {
public:
    // An invalid handle.
    BIBContainerBaseGeneric() noexcept = default;

    // Adds a reference. Throws the CBIBError "invalid container" when there is none to be had, for
    // null too.
    explicit BIBContainerBaseGeneric(BIBContainer* container);

    // The same, but the copy of an invalid handle is an invalid handle.
    BIBContainerBaseGeneric(BIBContainerBaseGeneric const& other);

    // Takes the reference over and leaves an invalid handle.
    BIBContainerBaseGeneric(BIBContainerBaseGeneric&& other) noexcept
        : fContainer(std::exchange(other.fContainer, nullptr)) {}

    BIBContainerBaseGeneric& operator=(BIBContainerBaseGeneric const&) = delete;
    BIBContainerBaseGeneric& operator=(BIBContainerBaseGeneric&&) = delete;

    ~BIBContainerBaseGeneric() { CBIBContainer::Release(fContainer); }

    bool IsValid() const noexcept { return fContainer != nullptr; }

    // The container, not counted.
    operator BIBContainer*() const noexcept { return fContainer; }

    void swap(BIBContainerBaseGeneric& other) noexcept { std::swap(fContainer, other.fContainer); }

    // Gives the reference up.
    void Invalidate() {
        CBIBContainer::Release(fContainer);
        fContainer = nullptr;
    }

    // Gives the reference up without destroying the container, and returns it; null for an invalid
    // handle.
    BIBContainer* UnownedReturn() {
        CBIBContainer::DecrementWithoutDelete(fContainer);
        return std::exchange(fContainer, nullptr);
    }

protected:
    BIBContainer* fContainer = nullptr;
};

// The same on a container of the runtime type T.
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
        // The new reference is taken before the old one goes: the two may be one container.
        TBIBContainerBase copy(other);
        swap(copy);
        return *this;
    }

    // Leaves an invalid handle.
    TBIBContainerBase& operator=(TBIBContainerBase&& other) noexcept {
        TBIBContainerBase taken(std::move(other));
        swap(taken);
        return *this;
    }

    // The container, not counted.
    operator T*() const noexcept { return reinterpret_cast<T*>(fContainer); }

    // See BIBContainerBaseGeneric.
    T* UnownedReturn() { return reinterpret_cast<T*>(BIBContainerBaseGeneric::UnownedReturn()); }
};

} // namespace BIB_T_NMT
