// The system's events for watched folders.
#pragma once

#include "host/save/SystemCalls.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>

namespace pdfsettings::detail {

// The events to watch for in a folder.
enum class Notice {
    kNames,   // items are created, removed and renamed, and permissions change
    kContents // also: files are written
};

// Identifies a watched folder, even if its path changes.
using FolderNumber = int;

class FolderEvents {
public:
    // Throws Error.
    FolderEvents();

    int Number() const noexcept { return fEvents.Number(); }

    // Watches a folder for this notice and those requested before. Nothing if the folder does not
    // exist or the user may not read it. Throws Error if the system's limit is reached.
    std::optional<FolderNumber> Watch(std::filesystem::path const& folder, Notice notice);

    void Forget(FolderNumber folder) noexcept;

    // Calls listener for waiting events, in order; there may be more. name: the item in the folder,
    // empty if the folder itself can no longer be watched. No folder number: the system lost
    // events. Throws Error.
    using Listener = std::function<void(std::optional<FolderNumber>, std::string_view name)>;
    void Read(Listener const& listener);

private:
    Descriptor fEvents;
};

} // namespace pdfsettings::detail
