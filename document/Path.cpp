#include "pdfsettings/Path.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace pdfsettings {

namespace {

// The length of the first part of path. A slash that begins a part belongs to it.
std::size_t PartSize(std::string_view path) {
    return std::min(path.find('/', 1), path.size());
}

// The length of a path without its last part; 0 for a path of one part.
std::size_t ParentSize(std::string_view path) {
    std::size_t parentSize = 0;
    for (std::size_t size = PartSize(path); size < path.size();) {
        parentSize = size;
        size += 1 + PartSize(path.substr(size + 1));
    }
    return parentSize;
}

Value const* AtPosition(Array const& array, std::string_view part) {
    std::size_t position = 0;
    char const* const end = part.data() + part.size();
    auto const [stop, error] = std::from_chars(part.data(), end, position);
    bool const isPosition = error == std::errc() && stop == end && position < array.Size();
    return isPosition ? &array[position] : nullptr;
}

Value const* Step(Value const& value, std::string_view part) {
    if (auto const* const dictionary = value.If<Dictionary>()) {
        return dictionary->Get(part);
    }
    auto const* const array = value.If<Array>();
    return array == nullptr ? nullptr : AtPosition(*array, part);
}

} // namespace

Value const* Find(Dictionary const& settings, std::string_view path) {
    std::size_t size = PartSize(path);
    Value const* value = settings.Get(path.substr(0, size));
    while (value != nullptr && size < path.size()) {
        path.remove_prefix(size + 1);
        size = PartSize(path);
        value = Step(*value, path.substr(0, size));
    }
    return value;
}

std::string_view FirstPart(std::string_view path) {
    return path.substr(0, PartSize(path));
}

std::string_view LastPart(std::string_view path) {
    std::size_t const parentSize = ParentSize(path);
    return parentSize == 0 ? path : path.substr(parentSize + 1);
}

bool SetAt(Dictionary& settings, std::string_view path, Value value) {
    if (Value* const present = Find(settings, path)) {
        *present = std::move(value);
        return true;
    }
    std::size_t const parentSize = ParentSize(path);
    if (parentSize == 0) {
        settings.Set(std::string(path), std::move(value));
        return true;
    }
    Value* const parent = Find(settings, path.substr(0, parentSize));
    auto* const dictionary = parent == nullptr ? nullptr : parent->If<Dictionary>();
    if (dictionary != nullptr) {
        dictionary->Set(std::string(LastPart(path)), std::move(value));
    }
    return dictionary != nullptr;
}

bool RemoveAt(Dictionary& settings, std::string_view path) {
    std::size_t const parentSize = ParentSize(path);
    if (parentSize == 0) {
        return settings.Remove(path);
    }
    Value* const parent = Find(settings, path.substr(0, parentSize));
    std::string_view const last = LastPart(path);
    if (parent == nullptr) {
        return false;
    }
    if (auto* const dictionary = parent->If<Dictionary>()) {
        return dictionary->Remove(last);
    }
    auto* const array = parent->If<Array>();
    Value const* const element = array == nullptr ? nullptr : AtPosition(*array, last);
    if (element != nullptr) {
        array->Remove(static_cast<std::size_t>(element - &(*array)[0]));
    }
    return element != nullptr;
}

Value* Find(Dictionary& settings, std::string_view path) {
    // The value belongs to settings, which the caller may change.
    return const_cast<Value*>(Find(std::as_const(settings), path));
}

} // namespace pdfsettings
