// Further data sources of a runtime. Each is a container; a client asks for its methods by
// signature.
#pragma once

#include "api/BIBErrorInterface.h"
#include "api/BIBTable.h"

// All three are containers.
typedef struct BIBDataBlockStream BIBDataBlockStream;
typedef struct BIBSizedDataStore BIBSizedDataStore;
typedef struct BIBDataStore BIBDataStore;

// The next block of the data: *block and *size until the next call; a size of 0 at the end.
typedef BIBError* (*BIBDataBlockStreamGetNextBlockProc)(
    BIBDataBlockStream* self, unsigned char const** block, unsigned long* size);

// Starts again with the first block.
typedef BIBError* (*BIBDataBlockStreamRewindProc)(BIBDataBlockStream* self);

// The size of the data in bytes.
typedef BIBError* (*BIBSizedDataStoreGetSizeProc)(BIBSizedDataStore* self, unsigned long* size);

// Copies up to size bytes from offset on into buffer; *bytesRead is how many.
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

// The method of data whose size is known.
typedef struct _t_BIBSizedDataStoreInterface {
    BIB_SIZED_DATA_STORE_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBSizedDataStoreInterface;

// The method of data that can be read at any offset.
typedef struct _t_BIBDataStoreInterface {
    BIB_DATA_STORE_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBDataStoreInterface;
