#include "document/FindingText.h"

#include "format/NumberText.h"

#include <utility>

namespace pdfsettings::detail {

namespace {

constexpr std::string_view kDigits = "0123456789";

// As much of a text as tells which one is meant.
std::string Shown(std::string_view text) {
    constexpr std::size_t kMost = 60;
    return text.size() <= kMost ? std::string(text) : std::string(text.substr(0, kMost)) + "…";
}

std::string Quoted(std::string_view text) {
    return "\"" + Shown(text) + "\"";
}

// The number without the zeros that make it octal.
std::string Decimal(std::string_view number) {
    bool const isNegative = number.starts_with('-');
    std::size_t const first = number.find_first_not_of("-0");
    std::string const digits(first == std::string_view::npos ? "0" : number.substr(first));
    return (isNegative ? "-" : "") + digits;
}

bool IsLetter(char byte) noexcept {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

// What looks like an entry, or like a name, is probably one that lacks its slash.
std::string SlashHint(std::string_view found) {
    return !found.empty() && IsLetter(found[0]) ? ", or is a / missing before it?" : "";
}

// What was probably meant by something that is no value; empty for no idea.
std::string ValueMeant(std::string_view found) {
    constexpr std::pair<std::string_view, char const*> kMeant[] = {
        {"True", "true"}, {"TRUE", "true"}, {"False", "false"}, {"FALSE", "false"}};
    for (auto const& [wrong, right] : kMeant) {
        if (found == wrong) {
            return right;
        }
    }
    bool const isNumber = found.size() > 1 && (found[0] == '+' || found[0] == '.');
    if (isNumber && kDigits.find(found[1]) != std::string_view::npos) {
        return found[0] == '+' ? std::string(found.substr(1)) : "0" + std::string(found);
    }
    return "";
}

} // namespace

bool IsOctal(std::string_view number) noexcept {
    std::size_t const first = number.starts_with('-') ? 1 : 0;
    return number.size() > first + 1 && number[first] == '0' &&
           kDigits.find(number[first + 1]) != std::string_view::npos;
}

bool IsInexact(std::string_view number, double value) {
    bool const isDecimal = number.find_first_not_of("-0123456789") == std::string_view::npos;
    return isDecimal && !IsOctal(number) && number != "-0" && format::WholeText(value) != number;
}

bool HasBracket(std::string_view string) noexcept {
    for (std::size_t at = string.find('('); at != std::string_view::npos;
         at = string.find('(', at + 1)) {
        if (at == 0 || string[at - 1] != '\\') {
            return true;
        }
    }
    return false;
}

bool EndsInOddBackslashes(std::string_view string) noexcept {
    std::size_t const last = string.find_last_not_of('\\');
    std::size_t const count = string.size() - (last == std::string_view::npos ? 0 : last + 1);
    return count % 2 == 1;
}

bool LooksLikeEntries(std::string_view string) noexcept {
    for (std::size_t end = string.find_first_of("\r\n"); end != std::string_view::npos;
         end = string.find_first_of("\r\n", end + 1)) {
        std::size_t const first = string.find_first_not_of("\r\n\t ", end);
        if (first != std::string_view::npos && string[first] == '/') {
            return true;
        }
    }
    return false;
}

std::string PrologText() {
    return "before the settings only comments may stand";
}

std::string KeywordText(std::string_view found) {
    return found.empty()
               ? "expected setalembicorparams behind the settings"
               : "expected setalembicorparams behind the settings, found " + Quoted(found);
}

std::string DuplicateText(std::string_view key) {
    return "/" + std::string(key) + " stands here again: the value before is lost";
}

std::string EmptyDictionaryText(std::size_t depth) {
    return depth == 0
               ? "settings without any entry are read wrongly with a blank in them: write <<>>"
               : "an empty dictionary takes the entries behind it into itself: leave it out";
}

std::string StrayText(std::string_view stray, std::string_view name) {
    return Quoted(stray) + " is passed over: " +
           (name.empty() ? "it belongs to no key" + SlashHint(stray)
                         : std::string(name) + " is read as the value of the key before it");
}

std::string StrayBeforeEndText(std::string_view stray, std::string_view name) {
    if (!name.empty()) {
        return StrayText(stray, name) + ", and the end of the dictionary is passed over too";
    }
    return stray.empty()
               ? "a > too many"
               : Quoted(stray) + " before the end of a dictionary hides that end: " +
                     (SlashHint(stray).empty() ? "remove it" : "remove it" + SlashHint(stray));
}

std::string OctalText(std::string_view number, double value) {
    return "the leading 0 makes " + std::string(number) + " octal, and it is read as " +
           format::ShortestText(value) + ": write " + Decimal(number);
}

std::string InexactText(std::string_view number, double value) {
    return Shown(number) + " is read as " + format::WholeText(value);
}

std::string FarPointText(std::string_view number, double value) {
    return "the point in what sticks to it makes " + Shown(number) + " the number " +
           format::ShortestText(value) + ": put a blank behind the number";
}

std::string NestedBracketsText() {
    return "brackets do not nest, and the string ends at the first ): write \\( and \\) inside";
}

std::string StuckText(std::string_view token, std::string_view value) {
    std::string text = Quoted(token) + " is read as " + Shown(value);
    bool const isNumber = value.find_first_not_of("-0123456789") == std::string_view::npos;
    if (IsOctal(token)) {
        return text + ", for a leading 0 makes it octal: write " + Decimal(token);
    }
    if (isNumber && token.size() > value.size() && (token[value.size()] | 0x20) == 'e') {
        return text + ", for an exponent needs a point: write " + std::string(value) + ".0" +
               std::string(token.substr(value.size()));
    }
    std::string_view const rest = token.substr(value.size());
    bool const isComma = isNumber && rest.size() > 1 && rest[0] == ',' &&
                         rest.find_first_not_of(kDigits, 1) == std::string_view::npos;
    if (isComma) {
        return text + ": write " + std::string(value) + "." + std::string(rest.substr(1)) +
               ", or leave the comma out";
    }
    return text + ": remove " + Quoted(rest);
}

std::string MissingValueText(std::string_view key) {
    return std::string(key) + " has no value";
}

std::string UnknownValueText(std::string_view found) {
    std::string const meant = ValueMeant(found);
    if (!meant.empty()) {
        return Quoted(found) + " is no value: write " + meant;
    }
    if (found.starts_with('{')) {
        return "a procedure is no value";
    }
    if (IsLetter(found[0])) {
        return Quoted(found) + " is no value: write /" + Shown(found) + " for a name, (" +
               Shown(found) + ") for a text";
    }
    if (found.starts_with('"') || found.starts_with('\'')) {
        return Quoted(found) + " is no value: a text stands in (text), a name behind a slash";
    }
    return Quoted(found) +
           " is no value: expected true, false, a number, /Name, (text), <FEFF>, [ … ] or << … >>";
}

std::string SingleCloseText(std::string_view end) {
    return "a single > ends the dictionary, and both bytes of " + Quoted(end) +
           " are passed over: write >>";
}

} // namespace pdfsettings::detail
