// A file as it was seen: its contents, permissions and attributes.
#pragma once

#include "host/save/Target.h"
#include "pdfsettings/SafeSave.h"

#include <cerrno>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace pdfsettings::detail {

// Opening a pipe that replaced a file must not wait for the other end of the pipe.
inline constexpr int kReadingAtOnce = O_RDONLY | O_NONBLOCK | O_NOCTTY;

// The result of open, which opens a file without blocking. If another program has a lease on the
// file, the system asks it to release the lease, and this waits. Throws Error (kBusy) if it does
// not.
template <class Open>
Descriptor OpenWithoutWaiting(Deadline deadline, Open open) {
    Descriptor file = open();
    while (!file.IsOpen() && errno == EWOULDBLOCK) {
        if (!deadline.Pause()) {
            throw Error(
                Fault::kBusy, "another program does not release its lease on it; try again");
        }
        file = open();
    }
    return file;
}

// The metadata that a replacement takes from the old file. Capabilities, integrity data, trusted
// attributes and set-id bits are excluded: new contents must not get rights that were granted to
// the old ones.
struct FileTraits {
    mode_t mode = 0; // permissions without set-id bits
    uid_t owner = 0;
    gid_t group = 0;
    std::string accessList;      // in the system's format; empty if the mode is sufficient
    bool hasForeignList = false; // a list of another kind, which cannot be kept
    std::vector<std::pair<std::string, std::string>> attributes; // "user." and security labels

    bool operator==(FileTraits const&) const = default;
};

// Gives traits to a new file of the caller. What cannot be given is restricted, so that no user
// gets more access than before. Returns a sentence for each restriction. Throws Error if even that
// fails.
std::vector<std::string> GiveTraits(FileTraits const& traits, Descriptor const& file);

// A file as it was seen. Contents, permissions and identity come from one descriptor, which stays
// open so that no other file can get the same identity.
class SeenFile {
public:
    // The file of that name in folder; nothing if there is none. Waits for a program that has a
    // lease on it. Throws Error (kBusy) when the time is over, and Error, also for a file that is
    // not regular.
    static std::optional<SeenFile> Open(
        Descriptor const& folder,
        std::string const& name,
        Deadline deadline = Deadline(kUsualWait));

    std::string const& Bytes() const noexcept { return fBytes; }
    FileTraits const& Traits() const noexcept { return fTraits; }

    // Whether file is the same file.
    bool Is(Descriptor const& file) const { return IsSameFile(StatusOf(file), fStatus); }

    // Throws Error (kReadOnly) if the owner has no write permission, or the caller may not write.
    // folder and name: as passed to Open.
    void RequireWritable(Descriptor const& folder, std::string const& name) const;

    // Whether the item of that name is this file, with the same contents and metadata as seen.
    bool IsAt(Descriptor const& folder, std::string const& name) const;

    // Whether a process has the file open for writing; false if the system cannot say.
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
