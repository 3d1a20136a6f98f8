#include "bib/BIBStream.h"

namespace BIB_T_NMT {

int ConstructBIBSimpleStreamInterfaceMethods(
    BIBContainer const* container, int mustExist, _t_BIBSimpleStreamInterface* table) {
    BIB_LOAD_METHODS(
        _t_BIBSimpleStreamInterface,
        BIB_SIMPLE_STREAM_INTERFACE_ROWS,
        2,
        container,
        mustExist,
        table);
}

int ConstructBIBRewindableStreamInterfaceMethods(
    BIBContainer const* container, int mustExist, _t_BIBRewindableStreamInterface* table) {
    BIB_LOAD_METHODS(
        _t_BIBRewindableStreamInterface,
        BIB_REWINDABLE_STREAM_INTERFACE_ROWS,
        2,
        container,
        mustExist,
        table);
}

int ConstructBIBPositionableStreamInterfaceMethods(
    BIBContainer const* container, int mustExist, _t_BIBPositionableStreamInterface* table) {
    BIB_LOAD_METHODS(
        _t_BIBPositionableStreamInterface,
        BIB_POSITIONABLE_STREAM_INTERFACE_ROWS,
        3,
        container,
        mustExist,
        table);
}

CBIBSimpleStream* CBIBSimpleStreamTerminate::InitVTab(CBIBSimpleStream* handle) {
    handle->fSimpleVTab = CBIBSimpleStream::fSimpleVTabList.GetVTab(
        *handle, &ConstructBIBSimpleStreamInterfaceMethods);
    return handle;
}

CBIBRewindableStream* CBIBRewindableStreamTerminate::InitVTab(CBIBRewindableStream* handle) {
    handle->fRewindableVTab = CBIBRewindableStream::fRewindableVTabList.GetVTab(
        *handle, &ConstructBIBRewindableStreamInterfaceMethods);
    return handle;
}

CBIBPositionableStream* CBIBPositionableStreamTerminate::InitVTab(CBIBPositionableStream* handle) {
    handle->fPositionableVTab = CBIBPositionableStream::fPositionableVTabList.GetVTab(
        *handle, &ConstructBIBPositionableStreamInterfaceMethods);
    return handle;
}

CBIBSimpleStream::CBIBSimpleStream(BIBSimpleStream* stream) : TBIBContainerBase(stream) {
    fSimpleTerm.InitVTab(this);
}

unsigned long CBIBSimpleStream::Read(unsigned char* buffer, unsigned long size) const {
    unsigned long bytesRead = 0;
    ThrowOnFailure(fSimpleVTab->Read(*this, &bytesRead, buffer, size));
    return bytesRead;
}

unsigned long CBIBSimpleStream::Read(void* buffer, unsigned long size) const {
    return Read(static_cast<unsigned char*>(buffer), size);
}

void CBIBSimpleStream::Write(unsigned char const* buffer, unsigned long size) const {
    ThrowOnFailure(fSimpleVTab->Write(*this, buffer, size));
}

void CBIBSimpleStream::Write(void const* buffer, unsigned long size) const {
    Write(static_cast<unsigned char const*>(buffer), size);
}

TBIBVTabList<_t_BIBSimpleStreamInterface>& CBIBSimpleStream::GetSimpleVTabList() noexcept {
    return fSimpleVTabList;
}

CBIBSimpleStreamTerminate& CBIBSimpleStream::GetSimpleTerm() noexcept {
    return fSimpleTerm;
}

CBIBRewindableStream::CBIBRewindableStream(BIBRewindableStream* stream)
    : CBIBSimpleStream(reinterpret_cast<BIBSimpleStream*>(stream)) {
    fRewindableTerm.InitVTab(this);
}

CBIBRewindableStream::operator BIBRewindableStream*() const noexcept {
    return reinterpret_cast<BIBRewindableStream*>(fContainer);
}

TBIBVTabList<_t_BIBRewindableStreamInterface>&
CBIBRewindableStream::GetRewindableVTabList() noexcept {
    return fRewindableVTabList;
}

CBIBRewindableStreamTerminate& CBIBRewindableStream::GetRewindableTerm() noexcept {
    return fRewindableTerm;
}

CBIBPositionableStream::CBIBPositionableStream()
    : CBIBPositionableStream(CBIBStreamFactory::NewMemoryStream()) {}

CBIBPositionableStream::CBIBPositionableStream(TBIBSharedBuffer<unsigned char> const& buffer)
    : CBIBPositionableStream(CBIBStreamFactory::NewBufferStream(buffer)) {}

CBIBPositionableStream::CBIBPositionableStream(BIBPositionableStream* stream)
    : CBIBRewindableStream(reinterpret_cast<BIBRewindableStream*>(stream)) {
    fPositionableTerm.InitVTab(this);
}

CBIBPositionableStream::operator BIBPositionableStream*() const noexcept {
    return reinterpret_cast<BIBPositionableStream*>(fContainer);
}

unsigned long CBIBPositionableStream::Mark() const {
    unsigned long position = 0;
    ThrowOnFailure(fPositionableVTab->Mark(*this, &position));
    return position;
}

void CBIBPositionableStream::Seek(long offset, BIBPositionableStream_SeekOrigin origin) const {
    ThrowOnFailure(fPositionableVTab->Seek(*this, offset, origin));
}

void CBIBPositionableStream::Seek(unsigned long position) const {
    Seek(static_cast<long>(position), kBIBSeekFromStart);
}

BIBPositionableStream* CBIBPositionableStream::UnownedReturn() {
    return reinterpret_cast<BIBPositionableStream*>(BIBContainerBaseGeneric::UnownedReturn());
}

TBIBVTabList<_t_BIBPositionableStreamInterface>&
CBIBPositionableStream::GetPositionableVTabList() noexcept {
    return fPositionableVTabList;
}

CBIBPositionableStreamTerminate& CBIBPositionableStream::GetPositionableTerm() noexcept {
    return fPositionableTerm;
}

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
