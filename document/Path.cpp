#include "pdfsettings/Path.h"

#include "format/SettingPath.h"

#include <utility>

namespace pdfsettings {

namespace {

Value const* AtPosition(Array const& array, std::string_view part) {
    std::size_t const position = format::PositionIn(part).value_or(array.Size());
    return position < array.Size() ? &array[position] : nullptr;
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
    std::string_view part = FirstPart(path);
    Value const* value = settings.Get(part);
    while (value != nullptr && part.size() < path.size()) {
        path.remove_prefix(part.size() + 1);
        part = FirstPart(path);
        value = Step(*value, part);
    }
    return value;
}

std::string_view FirstPart(std::string_view path) {
    return format::FirstPart(path);
}

std::string_view LastPart(std::string_view path) {
    return format::LastPart(path);
}

bool SetAt(Dictionary& settings, std::string_view path, Value value) {
    if (Value* const present = Find(settings, path)) {
        *present = std::move(value);
        return true;
    }
    std::string_view const parentPath = format::ParentPath(path);
    if (parentPath.empty()) {
        settings.Set(std::string(path), std::move(value));
        return true;
    }
    Value* const parent = Find(settings, parentPath);
    auto* const dictionary = parent == nullptr ? nullptr : parent->If<Dictionary>();
    if (dictionary != nullptr) {
        dictionary->Set(std::string(LastPart(path)), std::move(value));
    }
    return dictionary != nullptr;
}

bool RemoveAt(Dictionary& settings, std::string_view path) {
    std::string_view const parentPath = format::ParentPath(path);
    if (parentPath.empty()) {
        return settings.Remove(path);
    }
    Value* const parent = Find(settings, parentPath);
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
