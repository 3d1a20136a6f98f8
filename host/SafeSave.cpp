#include "host/SafeSave.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace pdfsettings {

namespace {

// Tries so many names for the new file before it gives up.
constexpr int kMostNames = 100;

constexpr mode_t kPermissions = 07777;
constexpr mode_t kSetIdBits = 06000;
constexpr mode_t kFileMode = 0666;
constexpr mode_t kPrivateMode = 0600;

// So many links may follow one another: the system's own limit.
constexpr int kMostLinks = 40;

[[noreturn]] void ThrowSystemError(int error) {
    throw Error(std::generic_category().message(error));
}

void ThrowIfNegative(long result) {
    if (result < 0) {
        ThrowSystemError(errno);
    }
}

class Descriptor {
public:
    explicit Descriptor(int number) : fNumber(number) {}
    ~Descriptor() {
        if (fNumber >= 0) {
            close(fNumber);
        }
    }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    int Number() const noexcept { return fNumber; }

private:
    int fNumber;
};

void WriteAll(Descriptor const& file, std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t const written = write(file.Number(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        ThrowIfNegative(written);
        if (written == 0) {
            ThrowSystemError(EIO);
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

// The path that is no link any more, whether there is a file or not.
std::string FollowLinks(std::filesystem::path path) {
    for (int i = 0; i <= kMostLinks; ++i) {
        std::error_code error;
        std::filesystem::path const target = std::filesystem::read_symlink(path, error);
        if (error) {
            return path;
        }
        path = path.parent_path() / target;
    }
    ThrowSystemError(ELOOP);
}

std::optional<struct stat> Examine(std::string const& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0) {
        return status;
    }
    if (errno != ENOENT) {
        ThrowSystemError(errno);
    }
    return std::nullopt;
}

void RefuseReadOnly(struct stat const& status) {
    if ((status.st_mode & S_IWUSR) == 0) {
        throw ReadOnlyError("read-only");
    }
}

std::string FolderOf(std::string const& path) {
    std::size_t const slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

// A new file beside another one, which goes again unless it takes that one's place.
class Replacement {
public:
    Replacement(std::string const& folder, mode_t mode)
        : fFolder(folder),
          fFile(OpenNew(folder, mode)) {}
    ~Replacement() {
        if (!fPath.empty()) {
            unlink(fPath.c_str());
        }
    }
    Replacement(Replacement const&) = delete;
    Replacement& operator=(Replacement const&) = delete;

    void Write(std::string_view bytes) { WriteAll(fFile, bytes); }

    // Only root can give a file away, but others can give it to their groups. A program that runs
    // with the rights of its file must not get the rights of somebody else.
    void Resemble(struct stat const& original) {
        bool const isGiven = fchown(fFile.Number(), original.st_uid, original.st_gid) == 0;
        if (!isGiven) {
            static_cast<void>(fchown(fFile.Number(), kSameOwner, original.st_gid) == 0);
        }
        mode_t const mode = original.st_mode & kPermissions;
        ThrowIfNegative(fchmod(fFile.Number(), isGiven ? mode : mode & ~kSetIdBits));
    }

    void MoveTo(std::string const& path) {
        ThrowIfNegative(fsync(fFile.Number()));
        ThrowIfNegative(rename(fPath.c_str(), path.c_str()));
        fPath.clear();
        // A folder that cannot be opened or flushed holds the new file all the same.
        Descriptor const folder(open(fFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        static_cast<void>(folder.Number() >= 0 && fsync(folder.Number()) == 0);
    }

private:
    static constexpr uid_t kSameOwner = static_cast<uid_t>(-1);

    int OpenNew(std::string const& folder, mode_t mode) {
        int const flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
        int number = -1;
        for (int attempt = 0; number < 0 && attempt < kMostNames; ++attempt) {
            fPath =
                folder + "/.joboptions-" + std::to_string(getpid()) + "-" + std::to_string(attempt);
            number = open(fPath.c_str(), flags, mode);
            if (number < 0 && errno != EEXIST) {
                break;
            }
        }
        if (number < 0) {
            fPath.clear();
            ThrowSystemError(errno);
        }
        return number;
    }

    std::string fFolder;
    std::string fPath;
    Descriptor fFile;
};

// A device or a pipe holds nothing that could be lost, and must stay what it is.
void WriteInPlace(std::string const& path, std::string_view bytes) {
    Descriptor const file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    ThrowIfNegative(file.Number());
    WriteAll(file, bytes);
}

} // namespace

void SaveSafely(std::string const& path, std::string_view bytes) {
    if (path.find('\0') != std::string::npos) {
        throw Error("the path holds a NUL byte");
    }
    // By the path itself: a link to a pipe may lead to no path at all, and the system may refuse to
    // follow a link.
    auto const original = Examine(path);
    if (original && !S_ISREG(original->st_mode)) {
        WriteInPlace(path, bytes);
        return;
    }
    if (original) {
        RefuseReadOnly(*original);
    }
    std::string const target = FollowLinks(path);
    // Nobody may look into the new file before it has the old one's mode.
    Replacement replacement(FolderOf(target), original ? kPrivateMode : kFileMode);
    replacement.Write(bytes);
    if (original) {
        replacement.Resemble(*original);
    }
    replacement.MoveTo(target);
}

} // namespace pdfsettings
