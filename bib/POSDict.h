// The handle on the runtime's dictionaries.
#pragma once

#include "api/POSCollectionInterfaces.h"
#include "bib/BIBStringAtom.h"
#include "bib/POSArray.h"
#include "bib/POSObject.h"
#include "bib/POSUnicodeString.h"

namespace BIB_T_NMT {

BIB_DECLARE_GLOBAL_PROCS(POSDictInterface);

// A dictionary of values. It counts the values that it holds; a const handle changes the dictionary
// all the same. The forms with a char const* key make an atom of it and may throw the memory error.
class CPOSDict : public CPOSObject {
public:
    // A new, empty dictionary. Throws CBIBError.
    CPOSDict();

    // A handle on dict; an invalid one when the interface cannot be bound.
    explicit CPOSDict(POSDict* dict);

    // object as a dictionary. Another type, and an invalid handle: an invalid handle if quiet, else
    // POSException "downcast from CPOSObject to CPOSDict failed".
    CPOSDict(CPOSObject const& object, bool quiet);

    // The dictionary, not counted.
    operator POSDict*() const noexcept { return As<POSDict>(); }

    // The value under key. No such key: an invalid handle if quiet, else POSException
    // "CPOSDict::Get failed".
    CPOSObject Get(CBIBStringAtom const& key, bool quiet) const;
    CPOSObject Get(char const* key, bool quiet) const;

    // The same as a value of a type: Get, then the downcast, each quiet or not.
    CPOSDict GetDict(CBIBStringAtom const& key, bool quiet) const;
    CPOSDict GetDict(char const* key, bool quiet) const;
    CPOSArray GetArray(CBIBStringAtom const& key, bool quiet) const;
    CPOSArray GetArray(char const* key, bool quiet) const;
    CPOSUnicodeString GetUnicodeString(CBIBStringAtom const& key, bool quiet) const;

    // Whether there is a value under key. The cheap test: it makes no handle.
    bool HasKey(CBIBStringAtom const& key) const;
    bool HasKey(char const* key) const;

    // Store a value under key, and take a key out. The runtime's answer is handed on.
    long Put(CBIBStringAtom const& key, CPOSObject const& value) const;
    long Put(char const* key, CPOSObject const& value) const;
    long Remove(CBIBStringAtom const& key) const;
    long Remove(char const* key) const;

    // The number of keys, and whether there are none; both walk the dictionary.
    unsigned int NumKeys() const;
    bool IsEmpty() const { return NumKeys() == 0; }

    // The table, stored for use by every handle of the class; null when it cannot be bound.
    static _t_POSDictInterface const* GetProcs();

private:
    static _t_POSDictInterface const* fProcs;
};

} // namespace BIB_T_NMT
