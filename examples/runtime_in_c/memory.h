// Blocks of memory with the requested size in front of them, and shared buffers.

typedef union Header {
    unsigned long size;
    max_align_t alignment;
} Header;

static void* MemoryRealloc(void* block, unsigned long size) {
    Header* const former = block != NULL ? (Header*)block - 1 : NULL;
    int const fits = size <= PTRDIFF_MAX - sizeof(Header);
    Header* const header = fits ? realloc(former, sizeof(Header) + size) : NULL;
    if (header == NULL) {
        return NULL;
    }
    header->size = size;
    return header + 1;
}

static void* MemoryAlloc(unsigned long size) {
    return MemoryRealloc(NULL, size);
}

static void MemoryFree(void* block) {
    free(block != NULL ? (Header*)block - 1 : NULL);
}

ROW(unsigned long, MemoryGetBlockSize, void*, self != NULL ? ((Header*)self - 1)->size : 0)

struct BIBSharedBuffer {
    long count;
    unsigned long size;
    void* block;
    void (*deleteProc)(void*);
};

static BIBSharedBuffer* BufferNewBuffer(
    unsigned long size,
    void* block,
    void (*deleteProc)(void*),
    BIBSharedBuffPurgeProc purgeProc,
    void* clientData) {
    (void)purgeProc;
    (void)clientData;
    BIBSharedBuffer* const buffer = malloc(sizeof *buffer);
    void* const bytes = block != NULL || buffer == NULL ? block : MemoryAlloc(size);
    if (buffer == NULL || bytes == NULL) {
        free(buffer);
        return NULL;
    }
    *buffer = (BIBSharedBuffer){1, size, bytes, block != NULL ? deleteProc : &MemoryFree};
    return buffer;
}

static void BufferAddRef(BIBSharedBuffer* buffer) {
    if (buffer != NULL) {
        ++buffer->count;
    }
}

static void BufferRelease(BIBSharedBuffer* buffer) {
    if (buffer != NULL && --buffer->count == 0) {
        if (buffer->deleteProc != NULL) {
            buffer->deleteProc(buffer->block);
        }
        free(buffer);
    }
}

static int BufferDeleteUnowned(BIBSharedBuffer* buffer) {
    int const isLast = buffer != NULL && buffer->count == 1;
    BufferRelease(isLast ? buffer : NULL);
    return isLast;
}

ROW(void*, BufferGetBuffer, BIBSharedBuffer*, self != NULL ? self->block : NULL)
ROW(unsigned long, BufferGetSize, BIBSharedBuffer*, self != NULL ? self->size : 0)
