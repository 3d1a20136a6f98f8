// Property lists as plain values.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace pdfsettings::detail {

struct PropertyValue {
    struct Entry;
    enum class Kind { kString, kArray, kDictionary, kOther };

    Kind fKind = Kind::kOther;
    std::string fText;           // of a string, in UTF-8
    std::vector<Entry> fEntries; // of an array without keys

    bool IsString() const noexcept { return fKind == Kind::kString; }
    bool IsArray() const noexcept { return fKind == Kind::kArray; }
    bool IsDictionary() const noexcept { return fKind == Kind::kDictionary; }

    // The value under key; null for none, and for what is no dictionary.
    PropertyValue const* Find(std::string const& key) const;
};

struct PropertyValue::Entry {
    std::string fKey;
    PropertyValue fValue;
};

// The root of the property list in a file; nothing where there is none that can be used. Throws
// std::bad_alloc.
std::optional<PropertyValue> ReadPropertyList(std::filesystem::path const& file);

// The property lists of the administrator and of the user, whether they exist or not; empty where
// there is no folder for one.
std::filesystem::path AdminPreferencesFile();
std::filesystem::path UserPreferencesFile();

} // namespace pdfsettings::detail
