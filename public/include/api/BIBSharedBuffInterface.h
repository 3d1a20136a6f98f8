// The runtime's shared buffers: counted blocks of bytes.
#pragma once

#include "api/BIBTable.h"

typedef struct BIBSharedBuffer BIBSharedBuffer;

// Reserved for hosts that page buffers out; pass null.
typedef int (*BIBSharedBuffPurgeProc)(BIBSharedBuffer* buffer);

// Makes a buffer of size bytes, with one reference for the caller; null on failure. A null block:
// the buffer allocates, and the bytes are not cleared. Otherwise it takes block over and calls
// deleteProc (may be null) on it with the last reference; on failure block stays the caller's.
typedef BIBSharedBuffer* (*BIBSharedBuffNewBufferV3Proc)(
    unsigned long size,
    void* block,
    void (*deleteProc)(void*),
    BIBSharedBuffPurgeProc purgeProc,
    void* clientData);

// Gives the caller's reference up if it is the only one, and with it the buffer. Non-zero when it
// did so; zero, and nothing happens, while others hold the buffer.
typedef int (*BIBSharedBuffDelUnownedProc)(BIBSharedBuffer* buffer);

// Adds a reference, gives one up. Both accept null.
typedef void (*BIBSharedBuffAddRefProc)(BIBSharedBuffer* buffer);
typedef void (*BIBSharedBuffReleaseProc)(BIBSharedBuffer* buffer);

// The bytes, which belong to the buffer; null for a null buffer.
typedef void* (*BIBSharedBuffGetBufferProc)(BIBSharedBuffer* buffer);

// The size in bytes; 0 for null.
typedef unsigned long (*BIBSharedBuffGetSizeProc)(BIBSharedBuffer* buffer);

// clang-format off
#define BIB_SHARED_BUFF_INTERFACE_ROWS(ROW)          \
    ROW(NewBuffer,     BIBSharedBuffNewBufferV3Proc) \
    ROW(DeleteUnowned, BIBSharedBuffDelUnownedProc)  \
    ROW(AddRef,        BIBSharedBuffAddRefProc)      \
    ROW(Release,       BIBSharedBuffReleaseProc)     \
    ROW(GetBuffer,     BIBSharedBuffGetBufferProc)   \
    ROW(GetSize,       BIBSharedBuffGetSizeProc)
// clang-format on

// The table of "BIBSharedBuffInterface".
typedef struct _t_BIBSharedBuffInterface {
    BIB_SHARED_BUFF_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBSharedBuffInterface;
