// Watching sets of settings for what users notice.
#pragma once

#include "pdfsettings/Export.h"
#include "pdfsettings/Sequence.h"

#include <filesystem>
#include <memory>
#include <string>

namespace pdfsettings {

// A kind of change that users notice.
enum class ChangeKind {
    kAdded,
    kChanged, // its contents
    kRemoved,
    kHidden, // from the application
    kShown,
    kReadOnly,
    kWritable,
    kLookAgain // the system lost events: what came and went meanwhile is not reported
};

// What has become of a file.
struct SettingsChange {
    ChangeKind kind;
    std::filesystem::path file; // absolute; empty for kLookAgain
    std::string name; // under which it is or was listed; else without folder and extension
};

// Compares sets of settings with what they were before. Like the Watcher that it uses, it has no
// thread of its own, never blocks, and is for one thread at a time.
class PDFSETTINGS_API ChangeWatcher {
public:
    // Throws Error as Watcher.
    ChangeWatcher();
    ChangeWatcher(ChangeWatcher const&) = delete;
    ChangeWatcher& operator=(ChangeWatcher const&) = delete;
    ~ChangeWatcher();

    // Watch a file; the settings files in a folder; and what List() lists, for an application or
    // without one. Neither files nor folders need exist. What is there now is no change. Throw as
    // Watcher; AddListed also as List.
    void Add(std::filesystem::path const& file);
    void AddFolder(std::filesystem::path const& folder);
    void AddListed(std::string const& application = {});

    // Readable while there may be something to report, as Watcher::Descriptor.
    int Descriptor() const noexcept;

    // What has changed since the last call, by file: of several changes of a file those that are
    // left. kLookAgain comes first. Throws as Watcher::Read, and as List.
    Sequence<SettingsChange> Read();

private:
    struct PDFSETTINGS_LOCAL State;

    std::unique_ptr<State> fState;
};

// Whether changes at path, or in the folder where it would be, may go unreported: other machines
// make them, or the system itself, as in a network file system, FUSE or /proc.
PDFSETTINGS_API bool MayMissChanges(std::filesystem::path const& path);

} // namespace pdfsettings
