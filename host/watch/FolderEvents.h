// The system's notices of what happens in folders.
#pragma once

#include "host/save/SystemCalls.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>

namespace pdfsettings::detail {

// What is to be noticed in a folder.
enum class Notice {
    kNames,   // items come, go, and get other names
    kContents // files are written, and items get other permissions, too
};

// The number of a watched folder: of the folder itself, whatever its path becomes.
using FolderNumber = int;

class FolderEvents {
public:
    // Throws Error.
    FolderEvents();

    int Number() const noexcept { return fEvents.Number(); }

    // Watches a folder from now on, for all that was asked for it so far. Nothing where there is no
    // such folder, or this user may not read it. Throws Error where the system takes no more.
    std::optional<FolderNumber> Watch(std::filesystem::path const& folder, Notice notice);

    void Forget(FolderNumber folder) noexcept;

    // Tells of some events that are waiting, in their order. name is the item of the folder, empty
    // where the folder itself can no longer be watched. No number: the system lost events. Throws
    // Error.
    using Listener = std::function<void(std::optional<FolderNumber>, std::string_view name)>;
    void Read(Listener const& listener);

private:
    Descriptor fEvents;
};

} // namespace pdfsettings::detail
