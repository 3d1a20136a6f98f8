#include "format/FloatFromChars.h"

#ifndef __cpp_lib_to_chars
#include <cerrno>
#include <cmath>
#include <locale.h>
#include <stdlib.h>
#include <string>
#include <utility>
#endif

namespace format {

#ifdef __cpp_lib_to_chars

std::from_chars_result
FloatFromChars(std::string_view text, double& value, std::chars_format format) {
    return std::from_chars(text.data(), text.data() + text.size(), value, format);
}

#else

namespace {

locale_t CLocale() {
    static locale_t const locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

// The text that strtod reads as std::from_chars reads text: both read what begins a number, but
// std::from_chars knows no blank or "+" before it, and its hexadecimal numbers have no mark.
std::string ForStrtod(std::string_view text, bool isHex) {
    std::size_t const sign = text.starts_with('-') ? 1 : 0;
    bool const isOther = text.find_first_of("\t\n\v\f\r +") == sign;
    std::string_view const rest = isOther ? std::string_view() : text.substr(sign);
    std::string const mark(isHex ? "0x" : "");
    return std::string(text.substr(0, sign)) + mark +
           std::string(isHex ? rest : rest.substr(0, rest.find_first_of("xX")));
}

} // namespace

std::from_chars_result
FloatFromChars(std::string_view text, double& value, std::chars_format format) {
    bool const isHex = format == std::chars_format::hex;
    std::string const bytes = ForStrtod(text, isHex);
    int const formerError = std::exchange(errno, 0);
    char* end = nullptr;
    double const number = strtod_l(bytes.c_str(), &end, CLocale());
    int const error = std::exchange(errno, formerError);
    auto const read = static_cast<std::size_t>(end - bytes.c_str());
    std::size_t const mark = isHex ? 2 : 0;
    std::size_t const sign = bytes.starts_with('-') ? 1 : 0;
    if (read <= mark + sign) {
        return {text.data(), std::errc::invalid_argument};
    }
    // strtod reports subnormal numbers too.
    bool const isOutOfRange = error == ERANGE && (number == 0 || std::isinf(number));
    value = isOutOfRange ? value : number;
    return {
        text.data() + (read - mark), isOutOfRange ? std::errc::result_out_of_range : std::errc()};
}

#endif

} // namespace format
