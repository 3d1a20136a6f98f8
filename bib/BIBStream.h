// Handles on the runtime's streams, one class for each level.
//
// A handle is a value of one thread, and copies share the stream and its position. Every operation
// throws the runtime's error as a CBIBError. Constructors from a pointer throw the CBIBErrors
// "invalid container" (also for null) and "couldn't get signature".
#pragma once

#include "api/BIBStreamInterface.h"
#include "bib/BIBContainer.h"
#include "bib/BIBGlobalProcs.h"
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

    // Reads up to size bytes. The number of bytes read: fewer than size only at the end of the
    // data.
    unsigned long Read(unsigned char* buffer, unsigned long size) const;
    unsigned long Read(void* buffer, unsigned long size) const;

    // Writes all size bytes.
    void Write(unsigned char const* buffer, unsigned long size) const;
    void Write(void const* buffer, unsigned long size) const;

    static TBIBVTabList<_t_BIBSimpleStreamInterface>& GetSimpleVTabList() noexcept;
    static CBIBSimpleStreamTerminate& GetSimpleTerm() noexcept;

private:
    friend CBIBSimpleStreamTerminate;

    // Belongs to the cache.
    _t_BIBSimpleStreamInterface* fSimpleVTab = nullptr;

    static TBIBVTabList<_t_BIBSimpleStreamInterface> fSimpleVTabList;
    static CBIBSimpleStreamTerminate fSimpleTerm;
};

// A stream that can go back to its start.
class CBIBRewindableStream : public CBIBSimpleStream {
public:
    explicit CBIBRewindableStream(BIBRewindableStream* stream);

    // The stream, not counted.
    operator BIBRewindableStream*() const noexcept;

    static TBIBVTabList<_t_BIBRewindableStreamInterface>& GetRewindableVTabList() noexcept;
    static CBIBRewindableStreamTerminate& GetRewindableTerm() noexcept;

private:
    friend CBIBRewindableStreamTerminate;

    // Belongs to the cache.
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

    // The stream, not counted.
    operator BIBPositionableStream*() const noexcept;

    // The position: bytes from the start.
    unsigned long Mark() const;

    // Moves to offset bytes from origin, or to position.
    void Seek(long offset, BIBPositionableStream_SeekOrigin origin) const;
    void Seek(unsigned long position) const;

    // See BIBContainerBaseGeneric.
    BIBPositionableStream* UnownedReturn();

    static TBIBVTabList<_t_BIBPositionableStreamInterface>& GetPositionableVTabList() noexcept;
    static CBIBPositionableStreamTerminate& GetPositionableTerm() noexcept;

private:
    friend CBIBPositionableStreamTerminate;

    // Belongs to the cache.
    _t_BIBPositionableStreamInterface* fPositionableVTab = nullptr;

    static TBIBVTabList<_t_BIBPositionableStreamInterface> fPositionableVTabList;
    static CBIBPositionableStreamTerminate fPositionableTerm;
};

// The terminators of the three caches. InitVTab gives a handle its method table, and the handle
// back.
class CBIBSimpleStreamTerminate
    : public TVTabForgetfulTerminate<CBIBSimpleStream::fSimpleVTabList> {
public:
    CBIBSimpleStream* InitVTab(CBIBSimpleStream* handle);
};

class CBIBRewindableStreamTerminate
    : public TVTabForgetfulTerminate<CBIBRewindableStream::fRewindableVTabList> {
public:
    CBIBRewindableStream* InitVTab(CBIBRewindableStream* handle);
};

class CBIBPositionableStreamTerminate
    : public TVTabForgetfulTerminate<CBIBPositionableStream::fPositionableVTabList> {
public:
    CBIBPositionableStream* InitVTab(CBIBPositionableStream* handle);
};

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
