// Changes of a settings text that leave all other bytes as they are: comments, order, number forms
// and line ends.
//
// None of them judges what comes out: whoever saves it reads it again first.
#pragma once

#include "pdfsettings/Document.h"
#include "pdfsettings/Export.h"

#include <optional>
#include <string>
#include <string_view>

namespace pdfsettings {

// The text of document with value, in the syntax of a settings file, at a path as in Find() of
// Path.h: in the place of the present value, or as a new last entry of the dictionary that the path
// leads to, with the indent and the line end of the entry before it. Nothing when there is no such
// dictionary or array element, and for a text that has no settings or is refused.
PDFSETTINGS_API std::optional<std::string>
WithValue(Document const& document, std::string_view path, std::string_view value);

// The same text without the entry or array element at a path, and without its line when nothing
// else stands there. All entries of that key go. Nothing when there is no such entry.
PDFSETTINGS_API std::optional<std::string> Without(Document const& document, std::string_view path);

} // namespace pdfsettings
