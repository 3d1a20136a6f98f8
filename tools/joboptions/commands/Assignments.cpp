#include "tools/joboptions/commands/Assignments.h"

#include "pdfsettings/Document.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/Path.h"
#include "pdfsettings/Settings.h"
#include "tools/joboptions/commands/Output.h"
#include "tools/joboptions/text/KnownKeys.h"
#include "tools/joboptions/text/Utf8.h"
#include "tools/joboptions/text/ValueText.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>
#include <map>
#include <optional>
#include <stdexcept>
#include <strings.h>

namespace joboptions {

using pdfsettings::Array;
using pdfsettings::Dictionary;
using pdfsettings::SettingRule;
using pdfsettings::Value;

namespace {

// Says what is wrong with one assignment.
class BadAssignment : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A file with the single entry /key [ value ].
std::string EntryFile(std::string const& key, std::string const& value) {
    return "<<\n/" + key + " [ " + value + "\n]\n>> setalembicorparams\n";
}

// A value that can be read, without blanks and comments around it.
std::string BareText(std::string const& value) {
    pdfsettings::Document const document(EntryFile("K", value));
    auto const* const element = document.Find("K/0");
    return element == nullptr ? value
                              : document.Text().substr(element->value.begin, element->value.Size());
}

// The value of an entry /key [ value ], as the component reads it; none if it reads anything else.
// Inside an array nothing is passed over that is no value.
std::optional<Value> ReadEntry(
    pdfsettings::Component const& component, std::string const& key, std::string const& value) {
    try {
        Dictionary const entries =
            pdfsettings::Settings::FromText(component, EntryFile(key, value)).Values();
        auto const* const array = entries.Size() == 1 ? As<Array>(entries.Get(key)) : nullptr;
        return array != nullptr && array->Size() == 1 ? std::optional((*array)[0]) : std::nullopt;
    } catch (pdfsettings::Error const&) {
        return std::nullopt;
    }
}

// What a value of the kind looks like in a file; empty for a kind with several forms.
std::string FormOf(std::string const& kind) {
    static std::map<std::string, std::string> const kForms{
        {"boolean", "true or false"},
        {"number", "a number"},
        {"integer", "a whole number"},
        {"name", "/Name"},
        {"string", "(text)"},
        {"hexstring", "<FEFF>"},
        {"array", "[ … ]"},
        {"dictionary", "<< … >>"}};
    auto const form = kForms.find(kind);
    return form == kForms.end() ? "" : form->second;
}

std::string ExpectedText(SettingRule const* rule) {
    if (rule != nullptr && !rule->allowed.empty()) {
        return "one of " + CommaList(rule->allowed);
    }
    std::string const form = rule == nullptr ? "" : FormOf(rule->kind);
    return form.empty() ? "true, false, a number, /Name, (text), <FEFF>, [ … ] or << … >>" : form;
}

// Reads what is assigned to the settings of a file.
class AssignmentReader {
public:
    AssignmentReader(
        pdfsettings::Component const& component,
        Dictionary const& settings,
        std::vector<SettingRule> const& rules)
        : fComponent(component),
          fSettings(settings),
          fRules(rules) {}

    // Throws BadAssignment.
    void Read(std::string const& assignment, Assignments& result) const {
        std::size_t const sign = assignment.find('=');
        std::string const path = assignment.substr(0, sign);
        if (sign == std::string::npos) {
            throw BadAssignment("expected KEY=VALUE");
        }
        if (path == pdfsettings::kTailKey) {
            throw BadAssignment("this is what follows the settings in their file, not a setting");
        }
        RequireKey(path);
        std::string const text = assignment.substr(sign + 1);
        Apply(path, ReadValue(path, text), result.fChanges);
        result.fTexts.push_back({path, BareText(text)});
    }

private:
    // In a file a slash stands before each key, which here is none of it.
    void RequireKey(std::string const& path) const {
        std::string_view const last = pdfsettings::LastPart(path);
        bool const isSlashed = last.starts_with('/') && Find(fSettings, path) == nullptr;
        if (isSlashed || last.empty()) {
            throw BadAssignment(
                "this cannot be the key of a setting" +
                (last.size() > 1 ? fmt::format(
                                       "; write {}{} without the slash",
                                       VisibleText(path.substr(0, path.size() - last.size())),
                                       VisibleText(last.substr(1)))
                                 : std::string()));
        }
    }

    Value ReadValue(std::string const& path, std::string const& text) const {
        std::string const key(pdfsettings::LastPart(path));
        if (!ReadEntry(fComponent, key, "true")) {
            throw BadAssignment("this cannot be the key of a setting");
        }
        auto value = ReadEntry(fComponent, key, text);
        if (!value) {
            ThrowUnreadable(path, text);
        }
        // A value that is read otherwise than it looks is not what was asked for.
        pdfsettings::Document const document(EntryFile("K", text));
        if (!document.Findings().empty()) {
            throw BadAssignment(VisibleText(document.Findings().front().message));
        }
        return std::move(*value);
    }

    [[noreturn]] void ThrowUnreadable(std::string const& path, std::string const& text) const {
        SettingRule const* const rule = FindRule(path);
        throw BadAssignment(fmt::format(
            "cannot read the value \"{}\"; expected {}{}",
            VisibleText(text),
            ExpectedText(rule),
            MeantText(NameMeant(rule, text), "/")));
    }

    // The name that text would be with a slash and the right capitals; empty for none.
    std::string NameMeant(SettingRule const* rule, std::string const& text) const {
        bool const mayBeName = rule == nullptr || rule->kind == "name";
        bool const isWord = !text.empty() && std::isalpha(static_cast<unsigned char>(text[0])) != 0;
        if (!mayBeName || !isWord || !ReadEntry(fComponent, "K", "/" + text)) {
            return {};
        }
        return rule == nullptr || rule->allowed.empty() ? text : AllowedName(*rule, text);
    }

    static std::string AllowedName(SettingRule const& rule, std::string const& text) {
        for (Value const& value : rule.allowed) {
            auto const* const word = value.If<pdfsettings::Word>();
            if (word != nullptr && strcasecmp(word->text.c_str(), text.c_str()) == 0) {
                return word->text;
            }
        }
        return {};
    }

    SettingRule const* FindRule(std::string const& path) const {
        auto const rule = std::ranges::find(fRules, path, &SettingRule::key);
        return rule == fRules.end() ? nullptr : &*rule;
    }

    // Puts value into changes, which first take over the top-level value that it lies in.
    void Apply(std::string const& path, Value value, Dictionary& changes) const {
        std::string const topKey(pdfsettings::FirstPart(path));
        Value const* const current = fSettings.Get(topKey);
        if (topKey != path && changes.Get(topKey) == nullptr && current != nullptr) {
            changes.Set(topKey, *current);
        }
        if (!SetAt(changes, path, std::move(value))) {
            throw BadAssignment(fmt::format(
                "there is no such place in the settings; set the whole of {}",
                VisibleText(topKey)));
        }
    }

    pdfsettings::Component const& fComponent;
    Dictionary const& fSettings;
    std::vector<SettingRule> const& fRules;
};

} // namespace

Assignments ReadAssignments(
    pdfsettings::Component const& component,
    Dictionary const& settings,
    std::vector<SettingRule> const& rules,
    std::vector<std::string> const& assignments) {
    AssignmentReader const reader(component, settings, rules);
    Assignments result;
    std::vector<std::string> faults;
    for (std::string const& assignment : assignments) {
        try {
            reader.Read(assignment, result);
        } catch (BadAssignment const& fault) {
            std::string const key = VisibleText(assignment.substr(0, assignment.find('=')));
            faults.push_back(key + ": " + fault.what());
        }
    }
    FailIfAny(Status::kWrongCall, faults);
    return result;
}

} // namespace joboptions
