// The base class of the handles to the runtime's values, and the exceptions of values, which carry
// only a message.
//
// Constructors from a pointer, and those that make a value, throw the CBIBErrors "invalid
// container" (the runtime made no value) and "couldn't get signature"; they never leave an invalid
// handle. A quiet failure returns an invalid handle; any other failure throws a POSException.
// REQUIRES: the handle is valid, except for IsValid(), copies and downcasts. Use a handle on one
// thread at a time.
//
// Constructors from a CPOSObject are downcasts. For another type, and for an invalid handle, they
// fail with "downcast from CPOSObject to CLASS failed". Conversions to a runtime pointer return a
// borrowed pointer. GetProcs() returns the table of a class and stores it for all handles of the
// class; null if it cannot be bound.
#pragma once

#include "api/POSObjectInterface.h"
#include "bib/BIBContainer.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/BIBVTab.h"

class BRVExceptionNoOpParent {};

// An exception with a message. It keeps the pointer, so the string must outlive the exception.
class BRVException : public BRVExceptionNoOpParent {
public:
    explicit BRVException(char const* message) noexcept : fMessage(message) {}

    char const* fMessage;
};

namespace BIB_T_NMT {

// A failed operation on a value. It has no common base with CBIBError: a handler for one does not
// catch the other.
class POSException : public BRVException {
public:
    using BRVException::BRVException;
};

// Throws a POSException with message, which must outlive it.
[[noreturn]] void _POSSignalError(char const* message);

BIB_DECLARE_GLOBAL_PROCS(POSObjectStatics);

class CPOSObjectTerminate;

// Loads the method table that every value has: see TBIBMethodLoader.
int ConstructPOSObjectVirtualInterfaceMethods(
    BIBContainer const* container, int mustExist, _t_POSObjectVirtualInterface* table);

// Owns one reference to a value of any type, or none.
class CPOSObject : public TBIBContainerBase<POSObject> {
public:
    // An invalid handle.
    CPOSObject() noexcept = default;

    explicit CPOSObject(POSObject* object);

    // A deep copy. Throws POSException "CPOSObject::Clone failed".
    CPOSObject Clone() const;

    // The runtime's comparison: equal types and equal contents.
    bool IsEqual(CPOSObject const& other) const { return fVTab->IsEqual(*this, other) != 0; }
    bool operator==(CPOSObject const& other) const { return IsEqual(other); }
    bool operator!=(CPOSObject const& other) const { return !IsEqual(other); }

    // A value parsed from a NUL-terminated string in the object notation. Failure: an invalid
    // handle if quiet, else POSException "CreateFromText failed". The runtime's message is stored
    // in *errorText if errorText is not null. If the interface cannot be bound: an invalid handle
    // in either case.
    static CPOSObject CreateFromText(char const* objectText, char const** errorText, bool quiet);

    static _t_POSObjectStatics const* GetStaticProcs() {
        return Renew(fStaticProcs, GetGlobalPOSObjectStaticsProcs());
    }

    static TBIBVTabList<_t_POSObjectVirtualInterface>& GetVTabList() noexcept { return fVTabList; }
    static CPOSObjectTerminate& GetTerm() noexcept { return fTerm; }

protected:
    // The last step of a downcast: keeps a handle to a value of the type. Any other handle is
    // invalidated if quiet; otherwise throws a POSException with message.
    void Narrow(bool isOfType, bool quiet, char const* message);

    // A handle to object. Null: an invalid handle if quiet, else a POSException with message.
    static CPOSObject HandleOn(POSObject* object, bool quiet, char const* message);

    // Casts a value that a table made; null if there is no table.
    template <class T>
    static POSObject* AsObject(T* value) noexcept {
        return reinterpret_cast<POSObject*>(value);
    }

    template <class T>
    T* As() const noexcept {
        return reinterpret_cast<T*>(fContainer);
    }

private:
    friend CPOSObjectTerminate;

    // Owned by the cache; null in a handle that was never valid.
    _t_POSObjectVirtualInterface* fVTab = nullptr;

    static TBIBVTabList<_t_POSObjectVirtualInterface> fVTabList;
    static CPOSObjectTerminate fTerm;
    static _t_POSObjectStatics const* fStaticProcs;
};

// The terminator of the method-table cache.
class CPOSObjectTerminate : public TVTabTerminate<
                                CPOSObject,
                                CPOSObject::fVTabList,
                                &CPOSObject::fVTab,
                                &ConstructPOSObjectVirtualInterfaceMethods> {};

} // namespace BIB_T_NMT
