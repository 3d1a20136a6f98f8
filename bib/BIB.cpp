// The static objects of the BIB client. They are in one file because the order of their
// construction matters: LazyTerminate objects are initialized and terminated in the reverse order
// of their construction.

#include "bib/BIBCache.h"
#include "bib/BIBContainer.h"
#include "bib/BIBError.h"
#include "bib/BIBStream.h"
#include "bib/LazyTerminate.h"

namespace BIB_T_NMT {

// Placeholders for the runtime's filters, the sinks that data is written through.

// The procedures of the filter interface. Reserved: nothing binds them.
using BIBFilterProc = void (*)(void* sink);
constexpr unsigned long kBIBFilterRelease = 6;
BIBFilterProc gBIBFilterInterface[kBIBFilterRelease + 1] = {};

// A handle to a sink of the runtime, or an empty handle. The constructor ignores its argument.
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

// Defined before the errors: it puts no-op procedures into the table, and copying an error already
// calls them.
BIBErrorInit gBIBErrorInit;

} // namespace

// After a stop these are invalid; their destructors still call the runtime's Release, with null,
// when the library is unloaded.
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
