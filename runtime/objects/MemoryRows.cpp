#include "api/BIBMemoryInterface.h"

#include "runtime/objects/Memory.h"
#include "runtime/objects/Tables.h"

namespace bibrt {

namespace {

void* Alloc(unsigned long size) {
    return AllocBlock(size);
}

void* Realloc(void* block, unsigned long size) {
    return ReallocBlock(block, size);
}

void Free(void* block) {
    FreeBlock(block);
}

unsigned long GetBlockSize(void* block) {
    return BlockSize(block);
}

} // namespace

BIBRT_DEFINE_TABLE(
    MemoryTable, "BIBMemoryInterface", _t_BIBMemoryInterface, BIB_MEMORY_INTERFACE_ROWS, 4)

} // namespace bibrt
