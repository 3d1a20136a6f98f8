#include "source/ExactText.h"

#include <algorithm>

namespace UnicodeEncodingNS {

namespace {

constexpr unsigned short kMark = 0xFEFF;

// The text behind so many marks. Making a value takes one away, whoever put it there.
Buffer16 BehindMarks(std::size_t marks, std::span<unsigned short const> units) {
    Buffer16 const marked(static_cast<unsigned long>(marks + units.size()), nullptr);
    unsigned short* const text = std::fill_n(marked.GetBuffer(), marks, kMark);
    std::copy(units.begin(), units.end(), text);
    return marked;
}

} // namespace

Unicode16 ExactText(std::span<unsigned short const> units) {
    return CreateUnicode16(BehindMarks(1, units));
}

// The value in UTF-8 takes a mark away too.
Unicode8 ExactText8(std::span<unsigned short const> units) {
    return CreateUnicode8(CreateUnicode16(BehindMarks(2, units)));
}

} // namespace UnicodeEncodingNS
