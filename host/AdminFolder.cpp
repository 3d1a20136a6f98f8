// The administrator's settings folder, which no table of the component tells.
#include "host/SettingsList.h"

#include "api/SettingsPlaces.h"
#include "host/detail/CFRef.h"
#include "host/detail/FolderPath.h"
#include "platform/CFCollections.h"
#include "platform/CFPropertyList.h"
#include "platform/CFURL.h"
#include "platform/FileManager.h"

#include <climits>

namespace pdfsettings {

namespace {

using detail::CFRef;

// One of the administrator's folders; empty where it is missing.
std::string FindAdminFolder(UInt32 folderType) {
    FSRef folder;
    UInt8 path[PATH_MAX] = {};
    bool const isThere =
        FSFindFolder(kLocalDomain, folderType, kDontCreateFolder, &folder) == noErr &&
        FSRefMakePath(&folder, path, sizeof path) == noErr;
    return isThere ? reinterpret_cast<char const*>(path) : "";
}

CFRef<CFStringRef> MakeString(std::string const& text) {
    return CFRef<CFStringRef>(
        CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingMacRoman));
}

// The property list in a file; null where there is none. The path is taken for Mac Roman, as the
// component takes it.
CFRef<CFPropertyListRef> ReadPropertyList(std::string const& path) {
    CFRef<CFURLRef> const url(CFURLCreateWithFileSystemPath(
        kCFAllocatorDefault, MakeString(path).get(), kCFURLPOSIXPathStyle, /*isDirectory=*/0));
    CFDataRef bytes = nullptr;
    if (!url || CFURLCreateDataAndPropertiesFromResource(
                    kCFAllocatorDefault, url.get(), &bytes, nullptr, nullptr, nullptr) == 0) {
        return {};
    }
    CFRef<CFDataRef> const data(bytes);
    return CFRef<CFPropertyListRef>(CFPropertyListCreateFromXMLData(
        kCFAllocatorDefault, bytes, kCFPropertyListImmutable, nullptr));
}

// The path that a property list names, in UTF-8; nothing when it names none.
std::optional<std::string> PathIn(CFPropertyListRef list) {
    if (list == nullptr || CFGetTypeID(list) != CFDictionaryGetTypeID()) {
        return std::nullopt;
    }
    void const* const path = CFDictionaryGetValue(
        static_cast<CFDictionaryRef>(list), MakeString(SettingsPlaces::kPathKey).get());
    if (path == nullptr || CFGetTypeID(path) != CFStringGetTypeID()) {
        return std::nullopt;
    }
    return platform::BytesOf(static_cast<CFStringRef>(path), kCFStringEncodingUTF8).value_or("");
}

} // namespace

std::string SettingsList::AdminFolder() {
    std::string const preferences = FindAdminFolder(kPreferencesFolderType);
    if (!preferences.empty()) {
        auto const list = ReadPropertyList(preferences + SettingsPlaces::kAdminPreferences);
        if (auto const path = PathIn(list.get())) {
            return detail::FolderPath(*path);
        }
    }
    std::string const support = FindAdminFolder(kApplicationSupportFolderType);
    return support.empty() ? support : support + SettingsPlaces::kSettingsFolder;
}

} // namespace pdfsettings
