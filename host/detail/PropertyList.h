// Property lists as C++ values.
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
    std::vector<Entry> fEntries; // of an array or a dictionary; keys are empty in an array

    bool IsString() const noexcept { return fKind == Kind::kString; }
    bool IsArray() const noexcept { return fKind == Kind::kArray; }
    bool IsDictionary() const noexcept { return fKind == Kind::kDictionary; }

    // The value of key; null if there is none, and for a value that is not a dictionary.
    PropertyValue const* Find(std::string const& key) const;
};

struct PropertyValue::Entry {
    std::string fKey;
    PropertyValue fValue;
};

// The root of the property list in a file; nothing if the file cannot be used. Throws
// std::bad_alloc.
std::optional<PropertyValue> ReadPropertyList(std::filesystem::path const& file);

// The paths of the property lists of the administrator and the user, which may not exist; empty if
// their folder is missing.
std::filesystem::path AdminPreferencesFile();
std::filesystem::path UserPreferencesFile();

} // namespace pdfsettings::detail
