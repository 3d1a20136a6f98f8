// The administrator's preferences, for lists that explain them. The component reads the same file
// itself.
#pragma once

#include <map>
#include <string>

namespace pdfsettings::detail {

// Keys of the property list: the display names by application, and what is hidden.
inline constexpr char kDisplayNamesKey[] = "PDFSettings";
inline constexpr char kShowHideKey[] = "ShowHide";

class AdminPreferences {
public:
    // Reads the administrator's property list now. A missing or unusable one gives empty
    // preferences. Throws std::bad_alloc.
    static AdminPreferences Read();

    // The path of the property list; empty if its folder is missing.
    std::string const& File() const noexcept { return fFile; }

    // Whether the file exists but has no effect: it cannot be read, is not a property list, or its
    // root is not a dictionary.
    bool IsUnusable() const noexcept { return fIsUnusable; }

    // The administrator's settings folder: an absolute path in UTF-8 without a trailing slash. It
    // may not exist. Empty if the administrator disables it, or if the parent of the default folder
    // is missing.
    std::string const& SettingsFolder() const noexcept { return fSettingsFolder; }

    // The display names for an application (in UTF-8), by file name without extension.
    std::map<std::string, std::string> DisplayNames(std::string const& application) const;

private:
    using Names = std::map<std::string, std::string>;

    std::string fFile;
    bool fIsUnusable = false;
    std::string fSettingsFolder;
    std::map<std::string, Names> fNames; // by application
};

} // namespace pdfsettings::detail
