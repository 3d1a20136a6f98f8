// Handles to the runtime's arrays and dictionaries.
#pragma once

#include "api/POSCollectionInterfaces.h"
#include "bib/BIBContainer.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/BIBStringAtom.h"
#include "bib/POSObject.h"
#include "bib/POSScalars.h"

namespace BIB_T_NMT {

BIB_DECLARE_GLOBAL_PROCS(POSArrayInterface);

// An array of values. It owns references to its values. A const handle can change the array.
class CPOSArray : public CPOSObject {
public:
    // A new, empty array. Throws CBIBError.
    CPOSArray();

    CPOSArray(CPOSObject const& object, bool quiet);

    operator POSArray*() const noexcept { return As<POSArray>(); }

    // The number of elements.
    unsigned long Count() const { return fProcs->Count(As<POSArray>()); }

    // The element at index. Out of range: an invalid handle if quiet, else POSException
    // "CPOSArray::GetAt subscript failed".
    CPOSObject GetAt(unsigned long index, bool quiet) const;
    CPOSObject operator[](unsigned int index) const { return GetAt(index, /*quiet=*/false); }

    // Append adds an element at the end, Remove removes one. Both return the runtime's result.
    long Append(CPOSObject const& value) const { return fProcs->Append(As<POSArray>(), value); }
    long Remove(unsigned long index) const { return fProcs->Remove(As<POSArray>(), index); }

    BIB_KEEP_GLOBAL_PROCS(POSArrayInterface)
};

BIB_DECLARE_GLOBAL_PROCS(POSDictInterface);

// A dictionary of values. It owns references to its values. A const handle can change the
// dictionary. The overloads with a char const* key make an atom from it and may throw the memory
// error.
class CPOSDict : public CPOSObject {
public:
    // A new, empty dictionary. Throws CBIBError.
    CPOSDict();

    // A handle to dict; an invalid handle if the interface cannot be bound.
    explicit CPOSDict(POSDict* dict);

    CPOSDict(CPOSObject const& object, bool quiet);

    operator POSDict*() const noexcept { return As<POSDict>(); }

    // The value under key. No such key: an invalid handle if quiet, else POSException
    // "CPOSDict::Get failed".
    CPOSObject Get(CBIBStringAtom const& key, bool quiet) const;
    CPOSObject Get(char const* key, bool quiet) const { return Get(CBIBStringAtom(key), quiet); }

    // The value under key as a value of one type: Get, then the downcast, both quiet or not.
    CPOSDict GetDict(CBIBStringAtom const& key, bool quiet) const {
        return CPOSDict(Get(key, quiet), quiet);
    }
    CPOSDict GetDict(char const* key, bool quiet) const {
        return GetDict(CBIBStringAtom(key), quiet);
    }
    CPOSArray GetArray(CBIBStringAtom const& key, bool quiet) const {
        return CPOSArray(Get(key, quiet), quiet);
    }
    CPOSArray GetArray(char const* key, bool quiet) const {
        return GetArray(CBIBStringAtom(key), quiet);
    }
    CPOSUnicodeString GetUnicodeString(CBIBStringAtom const& key, bool quiet) const {
        return CPOSUnicodeString(Get(key, quiet), quiet);
    }

    // Whether there is a value under key. Faster than Get: it makes no handle.
    bool HasKey(CBIBStringAtom const& key) const {
        return fProcs->Get(As<POSDict>(), key) != nullptr;
    }
    bool HasKey(char const* key) const { return HasKey(CBIBStringAtom(key)); }

    // Put stores a value under key, Remove removes a key. Both return the runtime's result.
    long Put(CBIBStringAtom const& key, CPOSObject const& value) const {
        return fProcs->Put(As<POSDict>(), key, value);
    }
    long Put(char const* key, CPOSObject const& value) const {
        return Put(CBIBStringAtom(key), value);
    }
    long Remove(CBIBStringAtom const& key) const { return fProcs->Remove(As<POSDict>(), key); }
    long Remove(char const* key) const { return Remove(CBIBStringAtom(key)); }

    // The number of keys, and whether there are none. Both are linear in the number of keys.
    unsigned int NumKeys() const;
    bool IsEmpty() const { return NumKeys() == 0; }

    BIB_KEEP_GLOBAL_PROCS(POSDictInterface)
};

BIB_DECLARE_GLOBAL_PROCS(POSDictIteratorInterface);

// A cursor over the keys of a dictionary, used as
//     for (iterator.Begin(); !iterator.IsDone(); iterator.Next()) … iterator.CurKey()
// It is not a value. The key under the cursor may be removed if Begin() follows.
class CPOSDictIterator : public TBIBContainerBase<POSDictIterator> {
public:
    // A cursor over dict, before Begin(). Throws CBIBError.
    explicit CPOSDictIterator(CPOSDict const& dict);

    void Begin() const { fProcs->Begin(*this); }
    void Next() const { fProcs->Next(*this); }

    // Whether there is no current key.
    bool IsDone() const { return fProcs->IsDone(*this) != 0; }

    // The current key, readable until the cursor moves.
    char const* CurKey() const { return fProcs->CurKey(*this); }

    BIB_KEEP_GLOBAL_PROCS(POSDictIteratorInterface)
};

} // namespace BIB_T_NMT
