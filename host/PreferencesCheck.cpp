#include "pdfsettings/SettingsList.h"

#include "api/SettingsPlaces.h"
#include "document/MakeSequence.h"
#include "document/Spelling.h"
#include "format/Tokens.h"
#include "host/detail/AdminPreferences.h"
#include "host/detail/PropertyList.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace pdfsettings {

namespace {

using detail::PropertyValue;

constexpr std::string_view kBlanks = " \t\r\n";

std::string Without(std::string_view blanks, std::string const& text) {
    std::size_t const begin = std::min(text.find_first_not_of(blanks), text.size());
    std::size_t const end = text.find_last_not_of(blanks);
    return end == std::string::npos ? std::string() : text.substr(begin, end + 1 - begin);
}

// "; did you mean …?", or empty.
std::string MeantText(std::string const& word, std::vector<std::string> const& choices) {
    std::string const meant = detail::Nearest(word, choices);
    return meant.empty() || meant == word ? "" : "; did you mean " + meant + "?";
}

// Why a folder cannot be used for settings; empty if it can.
std::string FolderProblem(std::filesystem::path const& folder) {
    if (access(folder.c_str(), R_OK | X_OK) != 0) {
        return std::generic_category().message(errno);
    }
    std::error_code error;
    return std::filesystem::is_directory(folder, error) ? "" : "it is not a folder";
}

void AddNamesIn(std::filesystem::path const& folder, std::vector<std::string>& names) {
    std::error_code error;
    std::filesystem::directory_iterator file(folder, error);
    for (; !error && file != std::filesystem::directory_iterator(); file.increment(error)) {
        std::filesystem::path const name = file->path().filename();
        if (name.extension() == format::kExtension) {
            names.push_back(name.stem().string());
        }
    }
}

// The names of the settings in both folders, without extension.
std::vector<std::string> OwnNames() {
    std::vector<std::string> names;
    for (auto const& folder : {AdministratorFolder(), UserFolder()}) {
        AddNamesIn(folder, names);
    }
    return names;
}

std::vector<std::string> KeysOf(PropertyValue const* dictionary) {
    std::vector<std::string> keys;
    if (dictionary != nullptr && dictionary->IsDictionary()) {
        for (auto const& [key, value] : dictionary->fEntries) {
            keys.push_back(key);
        }
    }
    return keys;
}

// Collects the problems of one property list.
class ListCheck {
public:
    ListCheck(std::filesystem::path file, std::vector<PreferencesProblem>& problems)
        : fFile(std::move(file)),
          fProblems(problems) {}

    void Run(bool isAdmins) {
        if (fFile.empty() || access(fFile.c_str(), F_OK) != 0) {
            return;
        }
        auto const list = detail::ReadPropertyList(fFile);
        if (!list || !list->IsDictionary()) {
            bool const isReadable = access(fFile.c_str(), R_OK) == 0;
            Add("",
                isReadable
                    ? "it is not an XML property list with a <dict> as its root, and has no effect"
                    : std::generic_category().message(errno) + ", and so it has no effect");
            return;
        }
        CheckKeys(*list, isAdmins);
        CheckPath(list->Find(SettingsPlaces::kPathKey));
        if (isAdmins) {
            fNames = OwnNames();
            CheckShowHide(*list);
            CheckDisplayNames(*list);
        }
    }

private:
    void Add(std::string const& key, std::string const& message) {
        fProblems.push_back({fFile, key, message});
    }

    void CheckKeys(PropertyValue const& list, bool isAdmins) {
        std::vector<std::string> known{SettingsPlaces::kPathKey};
        if (isAdmins) {
            known.insert(known.end(), {detail::kShowHideKey, detail::kDisplayNamesKey});
        }
        for (std::string const& key : KeysOf(&list)) {
            if (std::ranges::find(known, key) == known.end()) {
                Add(key, "this key has no effect here" + MeantText(key, known));
            }
        }
    }

    void CheckPath(PropertyValue const* value) {
        if (value == nullptr) {
            return;
        }
        std::string const key = SettingsPlaces::kPathKey;
        if (!value->IsString()) {
            Add(key, "it has no effect: write <string>/path/of/a/folder</string>");
            return;
        }
        std::string const& path = value->fText;
        std::string const problem = path.empty() ? "" : FolderProblem(path);
        if (path != Without(kBlanks, path)) {
            Add(key, "blanks and line ends belong to the path: write none around it");
        } else if (!path.empty() && !path.starts_with('/')) {
            Add(key, "the path is not absolute: begin it with a slash; ~ has no meaning in it");
        } else if (!problem.empty()) {
            Add(key, path + ": " + problem);
        }
    }

    // The dictionary of applications under key; null if there is none.
    PropertyValue const* Applications(PropertyValue const& list, char const* key) {
        PropertyValue const* const value = list.Find(key);
        if (value != nullptr && !value->IsDictionary()) {
            Add(key, "it has no effect: write a <dict> of applications");
            return nullptr;
        }
        return value;
    }

    // Tests whether an application is named elsewhere in the list too.
    void
    CheckApplication(std::string const& key, std::string const& name, PropertyValue const* others) {
        std::vector<std::string> const known = KeysOf(others);
        bool const isKnown = std::ranges::find(known, name) != known.end();
        std::string const hint = isKnown ? "" : MeantText(name, known);
        if (!hint.empty()) {
            Add(key, "no other entry names this application" + hint);
        }
    }

    void CheckFile(std::string const& key, std::string const& name) {
        bool const isAscii = std::ranges::all_of(
            name, [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
        if (std::ranges::find(fNames, name) == fNames.end()) {
            std::string own = name;
            bool const hasExtension = own.ends_with(format::kExtension);
            own.resize(own.size() - (hasExtension ? format::kExtension.size() : 0));
            Add(key,
                "neither folder has settings of this name" +
                    (hasExtension ? "; write " + own : MeantText(name, fNames)));
        } else if (!isAscii && key.starts_with(detail::kShowHideKey)) {
            Add(key, "names outside ASCII have no effect here");
        }
    }

    void CheckShowHide(PropertyValue const& list) {
        PropertyValue const* const applications = Applications(list, detail::kShowHideKey);
        if (applications == nullptr) {
            return;
        }
        for (auto const& [application, entries] : applications->fEntries) {
            std::string const key = std::string(detail::kShowHideKey) + "/" + application;
            CheckApplication(key, application, list.Find(detail::kDisplayNamesKey));
            if (!entries.IsDictionary()) {
                Add(key, "it has no effect: write a <dict> of files");
            }
            for (auto const& [file, value] : entries.fEntries) {
                CheckVisibility(key, file, value);
            }
        }
    }

    void CheckVisibility(std::string key, std::string const& file, PropertyValue const& value) {
        key += "/";
        key += file;
        bool const isNearlyZero = value.IsString() && Without(kBlanks, value.fText) == "0";
        if (!value.IsString()) {
            Add(key,
                "only a string hides: write <string>0</string>, or <string>1</string> to show");
        } else if (isNearlyZero && value.fText != "0") {
            Add(key, "only 0 without blanks hides: write <string>0</string>");
        }
        // "/" stands for all settings of the application.
        if (file != "/") {
            CheckFile(key, file);
        }
    }

    void CheckDisplayNames(PropertyValue const& list) {
        PropertyValue const* const applications = Applications(list, detail::kDisplayNamesKey);
        if (applications == nullptr) {
            return;
        }
        for (auto const& [application, names] : applications->fEntries) {
            std::string const key = std::string(detail::kDisplayNamesKey) + "/" + application;
            CheckApplication(key, application, list.Find(detail::kShowHideKey));
            if (!names.IsArray()) {
                Add(key, "it has no effect: write an <array> of strings, in pairs");
                continue;
            }
            CheckPairs(key, names.fEntries);
        }
    }

    void CheckPairs(std::string const& key, std::vector<PropertyValue::Entry> const& names) {
        std::map<std::string, std::string> files; // by display name
        for (std::size_t i = 0; i < names.size(); i += 2) {
            PropertyValue const& file = names[i].fValue;
            PropertyValue const* const shown =
                i + 1 < names.size() ? &names[i + 1].fValue : nullptr;
            std::string const path = key + "/" + std::to_string(i);
            if (!file.IsString() || (shown != nullptr && !shown->IsString())) {
                Add(path, "an element that is not a <string> ends the array: names come in pairs");
                return;
            }
            if (shown == nullptr) {
                Add(path, file.fText + " has no name to show: names come in pairs");
                return;
            }
            CheckFile(path, file.fText);
            auto const [former, isNew] = files.emplace(shown->fText, file.fText);
            if (!isNew && former->second != file.fText) {
                Add(path,
                    shown->fText + " is also the display name of " + former->second +
                        ": only one of the two is listed");
            }
        }
    }

    std::filesystem::path const fFile;
    std::vector<PreferencesProblem>& fProblems;
    std::vector<std::string> fNames; // of the settings in both folders
};

} // namespace

Sequence<PreferencesProblem> CheckPreferences() {
    std::vector<PreferencesProblem> problems;
    ListCheck(detail::AdminPreferencesFile(), problems).Run(/*isAdmins=*/true);
    ListCheck(detail::UserPreferencesFile(), problems).Run(/*isAdmins=*/false);
    for (auto const& folder : {AdministratorFolder(), UserFolder()}) {
        bool const isThere = !folder.empty() && access(folder.c_str(), F_OK) == 0;
        std::string const problem = isThere ? FolderProblem(folder) : "";
        if (!problem.empty()) {
            problems.push_back({folder, "", problem});
        }
    }
    return detail::MakeSequence::From(std::move(problems));
}

} // namespace pdfsettings
