#include "tools/joboptions/Assignment.h"

#include "host/Error.h"
#include "host/Path.h"
#include "host/Settings.h"
#include "tools/joboptions/Failure.h"
#include "tools/joboptions/Utf8.h"

#include <cctype>
#include <fmt/format.h>
#include <optional>

namespace joboptions {

using pdfsettings::Array;
using pdfsettings::Dictionary;
using pdfsettings::Value;

namespace {

// Says what is wrong with one assignment.
class BadAssignment : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The value of an entry /key [ value ], as the component reads it; none if it reads anything else.
// Inside an array nothing is passed over that is no value.
std::optional<Value> ReadEntry(
    pdfsettings::Component const& component, std::string const& key, std::string const& value) {
    std::string const text = "<<\n/" + key + " [ " + value + "\n]\n>> setalembicorparams\n";
    try {
        Dictionary const entries = pdfsettings::Settings::FromText(component, text).Values();
        Value const* const entry = entries.Size() == 1 ? entries.Get(key) : nullptr;
        auto const* const array = entry == nullptr ? nullptr : entry->If<Array>();
        return array != nullptr && array->Size() == 1 ? std::optional((*array)[0]) : std::nullopt;
    } catch (pdfsettings::Error const&) {
        return std::nullopt;
    }
}

Value ReadValue(
    pdfsettings::Component const& component, std::string const& key, std::string const& text) {
    if (!ReadEntry(component, key, "true")) {
        throw BadAssignment("this cannot be the key of a setting");
    }
    if (auto value = ReadEntry(component, key, text)) {
        return *value;
    }
    std::string message = fmt::format(
        "cannot read the value \"{}\"; expected true, false, a number, /Name, (text), <FEFF>, "
        "[ … ] or << … >>",
        VisibleText(text));
    if (!text.empty() && std::isalpha(static_cast<unsigned char>(text.front())) != 0 &&
        ReadEntry(component, key, "/" + text)) {
        message += fmt::format("; did you mean /{}?", VisibleText(text));
    }
    throw BadAssignment(message);
}

// Puts value into changes, which first take over the top-level value that it lies in.
void Apply(std::string const& path, Value value, Dictionary const& settings, Dictionary& changes) {
    std::string const topKey(pdfsettings::FirstPart(path));
    Value const* const current = settings.Get(topKey);
    if (topKey != path && changes.Get(topKey) == nullptr && current != nullptr) {
        changes.Set(topKey, *current);
    }
    if (!SetAt(changes, path, std::move(value))) {
        throw BadAssignment("there is no such place in the settings");
    }
}

void ReadAssignment(
    pdfsettings::Component const& component,
    Dictionary const& settings,
    std::string const& assignment,
    Dictionary& changes) {
    std::size_t const sign = assignment.find('=');
    std::string const path = assignment.substr(0, sign);
    if (sign == std::string::npos) {
        throw BadAssignment("expected KEY=VALUE");
    }
    if (path == pdfsettings::kTailKey) {
        throw BadAssignment("this is what follows the settings in their file, not a setting");
    }
    std::string const key(pdfsettings::LastPart(path));
    Value value = ReadValue(component, key, assignment.substr(sign + 1));
    Apply(path, std::move(value), settings, changes);
}

} // namespace

Dictionary ReadAssignments(
    pdfsettings::Component const& component,
    Dictionary const& settings,
    std::vector<std::string> const& assignments) {
    Dictionary changes;
    std::string faults;
    for (std::string const& assignment : assignments) {
        try {
            ReadAssignment(component, settings, assignment, changes);
        } catch (BadAssignment const& fault) {
            std::string const key = VisibleText(assignment.substr(0, assignment.find('=')));
            faults += fmt::format("{}{}: {}", faults.empty() ? "" : "\n", key, fault.what());
        }
    }
    if (!faults.empty()) {
        throw Failure(Status::kWrongCall, faults);
    }
    return changes;
}

} // namespace joboptions
