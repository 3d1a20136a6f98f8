// The handle on the runtime's arrays.
#pragma once

#include "api/POSCollectionInterfaces.h"
#include "bib/POSObject.h"

namespace BIB_T_NMT {

BIB_DECLARE_GLOBAL_PROCS(POSArrayInterface);

// An array of values. It counts the values that it holds; a const handle changes the array all the
// same.
class CPOSArray : public CPOSObject {
public:
    // A new, empty array. Throws CBIBError.
    CPOSArray();

    // object as an array. Another type, and an invalid handle: an invalid handle if quiet, else
    // POSException "downcast from CPOSObject to CPOSArray failed".
    CPOSArray(CPOSObject const& object, bool quiet);

    // The array, not counted.
    operator POSArray*() const noexcept { return As<POSArray>(); }

    // The number of elements.
    unsigned long Count() const { return fProcs->Count(As<POSArray>()); }

    // The element. Out of range: an invalid handle if quiet, else POSException "CPOSArray::GetAt
    // subscript failed".
    CPOSObject GetAt(unsigned long index, bool quiet) const;
    CPOSObject operator[](unsigned int index) const { return GetAt(index, /*quiet=*/false); }

    // Add an element at the end, and take one out. The runtime's answer is handed on.
    long Append(CPOSObject const& value) const { return fProcs->Append(As<POSArray>(), value); }
    long Remove(unsigned long index) const { return fProcs->Remove(As<POSArray>(), index); }

    // The table, stored for use by every handle of the class; null when it cannot be bound.
    static _t_POSArrayInterface const* GetProcs();

private:
    static _t_POSArrayInterface const* fProcs;
};

} // namespace BIB_T_NMT
