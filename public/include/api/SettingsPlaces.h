// Where settings and preferences lie, for all who have to find them.
#pragma once

namespace SettingsPlaces {

// The folder of settings, below the application support folder of a domain.
inline constexpr char kSettingsFolder[] = "/Ardeo/Ardeo PDF/Settings";

// The property lists of the user and of the administrator, below the preferences folder of their
// domain.
inline constexpr char kUserPreferences[] = "/com.ardeo.PDFSettings.plist";
inline constexpr char kAdminPreferences[] = "/com.ardeo.PDFAdminSettings.plist";

// In a property list: a string, the path of a folder that takes the place of kSettingsFolder.
inline constexpr char kPathKey[] = "PDFSettingsPath";

} // namespace SettingsPlaces
