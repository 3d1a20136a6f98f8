// The handles on the runtime's arrays and dictionaries.
#pragma once

#include "api/POSCollectionInterfaces.h"
#include "bib/BIBContainer.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/BIBStringAtom.h"
#include "bib/POSObject.h"
#include "bib/POSScalars.h"

namespace BIB_T_NMT {

BIB_DECLARE_GLOBAL_PROCS(POSArrayInterface);

// An array of values. It counts the values that it holds; a const handle changes the array all the
// same.
class CPOSArray : public CPOSObject {
public:
    // A new, empty array. Throws CBIBError.
    CPOSArray();

    CPOSArray(CPOSObject const& object, bool quiet);

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

    BIB_KEEP_GLOBAL_PROCS(POSArrayInterface)
};

BIB_DECLARE_GLOBAL_PROCS(POSDictInterface);

// A dictionary of values. It counts the values that it holds; a const handle changes the dictionary
// all the same. The forms with a char const* key make an atom of it and may throw the memory error.
class CPOSDict : public CPOSObject {
public:
    // A new, empty dictionary. Throws CBIBError.
    CPOSDict();

    // A handle on dict; an invalid one when the interface cannot be bound.
    explicit CPOSDict(POSDict* dict);

    CPOSDict(CPOSObject const& object, bool quiet);

    operator POSDict*() const noexcept { return As<POSDict>(); }

    // The value under key. No such key: an invalid handle if quiet, else POSException
    // "CPOSDict::Get failed".
    CPOSObject Get(CBIBStringAtom const& key, bool quiet) const;
    CPOSObject Get(char const* key, bool quiet) const { return Get(CBIBStringAtom(key), quiet); }

    // The same as a value of a type: Get, then the downcast, each quiet or not.
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

    // Whether there is a value under key. The cheap test: it makes no handle.
    bool HasKey(CBIBStringAtom const& key) const {
        return fProcs->Get(As<POSDict>(), key) != nullptr;
    }
    bool HasKey(char const* key) const { return HasKey(CBIBStringAtom(key)); }

    // Store a value under key, and take a key out. The runtime's answer is handed on.
    long Put(CBIBStringAtom const& key, CPOSObject const& value) const {
        return fProcs->Put(As<POSDict>(), key, value);
    }
    long Put(char const* key, CPOSObject const& value) const {
        return Put(CBIBStringAtom(key), value);
    }
    long Remove(CBIBStringAtom const& key) const { return fProcs->Remove(As<POSDict>(), key); }
    long Remove(char const* key) const { return Remove(CBIBStringAtom(key)); }

    // The number of keys, and whether there are none; both walk the dictionary.
    unsigned int NumKeys() const;
    bool IsEmpty() const { return NumKeys() == 0; }

    BIB_KEEP_GLOBAL_PROCS(POSDictInterface)
};

BIB_DECLARE_GLOBAL_PROCS(POSDictIteratorInterface);

// A cursor over the keys of a dictionary, to be walked as
//     for (iterator.Begin(); !iterator.IsDone(); iterator.Next()) … iterator.CurKey()
// It is no value. A removal under the cursor is harmless if Begin() follows.
class CPOSDictIterator : public TBIBContainerBase<POSDictIterator> {
public:
    // A cursor on dict, before Begin(). Throws CBIBError.
    explicit CPOSDictIterator(CPOSDict const& dict);

    void Begin() const { fProcs->Begin(*this); }
    void Next() const { fProcs->Next(*this); }

    // Whether no current key remains.
    bool IsDone() const { return fProcs->IsDone(*this) != 0; }

    // The current key, readable until the cursor moves.
    char const* CurKey() const { return fProcs->CurKey(*this); }

    BIB_KEEP_GLOBAL_PROCS(POSDictIteratorInterface)
};

} // namespace BIB_T_NMT
