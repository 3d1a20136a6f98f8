// Streams: each calls the procedures of a client. Those on memory have a client of this runtime.

typedef struct Stream {
    BIBClientStreamProcs procs;
    void* client;
} Stream;

ROW(Stream*, StreamOf, void const*, InstanceOf(self))

static void DeleteStream(void* instance) {
    Stream* const self = instance;
    if (self->procs.deleteProc != NULL) {
        self->procs.deleteProc(self->client);
    }
    free(self);
}

// An unowned stream; null if memory runs out, and then the client is still the caller's.
static void* NewStream(BIBClientStreamProcs const* procs, void* client, char const* level) {
    Stream* const self = calloc(1, sizeof *self);
    void* const container = Contain(self, level, &DeleteStream);
    if (container != NULL) {
        *self = (Stream){*procs, client};
    }
    return container;
}

ROW(BIBError*, FailUnless, void const*, self != NULL ? NULL : FailOfMemory())

static BIBError* FailMissing(void) {
    return Fail("the stream has no such operation");
}

// Calls a procedure of the client, which need not exist.
#define CALL(proc, ...) \
    (StreamOf(self)->procs.proc != NULL \
         ? StreamOf(self)->procs.proc(StreamOf(self)->client, __VA_ARGS__) \
         : FailMissing())

static BIBError* StreamRead(
    BIBSimpleStream* self, unsigned long* bytesRead, unsigned char* buffer, unsigned long size) {
    *bytesRead = 0;
    return CALL(read, bytesRead, buffer, size);
}

static BIBError*
StreamWrite(BIBSimpleStream* self, unsigned char const* buffer, unsigned long size) {
    return CALL(write, buffer, size);
}

static BIBError* StreamMark(BIBPositionableStream* self, unsigned long* position) {
    return CALL(mark, position);
}

static BIBError*
StreamSeek(BIBPositionableStream* self, long offset, BIBPositionableStream_SeekOrigin origin) {
    return CALL(seek, offset, origin);
}

static BIBError* StreamRewind(BIBRewindableStream* self) {
    Stream const* const stream = StreamOf(self);
    return stream->procs.rewind != NULL
               ? stream->procs.rewind(stream->client)
               : StreamSeek((BIBPositionableStream*)self, 0, kBIBSeekFromStart);
}

// The bytes of streams on memory: a buffer's, which cannot be written, or their own, which grow.
typedef struct Bytes {
    long streams;
    BIBSharedBuffer* buffer;
    unsigned char* bytes;
    unsigned long size;
    unsigned long capacity;
} Bytes;

typedef struct Position {
    Bytes* bytes;
    unsigned long offset;
} Position;

static BIBError*
ReadBytes(void* client, unsigned long* bytesRead, unsigned char* buffer, unsigned long size) {
    Position* const self = client;
    unsigned long const rest = self->bytes->size - self->offset;
    *bytesRead = size < rest ? size : rest;
    if (*bytesRead > 0) {
        memcpy(buffer, self->bytes->bytes + self->offset, *bytesRead);
    }
    self->offset += *bytesRead;
    return NULL;
}

static int Grow(Bytes* bytes, unsigned long size) {
    if (size > bytes->capacity) {
        unsigned char* const grown = realloc(bytes->bytes, 2 * size);
        if (grown == NULL) {
            return 0;
        }
        bytes->bytes = grown;
        bytes->capacity = 2 * size;
    }
    bytes->size = size > bytes->size ? size : bytes->size;
    return 1;
}

static BIBError* WriteBytes(void* client, unsigned char const* buffer, unsigned long size) {
    Position* const self = client;
    if (self->bytes->buffer != NULL) {
        return FailMissing();
    }
    if (size > LONG_MAX / 2 - self->offset || !Grow(self->bytes, self->offset + size)) {
        return FailOfMemory();
    }
    if (size > 0) {
        memcpy(self->bytes->bytes + self->offset, buffer, size);
    }
    self->offset += size;
    return NULL;
}

static BIBError* MarkBytes(void* client, unsigned long* position) {
    *position = ((Position*)client)->offset;
    return NULL;
}

static BIBError* SeekBytes(void* client, long offset, BIBPositionableStream_SeekOrigin origin) {
    Position* const self = client;
    long const size = (long)self->bytes->size;
    long const bases[] = {0, (long)self->offset, size};
    if (offset < -bases[origin] || offset > size - bases[origin]) {
        return Fail("the position is outside of the stream");
    }
    self->offset = (unsigned long)(bases[origin] + offset);
    return NULL;
}

static void DeletePosition(void* client) {
    Bytes* const bytes = ((Position*)client)->bytes;
    free(client);
    if (--bytes->streams == 0) {
        free(bytes->buffer == NULL ? bytes->bytes : NULL);
        BufferRelease(bytes->buffer);
        free(bytes);
    }
}

static BIBClientStreamProcs const kBytesProcs = {
    &ReadBytes, &WriteBytes, NULL, &MarkBytes, &SeekBytes, &DeletePosition};

// A stream on bytes that are new (with streams 0) or have other streams.
static void* NewPosition(Bytes* bytes) {
    Position* const self = calloc(1, sizeof *self);
    void* const stream = self != NULL ? NewStream(&kBytesProcs, self, "PositionableStream") : NULL;
    if (stream == NULL) {
        free(self);
        return NULL;
    }
    self->bytes = bytes;
    ++bytes->streams;
    return stream;
}

static void* NewBytes(BIBSharedBuffer* buffer) {
    Bytes* const bytes = malloc(sizeof *bytes);
    if (bytes == NULL) {
        return NULL;
    }
    *bytes = (Bytes){0, buffer, BufferGetBuffer(buffer), BufferGetSize(buffer), 0};
    void* const stream = NewPosition(bytes);
    if (stream == NULL) {
        free(bytes);
        return NULL;
    }
    BufferAddRef(buffer);
    return stream;
}

static BIBError*
StreamCreateIndependentlyRewindableStream(BIBRewindableStream* self, BIBRewindableStream** result) {
    Stream const* const stream = InstanceOf(self);
    int const isHere = stream->procs.read == &ReadBytes;
    *result = isHere ? NewPosition(((Position*)stream->client)->bytes) : NULL;
    return isHere ? FailUnless(*result) : FailMissing();
}

static BIBError* StreamCreateIndependentlyPositionableStream(
    BIBPositionableStream* self, BIBPositionableStream** result) {
    BIBRewindableStream* second = NULL;
    BIBError* const error =
        StreamCreateIndependentlyRewindableStream((BIBRewindableStream*)self, &second);
    *result = (BIBPositionableStream*)second;
    return error;
}

static BIBError* FactoryNewPositionableMemoryStream(BIBPositionableStream** result) {
    *result = NewBytes(NULL);
    return FailUnless(*result);
}

static BIBError*
FactoryNewPositionableBufferStream(BIBPositionableStream** result, BIBSharedBuffer* buffer) {
    *result = NewBytes(buffer);
    return FailUnless(*result);
}

static BIBError*
FactoryNewPositionableFileStream(BIBPositionableStream** result, char const* path, int writable) {
    (void)path;
    (void)writable;
    *result = NULL;
    return Fail("this runtime has no streams on files");
}

static BIBError* FactoryNewClientSimpleStream(
    BIBSimpleStream** result, BIBClientStreamProcs const* procs, void* clientData) {
    *result = NewStream(procs, clientData, "SimpleStream");
    return FailUnless(*result);
}

static BIBError* FactoryNewClientRewindableStream(
    BIBRewindableStream** result, BIBClientStreamProcs const* procs, void* clientData) {
    *result = NewStream(procs, clientData, "RewindableStream");
    return FailUnless(*result);
}

static BIBError* FactoryNewClientPositionableStream(
    BIBPositionableStream** result, BIBClientStreamProcs const* procs, void* clientData) {
    *result = NewStream(procs, clientData, "PositionableStream");
    return FailUnless(*result);
}
