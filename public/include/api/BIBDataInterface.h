// Further data sources of a runtime. Each is a container; a client finds its methods by signature.
#pragma once

#include "api/BIBErrorInterface.h"
#include "api/BIBTable.h"

// All three are containers.
typedef struct BIBDataBlockStream BIBDataBlockStream;
typedef struct BIBSizedDataStore BIBSizedDataStore;
typedef struct BIBDataStore BIBDataStore;

// The next block of data. *block and *size are valid until the next call; a *size of 0 means the
// end.
typedef BIBError* (*BIBDataBlockStreamGetNextBlockProc)(
    BIBDataBlockStream* self, unsigned char const** block, unsigned long* size);

// Moves back to the first block.
typedef BIBError* (*BIBDataBlockStreamRewindProc)(BIBDataBlockStream* self);

// The size of the data in bytes.
typedef BIBError* (*BIBSizedDataStoreGetSizeProc)(BIBSizedDataStore* self, unsigned long* size);

// Copies up to size bytes, starting at offset, into buffer; *bytesRead is the number copied.
typedef BIBError* (*BIBDataStoreGetBlockProcV2)(
    BIBDataStore* self,
    unsigned long offset,
    unsigned char* buffer,
    unsigned long size,
    unsigned long* bytesRead);

// clang-format off
#define BIB_DATA_BLOCK_STREAM_INTERFACE_ROWS(ROW)         \
    ROW(GetNextBlock, BIBDataBlockStreamGetNextBlockProc) \
    ROW(Rewind,       BIBDataBlockStreamRewindProc)

#define BIB_SIZED_DATA_STORE_INTERFACE_ROWS(ROW) \
    ROW(GetSize, BIBSizedDataStoreGetSizeProc)

#define BIB_DATA_STORE_INTERFACE_ROWS(ROW) \
    ROW(GetBlock, BIBDataStoreGetBlockProcV2)
// clang-format on

// The methods of data that comes in blocks.
typedef struct _t_BIBDataBlockStreamInterface {
    BIB_DATA_BLOCK_STREAM_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBDataBlockStreamInterface;

// The method of data of a known size.
typedef struct _t_BIBSizedDataStoreInterface {
    BIB_SIZED_DATA_STORE_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBSizedDataStoreInterface;

// The method of data that can be read at any offset.
typedef struct _t_BIBDataStoreInterface {
    BIB_DATA_STORE_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBDataStoreInterface;
