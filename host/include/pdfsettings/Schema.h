// Schemas: what each setting may hold and what it is for.
#pragma once

#include "pdfsettings/Error.h"
#include "pdfsettings/Export.h"
#include "pdfsettings/Value.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pdfsettings {

class Component;

// A fault of a schema and its place in the text: line and column from 1, the column in bytes.
struct SchemaFault {
    unsigned long line;
    unsigned long column;
    std::string message;
};

// Says that a schema cannot be used. what() is the first fault, with its place.
class PDFSETTINGS_API SchemaError : public Error {
public:
    // REQUIRES: faults is not empty.
    explicit SchemaError(std::vector<SchemaFault> faults);

    std::vector<SchemaFault> const& Faults() const noexcept { return fFaults; }

private:
    std::vector<SchemaFault> fFaults;
};

// What a schema says of one setting. What it does not say is empty.
struct SettingRule {
    std::string key; // the path; a slash before a nested setting, "[]" for any element of an array
    bool isRequired = false;
    std::string kind;    // a kind of the schema language or the name of a check
    std::string element; // the kind of an array's elements
    std::optional<double> count;
    std::optional<double> least;
    std::optional<double> greatest;
    std::vector<Value> allowed;
    std::optional<Value> standard; // the value that counts when the setting is missing
    std::string help;
};

// A schema that the component can judge settings by. A value, independent of the component.
class PDFSETTINGS_API Schema {
public:
    // Reads text, which is in the runtime's object notation. Throws SchemaError with the faults
    // that were found (of more than 100 the first ones, and how many more), also where structures
    // are nested more than 100 deep or describe more than 10,000 settings, and Error when memory
    // runs out.
    static Schema FromText(Component const& component, std::string text);

    // The schema of the usual PDF conversion parameters, which is always there.
    static std::string_view StandardText() noexcept;

    // The text, to be given to Settings.
    std::string const& Text() const noexcept { return fText; }

    // The settings of a set in the schema's order, each before those that are nested in it. A
    // structure within itself is not followed.
    std::vector<SettingRule> const& Settings() const& noexcept { return fSettings; }
    std::vector<SettingRule> Settings() && { return std::move(fSettings); }

private:
    Schema(std::string text, std::vector<SettingRule> settings);

    std::string fText;
    std::vector<SettingRule> fSettings;
};

} // namespace pdfsettings
