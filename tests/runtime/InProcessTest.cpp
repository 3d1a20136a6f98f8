// What this runtime alone promises, beyond the contract that the conformance kit checks.
#include "RuntimeFixture.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace runtimetest {
namespace {

class InProcessTest : public RuntimeTest {};

TEST_F(InProcessTest, ErrorsGoToTheChannelThatWasSet) {
    std::string shown;
    auto const show = [](char const* message, void* client) {
        *static_cast<std::string*>(client) += message;
    };
    BIBRuntimeSetErrorChannel(show, &shown);
    auto const report = Ours().Bootstrap<BIBReportErrorProc>("BIBReportError");
    EXPECT_EQ(report("first;"), 1);
    EXPECT_EQ(report(nullptr), 1);
    BIBRuntimeSetErrorChannel(nullptr, nullptr);
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(report("second"), 1);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "second\n");
    EXPECT_EQ(shown, "first;");
}

TEST_F(InProcessTest, WhatTheRuntimeMadeOutlivesEveryRelease) {
    Held const number(Ours().NewNumber(1));
    BIBStringAtom* const signature = Containers().GetSignature(number.Container());
    BIBError* const error = Errors().GetCoreError(kBRVMemoryError);
    for (int i = 0; i < 3; ++i) {
        Atoms().DeleteStringAtom(signature);
        Errors().Release(error);
    }
    EXPECT_STREQ(Atoms().GetCString(signature), "POSNumberValue");
    EXPECT_EQ(TakeMessage(Errors().GetCoreError(kBRVMemoryError)), "out of memory");
}

TEST_F(InProcessTest, WrongArgumentsAreRefused) {
    MemoryStream const stream;
    Held const number(Ours().NewNumber(1));
    Held const dict(Dicts().NewPOSDict());
    auto const methods = Ours().Methods<_t_BIBSimpleStreamInterface>(stream.Self());
    unsigned long size = 0;
    EXPECT_EQ(TakeMessage(Ours().Streams().NewPositionableMemoryStream(nullptr)), "bad argument");
    EXPECT_EQ(TakeMessage(methods.Write(nullptr, nullptr, 0)), "bad argument");
    EXPECT_EQ(
        TakeMessage(methods.Read(As<BIBSimpleStream>(number.Value()), &size, nullptr, 0)),
        "bad argument");
    EXPECT_EQ(
        TakeMessage(stream.TrySeek(0, static_cast<BIBPositionableStream_SeekOrigin>(3))),
        "seek from an unknown origin");
    EXPECT_EQ(Rows<_t_POSBinDataInterface>().NewPOSBinData("", nullptr, 1), nullptr);
    EXPECT_EQ(Cursors().NewPOSDictIterator(nullptr), nullptr);
    EXPECT_EQ(Dicts().Get(dict, nullptr), nullptr);
    EXPECT_EQ(Dicts().Remove(dict, nullptr), 0);
    EXPECT_EQ(Containers().GetSignature(nullptr), nullptr);
    EXPECT_EQ(BIBRuntimeLookup(nullptr, "AddRef", "BIBErrorAddRefProcV2"), nullptr);
    auto const add = Ours().Bootstrap<BIBRegisterProcAddressProc>("BIBRegisterProcAddress");
    EXPECT_EQ(add(nullptr, "B", "Proc", &size), 0);
    EXPECT_EQ(add("Hosts", "B", "Proc", nullptr), 0);
}

void Increment(void* counter) {
    ++*static_cast<int*>(counter);
}

TEST_F(InProcessTest, AThrowingDeleteProcedureStopsNothing) {
    int deleted = 0;
    Atom const name("HostThing");
    auto const add = [&](POSObject* value, void (*deleteProc)(void*)) {
        return TakeMessage(
            Containers().RegisterInstance(As<BIBContainer>(value), &deleted, name, deleteProc));
    };
    {
        Held const dict(Dicts().NewPOSDict());
        Put(dict, "first", Ours().NewNumber(1));
        Put(dict, "second", Ours().NewNumber(2));
        EXPECT_EQ(add(Dicts().Get(dict, Atom("second")), &Increment), "");
        EXPECT_EQ(
            add(Dicts().Get(dict, Atom("first")),
                [](void* counter) {
                    Increment(counter);
                    throw 1;
                }),
            "");
    }
    EXPECT_EQ(deleted, 2);
}

// Removing the first key takes no search through those that are gone.
TEST_F(InProcessTest, ADictionaryIsEmptiedFromTheFrontKeyByKey) {
    constexpr int kMany = 200000;
    Held const dict(Dicts().NewPOSDict());
    for (int i = 0; i < kMany; ++i) {
        Put(dict, std::to_string(i), Ours().NewNumber(i));
    }
    Held const cursor(Cursors().NewPOSDictIterator(dict));
    for (int i = 0; i < kMany; ++i) {
        Cursors().Begin(cursor);
        ASSERT_EQ(Cursors().CurKey(cursor), std::to_string(i));
        Dicts().Remove(dict, Atom(std::to_string(i)));
    }
}

BIBPositionableStream* OpenFile(std::string const& path, bool writable, std::string& message) {
    BIBPositionableStream* stream = nullptr;
    message = TakeMessage(
        Ours().Streams().NewPositionableFileStream(&stream, path.c_str(), writable ? 1 : 0));
    return stream;
}

long CountOpen() {
    auto const entries = std::filesystem::directory_iterator("/proc/self/fd");
    return std::distance(begin(entries), end(entries));
}

TEST_F(InProcessTest, FilesAreNamedInErrorsAndClosedWithTheirLastStream) {
    std::string const folder = ::testing::TempDir();
    std::string path = folder + "in-process-test-XXXXXX";
    ::close(::mkstemp(path.data()));
    std::string message;
    EXPECT_EQ(OpenFile("missing/file", /*writable=*/false, message), nullptr);
    EXPECT_EQ(message, "missing/file: cannot open: No such file or directory");
    EXPECT_EQ(OpenFile(folder, /*writable=*/false, message), nullptr);
    EXPECT_EQ(message, folder + ": cannot open: Is a directory");
    auto const before = CountOpen();
    {
        conformance::Stream const stream(Ours(), OpenFile(path, /*writable=*/false, message));
        conformance::Stream const other(Ours(), stream.Second());
        EXPECT_EQ(TakeMessage(stream.TryWrite("x")), path + ": cannot write: Bad file descriptor");
        for (unsigned long n = 1; n <= 3; ++n) {
            bibrt::FailAllocation(n, /*andAllLater=*/true);
            EXPECT_EQ(OpenFile(path, /*writable=*/true, message), nullptr);
            bibrt::ResetFailures();
        }
        EXPECT_EQ(CountOpen(), before + 1);
    }
    EXPECT_EQ(CountOpen(), before);
    std::remove(path.c_str());
}

// A host's data, and what goes wrong with it.
struct HostData {
    unsigned long fPosition = 0;
    bool fThrows = false;
    bool fIsLost = false;
};

BIBError* HostRead(void* data, unsigned long* count, unsigned char* buffer, unsigned long size) {
    auto& host = *static_cast<HostData*>(data);
    if (host.fThrows) {
        throw 7;
    }
    if (std::exchange(host.fIsLost, false)) {
        host.fPosition = 100;
        return Errors().NewError("lost", "host", 1, nullptr, nullptr);
    }
    *count = std::string("bytes").copy(reinterpret_cast<char*>(buffer), size, host.fPosition);
    host.fPosition += *count;
    return nullptr;
}

BIBError* HostMark(void* data, unsigned long* position) {
    *position = static_cast<HostData*>(data)->fPosition;
    return nullptr;
}

BIBError* HostSeek(void* data, long offset, BIBPositionableStream_SeekOrigin /*origin*/) {
    auto& host = *static_cast<HostData*>(data);
    if (host.fPosition == 100) {
        return Errors().NewError("refused", "host", 1, nullptr, nullptr);
    }
    host.fPosition = static_cast<unsigned long>(offset);
    return nullptr;
}

TEST_F(InProcessTest, ASecondStreamOnAClientRestoresThePosition) {
    HostData data;
    BIBClientStreamProcs const procs = {&HostRead, nullptr, nullptr, &HostMark, &HostSeek, nullptr};
    BIBPositionableStream* made = nullptr;
    TakeMessage(Ours().Streams().NewClientPositionableStream(&made, &procs, &data));
    conformance::Stream const first(Ours(), made);
    conformance::Stream const second(Ours(), first.Second());
    data.fPosition = 3;
    data.fThrows = true;
    EXPECT_THROW(second.Read(1), int);
    EXPECT_EQ(data.fPosition, 3U);
    data.fThrows = false;
    EXPECT_EQ(second.Read(9), "bytes");
    EXPECT_EQ(data.fPosition, 3U);
    // The way back fails too.
    data.fIsLost = true;
    std::string text;
    EXPECT_EQ(TakeMessage(second.TryRead(text, 1)), "lost");
}

TEST_F(InProcessTest, StreamOperationsFailWhenOrdered) {
    MemoryStream const stream;
    unsigned long const before = bibrt::CountStreamOperations();
    bibrt::FailStreamOperation(2, /*andAllLater=*/false);
    EXPECT_EQ(TakeMessage(stream.TryWrite("a")), "");
    EXPECT_EQ(TakeMessage(stream.TryWrite("b")), "stream operation failed");
    stream.Seek(0, kBIBSeekFromStart);
    bibrt::FailStreamOperation(1, /*andAllLater=*/true);
    std::string text;
    EXPECT_EQ(TakeMessage(stream.TryRead(text, 1)), "stream operation failed");
    EXPECT_EQ(TakeMessage(stream.TrySeek(1, kBIBSeekFromStart)), "stream operation failed");
    EXPECT_EQ(bibrt::CountStreamOperations(), before + 5);
}

TEST_F(InProcessTest, StreamsOnASourceServeItsBlocks) {
    MemoryStream const stream;
    stream.Write("0123456789");
    stream.Rewind();
    BIBPositionableStream* const self = stream.Self();
    auto const blocks = Ours().Methods<_t_BIBDataBlockStreamInterface>(self);
    auto const sized = Ours().Methods<_t_BIBSizedDataStoreInterface>(self);
    auto const store = Ours().Methods<_t_BIBDataStoreInterface>(self);
    unsigned char const* block = nullptr;
    unsigned long size = 0;
    EXPECT_EQ(TakeMessage(blocks.GetNextBlock(As<BIBDataBlockStream>(self), &block, &size)), "");
    EXPECT_EQ(std::string(reinterpret_cast<char const*>(block), size), "0123456789");
    EXPECT_EQ(TakeMessage(blocks.GetNextBlock(As<BIBDataBlockStream>(self), &block, &size)), "");
    EXPECT_EQ(size, 0U);
    EXPECT_EQ(TakeMessage(blocks.Rewind(As<BIBDataBlockStream>(self))), "");
    EXPECT_EQ(stream.Mark(), 0U);
    EXPECT_EQ(TakeMessage(sized.GetSize(As<BIBSizedDataStore>(self), &size)), "");
    EXPECT_EQ(size, 10U);
    unsigned char bytes[4] = {};
    EXPECT_EQ(TakeMessage(store.GetBlock(As<BIBDataStore>(self), 8, bytes, 4, &size)), "");
    EXPECT_EQ(std::string(reinterpret_cast<char*>(bytes), size), "89");
}

} // namespace
} // namespace runtimetest
