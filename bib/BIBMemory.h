// The runtime's allocator.
#pragma once

#include "api/BIBMemoryInterface.h"
#include "bib/BIBInterfaceClient.h"

namespace BIB_T_NMT {

BIB_DECLARE_INTERFACE(BIBMemoryInterface, BIBMemoryTraits, BIB_MEMORY_INTERFACE_ROWS, 4);

// Blocks from the runtime. No instances.
class CBIBMemory {
public:
    // Checks the table: true, or a thrown CBIBError "Missing Interface".
    static bool Init();

    // A block of size bytes, never null. Throws the memory error.
    static void* Alloc(unsigned long size);

    // Frees a block.
    static void Free(void* block);

    // Throws a copy of the runtime's memory error, for which the runtime needs no memory.
    [[noreturn]] static void ThrowMemError();
};

} // namespace BIB_T_NMT
