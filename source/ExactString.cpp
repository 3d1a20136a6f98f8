#include "source/ExactString.h"

#include <algorithm>

namespace UnicodeEncodingNS {

BIB_T_NMT::CPOSUnicodeString ExactString(std::span<unsigned short const> units) {
    constexpr unsigned short kMark = 0xFEFF;
    Buffer16 const text(units.size() + 2, nullptr);
    text[0] = kMark;
    *std::copy(units.begin(), units.end(), text.GetBuffer() + 1) = 0;
    return BIB_T_NMT::CPOSUnicodeString(text.GetBuffer());
}

} // namespace UnicodeEncodingNS
