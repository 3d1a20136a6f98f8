// Values, texts and paths of both languages.
#pragma once

#include "pdfsettings/SafeSave.h"
#include "pdfsettings/Value.h"

#include <chrono>
#include <optional>
#include <pybind11/pybind11.h>
#include <string>
#include <string_view>

namespace pdfsettings::python {

namespace py = pybind11;

// Values as Python values; see Value in pdfsettings._types. Throw RecursionError for more than
// 1,000 levels.
py::object ToPython(Value const& value);
py::object ToPython(Dictionary const& values);

// An int if it is whole and has no more than 53 bits, else a float.
py::object NumberToPython(double number);

// A str of keys and names: bytes that are not UTF-8 become surrogates.
py::object KeyToPython(std::string_view bytes);

// A str to show: bytes that are not UTF-8 are escaped.
py::object MessageToPython(std::string_view bytes);

// A Name, also for true and false, which are booleans as values.
py::object NameToPython(std::string_view bytes);

// A str if the bytes are UTF-8, else bytes.
py::object TextToPython(std::string_view bytes);

// A pathlib.Path; None if the path is empty.
py::object PathToPython(FilePath const& path);

// The value of a Python object: bool, int, float, str (a String), Name, HexString, bytes (a
// String), or a sequence or mapping of these. Throws TypeError for other objects, ValueError for a
// str that has no bytes, RecursionError for more than 1,000 levels, and Error (kUnwritable) for an
// integer beyond 2^53.
Value ToValue(py::handle object);
// The same for the setting at a path, or for those of a mapping. Errors name them.
Value ToValueAt(std::string const& path, py::handle object);
Dictionary ToSettings(py::handle mapping);

// The bytes of a str, with surrogates for bytes that are not UTF-8; or bytes as they are. Throws
// TypeError for other objects, ValueError for a str that has no bytes.
std::string BytesOf(py::handle text);

// The bytes of a str as a key; nothing for other objects, and for a str that has no bytes.
std::optional<std::string> KeyOf(py::handle object);

// Seconds as a time to wait. Throws ValueError outside of 0 to 1,000,000.
std::chrono::milliseconds ToWait(double seconds);

// Arguments of functions: a str such as a key; a str or bytes; a path as open() takes it.
struct Key {
    std::string fText;
};
struct Bytes {
    std::string fText;
};
struct PathArgument {
    FilePath fPath;
};

bool Load(py::handle source, Key& target);
bool Load(py::handle source, Bytes& target);
// Throws ValueError for a path with a zero byte.
bool Load(py::handle source, PathArgument& target);

} // namespace pdfsettings::python

namespace pybind11::detail {

template <>
struct type_caster<pdfsettings::python::Key> {
    PYBIND11_TYPE_CASTER(pdfsettings::python::Key, const_name("str"));
    bool load(handle source, bool) { // NOLINT(readability-identifier-naming)
        return pdfsettings::python::Load(source, value);
    }
};

template <>
struct type_caster<pdfsettings::python::Bytes> {
    PYBIND11_TYPE_CASTER(pdfsettings::python::Bytes, const_name("Union[str, bytes]"));
    bool load(handle source, bool) { // NOLINT(readability-identifier-naming)
        return pdfsettings::python::Load(source, value);
    }
};

template <>
struct type_caster<pdfsettings::python::PathArgument> {
    PYBIND11_TYPE_CASTER(
        pdfsettings::python::PathArgument, const_name("Union[str, bytes, os.PathLike]"));
    bool load(handle source, bool) { // NOLINT(readability-identifier-naming)
        return pdfsettings::python::Load(source, value);
    }
};

} // namespace pybind11::detail
