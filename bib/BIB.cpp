// The static objects of the BIB client. They stand together because the order of their construction
// matters: a LazyTerminate is called before those that were constructed earlier.

#include "bib/BIBCache.h"
#include "bib/BIBContainer.h"
#include "bib/BIBData.h"
#include "bib/BIBError.h"
#include "bib/BIBFilter.h"
#include "bib/BIBStream.h"
#include "bib/LazyTerminate.h"

namespace BIB_T_NMT {

namespace {

// Declared before the errors: their first copies already go through the table's slots.
BIBErrorInit gBIBErrorInit;

} // namespace

constinit CBIBError CBIBError::fUnknownError;
constinit CBIBError CBIBError::fMemError;

constinit long CBIBContainer::fPrimaryOffset = 0;
CBIBCPPCheck CBIBContainer::fCPPCheck;

LazyTerminate::List LazyTerminate::fList;

CBIBStaticCacheBase::List CBIBStaticCacheBase::fList;
constinit bool CBIBStaticCacheBase::fAcceptingCaches = false;

CBIBCacheLock::SkipNoPurge_t CBIBCacheLock::SkipNoPurge;

BIBFilterProc gBIBFilterInterface[kBIBFilterRelease + 1] = {};
CBIBFilter CBIBFilter::Invalid(1);
CBIBFilterJPEG CBIBFilterJPEG::Invalid(1);

template <>
TDelVTabList<_t_BIBDataStoreInterface> TBIB2VTabList<BIBDataStoreInterface>::fVTabList(1);
template <>
TDelVTabList<_t_BIBSizedDataStoreInterface> TBIB2VTabList<BIBSizedDataStoreInterface>::fVTabList(1);
template <>
TDelVTabList<_t_BIBDataBlockStreamInterface>
    TBIB2VTabList<BIBDataBlockStreamInterface>::fVTabList(1);

constinit TBIBVTabList<_t_BIBSimpleStreamInterface> CBIBSimpleStream::fSimpleVTabList;
constinit TBIBVTabList<_t_BIBRewindableStreamInterface> CBIBRewindableStream::fRewindableVTabList;
constinit TBIBVTabList<_t_BIBPositionableStreamInterface>
    CBIBPositionableStream::fPositionableVTabList;

CBIBSimpleStreamTerminate CBIBSimpleStream::fSimpleTerm;
CBIBRewindableStreamTerminate CBIBRewindableStream::fRewindableTerm;
CBIBPositionableStreamTerminate CBIBPositionableStream::fPositionableTerm;

} // namespace BIB_T_NMT
