// Schemas: the values that each setting may have, and what it is for.
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
struct ConstraintData;
struct RuleData;
class ConstraintCheck;
} // namespace detail

// The rule of a schema for one setting. Immutable; does not depend on its Schema.
class PDFSETTINGS_API Rule {
public:
    // Not movable: every rule has its contents.
    Rule(Rule const&) noexcept = default;
    Rule& operator=(Rule const&) noexcept = default;
    ~Rule() = default;

    // The path of the setting, with "*" for every position of an array:
    // "OtherNamespaces/*/Namespace".
    std::string const& Path() const noexcept;

    bool IsRequired() const noexcept;

    // The schema's word for the kind of value: "boolean", "number", "integer", "name", "string",
    // "hexstring", "array", "dictionary", "any" or the name of a check; and the word for the
    // elements of an array, empty if the schema does not restrict them.
    std::string const& KindName() const noexcept;
    std::string const& ElementKindName() const noexcept;

    // The kind of value; nothing if the word does not determine it.
    std::optional<Kind> What() const noexcept;
    bool IsInteger() const noexcept;

    // The number of elements of an array; the minimum and the maximum of a number.
    std::optional<double> Count() const noexcept;
    std::optional<double> Minimum() const noexcept;
    std::optional<double> Maximum() const noexcept;

    // The allowed values, if the schema lists them.
    std::span<Value const> Allowed() const noexcept;

    // The value that applies if the setting is missing; null if the schema states none.
    Value const* Default() const noexcept;

    // A description in one line; and the name in a dialog, derived from the key if the schema has
    // none.
    std::string const& Help() const noexcept;
    std::string const& Label() const noexcept;

    // The label of the setting's group, one of Schema::Groups; empty if it has no group.
    std::string const& Group() const noexcept;

    // The values that may be written, in the syntax of a file: "one of /None, /All", "a whole
    // number".
    std::string ExpectedText() const;

private:
    friend class Schema;

    PDFSETTINGS_LOCAL explicit Rule(std::shared_ptr<detail::RuleData const> data) noexcept;

    std::shared_ptr<detail::RuleData const> fData;
};

// A rule of a schema between settings. Immutable; does not depend on its Schema.
class PDFSETTINGS_API Constraint {
public:
    // Not movable: every constraint has its contents.
    Constraint(Constraint const&) noexcept = default;
    Constraint& operator=(Constraint const&) noexcept = default;
    ~Constraint() = default;

    // Whether settings that violate it are rejected, or advised against.
    Severity Level() const noexcept;

    // The paths of the settings that it is about, those to change first at the beginning.
    std::span<std::string const> Paths() const noexcept;

    // What must hold, with values in the syntax of a file: "CompatibilityLevel is at least 1.5
    // where GrayImageAutoFilterStrategy is /JPEG2000"; and why, empty if the schema does not say.
    std::string const& Text() const noexcept;
    std::string const& Help() const noexcept;

private:
    friend class Schema;

    PDFSETTINGS_LOCAL explicit Constraint(
        std::shared_ptr<detail::ConstraintData const> data) noexcept;

    std::shared_ptr<detail::ConstraintData const> fData;
};

// A schema for validating settings. Immutable; copies share their contents.
class PDFSETTINGS_API Schema {
public:
    // The schema of the usual PDF conversion parameters, which is built in.
    static Schema const& Standard();

    // Reads text in the runtime's object notation (docs/schema.md). Throws Error (kSchema) with the
    // first problem that Problems() reports.
    static Schema Parse(std::string_view text);

    // Reads a file. Throws as Parse, and Error as ReadFile.
    static Schema Open(std::filesystem::path const& file);

    // All problems of a schema; of more than 100, the first ones and the number of the others.
    // Nesting of more than 100 structures and more than 10,000 settings are problems too. Paths are
    // those in the schema, columns count bytes.
    static Findings Problems(std::string_view text);

    Schema(Schema const&) noexcept;
    Schema& operator=(Schema const&) noexcept;
    ~Schema();

    std::string const& Text() const noexcept;

    // A text that validates each setting as Text() does, without comments, labels, descriptions,
    // defaults, groups and constraints. The component gets this text, since it reads its schema at
    // each validation.
    std::string const& RulesText() const;

    // The rules in the schema's order, each before those nested in it. A structure nested in itself
    // is listed once.
    std::span<Rule const> Rules() const noexcept;

    // The rules between settings, in the schema's order.
    std::span<Constraint const> Constraints() const noexcept;

    // Those about the setting at a path.
    Sequence<Constraint> ConstraintsOf(std::string_view path) const;

    // The labels of the groups in their order, and the rules of one group in its order.
    std::span<std::string const> Groups() const noexcept;
    Sequence<Rule> RulesOf(std::string_view group) const;

    // The rule for a setting, also inside arrays: for "OtherNamespaces/2/Namespace" it is the rule
    // for "OtherNamespaces/*/Namespace". Null if there is none.
    Rule const* Find(std::string_view path) const;

    // The rules whose path, label, description or group have all words of text, in any letter case,
    // with any ending, in British or American spelling: "compression of grey images". What is said
    // of the settings that a description names, and of those around a nested one, counts too.
    Sequence<Rule> Search(std::string_view text) const;

    // The rules whose path matches a pattern, in any letter case, in British or American spelling:
    // * is any text, ? any letter.
    Sequence<Rule> Matching(std::string_view pattern) const;

    // The label of the group of that name in any letter case and spelling, with blanks or hyphens
    // between its words; empty if there is none.
    std::string FindGroup(std::string_view name) const;

    // Whether the schema has no rule for a setting but has rules for others beside it: perhaps the
    // key is misspelled. Nothing is unknown in a dictionary that the schema does not restrict.
    bool IsUnknown(std::string_view path) const;

    // The most similar key beside path, for "did you mean"; empty if none is similar.
    std::string Suggest(std::string_view path) const;

    // Whether the schema has a rule for anything inside the dictionary or array at path.
    bool HasRulesIn(std::string_view path) const;

private:
    friend class Settings;
    friend class detail::ConstraintCheck;

    struct Data;

    PDFSETTINGS_LOCAL explicit Schema(std::shared_ptr<Data const> data) noexcept;

    std::shared_ptr<Data const> fData;
};

} // namespace pdfsettings
