// Root classes of the client's objects, which live in the runtime's memory.
#pragma once

#include <cstddef>

namespace BIB_T_NMT {

// Gives its descendants the runtime's allocator. Allocation throws the memory error.
class CBIBClientBase {
public:
    static void* operator new(std::size_t size);
    static void operator delete(void* block) noexcept;
};

// The same with a virtual destructor.
class CBIBVirtualClientBase : public CBIBClientBase {
public:
    CBIBVirtualClientBase() = default;
    CBIBVirtualClientBase(CBIBVirtualClientBase const&) = default;
    CBIBVirtualClientBase& operator=(CBIBVirtualClientBase const&) = default;
    virtual ~CBIBVirtualClientBase() = default;
};

class CBIBClientBasePMT : public CBIBClientBase {};

} // namespace BIB_T_NMT

// Root of list elements that live in static storage: it has no allocator.
class BIBDLLEParent {};
