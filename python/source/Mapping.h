// The protocol of a read-only mapping, for classes with settings in them.
#pragma once

#include "pdfsettings/Document.h"
#include "python/source/Conversion.h"

#include <pybind11/pybind11.h>

namespace pdfsettings::python {

// A view of collections.abc, such as KeysView, of a mapping.
inline py::object ViewOf(char const* name, py::object const& mapping) {
    return py::module_::import("collections.abc").attr(name)(mapping);
}

inline py::object MappingType() {
    return py::module_::import("collections.abc").attr("Mapping");
}

template <class T, class... Options, class DocumentOf>
void AddLookup(py::class_<T, Options...>& type, DocumentOf documentOf) {
    type.def(
        "__getitem__",
        [=](T& self, Key const& path) {
            Document const document = documentOf(self);
            return ToPython(document.At(path.fText));
        },
        py::arg("path"),
        "The stored value at a path: keys, and positions from 0 in arrays, joined by slashes, as "
        "in \"ColorImageDict/QFactor\". Raises NoValueError, a KeyError, if there is none.");
    type.def(
        "__contains__",
        [=](T& self, py::object const& path) {
            Document const document = documentOf(self);
            auto const key = KeyOf(path);
            return key && document.Values().Find(*key) != nullptr;
        },
        py::arg("path"),
        "Whether a value is stored at a path; a default does not count.");
    type.def(
        "get",
        [=](T& self, Key const& path, py::object fallback) {
            Document const document = documentOf(self);
            Value const* const value = document.Values().Find(path.fText);
            return value == nullptr ? std::move(fallback) : ToPython(*value);
        },
        py::arg("path"),
        py::arg("default") = py::none(),
        "The stored value at a path, or else default.");
    type.def(
        "as_dict",
        [=](T& self) {
            Document const document = documentOf(self);
            return ToPython(document.Values());
        },
        "All stored settings as a dict, in their order. Faster than dict(settings).");
}

template <class T, class... Options, class DocumentOf>
void AddIteration(py::class_<T, Options...>& type, DocumentOf documentOf) {
    type.def(
        "__len__",
        [=](T& self) {
            Document const document = documentOf(self);
            return document.Values().size();
        },
        "The number of stored settings, without those nested in them.");
    type.def(
        "__iter__",
        [=](T& self) {
            Document const document = documentOf(self);
            py::list keys;
            for (auto const& [key, value] : document.Values()) {
                keys.append(KeyToPython(key));
            }
            return py::iter(keys);
        },
        "The keys of the stored settings, as they are now, in their order.");
    type.def(
        "keys",
        [](py::object const& self) { return ViewOf("KeysView", self); },
        "The keys of the stored settings.");
    type.def(
        "values",
        [](py::object const& self) { return ViewOf("ValuesView", self); },
        "The values of the stored settings.");
    type.def(
        "items",
        [](py::object const& self) { return ViewOf("ItemsView", self); },
        "The keys and values of the stored settings.");
}

// Makes a class a collections.abc.Mapping from paths to values. documentOf(T&) returns the Document
// with the values.
template <class T, class... Options, class DocumentOf>
void AddMapping(py::class_<T, Options...>& type, DocumentOf documentOf) {
    AddLookup(type, documentOf);
    AddIteration(type, documentOf);
    type.def(
        "__eq__",
        [=](T& self, py::object const& other) -> py::object {
            Document const document = documentOf(self);
            if (py::isinstance<T>(other)) {
                Document const with = documentOf(py::cast<T&>(other));
                return py::bool_(document.Values() == with.Values());
            }
            if (!py::isinstance(other, MappingType())) {
                return py::reinterpret_borrow<py::object>(Py_NotImplemented);
            }
            return py::bool_(ToPython(document.Values()).equal(py::dict(other)));
        },
        py::arg("other"),
        "Whether other is a mapping of equal values, in any order.");
    MappingType().attr("register")(type);
}

} // namespace pdfsettings::python
