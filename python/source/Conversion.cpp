#include "python/source/Conversion.h"

#include "python/source/Records.h"

#include <cmath>
#include <limits>
#include <optional>
#include <utility>

namespace pdfsettings::python {

namespace {

// All levels that every file may have; Python's own limit may be raised beyond any stack.
constexpr int kMaxDepth = 1000;

[[noreturn]] void Throw(PyObject* type, std::string const& message) {
    PyErr_SetObject(type, MessageToPython(message).ptr());
    throw py::error_already_set();
}

py::object Owned(PyObject* object) {
    if (object == nullptr) {
        throw py::error_already_set();
    }
    return py::reinterpret_steal<py::object>(object);
}

void RequireDepth(int depth) {
    if (depth > kMaxDepth) {
        Throw(PyExc_RecursionError, "a value has more than 1,000 levels, or contains itself");
    }
}

Py_ssize_t SizeOf(std::string_view bytes) {
    return static_cast<Py_ssize_t>(bytes.size());
}

py::object ToPython(Value const& value, int depth);

py::object ListOf(Array const& array, int depth) {
    RequireDepth(depth);
    py::list list(array.size());
    for (std::size_t i = 0; i < array.size(); ++i) {
        auto const index = static_cast<Py_ssize_t>(i);
        PyList_SET_ITEM(list.ptr(), index, ToPython(array[i], depth).release().ptr());
    }
    return list;
}

py::object DictOf(Dictionary const& values, int depth) {
    RequireDepth(depth);
    py::dict dict;
    for (auto const& [key, value] : values) {
        py::object const name = KeyToPython(key);
        if (PyDict_SetItem(dict.ptr(), name.ptr(), ToPython(value, depth).ptr()) != 0) {
            throw py::error_already_set();
        }
    }
    return dict;
}

py::object ToPython(Value const& value, int depth) {
    switch (value.What()) {
    case Kind::kBool:
        return py::bool_(value.Bytes() == "true");
    case Kind::kNumber:
        return NumberToPython(value.As<double>());
    case Kind::kName:
        return NameToPython(value.Bytes());
    case Kind::kString:
        return TextToPython(value.As<String>().text);
    case Kind::kHexString:
        return Owned(PyObject_CallOneArg(HexStringType().ptr(), KeyToPython(value.Bytes()).ptr()));
    case Kind::kArray:
        return ListOf(value.As<Array>(), depth + 1);
    case Kind::kDictionary:
        return DictOf(value.As<Dictionary>(), depth + 1);
    }
    Throw(PyExc_SystemError, "a value of an unknown kind");
}

// The bytes of a str; nothing, with an error of Python, if it has none.
std::optional<std::string> Encoded(py::handle text, char const* onError) {
    Py_ssize_t size = 0;
    if (char const* const bytes = PyUnicode_AsUTF8AndSize(text.ptr(), &size)) {
        return std::string(bytes, static_cast<std::size_t>(size));
    }
    PyErr_Clear();
    auto const encoded =
        py::reinterpret_steal<py::bytes>(PyUnicode_AsEncodedString(text.ptr(), "utf-8", onError));
    return encoded ? std::optional(std::string(encoded)) : std::nullopt;
}

std::string RequireEncoded(py::handle text, char const* onError) {
    auto bytes = Encoded(text, onError);
    if (!bytes) {
        throw py::error_already_set();
    }
    return std::move(*bytes);
}

std::string BytesOfObject(py::handle object) {
    return std::string(
        PyBytes_AS_STRING(object.ptr()), static_cast<std::size_t>(PyBytes_GET_SIZE(object.ptr())));
}

Value ToNumber(py::handle object) {
    int overflow = 0;
    long long const number = PyLong_AsLongLongAndOverflow(object.ptr(), &overflow);
    try {
        // Value rejects all integers that a file cannot hold.
        return overflow == 0 ? Value(number) : Value(std::numeric_limits<long long>::max());
    } catch (Error const& error) {
        throw Error(Fault::kUnwritable, error.Message());
    }
}

Value ToText(py::handle object) {
    if (py::isinstance(object, NameType())) {
        return Name{BytesOf(object)};
    }
    if (py::isinstance(object, HexStringType())) {
        return HexString{BytesOf(object)};
    }
    return String{RequireEncoded(object, "strict")};
}

Value ToValue(py::handle object, int depth);

bool IsInstance(py::handle object, char const* abstract) {
    return py::isinstance(object, py::module_::import("collections.abc").attr(abstract));
}

Value ToArray(py::handle object, int depth) {
    RequireDepth(depth);
    Array array;
    // A copy, which does not change while its values are converted.
    for (py::handle const element : py::tuple(py::reinterpret_borrow<py::object>(object))) {
        array.push_back(ToValue(element, depth));
    }
    return array;
}

// Of a mapping, which may change while its values are converted.
py::dict CopyOf(py::handle mapping) {
    if (PyDict_Check(mapping.ptr())) {
        return Owned(PyDict_Copy(mapping.ptr()));
    }
    return py::dict(py::reinterpret_borrow<py::object>(mapping));
}

std::string RequireKey(py::handle key) {
    if (!PyUnicode_Check(key.ptr())) {
        Throw(PyExc_TypeError, "a key is not a str: " + BytesOf(py::repr(key)));
    }
    return BytesOf(key);
}

Dictionary ToDictionary(py::handle object, int depth) {
    RequireDepth(depth);
    Dictionary values;
    for (auto const& [key, value] : CopyOf(object)) {
        values.SetKey(RequireKey(key), ToValue(value, depth));
    }
    return values;
}

Value ToValue(py::handle object, int depth) {
    PyObject* const raw = object.ptr();
    if (PyBool_Check(raw)) {
        return raw == Py_True;
    }
    if (PyLong_Check(raw)) {
        return ToNumber(object);
    }
    if (PyFloat_Check(raw)) {
        return PyFloat_AS_DOUBLE(raw);
    }
    if (PyUnicode_Check(raw)) {
        return ToText(object);
    }
    if (PyBytes_Check(raw)) {
        return String{BytesOfObject(object)};
    }
    if (PyDict_Check(raw) || IsInstance(object, "Mapping")) {
        return ToDictionary(object, depth + 1);
    }
    if (IsInstance(object, "Sequence") && !PyByteArray_Check(raw) && !PyMemoryView_Check(raw)) {
        return ToArray(object, depth + 1);
    }
    Throw(
        PyExc_TypeError,
        "a value is a bool, int, float, str, bytes, Name, HexString, list or dict, not " +
            std::string(Py_TYPE(raw)->tp_name));
}

} // namespace

py::object ToPython(Value const& value) {
    return ToPython(value, 0);
}

py::object ToPython(Dictionary const& values) {
    return DictOf(values, 0);
}

py::object NumberToPython(double number) {
    constexpr double kMost = 9007199254740992.0; // 2^53
    bool const isInteger = std::fabs(number) <= kMost && std::trunc(number) == number;
    return Owned(isInteger ? PyLong_FromDouble(number) : PyFloat_FromDouble(number));
}

py::object KeyToPython(std::string_view bytes) {
    return Owned(PyUnicode_DecodeUTF8(bytes.data(), SizeOf(bytes), "surrogateescape"));
}

py::object MessageToPython(std::string_view bytes) {
    return Owned(PyUnicode_DecodeUTF8(bytes.data(), SizeOf(bytes), "backslashreplace"));
}

py::object NameToPython(std::string_view bytes) {
    return Owned(PyObject_CallOneArg(NameType().ptr(), KeyToPython(bytes).ptr()));
}

py::object TextToPython(std::string_view bytes) {
    if (PyObject* const text = PyUnicode_DecodeUTF8(bytes.data(), SizeOf(bytes), "strict")) {
        return Owned(text);
    }
    if (PyErr_ExceptionMatches(PyExc_UnicodeDecodeError) == 0) {
        throw py::error_already_set();
    }
    PyErr_Clear();
    return Owned(PyBytes_FromStringAndSize(bytes.data(), SizeOf(bytes)));
}

py::object PathToPython(FilePath const& path) {
    if (path.empty()) {
        return py::none();
    }
    auto const& name = path.native();
    auto const text = Owned(PyUnicode_DecodeFSDefaultAndSize(name.data(), SizeOf(name)));
    return py::module_::import("pathlib").attr("Path")(text);
}

Value ToValue(py::handle object) {
    return ToValue(object, 0);
}

Value ToValueAt(std::string const& path, py::handle object) {
    try {
        return ToValue(object);
    } catch (Error const& error) {
        throw Error(error.Code(), path + ": " + error.Message());
    } catch (py::error_already_set& error) {
        if (error.matches(PyExc_TypeError) || error.matches(PyExc_ValueError) ||
            error.matches(PyExc_RecursionError)) {
            error.value().attr("add_note")(MessageToPython("in the setting " + path));
        }
        throw;
    }
}

Dictionary ToSettings(py::handle mapping) {
    if (!IsInstance(mapping, "Mapping")) {
        Throw(PyExc_TypeError, "the values are a mapping of keys; a text is for parse()");
    }
    Dictionary values;
    for (auto const& [key, value] : CopyOf(mapping)) {
        std::string const name = RequireKey(key);
        values.SetKey(name, ToValueAt(name, value));
    }
    return values;
}

std::string BytesOf(py::handle text) {
    if (PyBytes_Check(text.ptr())) {
        return BytesOfObject(text);
    }
    if (!PyUnicode_Check(text.ptr())) {
        Throw(
            PyExc_TypeError,
            "expected str or bytes, not " + std::string(Py_TYPE(text.ptr())->tp_name));
    }
    return RequireEncoded(text, "surrogateescape");
}

std::optional<std::string> KeyOf(py::handle object) {
    if (!PyUnicode_Check(object.ptr())) {
        return std::nullopt;
    }
    auto key = Encoded(object, "surrogateescape");
    PyErr_Clear();
    return key;
}

std::chrono::milliseconds ToWait(double seconds) {
    constexpr double kMost = 1e6;
    if (!(seconds >= 0 && seconds <= kMost)) {
        Throw(PyExc_ValueError, "the time to wait is from 0 to 1,000,000 seconds");
    }
    return std::chrono::milliseconds(static_cast<long long>(std::ceil(seconds * 1000)));
}

bool Load(py::handle source, Key& target) {
    bool const isText = PyUnicode_Check(source.ptr());
    if (isText) {
        target.fText = BytesOf(source);
    }
    return isText;
}

bool Load(py::handle source, Bytes& target) {
    bool const isText = PyUnicode_Check(source.ptr()) || PyBytes_Check(source.ptr());
    if (isText) {
        target.fText = BytesOf(source);
    }
    return isText;
}

bool Load(py::handle source, PathArgument& target) {
    bool const isPath = PyUnicode_Check(source.ptr()) || PyBytes_Check(source.ptr()) ||
                        py::hasattr(source, "__fspath__");
    if (!isPath) {
        return false;
    }
    PyObject* name = nullptr;
    if (PyUnicode_FSConverter(source.ptr(), &name) == 0) {
        throw py::error_already_set();
    }
    target.fPath = BytesOfObject(Owned(name));
    return true;
}

} // namespace pdfsettings::python
