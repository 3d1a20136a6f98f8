// The protocol of a read-only mapping, for classes with settings in them.
#pragma once

#include "python/source/Objects.h"

#include <pybind11/pybind11.h>

namespace pdfsettings::python {

// A view of collections.abc, such as KeysView, of a mapping.
inline py::object ViewOf(char const* name, py::object const& mapping) {
    return py::module_::import("collections.abc").attr(name)(mapping);
}

inline py::object MappingType() {
    return py::module_::import("collections.abc").attr("Mapping");
}

template <class T, class... Options, class SourceOf>
void AddLookup(py::class_<T, Options...>& type, SourceOf sourceOf) {
    type.def(
        "__getitem__",
        [=](T& self, Key const& path) {
            DocumentObject const source = sourceOf(self);
            return InFile(source.fFile, [&] { return ToPython(source.fDocument.At(path.fText)); });
        },
        py::arg("path"),
        "The stored value at a path: keys, and positions from 0 in arrays, joined by slashes, as "
        "in \"ColorImageDict/QFactor\". Raises NoValueError, a KeyError, if there is none.");
    type.def(
        "__contains__",
        [=](T& self, py::object const& path) {
            Document const document = sourceOf(self).fDocument;
            auto const key = KeyOf(path);
            return key && document.Values().Find(*key) != nullptr;
        },
        py::arg("path"),
        "Whether a value is stored at a path; a default does not count.");
    type.def(
        "get",
        [=](T& self, Key const& path, py::object fallback) {
            Document const document = sourceOf(self).fDocument;
            Value const* const value = document.Values().Find(path.fText);
            return value == nullptr ? std::move(fallback) : ToPython(*value);
        },
        py::arg("path"),
        py::arg("default") = py::none(),
        "The stored value at a path, or else default.");
    type.def(
        "as_dict",
        [=](T& self) {
            Document const document = sourceOf(self).fDocument;
            return ToPython(document.Values());
        },
        "All stored settings as a dict, in their order. Faster than dict(settings).");
}

template <class T, class... Options, class SourceOf>
void AddIteration(py::class_<T, Options...>& type, SourceOf sourceOf) {
    type.def(
        "__len__",
        [=](T& self) {
            Document const document = sourceOf(self).fDocument;
            return document.Values().size();
        },
        "The number of stored settings, without those nested in them.");
    type.def(
        "__iter__",
        [=](T& self) {
            Document const document = sourceOf(self).fDocument;
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

// Makes a class a collections.abc.Mapping from paths to values. sourceOf(T&) returns the
// DocumentObject with the values.
template <class T, class... Options, class SourceOf>
void AddMapping(py::class_<T, Options...>& type, SourceOf sourceOf) {
    AddLookup(type, sourceOf);
    AddIteration(type, sourceOf);
    type.def(
        "__eq__",
        [=](T& self, py::object const& other) -> py::object {
            Document const document = sourceOf(self).fDocument;
            if (py::isinstance<DocumentObject>(other) || py::isinstance<SettingsObject>(other)) {
                Document const with = ToDocument(other).fDocument;
                return py::bool_(document.Values() == with.Values());
            }
            if (!py::isinstance(other, MappingType())) {
                return py::reinterpret_borrow<py::object>(Py_NotImplemented);
            }
            return py::bool_(ToPython(document.Values()).equal(py::dict(other)));
        },
        py::arg("other"),
        "Whether other is a mapping of equal values, in any order.");
    type.attr("__reversed__") = py::none();
    MappingType().attr("register")(type);
}

} // namespace pdfsettings::python
