#include "host/Path.h"

#include <charconv>
#include <optional>

namespace pdfsettings {

namespace {

// Cuts the first part off path. None is left: path is nullopt afterwards.
std::string_view TakePart(std::optional<std::string_view>& path) {
    std::size_t const end = path->find('/', 1);
    std::string_view const part = path->substr(0, end);
    if (end == std::string_view::npos) {
        path.reset();
    } else {
        path->remove_prefix(end + 1);
    }
    return part;
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
    std::optional<std::string_view> rest(path);
    Value const* value = settings.Get(TakePart(rest));
    while (value != nullptr && rest) {
        value = Step(*value, TakePart(rest));
    }
    return value;
}

} // namespace pdfsettings
