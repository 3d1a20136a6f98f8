// Which settings there are.
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

// An application for which it is said whether it shows settings; others show them.
struct Visibility {
    std::string application;
    bool isShown = true;
};

// A settings file in the administrator's folder or in the user's. Immutable; copies share it.
class PDFSETTINGS_API ListedSettings {
public:
    // There is no move: none is without its contents.
    ListedSettings(ListedSettings const&) noexcept = default;
    ListedSettings& operator=(ListedSettings const&) noexcept = default;
    ~ListedSettings() = default;

    // The name to show, in UTF-8: the file's own without its extension, or a display name.
    std::string const& Name() const noexcept;

    std::string const& FileName() const noexcept;
    std::filesystem::path const& Path() const noexcept; // absolute
    Origin From() const noexcept;
    bool IsReadOnly() const noexcept;
    std::chrono::sys_seconds Modified() const noexcept; // when its contents changed last

    // Whether the application that was asked for hides it.
    bool IsHidden() const noexcept;

    // The applications that hide it, or show it although it was hidden.
    std::span<Visibility const> Applications() const noexcept;

    // Of a list with details: every reason why it is read-only, a sentence each, and the files that
    // are not listed since it has their name.
    std::span<std::string const> ReadOnlyReasons() const noexcept;
    std::span<std::filesystem::path const> Shadowed() const noexcept;

private:
    friend class detail::ListReader;

    PDFSETTINGS_LOCAL explicit ListedSettings(
        std::shared_ptr<detail::ListedData const> data) noexcept;

    std::shared_ptr<detail::ListedData const> fData;
};

struct ListOptions {
    // The application whose display names apply, in UTF-8; none for the files' own names.
    std::string application;
    bool withHidden = false;  // also what it hides
    bool withDetails = false; // which take more time
};

// The settings files of both folders, read anew and sorted by name; of files with one name the
// administrator's. A folder that cannot be read adds nothing. Throws Error as Component::Shared.
//
// Threads: lists may be read by many threads at once.
PDFSETTINGS_API Sequence<ListedSettings> List(ListOptions const& options = {});

// The user's settings folder, which is made where it is missing; empty where the system has none.
// Throws the same.
PDFSETTINGS_API std::filesystem::path UserFolder();

// The administrator's settings folder, which need not exist; empty where the administrator wants
// none, and where the folder that the standard one lies in is missing.
PDFSETTINGS_API std::filesystem::path AdministratorFolder();

// What is wrong with preferences or a folder of settings.
struct PreferencesProblem {
    std::filesystem::path file; // the property list or the folder
    std::string key;            // with those that it is nested in, joined by slashes; may be empty
    std::string message;        // what has no effect, and what to write
};

// What has no effect in the property lists of the administrator and of the user, or another one
// than it looks, and which settings folders cannot be read. Throws as UserFolder.
PDFSETTINGS_API Sequence<PreferencesProblem> CheckPreferences();

// The administrator's preferences, a property list, if they cannot be used: then they count as
// missing. Else empty.
PDFSETTINGS_API std::filesystem::path UnusablePreferences();

} // namespace pdfsettings
