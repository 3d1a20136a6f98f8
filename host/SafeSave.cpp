#include "pdfsettings/SafeSave.h"

#include "host/detail/Replacement.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace pdfsettings {

using namespace detail;

namespace {

constexpr mode_t kFileMode = 0666;
constexpr mode_t kPrivateMode = 0600;

// So many links may follow one another: the system's own limit.
constexpr int kMostLinks = 40;

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

bool IsReadOnlyFile(struct stat const& status) {
    return S_ISREG(status.st_mode) && (status.st_mode & S_IWUSR) == 0;
}

std::string FolderOf(std::string const& path) {
    std::size_t const slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

// Puts the bytes in the target's place by a new file. False when there is no such file, or when it
// cannot take a place here.
bool Replace(
    std::unique_ptr<Replacement> const& file,
    std::string const& target,
    std::string_view bytes,
    std::optional<struct stat> const& original) {
    if (!file) {
        return false;
    }
    file->Write(bytes);
    if (original) {
        file->Resemble(*original);
    }
    return file->TakePlace(target);
}

// A device or a pipe holds nothing that could be lost, and must stay what it is.
void WriteInPlace(std::string const& path, std::string_view bytes) {
    Descriptor const file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    ThrowIfNegative(file.Number());
    WriteAll(file, bytes);
}

} // namespace

bool IsReadOnly(std::string const& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && IsReadOnlyFile(status);
}

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
    if (original && IsReadOnlyFile(*original)) {
        throw ReadOnlyError("read-only");
    }
    std::string const target = FollowLinks(path);
    std::string const folder = FolderOf(target);
    // Nobody may look into the new file before it has the old one's mode.
    mode_t const mode = original ? kPrivateMode : kFileMode;
    if (!Replace(NewNamelessFile(folder, mode), target, bytes, original)) {
        Replace(NewNamedFile(folder, mode), target, bytes, original);
    }
}

} // namespace pdfsettings
