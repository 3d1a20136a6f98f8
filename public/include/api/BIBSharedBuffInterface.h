// The runtime's shared buffers: reference-counted blocks of bytes.
#pragma once

#include "api/BIBTable.h"

typedef struct BIBSharedBuffer BIBSharedBuffer;

// Reserved for hosts that page buffers out; pass null.
typedef int (*BIBSharedBuffPurgeProc)(BIBSharedBuffer* buffer);

// Makes a buffer of size bytes, with one reference for the caller; null on failure. If block is
// null, the buffer allocates its bytes and does not clear them. Otherwise it takes ownership of
// block and calls deleteProc (may be null) on it when the last reference is released; on failure
// the caller still owns block.
typedef BIBSharedBuffer* (*BIBSharedBuffNewBufferV3Proc)(
    unsigned long size,
    void* block,
    void (*deleteProc)(void*),
    BIBSharedBuffPurgeProc purgeProc,
    void* clientData);

// Releases the caller's reference, and destroys the buffer, if it is the only one. Nonzero if it
// did; zero, and no effect, if there are other references.
typedef int (*BIBSharedBuffDelUnownedProc)(BIBSharedBuffer* buffer);

// Add and release a reference. Both accept null.
typedef void (*BIBSharedBuffAddRefProc)(BIBSharedBuffer* buffer);
typedef void (*BIBSharedBuffReleaseProc)(BIBSharedBuffer* buffer);

// The bytes, owned by the buffer; null for a null buffer.
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
