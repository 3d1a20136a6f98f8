// How one value inside nested settings is named.
#pragma once

#include "pdfsettings/Export.h"
#include "pdfsettings/Value.h"

#include <string_view>

namespace pdfsettings {

// The value at a path of keys and array positions from 0, joined by slashes, as in
// "ColorImageDict/QFactor" or "OtherNamespaces/0/Namespace/1"; null when there is none. It is a
// part of settings. A slash that begins a key belongs to it, as it does in a file: "A//B" is the
// key "/B" in A.
PDFSETTINGS_API Value const* Find(Dictionary const& settings, std::string_view path);
PDFSETTINGS_API Value* Find(Dictionary& settings, std::string_view path);

// The first and the last key or position of a path.
PDFSETTINGS_API std::string_view FirstPart(std::string_view path);
PDFSETTINGS_API std::string_view LastPart(std::string_view path);

// Stores value at a path: in the dictionary that the path leads to, under a new key too, or in
// place of an element. False, and nothing is stored, when there is no such dictionary or element.
PDFSETTINGS_API bool SetAt(Dictionary& settings, std::string_view path, Value value);

// Takes the value at a path out; elements behind one in an array move up. False when there is none.
PDFSETTINGS_API bool RemoveAt(Dictionary& settings, std::string_view path);

} // namespace pdfsettings
