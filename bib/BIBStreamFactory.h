// The maker of memory and buffer streams.
#pragma once

#include "api/BIBStreamInterface.h"
#include "bib/BIBGlobalProcs.h"
#include "bib/BIBSharedBuffer.h"

namespace BIB_T_NMT {

BIB_DECLARE_GLOBAL_PROCS(BIBStreamFactoryInterface);

// The stream factory. No instances. The streams come unowned; null when the factory cannot be
// bound. Throws the runtime's error when it makes no stream, and for a missing name once the client
// is bound.
class CBIBStreamFactory {
public:
    // Whether the table is bound.
    static bool Init();

    // An empty stream that can be written.
    static BIBPositionableStream* NewMemoryStream();

    // A stream that reads buffer and keeps it alive.
    static BIBPositionableStream* NewBufferStream(TBIBSharedBuffer<unsigned char> const& buffer);
};

} // namespace BIB_T_NMT
