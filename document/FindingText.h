// What is said about faults in settings texts: what is wrong, and what to write instead.
#pragma once

#include <string>
#include <string_view>

namespace pdfsettings::detail {

// Whether a whole number begins with a 0 that makes it octal.
bool IsOctal(std::string_view number) noexcept;

// Whether a whole number has more digits than its value keeps.
bool IsInexact(std::string_view number, double value);

// Whether a string goes over lines that begin with keys.
bool LooksLikeEntries(std::string_view string) noexcept;

// Whether a string has a bracket without a backslash before it.
bool HasBracket(std::string_view string) noexcept;

// Whether a string ends in backslashes the last of which looks like that of an escaped bracket.
bool EndsInOddBackslashes(std::string_view string) noexcept;

// The texts, from the bytes at fault.
std::string PrologText();
std::string KeywordText(std::string_view found);
std::string DuplicateText(std::string_view key);
std::string EmptyDictionaryText(std::size_t depth);
// name: what stands before it as the value of the last key, if that is a name.
std::string StrayText(std::string_view stray, std::string_view name);
std::string StrayBeforeEndText(std::string_view stray, std::string_view name);
std::string OctalText(std::string_view number, double value);
std::string InexactText(std::string_view number, double value);
std::string FarPointText(std::string_view number, double value);
std::string NestedBracketsText();
std::string StuckText(std::string_view token, std::string_view value);
std::string MissingValueText(std::string_view key);
std::string UnknownValueText(std::string_view found);
std::string SingleCloseText(std::string_view end);

} // namespace pdfsettings::detail
