#include "format/FloatFromChars.h"

#ifndef __cpp_lib_to_chars
#include <algorithm>
#include <cerrno>
#include <locale.h>
#include <stdlib.h>
#include <string>
#include <utility>
#endif

namespace format {

#ifdef __cpp_lib_to_chars

std::from_chars_result FloatFromChars(std::string_view text, double& value, bool isHex) {
    auto const format = isHex ? std::chars_format::hex : std::chars_format::general;
    return std::from_chars(text.data(), text.data() + text.size(), value, format);
}

#else

namespace {

constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kNameBytes =
    "()_0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";

locale_t CLocale() {
    static locale_t const locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

std::size_t EndOf(std::string_view bytes, std::string_view text, std::size_t first) {
    return std::min(text.find_first_not_of(bytes, first), text.size());
}

// The unsigned decimal number, "inf" or "nan" that text begins with, and perhaps more letters.
std::string_view CutNumber(std::string_view text) {
    if (!text.empty() && std::string_view("iInN").find(text[0]) != std::string_view::npos) {
        return text.substr(0, EndOf(kNameBytes, text, 0));
    }
    std::size_t end = EndOf(kDigits, text, 0);
    end = text.substr(end).starts_with('.') ? EndOf(kDigits, text, end + 1) : end;
    if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        std::string_view const exponent = text.substr(end + 1);
        std::size_t const sign = exponent.starts_with('+') || exponent.starts_with('-') ? 1 : 0;
        std::size_t const last = EndOf(kDigits, text, end + 1 + sign);
        end = last > end + 1 + sign ? last : end;
    }
    return text.substr(0, end);
}

} // namespace

// strtod_l also accepts blanks, "+" and "0x" before a number, and needs the last one for a
// hexadecimal number.
std::from_chars_result FloatFromChars(std::string_view text, double& value, bool isHex) {
    std::size_t const sign = text.starts_with('-') ? 1 : 0;
    std::string_view const rest = text.substr(sign);
    std::string const bytes = isHex ? "0x" + std::string(rest) : std::string(CutNumber(rest));
    int const formerError = std::exchange(errno, 0);
    char* end = nullptr;
    double const number = strtod_l(bytes.c_str(), &end, CLocale());
    int const error = std::exchange(errno, formerError);
    auto const read = static_cast<std::size_t>(end - bytes.c_str());
    std::size_t const mark = isHex ? 2 : 0;
    if (read <= mark) {
        return {text.data(), std::errc::invalid_argument};
    }
    char const* const last = rest.data() + (read - mark);
    // strtod_l reports subnormal numbers too.
    if (error == ERANGE && (number == 0 || number > 1)) {
        return {last, std::errc::result_out_of_range};
    }
    value = sign != 0 ? -number : number;
    return {last, std::errc()};
}

#endif

} // namespace format
