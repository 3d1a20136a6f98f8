#include "host/detail/Replacement.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <unistd.h>

namespace pdfsettings::detail {

namespace {

// So many times a name may be taken, or lost, before a save gives up.
constexpr int kMostAttempts = 100;

constexpr mode_t kPermissions = 07777;
constexpr mode_t kSetIdBits = 06000;
constexpr uid_t kSameOwner = static_cast<uid_t>(-1);

constexpr char kPrefix[] = ".joboptions-";

// The name of a whole file for the moment before it takes its target's place. It depends on the
// target alone: what a killed process left there is whole and can be taken away by the next save,
// and two savers of one file may do so to each other, which leaves the bytes of one of them.
std::string NameBefore(std::string const& folder, std::string const& target) {
    std::size_t const key = std::hash<std::string_view>()(target.substr(target.rfind('/') + 1));
    char digits[2 * sizeof key + 1];
    std::snprintf(digits, sizeof digits, "%zx", key);
    return folder + "/" + kPrefix + digits + ".new";
}

class NamelessFile final : public Replacement {
public:
    NamelessFile(std::string folder, int file) : Replacement(std::move(folder), file) {}

private:
    bool Link(std::string const& path) const {
        std::string const file = "/proc/self/fd/" + std::to_string(File().Number());
        return linkat(AT_FDCWD, file.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0;
    }

    bool MoveTo(std::string const& target) override {
        if (Link(target)) {
            return true;
        }
        std::string const name = NameBefore(Folder(), target);
        for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
            bool const isLinked = Link(name);
            if (isLinked && Rename(name, target)) {
                return true;
            }
            if (!isLinked && (errno != EEXIST || !TakeAway(name))) {
                return false;
            }
        }
        return false;
    }

    // False when another saver of the same file has moved this one, or has taken it away.
    static bool Rename(std::string const& name, std::string const& target) {
        if (rename(name.c_str(), target.c_str()) == 0) {
            return true;
        }
        int const error = errno;
        if (error != ENOENT) {
            unlink(name.c_str());
            ThrowSystemError(error);
        }
        return false;
    }

    static bool TakeAway(std::string const& name) {
        return unlink(name.c_str()) == 0 || errno == ENOENT;
    }
};

class NamedFile final : public Replacement {
public:
    NamedFile(std::string folder, int file, std::string name)
        : Replacement(std::move(folder), file),
          fName(std::move(name)) {}
    ~NamedFile() override {
        if (!fName.empty()) {
            unlink(fName.c_str());
        }
    }
    NamedFile(NamedFile const&) = delete;
    NamedFile& operator=(NamedFile const&) = delete;

private:
    bool MoveTo(std::string const& target) override {
        ThrowIfNegative(rename(fName.c_str(), target.c_str()));
        fName.clear();
        return true;
    }

    std::string fName;
};

} // namespace

void Replacement::Resemble(struct stat const& original) {
    // Only root can give a file away, but others can give it to their groups. A program that runs
    // with the rights of its file must not get the rights of somebody else.
    bool const isGiven = fchown(fFile.Number(), original.st_uid, original.st_gid) == 0;
    if (!isGiven) {
        static_cast<void>(fchown(fFile.Number(), kSameOwner, original.st_gid) == 0);
    }
    mode_t const mode = original.st_mode & kPermissions;
    ThrowIfNegative(fchmod(fFile.Number(), isGiven ? mode : mode & ~kSetIdBits));
}

bool Replacement::TakePlace(std::string const& target) {
    ThrowIfNegative(fsync(fFile.Number()));
    if (!MoveTo(target)) {
        return false;
    }
    Descriptor const folder(open(fFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    static_cast<void>(folder.IsOpen() && fsync(folder.Number()) == 0);
    return true;
}

std::unique_ptr<Replacement> NewNamelessFile(std::string const& folder, mode_t mode) {
    int const file = open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, mode);
    return file < 0 ? nullptr : std::make_unique<NamelessFile>(folder, file);
}

std::unique_ptr<Replacement> NewNamedFile(std::string const& folder, mode_t mode) {
    int const flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
    std::string const prefix = folder + "/" + kPrefix + std::to_string(getpid()) + "-";
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        std::string const name = prefix + std::to_string(attempt);
        int const file = open(name.c_str(), flags, mode);
        if (file >= 0) {
            return std::make_unique<NamedFile>(folder, file, name);
        }
        if (errno != EEXIST) {
            break;
        }
    }
    ThrowSystemError(errno);
}

} // namespace pdfsettings::detail
