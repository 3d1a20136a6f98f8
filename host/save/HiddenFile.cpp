#include "host/save/HiddenFile.h"

#include "pdfsettings/Error.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <sys/random.h>
#include <unistd.h>

namespace pdfsettings::detail {

namespace {

constexpr mode_t kFileMode = 0666;

// Nobody may look into a replacement before it has the old file's permissions.
constexpr mode_t kPrivateMode = 0600;

// The listing takes neither the beginning nor the end for a settings file's.
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

} // namespace

bool IsHiddenName(std::string_view name) noexcept {
    return name.starts_with(kPrefix) && name.ends_with(kSuffix) &&
           name.size() == kPrefix.size() + 32 + kSuffix.size();
}

HiddenFile::HiddenFile(
    Target const& target,
    std::string_view bytes,
    FileTraits const* traits,
    std::vector<std::string>* warnings)
    : HiddenFile(target) { // whole from here on, so that a failure deletes the file
    // A file without a name leaves nothing half-written behind when the process ends, but not every
    // system has such files, or gives them names.
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

// Gives up writing, so that whoever has the file open for writing from now on is somebody else.
void HiddenFile::Look() {
    fSeen = SeenFile::Open(fTarget.folder, fName);
    if (!fSeen || !fSeen->Is(fFile)) {
        throw Error("the new file was replaced");
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

} // namespace pdfsettings::detail
