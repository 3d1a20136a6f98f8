// Handles to the runtime's streams, one class for each level, and caches for its other data
// sources.
//
// Use a handle on one thread at a time. Copies share the stream and its position. Every operation
// throws the runtime's error as a CBIBError. Constructors from a pointer throw the CBIBErrors
// "invalid container" (also for null) and "couldn't get signature".
#pragma once

#include "api/BIBDataInterface.h"
#include "api/BIBStreamInterface.h"
#include "bib/BIBContainer.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/BIBSharedBuffer.h"
#include "bib/BIBVTab.h"

namespace BIB_T_NMT {

class CBIBSimpleStreamTerminate;
class CBIBRewindableStreamTerminate;
class CBIBPositionableStreamTerminate;

// Loaders of the three method tables: see TBIBMethodLoader.
int ConstructBIBSimpleStreamInterfaceMethods(
    BIBContainer const* container, int mustExist, _t_BIBSimpleStreamInterface* table);
int ConstructBIBRewindableStreamInterfaceMethods(
    BIBContainer const* container, int mustExist, _t_BIBRewindableStreamInterface* table);
int ConstructBIBPositionableStreamInterfaceMethods(
    BIBContainer const* container, int mustExist, _t_BIBPositionableStreamInterface* table);

// A stream of bytes.
class CBIBSimpleStream : public TBIBContainerBase<BIBSimpleStream> {
public:
    explicit CBIBSimpleStream(BIBSimpleStream* stream);

    // Reads up to size bytes. Returns the number of bytes read, which is less than size only at the
    // end of the data.
    unsigned long Read(unsigned char* buffer, unsigned long size) const;
    unsigned long Read(void* buffer, unsigned long size) const {
        return Read(static_cast<unsigned char*>(buffer), size);
    }

    // Writes all size bytes.
    void Write(unsigned char const* buffer, unsigned long size) const;
    void Write(void const* buffer, unsigned long size) const {
        Write(static_cast<unsigned char const*>(buffer), size);
    }

    static TBIBVTabList<_t_BIBSimpleStreamInterface>& GetSimpleVTabList() noexcept {
        return fSimpleVTabList;
    }
    static CBIBSimpleStreamTerminate& GetSimpleTerm() noexcept { return fSimpleTerm; }

private:
    friend CBIBSimpleStreamTerminate;

    // Owned by the cache.
    _t_BIBSimpleStreamInterface* fSimpleVTab = nullptr;

    static TBIBVTabList<_t_BIBSimpleStreamInterface> fSimpleVTabList;
    static CBIBSimpleStreamTerminate fSimpleTerm;
};

// A stream that can be rewound.
class CBIBRewindableStream : public CBIBSimpleStream {
public:
    explicit CBIBRewindableStream(BIBRewindableStream* stream);

    // The stream, borrowed.
    operator BIBRewindableStream*() const noexcept {
        return reinterpret_cast<BIBRewindableStream*>(fContainer);
    }

    static TBIBVTabList<_t_BIBRewindableStreamInterface>& GetRewindableVTabList() noexcept {
        return fRewindableVTabList;
    }
    static CBIBRewindableStreamTerminate& GetRewindableTerm() noexcept { return fRewindableTerm; }

private:
    friend CBIBRewindableStreamTerminate;

    // Owned by the cache.
    _t_BIBRewindableStreamInterface* fRewindableVTab = nullptr;

    static TBIBVTabList<_t_BIBRewindableStreamInterface> fRewindableVTabList;
    static CBIBRewindableStreamTerminate fRewindableTerm;
};

// A stream with a position that can be read and set.
class CBIBPositionableStream : public CBIBRewindableStream {
public:
    // A new, empty memory stream.
    CBIBPositionableStream();

    // A stream that reads buffer and keeps it alive.
    explicit CBIBPositionableStream(TBIBSharedBuffer<unsigned char> const& buffer);

    explicit CBIBPositionableStream(BIBPositionableStream* stream);

    // The stream, borrowed.
    operator BIBPositionableStream*() const noexcept {
        return reinterpret_cast<BIBPositionableStream*>(fContainer);
    }

    // The position in bytes from the start.
    unsigned long Mark() const;

    // Moves to offset bytes from origin, or to position in bytes from the start.
    void Seek(long offset, BIBPositionableStream_SeekOrigin origin) const;
    void Seek(unsigned long position) const {
        Seek(static_cast<long>(position), kBIBSeekFromStart);
    }

    // See BIBContainerBaseGeneric.
    BIBPositionableStream* UnownedReturn() {
        return reinterpret_cast<BIBPositionableStream*>(BIBContainerBaseGeneric::UnownedReturn());
    }

    static TBIBVTabList<_t_BIBPositionableStreamInterface>& GetPositionableVTabList() noexcept {
        return fPositionableVTabList;
    }
    static CBIBPositionableStreamTerminate& GetPositionableTerm() noexcept {
        return fPositionableTerm;
    }

private:
    friend CBIBPositionableStreamTerminate;

    // Owned by the cache.
    _t_BIBPositionableStreamInterface* fPositionableVTab = nullptr;

    static TBIBVTabList<_t_BIBPositionableStreamInterface> fPositionableVTabList;
    static CBIBPositionableStreamTerminate fPositionableTerm;
};

// The terminators of the three method-table caches.
class CBIBSimpleStreamTerminate : public TVTabForgetfulTerminate<
                                      CBIBSimpleStream,
                                      CBIBSimpleStream::fSimpleVTabList,
                                      &CBIBSimpleStream::fSimpleVTab,
                                      &ConstructBIBSimpleStreamInterfaceMethods> {};

class CBIBRewindableStreamTerminate : public TVTabForgetfulTerminate<
                                          CBIBRewindableStream,
                                          CBIBRewindableStream::fRewindableVTabList,
                                          &CBIBRewindableStream::fRewindableVTab,
                                          &ConstructBIBRewindableStreamInterfaceMethods> {};

class CBIBPositionableStreamTerminate : public TVTabForgetfulTerminate<
                                            CBIBPositionableStream,
                                            CBIBPositionableStream::fPositionableVTabList,
                                            &CBIBPositionableStream::fPositionableVTab,
                                            &ConstructBIBPositionableStreamInterfaceMethods> {};

BIB_DECLARE_GLOBAL_PROCS(BIBStreamFactoryInterface);

// The stream factory. All members are static. The streams are unowned; null if the factory cannot
// be bound. Throws the runtime's error if it cannot make the stream, and for a missing name once
// the client is bound.
class CBIBStreamFactory {
public:
    // Binds the table if necessary. Returns whether it is bound.
    static bool Init() { return GetGlobalBIBStreamFactoryInterfaceProcs() != nullptr; }

    // An empty, writable stream.
    static BIBPositionableStream* NewMemoryStream();

    // A stream that reads buffer and keeps it alive.
    static BIBPositionableStream* NewBufferStream(TBIBSharedBuffer<unsigned char> const& buffer);
};

// Caches for the runtime's other data sources, which have no handle classes.
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
int TInterfaceConstructor<_t_BIBDataBlockStreamInterface>::InitProc(
    BIBContainer const* container, int mustExist, _t_BIBDataBlockStreamInterface* table);
template <>
int TInterfaceConstructor<_t_BIBSizedDataStoreInterface>::InitProc(
    BIBContainer const* container, int mustExist, _t_BIBSizedDataStoreInterface* table);
template <>
int TInterfaceConstructor<_t_BIBDataStoreInterface>::InitProc(
    BIBContainer const* container, int mustExist, _t_BIBDataStoreInterface* table);

// Defined with the other static objects, because the order of construction matters.
template <>
TDelVTabList<_t_BIBDataStoreInterface> TBIB2VTabList<BIBDataStoreInterface>::fVTabList;
template <>
TDelVTabList<_t_BIBSizedDataStoreInterface> TBIB2VTabList<BIBSizedDataStoreInterface>::fVTabList;
template <>
TDelVTabList<_t_BIBDataBlockStreamInterface> TBIB2VTabList<BIBDataBlockStreamInterface>::fVTabList;

} // namespace BIB_T_NMT
