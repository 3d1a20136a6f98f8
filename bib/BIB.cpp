// The static objects of the BIB client. They stand together because the order of their construction
// matters: a LazyTerminate is called before those that were constructed earlier.

#include "bib/BIBCache.h"
#include "bib/BIBContainer.h"
#include "bib/BIBError.h"
#include "bib/BIBStream.h"
#include "bib/LazyTerminate.h"

namespace BIB_T_NMT {

// Placeholders for the runtime's filters: sinks that data is written through.

// The filter interface's procedures. Reserved: nothing binds them.
using BIBFilterProc = void (*)(void* sink);
constexpr unsigned long kBIBFilterRelease = 6;
BIBFilterProc gBIBFilterInterface[kBIBFilterRelease + 1] = {};

// A handle on a sink of the runtime, or none. The argument of the constructors is not read.
class CBIBDataSink : public CBIBClientBase {
public:
    explicit CBIBDataSink(int) noexcept : fSink(nullptr) {}
    CBIBDataSink(CBIBDataSink const&) = delete;
    CBIBDataSink& operator=(CBIBDataSink const&) = delete;

    ~CBIBDataSink() {
        if (fSink != nullptr) {
            gBIBFilterInterface[kBIBFilterRelease](fSink);
        }
    }

private:
    void* fSink;
};

class CBIBFilter : public CBIBDataSink {
public:
    using CBIBDataSink::CBIBDataSink;

    static CBIBFilter Invalid; // NOLINT(readability-identifier-naming): its fixed name
};

class CBIBFilterJPEG : public CBIBFilter {
public:
    using CBIBFilter::CBIBFilter;

    static CBIBFilterJPEG Invalid; // NOLINT(readability-identifier-naming): its fixed name
};

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
