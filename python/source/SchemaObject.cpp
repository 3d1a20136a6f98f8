#include "python/source/Objects.h"

#include <string>

namespace pdfsettings::python {

namespace {

py::tuple RulesOf(auto const& rules) {
    return TupleOf(rules, &RuleRecord);
}

py::tuple ConstraintsOf(auto const& constraints) {
    return TupleOf(constraints, &ConstraintRecord);
}

void AddMaking(py::class_<Schema>& type) {
    type.def_static(
        "standard", [] { return Schema::Standard(); }, "The schema of the usual PDF settings.");
    type.def_static(
        "parse",
        [](Bytes const& text) { return Released([&] { return Schema::Parse(text.fText); }); },
        py::arg("text"),
        "A schema from its text. Raises SchemaError with the first of problems(text).");
    type.def_static(
        "open",
        [](PathArgument const& file) { return Released([&] { return Schema::Open(file.fPath); }); },
        py::arg("file"),
        "A schema from a file. Raises SchemaError, FileError and BusyError.");
    type.def_static(
        "problems",
        [](Bytes const& text) {
            return Problems(Released([&] { return Schema::Problems(text.fText); }), {});
        },
        py::arg("text"),
        "All problems of the text of a schema, a tuple of Problem; of more than 100 the first ones "
        "and the number of the others. Columns count bytes.");
}

void AddSearch(py::class_<Schema>& type) {
    type.def(
        "find",
        [](Schema const& self, Key const& path) {
            Rule const* const rule = self.Find(path.fText);
            return rule == nullptr ? py::none() : RuleRecord(*rule);
        },
        py::arg("path"),
        "The Rule for a setting, also inside arrays; None if there is none.");
    type.def(
        "search",
        [](Schema const& self, Key const& text) { return RulesOf(self.Search(text.fText)); },
        py::arg("text"),
        "The rules whose path, label, description or group have all words of text, a tuple of "
        "Rule: \"compression of grey images\".");
    type.def(
        "matching",
        [](Schema const& self, Key const& pattern) {
            return RulesOf(self.Matching(pattern.fText));
        },
        py::arg("pattern"),
        "The rules whose path matches a pattern, in any letter case, a tuple of Rule: * is any "
        "text, ? any letter.");
    type.def(
        "rules_of",
        [](Schema const& self, Key const& group) { return RulesOf(self.RulesOf(group.fText)); },
        py::arg("group"),
        "The rules of the group with a label, a tuple of Rule.");
    type.def(
        "find_group",
        [](Schema const& self, Key const& name) { return KeyToPython(self.FindGroup(name.fText)); },
        py::arg("name"),
        "The label of the group of that name in any letter case; empty if there is none.");
    type.def(
        "constraints_of",
        [](Schema const& self, Key const& path) {
            return ConstraintsOf(self.ConstraintsOf(path.fText));
        },
        py::arg("path"),
        "The rules between settings about the one at a path, a tuple of Constraint.");
    type.def(
        "is_unknown",
        [](Schema const& self, Key const& path) { return self.IsUnknown(path.fText); },
        py::arg("path"),
        "Whether there is no rule for a setting but there are rules for others beside it.");
    type.def(
        "suggest",
        [](Schema const& self, Key const& path) { return KeyToPython(self.Suggest(path.fText)); },
        py::arg("path"),
        "The most similar key beside path; empty if none is similar.");
    type.def(
        "has_rules_in",
        [](Schema const& self, Key const& path) { return self.HasRulesIn(path.fText); },
        py::arg("path"),
        "Whether there is a rule for anything inside the dictionary or array at path.");
}

} // namespace

void AddSchema(py::module_& module) {
    py::class_<Schema> type(
        module,
        "Schema",
        py::is_final(),
        "A schema: the values that each setting may have, and what it is for. Immutable. Made by "
        "standard(), parse() and open().");
    AddCopies(type);
    AddMaking(type);
    AddSearch(type);
    type.def_property_readonly(
        "text", [](Schema const& self) { return KeyToPython(self.Text()); }, "Its text, a str.");
    type.def_property_readonly(
        "rules",
        [](Schema const& self) { return RulesOf(self.Rules()); },
        "All rules in the schema's order, each before those nested in it, a tuple of Rule.");
    type.def_property_readonly(
        "constraints",
        [](Schema const& self) { return ConstraintsOf(self.Constraints()); },
        "The rules between settings, a tuple of Constraint.");
    type.def_property_readonly(
        "groups",
        [](Schema const& self) {
            return TupleOf(
                self.Groups(), [](std::string const& label) { return KeyToPython(label); });
        },
        "The labels of the groups in their order, a tuple of str.");
    Seal(type);
}

} // namespace pdfsettings::python
