// The runtime's allocator, from which every block comes that crosses a boundary.
#pragma once

#include "api/BIBTable.h"

// A block of at least size bytes, aligned for every type; null when memory runs out. A size of 0
// gives a block too.
typedef void* (*BIBMemAllocProc)(unsigned long size);

// Moves block (null: a new one) to a block of size bytes and keeps the contents that fit. Null when
// memory runs out, and then block is untouched.
typedef void* (*BIBMemReallocProc)(void* block, unsigned long size);

// Frees a block. Accepts null.
typedef void (*BIBMemFreeProc)(void* block);

// The size in bytes that was asked for; 0 for null.
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
