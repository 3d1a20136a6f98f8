#include "RuntimeFixture.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <unistd.h>

namespace runtimetest {
namespace {

constexpr int kStart = kBIBSeekFromStart;
constexpr int kCurrent = kBIBSeekFromCurrent;
constexpr int kEnd = kBIBSeekFromEnd;

// A file that goes with the test.
class TemporaryFile {
public:
    TemporaryFile() { ::close(::mkstemp(fPath.data())); }
    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;
    ~TemporaryFile() { std::remove(fPath.c_str()); }
    char const* Path() const { return fPath.c_str(); }

private:
    std::string fPath = ::testing::TempDir() + "streams-test-XXXXXX";
};

// A host's data: bytes, a position, and what was called.
struct HostData {
    std::string fBytes;
    unsigned long fPosition = 0;
    int fDeleted = 0;
    bool fThrows = false;
    bool fLosesAll = false; // when it is read
};

HostData& DataOf(void* clientData) {
    return *static_cast<HostData*>(clientData);
}

BIBError* HostRead(void* data, unsigned long* count, unsigned char* buffer, unsigned long size) {
    HostData& host = DataOf(data);
    if (host.fThrows) {
        throw 7;
    }
    if (host.fLosesAll) {
        host.fBytes.clear();
        return Errors().NewError("host lost all", "host", 1, nullptr, nullptr);
    }
    *count = host.fBytes.copy(reinterpret_cast<char*>(buffer), size, host.fPosition);
    host.fPosition += *count;
    return nullptr;
}

BIBError* HostWrite(void* data, unsigned char const* buffer, unsigned long size) {
    HostData& host = DataOf(data);
    host.fBytes.replace(
        host.fPosition, size, std::string(reinterpret_cast<char const*>(buffer), size));
    host.fPosition += size;
    return nullptr;
}

BIBError* HostMark(void* data, unsigned long* position) {
    *position = DataOf(data).fPosition;
    return nullptr;
}

BIBError* HostSeek(void* data, long offset, BIBPositionableStream_SeekOrigin origin) {
    HostData& host = DataOf(data);
    unsigned long const base = origin == kBIBSeekFromEnd       ? host.fBytes.size()
                               : origin == kBIBSeekFromCurrent ? host.fPosition
                                                               : 0;
    unsigned long const target = base + static_cast<unsigned long>(offset);
    if (target > host.fBytes.size()) {
        return Errors().NewError("host refuses", "host", 1, nullptr, nullptr);
    }
    host.fPosition = target;
    return nullptr;
}

void HostDelete(void* data) {
    ++DataOf(data).fDeleted;
}

constexpr BIBClientStreamProcs kHostProcs = {
    &HostRead, &HostWrite, nullptr, &HostMark, &HostSeek, &HostDelete};

class StreamsTest : public RuntimeTest {
protected:
    BIBPositionableStream*
    OpenFile(char const* path, bool writable, std::string* message = nullptr) {
        BIBPositionableStream* stream = nullptr;
        std::string const text =
            TakeMessage(Factory().NewPositionableFileStream(&stream, path, writable ? 1 : 0));
        if (message) {
            *message = text;
        }
        return stream;
    }
    BIBPositionableStream* NewClient(HostData& data) {
        BIBPositionableStream* stream = nullptr;
        TakeMessage(Factory().NewClientPositionableStream(&stream, &kHostProcs, &data));
        return stream;
    }
    BIBPositionableStream* NewOnBuffer(char const* text) {
        auto const& buffers = Rows<_t_BIBSharedBuffInterface>();
        BIBSharedBuffer* const buffer =
            buffers.NewBuffer(std::strlen(text), nullptr, nullptr, nullptr, nullptr);
        std::memcpy(buffers.GetBuffer(buffer), text, std::strlen(text));
        BIBPositionableStream* stream = nullptr;
        TakeMessage(Factory().NewPositionableBufferStream(&stream, buffer));
        buffers.Release(buffer);
        return stream;
    }
    // A second stream on the data of the first.
    BIBPositionableStream* Second(StreamMethods const& first) {
        BIBPositionableStream* stream = nullptr;
        std::string const message = TakeMessage(
            first.fPositionable.CreateIndependentlyPositionableStream(first.fStream, &stream));
        EXPECT_EQ(message, "");
        return stream;
    }
    // What every writable positionable stream must do.
    void CheckWritable(BIBPositionableStream* stream);
};

void StreamsTest::CheckWritable(BIBPositionableStream* stream) {
    Held const held(stream);
    StreamMethods const methods(stream);
    EXPECT_EQ(methods.Seek(0, kEnd), "");
    EXPECT_EQ(methods.Mark(), 0U);
    EXPECT_EQ(methods.Read(4), "");
    EXPECT_EQ(methods.Write("0123456789"), "");
    EXPECT_EQ(methods.Seek(-6, kCurrent), "");
    EXPECT_EQ(methods.Write("abc"), "");
    EXPECT_EQ(methods.Mark(), 7U);
    EXPECT_EQ(methods.Seek(-2, kEnd), "");
    EXPECT_EQ(methods.Write("XYZ"), "");
    EXPECT_EQ(TakeMessage(methods.fRewindable.Rewind(As<BIBRewindableStream>(stream))), "");
    EXPECT_EQ(methods.Read(4), "0123");
    Held const other(Second(methods));
    StreamMethods const second(other);
    EXPECT_EQ(second.Read(2), "01");
    EXPECT_EQ(second.Write("!"), "");
    EXPECT_EQ(methods.Read(100), "abc7XYZ");
    EXPECT_EQ(methods.Seek(0, kStart), "");
    EXPECT_EQ(methods.Read(100), "01!3abc7XYZ");
    EXPECT_EQ(second.Mark(), 3U);
}

TEST_F(StreamsTest, MemoryStreamReadsWhatWasWritten) {
    CheckWritable(NewMemoryStream());
}

TEST_F(StreamsTest, FileStreamReadsWhatWasWritten) {
    TemporaryFile const file;
    CheckWritable(OpenFile(file.Path(), /*writable=*/true));
    std::ofstream(file.Path()) << "kept";
    Held const again(OpenFile(file.Path(), /*writable=*/true));
    EXPECT_EQ(StreamMethods(again).Read(9), "kept");
}

TEST_F(StreamsTest, ClientStreamReadsWhatWasWritten) {
    HostData data;
    CheckWritable(NewClient(data));
    EXPECT_EQ(data.fDeleted, 1);
}

struct SeekCase {
    long fOffset;
    int fOrigin;
    char const* fMessage;
    unsigned long fPosition;
};

constexpr char const* kBefore = "seek to a position before the start of the stream";
constexpr char const* kBehind = "seek to a position behind the end of the stream";

constexpr SeekCase kSeekCases[] = {
    {0, kStart, "", 0},
    {10, kStart, "", 10},
    {11, kStart, kBehind, 4},
    {-1, kStart, kBefore, 4},
    {0, kCurrent, "", 4},
    {6, kCurrent, "", 10},
    {7, kCurrent, kBehind, 4},
    {-4, kCurrent, "", 0},
    {-5, kCurrent, kBefore, 4},
    {0, kEnd, "", 10},
    {1, kEnd, kBehind, 4},
    {-10, kEnd, "", 0},
    {-11, kEnd, kBefore, 4},
    {std::numeric_limits<long>::max(), kCurrent, kBehind, 4},
    {std::numeric_limits<long>::min(), kEnd, kBefore, 4},
    {0, 3, "seek from an unknown origin", 4}};

TEST_F(StreamsTest, SeekStaysWithinTheDataOrMovesNothing) {
    Held const stream(NewOnBuffer("0123456789"));
    StreamMethods const methods(stream);
    for (SeekCase const& row : kSeekCases) {
        SCOPED_TRACE(std::to_string(row.fOffset) + " from " + std::to_string(row.fOrigin));
        EXPECT_EQ(methods.Seek(4, kStart), "");
        EXPECT_EQ(methods.Seek(row.fOffset, row.fOrigin), row.fMessage);
        EXPECT_EQ(methods.Mark(), row.fPosition);
    }
}

TEST_F(StreamsTest, BufferStreamKeepsItsBufferAndCannotBeWritten) {
    Held const stream(NewOnBuffer("held"));
    StreamMethods const methods(stream);
    EXPECT_EQ(methods.Read(10), "held");
    EXPECT_EQ(methods.Write("x"), "a stream on a shared buffer cannot be written");
    Held const other(Second(methods));
    EXPECT_EQ(StreamMethods(other).Read(2), "he");
}

TEST_F(StreamsTest, FilesThatCannotBeOpenedAreNamedInTheError) {
    std::string message;
    EXPECT_EQ(OpenFile("missing/file", /*writable=*/false, &message), nullptr);
    EXPECT_EQ(message, "missing/file: cannot open: No such file or directory");
    std::string const folder = ::testing::TempDir();
    EXPECT_EQ(OpenFile(folder.c_str(), /*writable=*/false, &message), nullptr);
    EXPECT_EQ(message, folder + ": cannot open: Is a directory");
    TemporaryFile const file;
    Held const stream(OpenFile(file.Path(), /*writable=*/false));
    EXPECT_EQ(
        StreamMethods(stream).Write("x"),
        std::string(file.Path()) + ": cannot write: Bad file descriptor");
}

TEST_F(StreamsTest, OpenFilesAreClosedWithTheirLastStream) {
    auto const countOpen = [] {
        auto const entries = std::filesystem::directory_iterator("/proc/self/fd");
        return std::distance(begin(entries), end(entries));
    };
    auto const before = countOpen();
    {
        TemporaryFile const file;
        Held const stream(OpenFile(file.Path(), /*writable=*/true));
        Held const other(Second(StreamMethods(stream)));
        EXPECT_EQ(countOpen(), before + 1);
        for (unsigned long n = 1; n <= 3; ++n) {
            bibrt::FailAllocation(n, /*andAllLater=*/true);
            EXPECT_EQ(OpenFile(file.Path(), /*writable=*/true), nullptr);
            bibrt::ResetFailures();
        }
        EXPECT_EQ(countOpen(), before + 1);
    }
    EXPECT_EQ(countOpen(), before);
}

TEST_F(StreamsTest, ClientStreamPassesErrorsAndExceptionsOn) {
    HostData data;
    data.fBytes = "bytes";
    Held const stream(NewClient(data));
    StreamMethods const methods(stream);
    EXPECT_EQ(methods.Seek(6, kStart), "host refuses");
    Held const other(Second(methods));
    StreamMethods const second(other);
    data.fThrows = true;
    EXPECT_THROW(methods.Read(1), int);
    data.fPosition = 3;
    EXPECT_THROW(second.Read(1), int);
    EXPECT_EQ(data.fPosition, 3U);
    data.fThrows = false;
    EXPECT_EQ(second.Read(9), "bytes");
    EXPECT_EQ(data.fPosition, 3U);
    // The way back fails too.
    Held const third(Second(methods));
    data.fLosesAll = true;
    EXPECT_EQ(StreamMethods(third).Read(1), "host lost all");
}

TEST_F(StreamsTest, ClientLevelsServeTheirMethodsAndMissingProceduresAreErrors) {
    HostData data;
    BIBClientStreamProcs const nothing = {};
    BIBSimpleStream* simple = nullptr;
    BIBRewindableStream* rewindable = nullptr;
    ASSERT_EQ(TakeMessage(Factory().NewClientSimpleStream(&simple, &nothing, &data)), "");
    ASSERT_EQ(TakeMessage(Factory().NewClientRewindableStream(&rewindable, &nothing, &data)), "");
    Held const heldSimple(simple);
    Held const heldRewindable(rewindable);
    StreamMethods const first(As<BIBPositionableStream>(simple));
    EXPECT_EQ(conformance::MissingRows(first.fSimple), 0U);
    EXPECT_EQ(conformance::MissingRows(first.fRewindable), 2U);
    EXPECT_EQ(first.Read(1), "the stream cannot be read");
    EXPECT_EQ(first.Write("x"), "the stream cannot be written");
    StreamMethods const second(As<BIBPositionableStream>(rewindable));
    EXPECT_EQ(conformance::MissingRows(second.fRewindable), 0U);
    EXPECT_EQ(conformance::MissingRows(second.fPositionable), 3U);
    EXPECT_EQ(TakeMessage(second.fRewindable.Rewind(rewindable)), "the stream cannot be rewound");
    BIBRewindableStream* other = rewindable;
    EXPECT_EQ(
        TakeMessage(second.fRewindable.CreateIndependentlyRewindableStream(rewindable, &other)),
        "the stream has no second position");
    EXPECT_EQ(other, nullptr);
}

TEST_F(StreamsTest, FactoryWithoutMemoryLeavesClientDataToTheHost) {
    HostData data;
    for (unsigned long n = 1; n <= 3; ++n) {
        bibrt::FailAllocation(n, /*andAllLater=*/false);
        EXPECT_EQ(NewClient(data), nullptr);
        bibrt::FailAllocation(n, /*andAllLater=*/false);
        EXPECT_EQ(NewMemoryStream(), nullptr);
    }
    EXPECT_EQ(data.fDeleted, 0);
}

TEST_F(StreamsTest, WriteThatFindsNoMemoryChangesNothing) {
    Held const stream(NewMemoryStream());
    StreamMethods const methods(stream);
    EXPECT_EQ(methods.Write("kept"), "");
    EXPECT_EQ(methods.Seek(2, kStart), "");
    bibrt::FailAllocation(1, /*andAllLater=*/false);
    EXPECT_EQ(methods.Write(std::string(10000, 'x')), "out of memory");
    EXPECT_EQ(methods.Mark(), 2U);
    EXPECT_EQ(methods.Seek(0, kStart), "");
    EXPECT_EQ(methods.Read(100), "kept");
}

TEST_F(StreamsTest, OperationsFailWhenOrdered) {
    Held const stream(NewMemoryStream());
    StreamMethods const methods(stream);
    unsigned long const before = bibrt::CountStreamOperations();
    bibrt::FailStreamOperation(2, /*andAllLater=*/false);
    EXPECT_EQ(methods.Write("a"), "");
    EXPECT_EQ(methods.Write("b"), "stream operation failed");
    EXPECT_EQ(methods.Seek(0, kStart), "");
    bibrt::FailStreamOperation(1, /*andAllLater=*/true);
    EXPECT_EQ(methods.Read(1), "stream operation failed");
    EXPECT_EQ(methods.Seek(1, kStart), "stream operation failed");
    EXPECT_EQ(bibrt::CountStreamOperations(), before + 5);
}

TEST_F(StreamsTest, StreamsOnASourceServeItsBlocks) {
    Held const stream(NewOnBuffer("0123456789"));
    BIBPositionableStream* const self = stream;
    auto const blocks =
        conformance::LoadMethods<_t_BIBDataBlockStreamInterface>(&BIBRuntimeLookup, self);
    auto const sized =
        conformance::LoadMethods<_t_BIBSizedDataStoreInterface>(&BIBRuntimeLookup, self);
    auto const store = conformance::LoadMethods<_t_BIBDataStoreInterface>(&BIBRuntimeLookup, self);
    unsigned char const* block = nullptr;
    unsigned long size = 0;
    EXPECT_EQ(TakeMessage(blocks.GetNextBlock(As<BIBDataBlockStream>(self), &block, &size)), "");
    EXPECT_EQ(std::string(reinterpret_cast<char const*>(block), size), "0123456789");
    EXPECT_EQ(TakeMessage(blocks.GetNextBlock(As<BIBDataBlockStream>(self), &block, &size)), "");
    EXPECT_EQ(size, 0U);
    EXPECT_EQ(TakeMessage(blocks.Rewind(As<BIBDataBlockStream>(self))), "");
    EXPECT_EQ(StreamMethods(self).Mark(), 0U);
    EXPECT_EQ(TakeMessage(sized.GetSize(As<BIBSizedDataStore>(self), &size)), "");
    EXPECT_EQ(size, 10U);
    unsigned char bytes[4] = {};
    EXPECT_EQ(TakeMessage(store.GetBlock(As<BIBDataStore>(self), 8, bytes, 4, &size)), "");
    EXPECT_EQ(std::string(reinterpret_cast<char*>(bytes), size), "89");
}

TEST_F(StreamsTest, BadArgumentsAreErrors) {
    Held const stream(NewMemoryStream());
    Held const number(NewNumber(1));
    StreamMethods const methods(stream);
    unsigned long size = 0;
    EXPECT_EQ(TakeMessage(Factory().NewPositionableMemoryStream(nullptr)), "bad argument");
    EXPECT_EQ(TakeMessage(methods.fPositionable.Mark(stream, nullptr)), "bad argument");
    EXPECT_EQ(TakeMessage(methods.fSimple.Write(nullptr, nullptr, 0)), "bad argument");
    EXPECT_EQ(
        TakeMessage(methods.fSimple.Read(As<BIBSimpleStream>(number.Value()), &size, nullptr, 0)),
        "bad argument");
}

} // namespace
} // namespace runtimetest
