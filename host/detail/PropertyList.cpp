#include "host/detail/PropertyList.h"

#include "api/SettingsPlaces.h"
#include "host/detail/FilePath.h"
#include "platform/CFPropertyList.h"
#include "platform/CFURL.h"
#include "platform/FileManager.h"

#include <algorithm>

namespace pdfsettings::detail {

namespace {

CFRef<CFPropertyListRef> ReadObjects(std::string const& path) {
    CFRef<CFStringRef> const name(
        CFStringCreateWithCString(kCFAllocatorDefault, path.c_str(), kCFStringEncodingMacRoman));
    CFRef<CFURLRef> const url(CFURLCreateWithFileSystemPath(
        kCFAllocatorDefault, name.get(), kCFURLPOSIXPathStyle, /*isDirectory=*/0));
    CFDataRef bytes = nullptr;
    if (!url || CFURLCreateDataAndPropertiesFromResource(
                    kCFAllocatorDefault, url.get(), &bytes, nullptr, nullptr, nullptr) == 0) {
        return {};
    }
    CFRef<CFDataRef> const data(bytes);
    return CFRef<CFPropertyListRef>(CFPropertyListCreateFromXMLData(
        kCFAllocatorDefault, bytes, kCFPropertyListImmutable, nullptr));
}

std::string TextOf(void const* string) {
    return platform::BytesOf(static_cast<CFStringRef>(string), kCFStringEncodingUTF8).value_or("");
}

// Recursive: property lists have at most 64 levels.
PropertyValue ValueOf(void const* object) {
    CFTypeID const type = CFGetTypeID(object);
    if (type == CFStringGetTypeID()) {
        return {PropertyValue::Kind::kString, TextOf(object), {}};
    }
    PropertyValue value;
    if (type == CFArrayGetTypeID()) {
        auto const* const array = static_cast<CFArrayRef>(object);
        value.fKind = PropertyValue::Kind::kArray;
        for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
            value.fEntries.push_back({"", ValueOf(CFArrayGetValueAtIndex(array, i))});
        }
    } else if (type == CFDictionaryGetTypeID()) {
        auto const* const dictionary = static_cast<CFDictionaryRef>(object);
        auto const count = static_cast<std::size_t>(CFDictionaryGetCount(dictionary));
        std::vector<void const*> keys(count);
        std::vector<void const*> values(count);
        CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
        value.fKind = PropertyValue::Kind::kDictionary;
        for (std::size_t i = 0; i < count; ++i) {
            value.fEntries.push_back({TextOf(keys[i]), ValueOf(values[i])});
        }
    }
    return value;
}

std::filesystem::path FileIn(SInt16 domain, char const* name) {
    std::string const folder = platform::StandardFolder(domain, kPreferencesFolderType);
    return folder.empty() ? folder : folder + name;
}

} // namespace

PropertyValue const* PropertyValue::Find(std::string const& key) const {
    auto const found = std::ranges::find(fEntries, key, &Entry::fKey);
    return IsDictionary() && found != fEntries.end() ? &found->fValue : nullptr;
}

std::optional<PropertyValue> ReadPropertyList(std::filesystem::path const& file) {
    auto const root = ReadObjects(file.string());
    return root ? std::optional(ValueOf(root.get())) : std::nullopt;
}

std::filesystem::path AdminPreferencesFile() {
    return FileIn(kLocalDomain, SettingsPlaces::kAdminPreferences);
}

std::filesystem::path UserPreferencesFile() {
    return FileIn(kUserDomain, SettingsPlaces::kUserPreferences);
}

} // namespace pdfsettings::detail
