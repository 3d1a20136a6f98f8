// What the administrator of this machine laid down, for the lists that explain it. The component
// itself reads the same file and acts on it.
#pragma once

#include <map>
#include <string>

namespace pdfsettings::detail {

// In a property list: a dictionary of display names by application, and one of what it hides.
inline constexpr char kDisplayNamesKey[] = "PDFSettings";
inline constexpr char kShowHideKey[] = "ShowHide";

class AdminPreferences {
public:
    // Reads the administrator's property list now. One that is missing or cannot be used lays
    // nothing down. Throws std::bad_alloc.
    static AdminPreferences Read();

    // The path of the property list; empty where the folder for it is missing.
    std::string const& File() const noexcept { return fFile; }

    // There is such a file, and it counts as missing: it cannot be read, is no property list, or
    // its root is no dictionary.
    bool IsUnusable() const noexcept { return fIsUnusable; }

    // The administrator's settings folder, absolute, in UTF-8 and without a slash at its end; it
    // need not exist. Empty where the administrator wants none, and where the folder that the
    // standard one lies in is missing.
    std::string const& SettingsFolder() const noexcept { return fSettingsFolder; }

    // The display names that an application uses, by the files' own names without their extension.
    // application is UTF-8.
    std::map<std::string, std::string> DisplayNames(std::string const& application) const;

private:
    using Names = std::map<std::string, std::string>;

    std::string fFile;
    bool fIsUnusable = false;
    std::string fSettingsFolder;
    std::map<std::string, Names> fNames; // by application
};

} // namespace pdfsettings::detail
