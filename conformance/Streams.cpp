// Streams of every kind, and streams of the client's own making.
#include "conformance/Group.h"
#include "conformance/Groups.h"
#include "conformance/Models.h"
#include "conformance/Stream.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <unistd.h>

namespace conformance {

namespace {

// Ten bytes are written, read and overwritten.
void CheckWritable(Stream const& stream) {
    Expect("the position of a new stream", 0UL, stream.Mark());
    Expect("what an empty stream has", std::string(), stream.Read(4));
    stream.Write("01234x");
    stream.Seek(-1, kBIBSeekFromEnd);
    stream.Write("56789");
    Expect("the position after writing 10 bytes, across the end", 10UL, stream.Mark());
    stream.Seek(2, kBIBSeekFromStart);
    Expect("3 bytes from offset 2", std::string("234"), stream.Read(3));
    stream.Seek(1, kBIBSeekFromCurrent);
    Expect("the position one byte on", 6UL, stream.Mark());
    stream.Write("ab");
    stream.Seek(-4, kBIBSeekFromEnd);
    Expect("the last 4 bytes, of 10 that were asked for", std::string("ab89"), stream.Read(10));
    Expect("what is read at the end", std::string(), stream.Read(1));
    stream.Rewind();
    Expect("all bytes", std::string("012345ab89"), stream.Read(100));
}

constexpr long kFarthest = std::numeric_limits<long>::max();

void CheckSeeking(Runtime const& runtime, Stream const& stream) {
    stream.Seek(3, kBIBSeekFromStart);
    runtime.Fail("Seek before the start", stream.TrySeek(-4, kBIBSeekFromCurrent));
    Expect("the position after a failed Seek", 3UL, stream.Mark());
    runtime.Fail("Seek behind the end", stream.TrySeek(1, kBIBSeekFromEnd));
    runtime.Fail("Seek far ahead", stream.TrySeek(kFarthest, kBIBSeekFromCurrent));
    runtime.Fail("Seek far back", stream.TrySeek(-kFarthest - 1, kBIBSeekFromEnd));
    Expect("the position after a failed Seek", 3UL, stream.Mark());
    stream.Seek(-3, kBIBSeekFromCurrent);
    Expect("the position after Seek back to the start", 0UL, stream.Mark());
    stream.Seek(0, kBIBSeekFromEnd);
    stream.Seek(-static_cast<long>(stream.Mark()), kBIBSeekFromEnd);
    Expect("the position after Seek from the end to the start", 0UL, stream.Mark());
    stream.Seek(0, kBIBSeekFromEnd);
}

void WorksInMemory(Runtime const& runtime) {
    Stream const stream(runtime, NewMemoryStream(runtime));
    CheckWritable(stream);
}

void SeeksWithinItsBytes(Runtime const& runtime) {
    Stream const stream(runtime, NewMemoryStream(runtime));
    stream.Write("0123456789");
    CheckSeeking(runtime, stream);
}

void GrowsByAMegabyte(Runtime const& runtime) {
    Stream const stream(runtime, NewMemoryStream(runtime));
    std::string const part(1000, 'p');
    for (int i = 0; i < 1000; ++i) {
        stream.Write(part);
    }
    Expect("the position after a million bytes", 1000000UL, stream.Mark());
    stream.Seek(-1, kBIBSeekFromEnd);
    Expect("the last byte", std::string("p"), stream.Read(2));
}

void HasSecondPositions(Runtime const& runtime) {
    Stream const first(runtime, NewMemoryStream(runtime));
    first.Write("0123456789");
    Stream const second(runtime, first.Second());
    Expect("the position of a second stream", 0UL, second.Mark());
    Expect("what it reads", std::string("0123"), second.Read(4));
    Expect("the position of the first one", 10UL, first.Mark());
    second.Write("abc");
    Expect("what the second one wrote", std::string("0123abc789"), first.ReadAll());
}

int gBlocksDeleted = 0;

void ReadsBuffers(Runtime const& runtime) {
    auto const buffers = runtime.Buffers();
    BIBSharedBuffer* const buffer = buffers.NewBuffer(5, nullptr, nullptr, nullptr, nullptr);
    Require(buffer != nullptr, "a buffer", "null");
    std::memcpy(buffers.GetBuffer(buffer), "bytes", 5);
    BIBPositionableStream* made = nullptr;
    BIBError* const error = runtime.Streams().NewPositionableBufferStream(&made, buffer);
    buffers.Release(buffer);
    runtime.Succeed("NewPositionableBufferStream", error);
    Stream const stream(runtime, made);
    Expect("all bytes, with the caller's reference released", std::string("bytes"), stream.Read(9));
    CheckSeeking(runtime, stream);
    runtime.Fail("Write to a stream on a buffer", stream.TryWrite("x"));
    gBlocksDeleted = 0;
    static char block[] = "block";
    BIBSharedBuffer* const shared = buffers.NewBuffer(
        5, block, [](void* /*block*/) { ++gBlocksDeleted; }, nullptr, nullptr);
    {
        BIBPositionableStream* first = nullptr;
        runtime.Succeed(
            "NewPositionableBufferStream",
            runtime.Streams().NewPositionableBufferStream(&first, shared));
        Stream const one(runtime, first);
        Stream const other(runtime, one.Second());
        Expect("what a second stream reads", std::string("block"), other.Read(9));
    }
    Expect("destructions of a buffer after both streams on it", 0, gBlocksDeleted);
    buffers.Release(shared);
    Expect("destructions of a buffer after its last release", 1, gBlocksDeleted);
}

// The client's data: a position in five bytes, and what was called.
struct Client {
    unsigned long fPosition = 0;
    std::string fWritten;
    unsigned long fWrittenAt = 0; // the position of the last write
    int fDeleted = 0;
    int fErrors = 0; // made and not destroyed
    bool fFails = false;
    bool fThrows = false;
    Runtime const* fRuntime = nullptr;
};

Client& ClientOf(void* data) {
    return *static_cast<Client*>(data);
}

constexpr unsigned long kLost = ~0UL;

// From now on the client has no position.
BIBError* ClientError(Client& client) {
    client.fPosition = kLost;
    ++client.fErrors;
    return client.fRuntime->Errors().NewError(
        "the client's own", "client", 7, &client.fErrors, [](void* errors) {
            --*static_cast<int*>(errors);
        });
}

BIBError* ClientRead(void* data, unsigned long* count, unsigned char* buffer, unsigned long size) {
    Client& client = ClientOf(data);
    if (client.fThrows) {
        throw 7;
    }
    if (client.fFails) {
        return ClientError(client);
    }
    // At most two bytes at once: a short read is not an error.
    *count = std::min({size, 5 - client.fPosition, 2UL});
    std::memcpy(buffer, &"bytes"[client.fPosition], *count);
    client.fPosition += *count;
    return nullptr;
}

BIBError* ClientWrite(void* data, unsigned char const* buffer, unsigned long size) {
    Client& client = ClientOf(data);
    client.fWritten.append(reinterpret_cast<char const*>(buffer), size);
    client.fWrittenAt = client.fPosition;
    return client.fFails ? ClientError(client) : nullptr;
}

BIBError* ClientRewind(void* data) {
    ClientOf(data).fPosition = 0;
    return nullptr;
}

BIBError* ClientMark(void* data, unsigned long* position) {
    *position = ClientOf(data).fPosition;
    return nullptr;
}

BIBError* ClientSeek(void* data, long offset, BIBPositionableStream_SeekOrigin origin) {
    Client& client = ClientOf(data);
    if (client.fPosition == kLost) {
        return ClientError(client);
    }
    long const base = origin == kBIBSeekFromEnd       ? 5
                      : origin == kBIBSeekFromCurrent ? static_cast<long>(client.fPosition)
                                                      : 0;
    client.fPosition = static_cast<unsigned long>(base + offset);
    return nullptr;
}

void ClientDelete(void* data) {
    ++ClientOf(data).fDeleted;
}

constexpr BIBClientStreamProcs kClientProcs = {
    &ClientRead, &ClientWrite, &ClientRewind, &ClientMark, &ClientSeek, &ClientDelete};

BIBPositionableStream*
NewClientStream(Runtime const& runtime, Client& client, BIBClientStreamProcs const& procs) {
    client.fRuntime = &runtime;
    BIBPositionableStream* stream = nullptr;
    runtime.Succeed(
        "NewClientPositionableStream",
        runtime.Streams().NewClientPositionableStream(&stream, &procs, &client));
    return stream;
}

int gDeletedOfNull = 0;

void CallsTheClient(Runtime const& runtime) {
    Client client;
    {
        BIBClientStreamProcs procs = kClientProcs;
        BIBPositionableStream* const made = NewClientStream(runtime, client, procs);
        procs = {};
        Stream const stream(runtime, made);
        Expect("a short read", std::string("by"), stream.Read(5));
        Expect("the position", 2UL, stream.Mark());
        stream.Seek(-1, kBIBSeekFromEnd);
        Expect("the last byte", std::string("s"), stream.Read(5));
        Expect("the end", std::string(), stream.Read(5));
        stream.Rewind();
        Expect("the first bytes", std::string("by"), stream.Read(2));
        stream.Write("written");
        Expect("what the client got", std::string("written"), client.fWritten);
        Expect("calls of deleteProc as long as the stream lives", 0, client.fDeleted);
    }
    Expect("calls of deleteProc with the last reference", 1, client.fDeleted);
    BIBClientStreamProcs withoutRewind = kClientProcs;
    withoutRewind.rewind = nullptr;
    Stream const seeking(runtime, NewClientStream(runtime, client, withoutRewind));
    seeking.Seek(3, kBIBSeekFromStart);
    Require(
        !runtime.TakeMessage(seeking.TryRewind()).empty() || seeking.Mark() == 0,
        "an error, or the start after Rewind by means of seek",
        std::to_string(seeking.Mark()));
    gDeletedOfNull = 0;
    {
        BIBClientStreamProcs procs = {};
        procs.deleteProc = [](void* data) { gDeletedOfNull += data == nullptr ? 1 : 0; };
        BIBPositionableStream* made = nullptr;
        runtime.Succeed(
            "NewClientPositionableStream",
            runtime.Streams().NewClientPositionableStream(&made, &procs, nullptr));
        auto const stream = runtime.Hold(made);
    }
    Expect("calls of deleteProc with a null clientData", 1, gDeletedOfNull);
}

// It may be an error. The first one keeps its position.
void MayHaveASecondPosition(Runtime const& runtime) {
    Client client;
    Stream const first(runtime, NewClientStream(runtime, client, kClientProcs));
    first.Seek(3, kBIBSeekFromStart);
    BIBPositionableStream* made = nullptr;
    BIBError* const error = first.TrySecond(&made);
    if (error) {
        runtime.TakeMessage(error);
        return;
    }
    Stream const second(runtime, made);
    second.Seek(1, kBIBSeekFromStart);
    Expect("the position of the first stream after Seek of the second", 3UL, first.Mark());
    Expect("what the second one reads", std::string("yt"), second.Read(2));
    Expect("the position of the first stream after Read of the second", 3UL, first.Mark());
    second.Seek(1, kBIBSeekFromStart);
    second.Write("x");
    Expect("the client's position for Write of the second", 1UL, client.fWrittenAt);
    Expect("the position of the first stream after Write of the second", 3UL, first.Mark());
    client.fFails = true;
    std::string text;
    // The way back may fail too.
    Expect(
        "the message of Read",
        std::string("the client's own"),
        runtime.TakeMessage(second.TryRead(text, 1)));
    Expect("errors that were not released", 0, client.fErrors);
}

void PassesErrorsOfTheClient(Runtime const& runtime) {
    Client client;
    Stream const stream(runtime, NewClientStream(runtime, client, kClientProcs));
    client.fFails = true;
    std::string text;
    Expect(
        "the message of Read",
        std::string("the client's own"),
        runtime.TakeMessage(stream.TryRead(text, 1)));
    Expect(
        "the message of Write",
        std::string("the client's own"),
        runtime.TakeMessage(stream.TryWrite("x")));
}

void ReportsMissingProcedures(Runtime const& runtime) {
    Client client;
    Stream const stream(runtime, NewClientStream(runtime, client, {}));
    std::string text;
    runtime.Fail("Read without a procedure", stream.TryRead(text, 1));
    runtime.Fail("Write without a procedure", stream.TryWrite("x"));
    runtime.Fail("Rewind without a procedure", stream.TryRewind());
    runtime.Fail("Seek without a procedure", stream.TrySeek(0, kBIBSeekFromStart));
}

void HasThreeLevels(Runtime const& runtime) {
    auto const streams = runtime.Streams();
    Client client;
    client.fRuntime = &runtime;
    BIBSimpleStream* simple = nullptr;
    runtime.Succeed(
        "NewClientSimpleStream", streams.NewClientSimpleStream(&simple, &kClientProcs, &client));
    BIBRewindableStream* rewindable = nullptr;
    auto const first = runtime.Hold(simple);
    runtime.Succeed(
        "NewClientRewindableStream",
        streams.NewClientRewindableStream(&rewindable, &kClientProcs, &client));
    auto const second = runtime.Hold(rewindable);
    auto* const lookup = runtime.Lookup();
    runtime.Methods<_t_BIBSimpleStreamInterface>(simple);
    runtime.Methods<_t_BIBSimpleStreamInterface>(rewindable);
    runtime.Methods<_t_BIBRewindableStreamInterface>(rewindable);
    Require(
        MissingRows(LoadMethods<_t_BIBRewindableStreamInterface>(lookup, simple)) == 2 &&
            MissingRows(LoadMethods<_t_BIBPositionableStreamInterface>(lookup, simple)) == 3 &&
            MissingRows(LoadMethods<_t_BIBPositionableStreamInterface>(lookup, rewindable)) == 3,
        "no method of a higher level",
        "one");
    Stream const third(runtime, NewClientStream(runtime, client, kClientProcs));
    runtime.Methods<_t_BIBRewindableStreamInterface>(third.Self());
    runtime.Methods<_t_BIBPositionableStreamInterface>(third.Self());
}

constexpr Check kStreamChecks[] = {
    {"stream.memory",
     "A memory stream is empty at first, grows as it is written, and reads what was written; a "
     "read at the end gives no bytes.",
     &WorksInMemory},
    {"stream.seek",
     "A target before the start or behind the end is an error and leaves the position as it was.",
     &SeeksWithinItsBytes},
    {"stream.model",
     "Two streams on memory do the same as a string with two positions.",
     &FollowsAStreamModel},
    {"stream.grows", "A memory stream grows to a million bytes.", &GrowsByAMegabyte},
    {"stream.second-position",
     "CreateIndependentlyPositionableStream gives a second stream on the same data with a "
     "position of its own, at the start.",
     &HasSecondPositions},
    {"stream.buffer",
     "A buffer stream reads the buffer and holds a reference on it; writing is an error.",
     &ReadsBuffers},
    {"stream.client",
     "Client streams call the client's procedures, which are copied; deleteProc is called with "
     "the stream's last reference.",
     &CallsTheClient},
    {"stream.client-second",
     "A second stream on a client stream may be an error, or leaves the position of the first one.",
     &MayHaveASecondPosition},
    {"stream.client-errors",
     "Errors of the client's procedures reach the caller.",
     &PassesErrorsOfTheClient},
    {"stream.client-missing",
     "An operation without its procedure is an error.",
     &ReportsMissingProcedures},
    {"stream.levels",
     "Simple, rewindable and positionable streams have the methods of their level.",
     &HasThreeLevels},
};

// Streams on files.

class TemporaryFile {
public:
    TemporaryFile() {
        int const descriptor = ::mkstemp(fPath);
        Require(descriptor >= 0, "a temporary file", "none");
        ::close(descriptor);
    }
    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;
    ~TemporaryFile() { std::remove(fPath); }

    char const* Path() const noexcept { return fPath; }

private:
    char fPath[32] = "/tmp/bib-conformance-XXXXXX";
};

BIBPositionableStream* OpenFile(Runtime const& runtime, char const* path, int writable) {
    BIBPositionableStream* stream = nullptr;
    runtime.Succeed(
        "NewPositionableFileStream",
        runtime.Streams().NewPositionableFileStream(&stream, path, writable));
    return stream;
}

void WorksOnFiles(Runtime const& runtime) {
    TemporaryFile const file;
    {
        Stream const stream(runtime, OpenFile(runtime, file.Path(), 1));
        CheckWritable(stream);
        CheckSeeking(runtime, stream);
    }
    Stream const writable(runtime, OpenFile(runtime, file.Path(), 1));
    Expect("the bytes of a file that was there", std::string("0123"), writable.Read(4));
    Stream const again(runtime, OpenFile(runtime, file.Path(), 0));
    Expect("all bytes of the file", std::string("012345ab89"), again.Read(100));
    Require(::truncate(file.Path(), 5) == 0, "a file that is cut off", "one that is not");
    runtime.Fail("Seek to a position that was cut off", again.TrySeek(-2, kBIBSeekFromCurrent));
    Expect("the position after a failed Seek", 10UL, again.Mark());
    runtime.Fail("Write to a stream that is not writable", again.TryWrite("x"));
}

void ReportsMissingFiles(Runtime const& runtime) {
    TemporaryFile const file;
    std::string const missing = std::string(file.Path()) + "x";
    Stream const other(runtime, NewMemoryStream(runtime));
    for (auto const& [path, why] :
         {std::pair(missing.c_str(), "No such file or directory"),
          std::pair("/tmp", "Is a directory")}) {
        BIBPositionableStream* stream = other.Self();
        Expect(
            "the message of NewPositionableFileStream",
            path + std::string(": cannot open: ") + why,
            runtime.TakeMessage(runtime.Streams().NewPositionableFileStream(&stream, path, 0)));
        Expect("the result after the error", nullptr, stream);
    }
    Require(::access(missing.c_str(), F_OK) != 0, "no file after the error", missing);
    { Stream const made(runtime, OpenFile(runtime, missing.c_str(), 1)); }
    Expect(
        "removals of the file that was made, with writable nonzero", 0, ::unlink(missing.c_str()));
}

void PassesExceptionsOfTheClient(Runtime const& runtime) {
    Client client;
    Stream const first(runtime, NewClientStream(runtime, client, kClientProcs));
    Stream const second(runtime, first.Second());
    first.Seek(3, kBIBSeekFromStart);
    client.fThrows = true;
    bool isCaught = false;
    try {
        second.Read(1);
    } catch (int) {
        isCaught = true;
    }
    Require(isCaught, "the exception of a procedure reaches the caller", "it does not");
    Expect("the position of the first stream", 3UL, first.Mark());
}

void ServesItsBlocks(Runtime const& runtime) {
    Stream const stream(runtime, NewMemoryStream(runtime));
    stream.Write("0123456789");
    stream.Rewind();
    auto const blocks = runtime.Methods<_t_BIBDataBlockStreamInterface>(stream.Self());
    auto const sized = runtime.Methods<_t_BIBSizedDataStoreInterface>(stream.Self());
    auto const store = runtime.Methods<_t_BIBDataStoreInterface>(stream.Self());
    auto* const self = As<BIBDataBlockStream>(stream.Self());
    unsigned char const* block = nullptr;
    unsigned long size = 0;
    runtime.Succeed("GetNextBlock", blocks.GetNextBlock(self, &block, &size));
    Expect(
        "the only block",
        std::string("0123456789"),
        std::string(reinterpret_cast<char const*>(block), size));
    runtime.Succeed("GetNextBlock", blocks.GetNextBlock(self, &block, &size));
    Expect("the size at the end", 0UL, size);
    runtime.Succeed("Rewind", blocks.Rewind(self));
    Expect("the position at the first block", 0UL, stream.Mark());
    runtime.Succeed("GetSize", sized.GetSize(As<BIBSizedDataStore>(self), &size));
    Expect("the size", 10UL, size);
    unsigned char bytes[4] = {};
    runtime.Succeed("GetBlock", store.GetBlock(As<BIBDataStore>(self), 8, bytes, 4, &size));
    Expect(
        "what is behind offset 8",
        std::string("89"),
        std::string(reinterpret_cast<char const*>(bytes), size));
    for (unsigned long const offset : {10UL, 11UL, std::numeric_limits<unsigned long>::max()}) {
        size = 1;
        runtime.Succeed(
            "GetBlock", store.GetBlock(As<BIBDataStore>(self), offset, bytes, 4, &size));
        Expect("the size of a block behind the end", 0UL, size);
    }
}

constexpr Check kOwnStreamChecks[] = {
    {"file.stream",
     "A file stream reads and writes the file; with writable zero, writing is an error. "
     "An existing file keeps its bytes.",
     &WorksOnFiles},
    {"file.missing",
     "With writable zero the file must exist, and the message names it; otherwise it is made.",
     &ReportsMissingFiles},
    {"stream.client-throws",
     "Exceptions of the client's procedures reach the caller, and the position is restored.",
     &PassesExceptionsOfTheClient},
    {"stream.blocks", "A memory stream is a data source of every kind.", &ServesItsBlocks},
};

} // namespace

constinit Group const kStreams = {
    "streams", "BIBStreamFactoryInterface", Demand::kRequired, kStreamChecks};
constinit Group const kOwnStreams = {
    "own-streams", "BIBStreamFactoryInterface", Demand::kStrict, kOwnStreamChecks};

} // namespace conformance
