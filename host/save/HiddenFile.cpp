#include "host/save/HiddenFile.h"

#include "pdfsettings/Error.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <dirent.h>
#include <memory>
#include <sys/random.h>
#include <unistd.h>

namespace pdfsettings::detail {

namespace {

constexpr mode_t kFileMode = 0666;

// A replacement must not be readable by others before it has the old file's permissions.
constexpr mode_t kPrivateMode = 0600;

// With this prefix and this suffix, lists of settings do not show the file.
constexpr std::string_view kPrefix = ".joboptions-";
constexpr std::string_view kSuffix = ".new";

std::string NewName() {
    std::uint64_t numbers[2];
    if (getrandom(numbers, sizeof numbers, 0) != sizeof numbers) {
        ThrowSystemError(errno);
    }
    char digits[33];
    std::snprintf(
        digits,
        sizeof digits,
        "%016llx%016llx",
        static_cast<unsigned long long>(numbers[0]),
        static_cast<unsigned long long>(numbers[1]));
    return std::string(kPrefix) + digits + std::string(kSuffix);
}

// Whether name is one that a hidden file may have.
bool IsHiddenName(std::string_view name) noexcept {
    return name.starts_with(kPrefix) && name.ends_with(kSuffix) &&
           name.size() == kPrefix.size() + 32 + kSuffix.size();
}

} // namespace

HiddenFile::HiddenFile(
    Target const& target,
    std::string_view bytes,
    FileTraits const* traits,
    std::vector<std::string>* warnings)
    : HiddenFile(target) { // complete from here on: a failure runs the destructor
    // A file without a name leaves nothing behind if the process is killed. Some systems have no
    // such files, or cannot give them a name later.
    if (!Make(/*isNameless=*/true, bytes, traits) && !Make(/*isNameless=*/false, bytes, traits)) {
        ThrowSystemError(errno);
    }
    warnings->insert(warnings->end(), fWarnings.begin(), fWarnings.end());
    Look();
}

HiddenFile::~HiddenFile() {
    if (!fName.empty() && !fIsKept) {
        unlinkat(fTarget.folder.Number(), fName.c_str(), 0);
    }
}

bool HiddenFile::Make(bool isNameless, std::string_view bytes, FileTraits const* traits) {
    if (!MakeFile(isNameless, traits != nullptr ? kPrivateMode : kFileMode)) {
        return false;
    }
    WriteAll(fFile, bytes);
    if (traits != nullptr) {
        fWarnings = GiveTraits(*traits, fFile);
    }
    ThrowIfNegative(fsync(fFile.Number()));
    return !isNameless || GiveName();
}

bool HiddenFile::MakeFile(bool isNameless, mode_t mode) {
    std::string const name = NewName();
    fFile = isNameless ? OpenIn(fTarget.folder, ".", O_TMPFILE | O_WRONLY, mode)
                       : OpenIn(fTarget.folder, name, O_WRONLY | O_CREAT | O_EXCL, mode);
    if (fFile.IsOpen() && !isNameless) {
        fName = name;
    }
    return fFile.IsOpen();
}

// Reopens the file for reading and closes the descriptor for writing, so that from now on any
// writer is another program.
void HiddenFile::Look() {
    fSeen = SeenFile::Open(fTarget.folder, fName);
    if (!fSeen || !fSeen->Is(fFile)) {
        throw Error(Fault::kSystem, "the new file was replaced");
    }
    fFile = Descriptor();
}

bool HiddenFile::GiveName() {
    std::string const name = NewName();
    std::string const file = "/proc/self/fd/" + std::to_string(fFile.Number());
    bool const isLinked =
        linkat(AT_FDCWD, file.c_str(), fTarget.folder.Number(), name.c_str(), AT_SYMLINK_FOLLOW) ==
        0;
    if (isLinked) {
        fName = name;
    }
    return isLinked;
}

namespace {

// There are more only if another program creates them on purpose.
constexpr std::size_t kMostLeftovers = 20;

// Opens the folder again: reading it moves the position of a descriptor.
std::vector<std::string> HiddenNames(Descriptor const& folder) {
    int const file = openat(folder.Number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    std::unique_ptr<DIR, int (*)(DIR*)> const stream(fdopendir(file), &closedir);
    std::vector<std::string> names;
    if (!stream) {
        static_cast<void>(Descriptor(file));
        return names;
    }
    dirent const* entry = nullptr;
    while (names.size() < kMostLeftovers && (entry = readdir(stream.get())) != nullptr) {
        if (IsHiddenName(entry->d_name)) {
            names.emplace_back(entry->d_name);
        }
    }
    return names;
}

// Another user may have created a file of this kind to delay a save. So a file whose size does not
// match is not opened, and a lease is not waited for.
bool HoldsOneOf(
    Descriptor const& folder, std::string const& name, std::vector<std::string> const& contents) {
    struct stat status {};
    bool const isPossible = Examine(folder, name, &status) && S_ISREG(status.st_mode) &&
                            std::ranges::any_of(contents, [&](std::string const& content) {
                                return static_cast<std::size_t>(status.st_size) == content.size();
                            });
    if (!isPossible) {
        return false;
    }
    try {
        auto const file = SeenFile::Open(folder, name, Deadline(std::chrono::milliseconds(0)));
        return file && !file->HasWriter() &&
               std::ranges::find(contents, file->Bytes()) != contents.end();
    } catch (Error const&) {
        return false;
    }
}

} // namespace

void RemoveLeftovers(
    Descriptor const& folder,
    std::vector<std::string> const& contents,
    std::vector<std::string>* warnings) {
    for (std::string const& name : HiddenNames(folder)) {
        bool const isGone =
            HoldsOneOf(folder, name, contents) && unlinkat(folder.Number(), name.c_str(), 0) == 0;
        if (!isGone) {
            warnings->push_back(
                "an interrupted save left " + name +
                " in its folder; delete it if you do not need its content");
        }
    }
}

} // namespace pdfsettings::detail
