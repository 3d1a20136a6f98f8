// The classes of pdfsettings._types, and what is made of them.
#pragma once

#include "pdfsettings/Error.h"
#include "pdfsettings/Finding.h"
#include "pdfsettings/SafeSave.h"
#include "pdfsettings/Schema.h"

#include <optional>
#include <pybind11/pybind11.h>
#include <string_view>

namespace pdfsettings::python {

namespace py = pybind11;

// Imports the classes. To be called once, before all other functions of this folder.
void ImportTypes();

// A class of pdfsettings._types by its name. REQUIRES: there is one.
py::handle Type(char const* name);

// The class of names, and that of hexadecimal strings.
py::handle NameType();
py::handle HexStringType();

// A value of an enumeration by its word.
py::object EnumValue(char const* type, char const* word);

// None if there is no position.
py::object PlaceRecord(std::optional<Place> const& place, FilePath const& file);
py::tuple SpanRecord(Span const& span);

// A finding as a Problem, and several as a tuple. file: that of their text, or empty.
py::object ProblemRecord(Finding const& finding, FilePath const& file);
py::tuple Problems(Findings const& findings, FilePath const& file);

py::object RuleRecord(Rule const& rule);
py::object ConstraintRecord(Constraint const& constraint);

// Makes error the current error of Python.
void SetError(Error const& error);

// Throws ValidationError with what the schema rejects. REQUIRES: findings is not empty.
[[noreturn]] void ThrowRejected(Findings const& findings, FilePath const& file);

// A tuple of what make returns for each item.
template <class Items, class Make>
py::tuple TupleOf(Items const& items, Make make) {
    py::list list;
    for (auto const& item : items) {
        list.append(make(item));
    }
    return py::tuple(list);
}

} // namespace pdfsettings::python
