// Watching settings files for changes.
#pragma once

#include "pdfsettings/Export.h"
#include "pdfsettings/Sequence.h"

#include <filesystem>
#include <memory>

namespace pdfsettings {

// Reports changed files to a program's event loop. It has no thread of its own and never blocks.
//
// It reports what programs on this machine do: a file is written and closed, replaced, created,
// removed or renamed, or its permissions change; the same for folders and links on its path. A file
// may be reported although its contents are the same. Not reported: changes by other machines on a
// network file system, bytes that are written before the file is closed, and file systems mounted
// over a folder.
//
// Threads: use a watcher on one thread at a time.
class PDFSETTINGS_API Watcher {
public:
    // Throws Error with the system's reason, for example if the user has too many watchers.
    Watcher();
    Watcher(Watcher const&) = delete;
    Watcher& operator=(Watcher const&) = delete;
    ~Watcher();

    // Watches a file. Neither the file nor its folder need exist. A relative path is resolved
    // against the current folder of this call. Throws Error with the system's reason, for example
    // if the user watches too many folders; the file may then be watched or not.
    void Add(std::filesystem::path const& file);

    // Watches the settings files in a folder, which need not exist. Throws as Add.
    void AddFolder(std::filesystem::path const& folder);

    // Watches everything that List() depends on: the settings files in both folders, and the
    // preferences of the administrator and the user, even if these select other folders later.
    // Throws as Add, and as UserFolder.
    void AddListed();

    // A descriptor for poll() and similar calls, readable while there is something for Read to
    // report. The watcher owns it.
    int Descriptor() const noexcept;

    // What may have changed since the last call, as absolute paths, sorted and without duplicates:
    // added files, files in watched folders, and a watched folder if all of it must be read again.
    // If the system lost events, everything that was added. Empty if there is nothing to report.
    // Throws Error with the system's reason; the next call then reports what this one would have.
    Sequence<std::filesystem::path> Read();

    // Whether the last Read reported everything because the system lost events.
    bool HasLost() const noexcept;

private:
    struct PDFSETTINGS_LOCAL State;

    std::unique_ptr<State> fState;
};

} // namespace pdfsettings
