#include "host/save/SystemCalls.h"

#include "pdfsettings/Error.h"
#include "platform/FileSizeSignal.h"

#include <cerrno>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace pdfsettings::detail {

namespace {

// Repeats a call that a signal interrupted.
template <class Call>
auto Repeat(Call call) -> decltype(call()) {
    decltype(call()) result = 0;
    do {
        result = call();
    } while (result < 0 && errno == EINTR);
    return result;
}

} // namespace

void ThrowSystemError(int error) {
    throw Error(
        Fault::kSystem,
        std::generic_category().message(error),
        {},
        {},
        {error, std::generic_category()});
}

void ThrowIfNegative(long result) {
    if (result < 0) {
        ThrowSystemError(errno);
    }
}

bool IsUnsupported(int error) noexcept {
    return error == ENOSYS || error == EINVAL || error == EOPNOTSUPP;
}

Descriptor::Descriptor(Descriptor&& other) noexcept : fNumber(std::exchange(other.fNumber, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    std::swap(fNumber, other.fNumber);
    return *this;
}

Descriptor::~Descriptor() {
    if (IsOpen()) {
        close(fNumber);
    }
}

Descriptor Opened(int number) {
    ThrowIfNegative(number);
    return Descriptor(number);
}

std::string FolderPart(std::string const& path) {
    std::size_t const slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

Descriptor OpenIn(Descriptor const& folder, std::string const& name, int flags, mode_t mode) {
    int const all = flags | O_NOFOLLOW | O_CLOEXEC;
    open_how how{};
    how.flags = static_cast<unsigned>(all);
    how.mode = mode;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS;
    long const file = Repeat(
        [&] { return syscall(SYS_openat2, folder.Number(), name.c_str(), &how, sizeof how); });
    // Older systems do not have the call, and a sandbox may reject it.
    if (file < 0 && (errno == ENOSYS || errno == EPERM)) {
        return Descriptor(Repeat([&] { return openat(folder.Number(), name.c_str(), all, mode); }));
    }
    return Descriptor(static_cast<int>(file));
}

struct stat StatusOf(Descriptor const& file) {
    struct stat status {};
    ThrowIfNegative(fstat(file.Number(), &status));
    return status;
}

bool Examine(Descriptor const& folder, std::string const& name, struct stat* status) {
    return fstatat(folder.Number(), name.c_str(), status, AT_SYMLINK_NOFOLLOW) == 0;
}

bool IsSameFile(struct stat const& a, struct stat const& b) noexcept {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

void RequireRegular(struct stat const& status) {
    if (S_ISDIR(status.st_mode)) {
        ThrowSystemError(EISDIR);
    }
    if (!S_ISREG(status.st_mode)) {
        throw Error(Fault::kSystem, "not a regular file");
    }
}

namespace {

// Throws Error for more than 256 MiB. Settings files have kilobytes; the limit keeps a huge or
// endless file from filling the memory.
void RequireSize(std::size_t size) {
    constexpr std::size_t kLargest = std::size_t{256} << 20;
    if (size > kLargest) {
        throw Error(Fault::kSystem, "larger than 256 MiB");
    }
}

// Appends to bytes what read returns, until it returns 0 bytes.
template <class Read>
std::string ReadToEnd(std::string bytes, Read read) {
    char buffer[16384];
    ssize_t count = 0;
    do {
        auto const at = static_cast<off_t>(bytes.size());
        count = Repeat([&] { return read(buffer, sizeof buffer, at); });
        ThrowIfNegative(count);
        bytes.append(buffer, static_cast<std::size_t>(count));
        RequireSize(bytes.size());
    } while (count > 0);
    return bytes;
}

} // namespace

std::string ReadAll(Descriptor const& file) {
    auto const size = static_cast<std::size_t>(StatusOf(file).st_size);
    RequireSize(size);
    std::string bytes;
    bytes.reserve(size);
    return ReadToEnd(std::move(bytes), [&](char* buffer, std::size_t room, off_t at) {
        return pread(file.Number(), buffer, room, at);
    });
}

std::string ReadStream(Descriptor const& stream) {
    return ReadToEnd({}, [&](char* buffer, std::size_t room, off_t /*at*/) {
        return read(stream.Number(), buffer, room);
    });
}

void WriteAll(Descriptor const& file, std::string_view bytes) {
    platform::FileSizeSignalGuard const guard;
    while (!bytes.empty()) {
        ssize_t const written =
            Repeat([&] { return write(file.Number(), bytes.data(), bytes.size()); });
        ThrowIfNegative(written);
        if (written == 0) {
            ThrowSystemError(EIO);
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

} // namespace pdfsettings::detail
