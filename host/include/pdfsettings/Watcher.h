// Which settings files change while a program runs.
#pragma once

#include "pdfsettings/Export.h"
#include "pdfsettings/Sequence.h"

#include <filesystem>
#include <memory>

namespace pdfsettings {

// Reports to a program's event loop that files changed. It has no thread of its own and never
// waits.
//
// What programs of this machine do is seen: a file is written and closed, replaced, made, removed
// or renamed, or gets other permissions; so are folders and links on the way to it. A file may be
// reported although it is as it was. What is not seen: what other machines do in a folder of a
// network, bytes that a program writes before it closes the file, and a file system that is mounted
// over a folder.
//
// Threads: a watcher is used by one thread at a time.
class PDFSETTINGS_API Watcher {
public:
    // Throws Error with the system's reason, as for more watchers than the system gives a user.
    Watcher();
    Watcher(Watcher const&) = delete;
    Watcher& operator=(Watcher const&) = delete;
    ~Watcher();

    // Watches a file. Neither it nor its folder need exist. A relative path starts in the current
    // folder of now. Throws Error with the system's reason, as for more folders than the system
    // lets a user watch; then the file may be watched or not.
    void Add(std::filesystem::path const& file);

    // Watches the settings files in a folder, which need not exist. Throws as Add.
    void AddFolder(std::filesystem::path const& folder);

    // Watches what List() is made of: the settings files in the administrator's and in the user's
    // folder, and the preferences of both, wherever they lead. Throws as Add, and as UserFolder.
    void AddListed();

    // Readable as long as there is something for Read to report, for poll() and its kind. It
    // belongs to the watcher.
    int Descriptor() const noexcept;

    // What may have changed since the last call, as absolute paths, sorted and each once: files
    // that were added, files in watched folders, and a watched folder where all of it is to be
    // looked at again. When so much happened that the system lost count, that is all that was
    // added. Empty when there is nothing to report. Throws Error with the system's reason, and then
    // the next call reports what this one would have.
    Sequence<std::filesystem::path> Read();

private:
    struct State;

    std::unique_ptr<State> fState;
};

} // namespace pdfsettings
