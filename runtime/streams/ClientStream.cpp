// Streams implemented by a host.
#include "runtime/objects/Errors.h"
#include "runtime/streams/Streams.h"

namespace bibrt {

namespace {

// A host's procedures and data, shared by the streams on them. The data belong to the host until
// Own is called.
class Client {
public:
    Client(BIBClientStreamProcs const& procs, void* clientData) noexcept
        : fProcs(procs),
          fClientData(clientData) {}
    Client(Client const&) = delete;
    Client& operator=(Client const&) = delete;
    ~Client() {
        if (fIsOwner) {
            CallDeleteProc(fProcs.deleteProc, fClientData);
        }
    }

    void Own() noexcept { fIsOwner = true; }

    BIBError* Read(unsigned char* buffer, unsigned long size, unsigned long& bytesRead) const {
        return fProcs.read ? fProcs.read(fClientData, &bytesRead, buffer, size)
                           : Failure("the stream cannot be read");
    }

    BIBError* Write(unsigned char const* buffer, unsigned long size) const {
        return fProcs.write ? fProcs.write(fClientData, buffer, size)
                            : Failure("the stream cannot be written");
    }

    BIBError* Rewind() const {
        if (fProcs.rewind) {
            return fProcs.rewind(fClientData);
        }
        return fProcs.seek ? Seek(0, kBIBSeekFromStart) : Failure("the stream cannot be rewound");
    }

    BIBError* Mark(unsigned long& position) const {
        return fProcs.mark ? fProcs.mark(fClientData, &position)
                           : Failure("the stream does not give its position");
    }

    BIBError* Seek(long offset, BIBPositionableStream_SeekOrigin origin) const {
        return fProcs.seek ? fProcs.seek(fClientData, offset, origin)
                           : Failure("the stream cannot be positioned");
    }

    bool IsPositionable() const noexcept { return fProcs.mark && fProcs.seek; }

private:
    BIBClientStreamProcs fProcs;
    void* fClientData;
    bool fIsOwner = false;
};

using ClientPtr = std::shared_ptr<Client>;

// Restores the client's position, also after an exception.
class PositionKeeper {
public:
    explicit PositionKeeper(Client const& client) noexcept : fClient(client) {}
    PositionKeeper(PositionKeeper const&) = delete;
    PositionKeeper& operator=(PositionKeeper const&) = delete;
    // Runs Restore only after an exception; a second error cannot be reported.
    ~PositionKeeper() {
        if (!fIsKept) {
            return;
        }
        try {
            ReleaseError(Restore());
        } catch (...) { // NOLINT(bugprone-empty-catch)
        }
    }

    BIBError* Keep() {
        BIBError* const error = fClient.Mark(fPosition);
        fIsKept = !error;
        return error;
    }

    BIBError* Restore() {
        fIsKept = false;
        return fClient.Seek(static_cast<long>(fPosition), kBIBSeekFromStart);
    }

private:
    Client const& fClient;
    unsigned long fPosition = 0;
    bool fIsKept = false;
};

// Seeks the client to offset from origin, runs work and restores the position. Returns the first
// error.
template <class Work>
BIBError*
Elsewhere(Client const& client, long offset, BIBPositionableStream_SeekOrigin origin, Work work) {
    PositionKeeper keeper(client);
    if (BIBError* const error = keeper.Keep()) {
        return error;
    }
    BIBError* error = client.Seek(offset, origin);
    if (!error) {
        error = work();
    }
    BIBError* const restoreError = keeper.Restore();
    if (!error) {
        return restoreError;
    }
    ReleaseError(restoreError);
    return error;
}

// A client's data, for streams with their own positions.
class ClientSource final : public StreamSource {
public:
    explicit ClientSource(ClientPtr client) noexcept : fClient(std::move(client)) {}

    BIBError* ReadAt(
        unsigned long offset,
        unsigned char* buffer,
        unsigned long size,
        unsigned long& bytesRead) override {
        return Elsewhere(*fClient, static_cast<long>(offset), kBIBSeekFromStart, [&] {
            return fClient->Read(buffer, size, bytesRead);
        });
    }

    BIBError*
    WriteAt(unsigned long offset, unsigned char const* buffer, unsigned long size) override {
        return Elsewhere(*fClient, static_cast<long>(offset), kBIBSeekFromStart, [&] {
            return fClient->Write(buffer, size);
        });
    }

    BIBError* GetLength(unsigned long& length) override {
        return Elsewhere(*fClient, 0, kBIBSeekFromEnd, [&] { return fClient->Mark(length); });
    }

private:
    ClientPtr fClient;
};

class ClientBody final : public StreamBody {
public:
    explicit ClientBody(ClientPtr client) noexcept : fClient(std::move(client)) {}

    BIBError* Read(unsigned char* buffer, unsigned long size, unsigned long& bytesRead) override {
        return fClient->Read(buffer, size, bytesRead);
    }

    BIBError* Write(unsigned char const* buffer, unsigned long size) override {
        return fClient->Write(buffer, size);
    }

    BIBError* Rewind() override { return fClient->Rewind(); }

    BIBError* Mark(unsigned long& position) override { return fClient->Mark(position); }

    BIBError* Seek(long offset, BIBPositionableStream_SeekOrigin origin) override {
        return fClient->Seek(offset, origin);
    }

    BIBError* GetSource(SourcePtr& result) override {
        if (!fClient->IsPositionable()) {
            return Failure("the stream has no second position");
        }
        result = std::allocate_shared<ClientSource>(CallerAllocator<ClientSource>(), fClient);
        return nullptr;
    }

    BIBError* NextBlock(unsigned char const*&, unsigned long&) override {
        return Failure("the stream is no source of blocks");
    }

private:
    ClientPtr fClient;
};

} // namespace

BIBPositionableStream*
MakeClientStream(ContainerType const& type, BIBClientStreamProcs const& procs, void* clientData) {
    auto const client = std::allocate_shared<Client>(CallerAllocator<Client>(), procs, clientData);
    BIBPositionableStream* const stream =
        NewObject<BIBPositionableStream>(type, BodyPtr(NewObject<ClientBody>(client)));
    client->Own();
    return stream;
}

} // namespace bibrt
