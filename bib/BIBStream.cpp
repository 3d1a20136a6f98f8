#include "bib/BIBStream.h"

namespace BIB_T_NMT {

BIB_DEFINE_METHOD_LOADER(BIBSimpleStreamInterface, BIB_SIMPLE_STREAM_INTERFACE_ROWS, 2)

BIB_DEFINE_METHOD_LOADER(BIBRewindableStreamInterface, BIB_REWINDABLE_STREAM_INTERFACE_ROWS, 2)

BIB_DEFINE_METHOD_LOADER(BIBPositionableStreamInterface, BIB_POSITIONABLE_STREAM_INTERFACE_ROWS, 3)

BIB_DEFINE_INIT_PROC(BIBDataBlockStreamInterface, BIB_DATA_BLOCK_STREAM_INTERFACE_ROWS, 2)

BIB_DEFINE_INIT_PROC(BIBSizedDataStoreInterface, BIB_SIZED_DATA_STORE_INTERFACE_ROWS, 1)

BIB_DEFINE_INIT_PROC(BIBDataStoreInterface, BIB_DATA_STORE_INTERFACE_ROWS, 1)

CBIBSimpleStream::CBIBSimpleStream(BIBSimpleStream* stream) : TBIBContainerBase(stream) {
    fSimpleTerm.InitVTab(this);
}

unsigned long CBIBSimpleStream::Read(unsigned char* buffer, unsigned long size) const {
    unsigned long bytesRead = 0;
    ThrowOnFailure(fSimpleVTab->Read(*this, &bytesRead, buffer, size));
    return bytesRead;
}

void CBIBSimpleStream::Write(unsigned char const* buffer, unsigned long size) const {
    ThrowOnFailure(fSimpleVTab->Write(*this, buffer, size));
}

CBIBRewindableStream::CBIBRewindableStream(BIBRewindableStream* stream)
    : CBIBSimpleStream(reinterpret_cast<BIBSimpleStream*>(stream)) {
    fRewindableTerm.InitVTab(this);
}
CBIBPositionableStream::CBIBPositionableStream()
    : CBIBPositionableStream(CBIBStreamFactory::NewMemoryStream()) {}

CBIBPositionableStream::CBIBPositionableStream(TBIBSharedBuffer<unsigned char> const& buffer)
    : CBIBPositionableStream(CBIBStreamFactory::NewBufferStream(buffer)) {}

CBIBPositionableStream::CBIBPositionableStream(BIBPositionableStream* stream)
    : CBIBRewindableStream(reinterpret_cast<BIBRewindableStream*>(stream)) {
    fPositionableTerm.InitVTab(this);
}
unsigned long CBIBPositionableStream::Mark() const {
    unsigned long position = 0;
    ThrowOnFailure(fPositionableVTab->Mark(*this, &position));
    return position;
}

void CBIBPositionableStream::Seek(long offset, BIBPositionableStream_SeekOrigin origin) const {
    ThrowOnFailure(fPositionableVTab->Seek(*this, offset, origin));
}

BIB_DEFINE_GLOBAL_PROCS(BIBStreamFactoryInterface, BIB_STREAM_FACTORY_INTERFACE_ROWS, 6)

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
