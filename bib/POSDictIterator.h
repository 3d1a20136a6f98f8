// The handle on the runtime's cursors over a dictionary.
#pragma once

#include "api/POSCollectionInterfaces.h"
#include "bib/BIBContainer.h"
#include "bib/BIBGlobalProcs.h"

namespace BIB_T_NMT {

class CPOSDict;

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

    // The table, stored for use by every handle of the class; null when it cannot be bound.
    static _t_POSDictIteratorInterface const* GetProcs();

private:
    static _t_POSDictIteratorInterface const* fProcs;
};

} // namespace BIB_T_NMT
