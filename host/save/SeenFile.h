// One look at a file: what it holds, who may do what with it, and what is noted on it.
#pragma once

#include "host/save/Target.h"
#include "pdfsettings/SafeSave.h"

#include <cerrno>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace pdfsettings::detail {

// Opening a pipe that took a file's place must not wait for its other end.
inline constexpr int kReadingAtOnce = O_RDONLY | O_NONBLOCK | O_NOCTTY;

// What open gives, which opens a file without waiting: another program may have a lease on the
// file, which the system asks it to give up. Throws Error (kBusy) when it does not.
template <class Open>
Descriptor OpenWithoutWaiting(Deadline deadline, Open open) {
    Descriptor file = open();
    while (!file.IsOpen() && errno == EWOULDBLOCK) {
        if (!deadline.Pause()) {
            throw Error(
                Fault::kBusy, "another program does not give up its lease on it; try again");
        }
        file = open();
    }
    return file;
}

// What a replacement takes over from the file before it. Capabilities, integrity data, trusted
// attributes and set-id bits are not among it: new contents must not get rights that were given to
// the old.
struct FileTraits {
    mode_t mode = 0; // permissions without set-id bits
    uid_t owner = 0;
    gid_t group = 0;
    std::string accessList;      // as the system stores it; empty where the mode says it all
    bool hasForeignList = false; // of another kind, which cannot be kept
    std::vector<std::pair<std::string, std::string>> attributes; // "user." and security labels

    bool operator==(FileTraits const&) const = default;
};

// Gives traits to a new file of the caller. What cannot be given is cut, so that nobody may do more
// than before; a sentence for each. Throws Error when not even that can be done.
std::vector<std::string> GiveTraits(FileTraits const& traits, Descriptor const& file);

// A file as it was seen: contents, permissions and identity come from one descriptor, which stays
// open so that no other file can get the same identity.
class SeenFile {
public:
    // The item of that name in folder, or none. Waits for a program that has a lease on it. Throws
    // Error (kBusy) when the time is over, and Error, also for an item that is no regular file.
    static std::optional<SeenFile> Open(
        Descriptor const& folder,
        std::string const& name,
        Deadline deadline = Deadline(kUsualWait));

    std::string const& Bytes() const noexcept { return fBytes; }
    FileTraits const& Traits() const noexcept { return fTraits; }

    // Whether it is the same file.
    bool Is(Descriptor const& file) const { return IsSameFile(StatusOf(file), fStatus); }

    // Throws Error (kReadOnly) where the owner has no write permission or the caller may not write.
    // folder and name are those that it was opened by.
    void RequireWritable(Descriptor const& folder, std::string const& name) const;

    // Whether the item of that name is this file, with contents and permissions as they were seen.
    bool StandsAt(Descriptor const& folder, std::string const& name) const;

    // Whether a process has the file open for writing; false where the system does not say.
    bool HasWriter() const;

private:
    explicit SeenFile(Descriptor file);

    Descriptor fFile;
    std::string fBytes;
    FileTraits fTraits;
    struct stat fStatus {};
    bool fCanHaveLease = true;
};

} // namespace pdfsettings::detail
