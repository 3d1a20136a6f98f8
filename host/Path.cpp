#include "host/Path.h"

#include <algorithm>
#include <charconv>

namespace pdfsettings {

namespace {

// The length of the first part of path. A slash that begins a part belongs to it.
std::size_t PartSize(std::string_view path) {
    return std::min(path.find('/', 1), path.size());
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

} // namespace pdfsettings
