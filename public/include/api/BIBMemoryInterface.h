// The runtime's allocator. Every block that crosses a boundary comes from it.
#pragma once

#include "api/BIBTable.h"

// A block of at least size bytes, aligned for every type; null if memory runs out. A size of 0 also
// returns a block.
typedef void* (*BIBMemAllocProc)(unsigned long size);

// Resizes block (null: a new one) to size bytes; it may move, and keeps the contents that fit. Null
// if memory runs out, and then block is unchanged.
typedef void* (*BIBMemReallocProc)(void* block, unsigned long size);

// Frees a block. Accepts null.
typedef void (*BIBMemFreeProc)(void* block);

// The requested size in bytes; 0 for null.
typedef unsigned long (*BIBMemGetBlockSizeProc)(void* block);

// clang-format off
#define BIB_MEMORY_INTERFACE_ROWS(ROW)     \
    ROW(Alloc,        BIBMemAllocProc)     \
    ROW(Realloc,      BIBMemReallocProc)   \
    ROW(Free,         BIBMemFreeProc)      \
    ROW(GetBlockSize, BIBMemGetBlockSizeProc)
// clang-format on

// The table of "BIBMemoryInterface".
typedef struct _t_BIBMemoryInterface {
    BIB_MEMORY_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBMemoryInterface;
