// Caches for the runtime's further data sources, for which there are no handle classes.
#pragma once

#include "api/BIBDataInterface.h"
#include "bib/BIBVTab.h"

namespace BIB_T_NMT {

struct BIBDataBlockStreamTraits {
    using proctable_type = _t_BIBDataBlockStreamInterface;
};

struct BIBSizedDataStoreTraits {
    using proctable_type = _t_BIBSizedDataStoreInterface;
};

struct BIBDataStoreTraits {
    using proctable_type = _t_BIBDataStoreInterface;
};

using BIBDataBlockStreamInterface = BIBDataBlockStreamTraits;
using BIBSizedDataStoreInterface = BIBSizedDataStoreTraits;
using BIBDataStoreInterface = BIBDataStoreTraits;

// The loaders: see TBIBMethodLoader.
template <>
struct TInterfaceConstructor<_t_BIBDataBlockStreamInterface> {
    static int
    InitProc(BIBContainer const* container, int mustExist, _t_BIBDataBlockStreamInterface* table);
};

template <>
struct TInterfaceConstructor<_t_BIBSizedDataStoreInterface> {
    static int
    InitProc(BIBContainer const* container, int mustExist, _t_BIBSizedDataStoreInterface* table);
};

template <>
struct TInterfaceConstructor<_t_BIBDataStoreInterface> {
    static int
    InitProc(BIBContainer const* container, int mustExist, _t_BIBDataStoreInterface* table);
};

// Defined with the other static objects: their order matters.
template <>
TDelVTabList<_t_BIBDataStoreInterface> TBIB2VTabList<BIBDataStoreInterface>::fVTabList;
template <>
TDelVTabList<_t_BIBSizedDataStoreInterface> TBIB2VTabList<BIBSizedDataStoreInterface>::fVTabList;
template <>
TDelVTabList<_t_BIBDataBlockStreamInterface> TBIB2VTabList<BIBDataBlockStreamInterface>::fVTabList;

} // namespace BIB_T_NMT
