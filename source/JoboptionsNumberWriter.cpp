#include "source/JoboptionsNumberWriter.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include "bib/BIBMemory.h"

using BIB_T_NMT::CBIBMemory;
using BIB_T_NMT::CBIBPositionableStream;

namespace POSObjectParserUtils {

namespace {

constexpr int kDecimals = 5;

// In bytes. The second is for the longest number: a sign, its digits, a point, its decimals, a line
// end.
constexpr unsigned long kUsualSize = 256;
constexpr unsigned long kLargestSize =
    1 + std::numeric_limits<double>::max_exponent10 + 1 + 1 + kDecimals + 2;

// The whole number that value is in single precision, if 32 bits can hold it.
std::optional<std::int32_t> AsWholeNumber(double value) noexcept {
    // Below, every conversion is of a value in its range. Not-a-number fails this as well.
    if (!(std::fabs(value) < 0x1p32)) {
        return std::nullopt;
    }
    float const single = static_cast<float>(value);
    if (single < -0x1p31F || single >= 0x1p31F) {
        return std::nullopt;
    }
    auto const whole = static_cast<std::int32_t>(single);
    return static_cast<float>(whole) == single ? std::optional(whole) : std::nullopt;
}

// Writes what format makes, as std::to_chars does, in a buffer of so many bytes. False when that is
// too small.
template <class Format>
bool WriteThrough(
    unsigned long bufferSize, CBIBPositionableStream const& stream, Format const& format) {
    BIB_T_NMT::TBIBMemoryBuffer<char, CBIBMemory> buffer(bufferSize);
    char* const begin = buffer.GetBuffer();
    std::to_chars_result const result = format(begin, begin + bufferSize - 2);
    if (result.ec != std::errc()) {
        return false;
    }
    result.ptr[0] = '\r';
    result.ptr[1] = '\n';
    auto const size = static_cast<unsigned long>(result.ptr + 2 - begin);
    stream.Write(static_cast<void const*>(begin), size);
    return true;
}

} // namespace

void WriteNumber(double value, CBIBPositionableStream const& stream) {
    if (auto const whole = AsWholeNumber(value)) {
        WriteThrough(kUsualSize, stream, [whole](char* begin, char* end) {
            return std::to_chars(begin, end, *whole);
        });
        return;
    }
    WriteDecimals(value, kDecimals, stream);
}

void WriteDecimals(double value, int decimals, CBIBPositionableStream const& stream) {
    auto const format = [value, decimals](char* begin, char* end) {
        return std::to_chars(begin, end, value, std::chars_format::fixed, decimals);
    };
    if (!WriteThrough(kUsualSize, stream, format)) {
        WriteThrough(kLargestSize, stream, format);
    }
}

} // namespace POSObjectParserUtils
