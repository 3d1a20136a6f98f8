// Schemas: what each setting may hold and what it is for.
#pragma once

#include "pdfsettings/Export.h"
#include "pdfsettings/Finding.h"
#include "pdfsettings/Sequence.h"
#include "pdfsettings/Value.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace pdfsettings {

namespace detail {
struct RuleData;
}

// What a schema says of one setting. Immutable; valid on its own.
class PDFSETTINGS_API Rule {
public:
    // There is no move: none is without its contents.
    Rule(Rule const&) noexcept = default;
    Rule& operator=(Rule const&) noexcept = default;
    ~Rule() = default;

    // The path of the setting, with "*" for any element of an array: "OtherNamespaces/*/Namespace".
    std::string const& Path() const noexcept;

    bool IsRequired() const noexcept;

    // The word of the schema language for what it holds: "boolean", "number", "integer", "name",
    // "string", "hexstring", "array", "dictionary", "any" or the name of a check; the same for the
    // elements of an array, empty where nothing is said of them.
    std::string const& KindName() const noexcept;
    std::string const& ElementKindName() const noexcept;

    // The kind of value; nothing where the word does not say one.
    std::optional<Kind> What() const noexcept;
    bool IsInteger() const noexcept;

    // How many elements an array has; the least and the greatest number.
    std::optional<double> Count() const noexcept;
    std::optional<double> Minimum() const noexcept;
    std::optional<double> Maximum() const noexcept;

    // The values that it may have, where these are named.
    std::span<Value const> Allowed() const noexcept;

    // The value that counts when the setting is missing; null where none is stated.
    Value const* Default() const noexcept;

    // What it is for, in one line; its name in a dialog, made of its key where the schema has none.
    std::string const& Help() const noexcept;
    std::string const& Label() const noexcept;

    // The label of the group that it is shown in, one of Schema::Groups; empty for none.
    std::string const& Group() const noexcept;

    // What may be written, in the syntax of a file: "one of /None, /All", "a whole number".
    std::string ExpectedText() const;

private:
    friend class Schema;

    PDFSETTINGS_LOCAL explicit Rule(std::shared_ptr<detail::RuleData const> data) noexcept;

    std::shared_ptr<detail::RuleData const> fData;
};

// A schema that the component can validate settings by. Immutable; copies share what was read.
class PDFSETTINGS_API Schema {
public:
    // The schema of the usual PDF conversion parameters, which is always there.
    static Schema const& Standard();

    // Reads text, which is in the runtime's object notation (docs/schema.md). Throws Error
    // (kSchema) with the first problem that Problems() has.
    static Schema Parse(std::string_view text);

    // Reads a file. Throws the same, and Error as ReadFile.
    static Schema Open(std::filesystem::path const& file);

    // Everything that is wrong with a schema, of more than 100 problems the first ones and how many
    // more; also where structures are nested more than 100 deep or describe more than 10,000
    // settings. A path is one of the schema, columns count bytes.
    static Findings Problems(std::string_view text);

    Schema(Schema const&) noexcept;
    Schema& operator=(Schema const&) noexcept;
    ~Schema();

    std::string const& Text() const noexcept;

    // A text that validates as Text() does, without comments, labels, descriptions, defaults and
    // groups: what to hand to the component, which reads it at each validation.
    std::string const& RulesText() const noexcept;

    // The settings of a set in the schema's order, each before those that are nested in it. A
    // structure within itself is not followed.
    std::span<Rule const> Rules() const noexcept;

    // The labels of the groups in their order, and the rules of one, in the order of the group.
    std::span<std::string const> Groups() const noexcept;
    Sequence<Rule> RulesOf(std::string_view group) const;

    // The rule for a setting, also for one in an array: that of "OtherNamespaces/*/Namespace" for
    // "OtherNamespaces/2/Namespace". Null when there is none.
    Rule const* Find(std::string_view path) const;

    // Whether the schema has no rule for a setting though it has one for others that stand beside
    // it: a misspelled key, perhaps. Where it leaves a dictionary open, nothing in it is unknown.
    bool IsUnknown(std::string_view path) const;

    // The key with the most similar name among those beside path, for "did you mean"; empty for
    // none.
    std::string Suggest(std::string_view path) const;

    // Whether the schema has a rule for anything in the dictionary or array of a path.
    bool HasRulesIn(std::string_view path) const;

private:
    friend class Settings;

    struct Data;

    PDFSETTINGS_LOCAL explicit Schema(std::shared_ptr<Data const> data) noexcept;

    std::shared_ptr<Data const> fData;
};

} // namespace pdfsettings
