// Placeholders for the runtime's filters: sinks that data is written through.
#pragma once

#include "bib/BIBClient.h"

namespace BIB_T_NMT {

// The filter interface's procedures. Reserved: nothing binds them.
using BIBFilterProc = void (*)(void* sink);
inline constexpr unsigned long kBIBFilterRelease = 6;
extern BIBFilterProc gBIBFilterInterface[kBIBFilterRelease + 1];

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

} // namespace BIB_T_NMT
