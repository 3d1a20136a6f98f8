// The locations of settings and preferences, for every part that looks for them.
#pragma once

namespace SettingsPlaces {

// The settings folder, relative to the application support folder of a domain.
inline constexpr char kSettingsFolder[] = "/Ardeo/Ardeo PDF/Settings";

// The property lists of the user and of the administrator, relative to the preferences folder of
// their domain.
inline constexpr char kUserPreferences[] = "/com.ardeo.PDFSettings.plist";
inline constexpr char kAdminPreferences[] = "/com.ardeo.PDFAdminSettings.plist";

// A key in a property list. Its value is a string: the path of a folder that replaces
// kSettingsFolder.
inline constexpr char kPathKey[] = "PDFSettingsPath";

} // namespace SettingsPlaces
