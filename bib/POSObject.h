// The root of the handles on the runtime's values, and their exceptions: a message and nothing
// else.
//
// Constructors from a pointer, and those that make a value, throw the CBIBErrors "invalid
// container" (the runtime made none) and "couldn't get signature": they never leave an invalid
// handle. A quiet failure is an invalid handle, one that is not quiet a POSException. Calling
// through an invalid handle is the caller's fault, apart from IsValid(), copies and downcasts.
// Values of one thread.
//
// Constructors from a CPOSObject are downcasts: for another type, and for an invalid handle, they
// fail with "downcast from CPOSObject to CLASS failed". Conversions to a pointer of the runtime
// count nothing. GetProcs() gives the table of a class, stored for use by every handle of it; null
// when it cannot be bound.
#pragma once

#include "api/POSObjectInterface.h"
#include "bib/BIBContainer.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/BIBVTab.h"

class BRVExceptionNoOpParent {};

// An exception that carries a text. The text is kept by pointer: it must outlive the exception.
class BRVException : public BRVExceptionNoOpParent {
public:
    explicit BRVException(char const* message) noexcept : fMessage(message) {}

    char const* fMessage;
};

namespace BIB_T_NMT {

// A failed operation on a value. Shares no base with CBIBError: a clause for one does not see the
// other.
class POSException : public BRVException {
public:
    using BRVException::BRVException;
};

// Throws a POSException that holds message, which must outlive it.
[[noreturn]] void _POSSignalError(char const* message);

BIB_DECLARE_GLOBAL_PROCS(POSObjectStatics);

class CPOSObjectTerminate;

// Loader of the method table that every value has: see TBIBMethodLoader.
int ConstructPOSObjectVirtualInterfaceMethods(
    BIBContainer const* container, int mustExist, _t_POSObjectVirtualInterface* table);

// One counted reference on a value of any type, or none.
class CPOSObject : public TBIBContainerBase<POSObject> {
public:
    // An invalid handle.
    CPOSObject() noexcept = default;

    explicit CPOSObject(POSObject* object);

    // A deep copy. Throws POSException "CPOSObject::Clone failed".
    CPOSObject Clone() const;

    // What the runtime says of the two: equal types and equal contents.
    bool IsEqual(CPOSObject const& other) const { return fVTab->IsEqual(*this, other) != 0; }
    bool operator==(CPOSObject const& other) const { return IsEqual(other); }
    bool operator!=(CPOSObject const& other) const { return !IsEqual(other); }

    // A value from a NUL-terminated text in the object notation. Failure, unless quiet:
    // POSException "CreateFromText failed"; the runtime's message goes to *errorText if errorText
    // is not null. Where the interface cannot be bound, an invalid handle in either case.
    static CPOSObject CreateFromText(char const* objectText, char const** errorText, bool quiet);

    static _t_POSObjectStatics const* GetStaticProcs() {
        return Renew(fStaticProcs, GetGlobalPOSObjectStaticsProcs());
    }

    static TBIBVTabList<_t_POSObjectVirtualInterface>& GetVTabList() noexcept { return fVTabList; }
    static CPOSObjectTerminate& GetTerm() noexcept { return fTerm; }

protected:
    // The end of a downcast: keeps the handle if it is of the type, else invalidates it if quiet,
    // else throws POSException message.
    void Narrow(bool isOfType, bool quiet, char const* message);

    // A handle on object. Null: an invalid handle if quiet, else POSException message.
    static CPOSObject HandleOn(POSObject* object, bool quiet, char const* message);

    // A handle on what a table made, which is nothing if there is no table.
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

    // Belongs to the cache; null in a handle that was never valid.
    _t_POSObjectVirtualInterface* fVTab = nullptr;

    static TBIBVTabList<_t_POSObjectVirtualInterface> fVTabList;
    static CPOSObjectTerminate fTerm;
    static _t_POSObjectStatics const* fStaticProcs;
};

// The terminator of the cache.
class CPOSObjectTerminate : public TVTabTerminate<
                                CPOSObject,
                                CPOSObject::fVTabList,
                                &CPOSObject::fVTab,
                                &ConstructPOSObjectVirtualInterfaceMethods> {};

} // namespace BIB_T_NMT
