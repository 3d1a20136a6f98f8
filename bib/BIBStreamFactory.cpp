#include "bib/BIBStreamFactory.h"

namespace BIB_T_NMT {

BIB_DEFINE_GLOBAL_PROCS(BIBStreamFactoryInterface, BIB_STREAM_FACTORY_INTERFACE_ROWS, 6)

bool CBIBStreamFactory::Init() {
    return GetGlobalBIBStreamFactoryInterfaceProcs() != nullptr;
}

BIBPositionableStream* CBIBStreamFactory::NewMemoryStream() {
    BIBPositionableStream* result = nullptr;
    if (Init()) {
        ThrowOnFailure(gBIBStreamFactoryInterface.NewPositionableMemoryStream(&result));
    }
    return result;
}

BIBPositionableStream*
CBIBStreamFactory::NewBufferStream(TBIBSharedBuffer<unsigned char> const& buffer) {
    BIBPositionableStream* result = nullptr;
    if (Init()) {
        ThrowOnFailure(gBIBStreamFactoryInterface.NewPositionableBufferStream(
            &result, buffer.PeekSharedBuffer()));
    }
    return result;
}

} // namespace BIB_T_NMT
