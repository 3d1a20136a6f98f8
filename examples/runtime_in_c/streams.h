// Streams: each calls the procedures of a client. Those on memory have a client of this runtime.

typedef BIBClientStreamProcs Procs;
typedef BIBPositionableStream_SeekOrigin Origin;

static char const kMissing[] = "the stream has no such operation";

// Calls a procedure of the client, which need not exist.
#define CALL(proc, ...) \
    (self->procs.proc != NULL ? self->procs.proc(self->data, __VA_ARGS__) : Fail(kMissing))

ROW(Object* StreamRead(Object* self, Size* count, Byte* to, Size size), CALL(read, count, to, size))
ROW(Object* StreamWrite(Object* self, Byte const* bytes, Size size), CALL(write, bytes, size))
ROW(Object* StreamMark(Object* self, Size* position), CALL(mark, position))
ROW(Object* StreamSeek(Object* self, long offset, Origin origin), CALL(seek, offset, origin))
ROW(Object* StreamRewind(Object* self),
    self->procs.rewind != NULL ? self->procs.rewind(self->data) : StreamSeek(self, 0, 0))

static Object* NewStream(Object** result, Object* self, Procs const* procs, void* client) {
    if (self != NULL) {
        self->procs = *procs;
        self->data = client;
        self->deleteProc = procs->deleteProc;
    }
    return Give(result, self);
}

ROW(Object* StreamNewClientSimpleStream(Object** result, Procs const* procs, void* client),
    NewStream(result, NewObject(kOther, "SimpleStream", NULL, 0), procs, client))
ROW(Object* StreamNewClientRewindableStream(Object** result, Procs const* procs, void* client),
    NewStream(result, NewObject(kOther, "RewindableStream", NULL, 0), procs, client))
ROW(Object* StreamNewClientPositionableStream(Object** result, Procs const* procs, void* client),
    NewStream(result, NewObject(kOther, "PositionableStream", NULL, 0), procs, client))

// A stream on memory is its own client, at a position in a buffer that it references: a client's,
// or one that grows.

static Object* ReadBytes(void* client, Size* count, Byte* bytes, Size size) {
    Object* const self = client;
    Size const rest = HeldBy(self)->size - self->number;
    *count = size < rest ? size : rest;
    if (*count > 0) {
        memcpy(bytes, (Byte*)HeldBy(self)->data + self->number, *count);
    }
    self->number += *count;
    return NULL;
}

static Object* WriteBytes(void* client, Byte const* bytes, Size size) {
    Object* const self = client;
    Object* const buffer = HeldBy(self);
    Size const end = self->number + size;
    Size const newSize = end > buffer->size ? end : buffer->size;
    int const fits = buffer->kind == kGrowing && end >= size;
    void* const data = fits ? MemoryRealloc(buffer->data, newSize) : NULL;
    if (data == NULL) {
        return buffer->kind == kGrowing ? FailUnless(0) : Fail(kMissing);
    }
    buffer->data = data;
    buffer->size = newSize;
    if (size > 0) {
        memcpy((Byte*)data + self->number, bytes, size);
    }
    self->number = end;
    return NULL;
}

ROW(Object* MarkBytes(void* self, Size* position), (*position = ((Object*)self)->number, NULL))

static Object* SeekBytes(void* client, long offset, Origin origin) {
    Object* const self = client;
    Size const bases[] = {0, self->number, HeldBy(self)->size};
    Size const target = bases[origin] + (Size)offset; // before the start, it is very large
    if (target > HeldBy(self)->size) {
        return Fail("the position is outside of the stream");
    }
    self->number = target;
    return NULL;
}

static Object* StreamNewPositionableBufferStream(Object** result, Object* buffer) {
    static Procs const kProcs = {&ReadBytes, &WriteBytes, NULL, &MarkBytes, &SeekBytes, NULL};
    Object* const self = NewHolder("PositionableStream", buffer);
    return NewStream(result, self, &kProcs, self);
}

static Object* StreamNewPositionableMemoryStream(Object** result) {
    Object* const buffer = NewObject(kGrowing, NULL, NULL, 0);
    if (buffer != NULL) {
        buffer->data = NULL;
        buffer->deleteProc = &MemoryFree;
    }
    Object* const error = StreamNewPositionableBufferStream(result, buffer);
    Discard(buffer); // where no stream references it
    return error;
}

ROW(Object* StreamNewPositionableFileStream(Object** result, Text path, int writable),
    Refuse(result, "this runtime has no streams on files"))
ROW(Object* StreamCreateIndependentlyPositionableStream(Object* self, Object** result),
    self->data == self ? StreamNewPositionableBufferStream(result, HeldBy(self))
                       : Refuse(result, kMissing))
ROW(Object* StreamCreateIndependentlyRewindableStream(Object* self, Object** result),
    StreamCreateIndependentlyPositionableStream(self, result))
