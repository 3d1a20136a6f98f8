#include "pdfsettings/AdminPreferences.h"

#include "api/SettingsPlaces.h"
#include "host/detail/FilePath.h"
#include "platform/CFPropertyList.h"
#include "platform/CFURL.h"
#include "platform/FileManager.h"

#include <optional>
#include <unistd.h>
#include <vector>

namespace pdfsettings {

namespace {

using detail::CFRef;

// The component takes no longer paths of folders, their terminator included.
constexpr UInt32 kPathSize = 1024;

constexpr char kDisplayNamesKey[] = "PDFSettings";

// One of the administrator's folders; empty where it is missing.
std::string FindAdminFolder(UInt32 folderType) {
    FSRef folder;
    UInt8 path[kPathSize] = {};
    bool const isThere =
        FSFindFolder(kLocalDomain, folderType, kDontCreateFolder, &folder) == noErr &&
        FSRefMakePath(&folder, path, sizeof path) == noErr;
    return isThere ? reinterpret_cast<char const*>(path) : "";
}

CFRef<CFStringRef> MakeString(std::string const& text) {
    return CFRef<CFStringRef>(
        CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingMacRoman));
}

// The property list in a file; null where there is none.
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

// value if it is of that type, else null.
template <class Ref>
Ref As(void const* value, CFTypeID type) {
    bool const isOfType = value != nullptr && CFGetTypeID(value) == type;
    return isOfType ? static_cast<Ref>(value) : nullptr;
}

// A string in UTF-8; nothing for a value of another type.
std::optional<std::string> TextOf(void const* value) {
    auto const* const string = As<CFStringRef>(value, CFStringGetTypeID());
    return string == nullptr
               ? std::nullopt
               : std::optional(platform::BytesOf(string, kCFStringEncodingUTF8).value_or(""));
}

void const* ValueUnder(CFDictionaryRef dictionary, char const* key) {
    return CFDictionaryGetValue(dictionary, MakeString(key).get());
}

// The path that a property list names; nothing when it names none.
std::optional<std::string> PathIn(CFDictionaryRef list) {
    auto path = TextOf(ValueUnder(list, SettingsPlaces::kPathKey));
    if (path && path->starts_with("\xEF\xBB\xBF")) {
        path->erase(0, 3);
    }
    return path;
}

// Pairs up to the first element that is no string. The first pair for a file counts.
std::map<std::string, std::string> PairsIn(CFArrayRef names) {
    std::map<std::string, std::string> pairs;
    for (CFIndex i = 0; i + 1 < CFArrayGetCount(names); i += 2) {
        auto const file = TextOf(CFArrayGetValueAtIndex(names, i));
        auto const shown = TextOf(CFArrayGetValueAtIndex(names, i + 1));
        if (!file || !shown) {
            break;
        }
        pairs.emplace(*file, *shown);
    }
    return pairs;
}

std::map<std::string, std::map<std::string, std::string>> NamesIn(CFDictionaryRef list) {
    std::map<std::string, std::map<std::string, std::string>> names;
    auto const* const applications =
        As<CFDictionaryRef>(ValueUnder(list, kDisplayNamesKey), CFDictionaryGetTypeID());
    if (applications == nullptr) {
        return names;
    }
    std::vector<void const*> keys(static_cast<std::size_t>(CFDictionaryGetCount(applications)));
    CFDictionaryGetKeysAndValues(applications, keys.data(), nullptr);
    for (void const* const key : keys) {
        auto const* const array =
            As<CFArrayRef>(CFDictionaryGetValue(applications, key), CFArrayGetTypeID());
        if (array != nullptr) {
            names.emplace(TextOf(key).value_or(""), PairsIn(array));
        }
    }
    return names;
}

} // namespace

AdminPreferences AdminPreferences::Read() {
    AdminPreferences preferences;
    std::string const folder = FindAdminFolder(kPreferencesFolderType);
    std::optional<std::string> path;
    if (!folder.empty()) {
        preferences.fFile = folder + SettingsPlaces::kAdminPreferences;
        auto const root = ReadPropertyList(preferences.fFile);
        auto const* const list = As<CFDictionaryRef>(root.get(), CFDictionaryGetTypeID());
        preferences.fIsUnusable = list == nullptr && access(preferences.fFile.c_str(), F_OK) == 0;
        if (list != nullptr) {
            path = PathIn(list);
            preferences.fNames = NamesIn(list);
        }
    }
    if (path) {
        preferences.fSettingsFolder = detail::FolderPath(*path);
        return preferences;
    }
    std::string const support = FindAdminFolder(kApplicationSupportFolderType);
    preferences.fSettingsFolder =
        support.empty() ? support : support + SettingsPlaces::kSettingsFolder;
    return preferences;
}

AdminPreferences::Names AdminPreferences::DisplayNames(std::string const& application) const {
    auto const found = fNames.find(application);
    return found == fNames.end() ? Names() : found->second;
}

} // namespace pdfsettings
