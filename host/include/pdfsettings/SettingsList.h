// Lists of settings files.
#pragma once

#include "pdfsettings/Export.h"
#include "pdfsettings/Sequence.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

namespace pdfsettings {

namespace detail {
class ListReader;
struct ListedData;
} // namespace detail

enum class Origin { kAdministrator, kUser };

// An application that is named as showing or hiding the settings. Applications that are not named
// show them.
struct Visibility {
    std::string application;
    bool isShown = true;
};

// A settings file in the administrator's or the user's folder. Immutable; copies share their
// contents.
class PDFSETTINGS_API ListedSettings {
public:
    // Not movable: every item has its contents.
    ListedSettings(ListedSettings const&) noexcept = default;
    ListedSettings& operator=(ListedSettings const&) noexcept = default;
    ~ListedSettings() = default;

    // The name to show, in UTF-8: the file name without its extension, or a display name.
    std::string const& Name() const noexcept;

    std::string const& FileName() const noexcept;
    std::filesystem::path const& Path() const noexcept; // absolute
    Origin From() const noexcept;
    bool IsReadOnly() const noexcept;
    std::chrono::sys_seconds Modified() const noexcept; // last change of its contents

    // Whether the requested application hides it.
    bool IsHidden() const noexcept;

    // The applications that are named as hiding or showing it.
    std::span<Visibility const> Applications() const noexcept;

    // With ListOptions::withDetails: all reasons why it is read-only, one sentence each, and the
    // files with the same name that are not listed.
    std::span<std::string const> ReadOnlyReasons() const noexcept;
    std::span<std::filesystem::path const> Shadowed() const noexcept;

private:
    friend class detail::ListReader;

    PDFSETTINGS_LOCAL explicit ListedSettings(
        std::shared_ptr<detail::ListedData const> data) noexcept;

    std::shared_ptr<detail::ListedData const> fData;
};

// What List lists, and for which application.
struct ListOptions {
    // The application whose display names apply, in UTF-8; empty for the names of the files.
    std::string application = {};
    bool withHidden = false;  // also settings that the application hides
    bool withDetails = false; // see ListedSettings; slower
};

// The settings files of both folders, read now and sorted by name. Of files with the same name, the
// administrator's is listed. A folder that cannot be read adds nothing. Throws Error as
// Component::Shared.
//
// Threads: many threads may read lists at once.
PDFSETTINGS_API Sequence<ListedSettings> List(ListOptions const& options = {});

// The user's settings folder, which is created if it is missing; empty if the system has none.
// Throws as List.
PDFSETTINGS_API std::filesystem::path UserFolder();

// The administrator's settings folder, which may not exist; empty if the administrator disables it,
// or if the parent of the default folder is missing.
PDFSETTINGS_API std::filesystem::path AdministratorFolder();

// The path of the administrator's preferences, a property list, which may not exist.
PDFSETTINGS_API std::filesystem::path AdministratorPreferences();

// A problem of the preferences or of a settings folder.
struct PreferencesProblem {
    std::filesystem::path file; // the property list, or the folder
    std::string key;            // a path of keys joined by slashes; may be empty
    std::string message;        // what has no effect, and what to write
};

// Entries without an effect, or with another one than they seem to have, in the property lists of
// the administrator and the user; and settings folders that cannot be read. Throws as UserFolder.
PDFSETTINGS_API Sequence<PreferencesProblem> CheckPreferences();

// The path of the administrator's preferences, a property list, if it exists but cannot be used: it
// then has no effect. Otherwise empty.
PDFSETTINGS_API std::filesystem::path UnusablePreferences();

} // namespace pdfsettings
