#include "api/UnicodeEncoding.h"

#include "platform/CFString.h"
#include "tests/support/BoundClient.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace UnicodeEncodingNS {

namespace {

template <class Unit>
auto MakeBuffer(std::basic_string<Unit> const& text) {
    std::conditional_t<sizeof(Unit) == 1, Buffer8, Buffer16> const buffer(text.size(), nullptr);
    std::copy(text.begin(), text.end(), buffer.GetBuffer());
    return buffer;
}

template <class Buffer>
auto TextOf(Buffer const& buffer) {
    using Unit = std::conditional_t<std::is_same_v<Buffer, Buffer8>, char, char16_t>;
    return std::basic_string<Unit>(
        buffer.GetBuffer(), buffer.GetBuffer() + buffer.GetNumElements());
}

template <class T>
auto Plain(TUnicodeEncoding<T> const& value) {
    return TextOf(value.GetString(kByteOrderNative, /*terminate=*/false, /*mark=*/false));
}

} // namespace

using namespace std::string_literals;
using UnicodeEncodingValue = support::BoundClientTest;

TEST_F(UnicodeEncodingValue, LosesItsMarkOnCreation) {
    for (auto const& text : {u"ab"s, u"\xFEFF\u0061\u0062"s, u"\xFFFE\u6100\u6200"s}) {
        EXPECT_EQ(u"ab", Plain(CreateUnicode16(MakeBuffer(text))));
    }
    EXPECT_EQ(u"", Plain(CreateUnicode16(MakeBuffer(u"\xFEFF"s))));
    EXPECT_EQ(u"", Plain(CreateUnicode16(Buffer16())));
    for (auto const& [text, plain] :
         {std::pair(
              "\xEF\xBB\xBF"
              "ab"s,
              "ab"s),
          {"\xEF\xBB"s, "\xEF\xBB"s},
          {"\xEF\xBBx"s, "\xEF\xBBx"s}}) {
        EXPECT_EQ(plain, Plain(CreateUnicode8(MakeBuffer(text))));
    }
}

TEST_F(UnicodeEncodingValue, HandsOutEveryForm) {
    Unicode16 const value = CreateUnicode16(MakeBuffer(u"\u0141"s));
    struct {
        int fOrder;
        bool fTerminate;
        bool fMark;
        std::u16string fExpected;
    } const kCases[] = {
        {0, true, true, u"\xFEFF\u0141\0"s},
        {1, true, true, u"\xFFFE\u4101\0"s},
        {2, true, false, u"\u0141\0"s},
        {2, false, true, u"\xFEFF\u0141"},
        {3, false, false, u""},
    };
    for (auto const& [order, terminate, mark, expected] : kCases) {
        auto const text = value.GetString(static_cast<ByteOrder>(order), terminate, mark);
        EXPECT_EQ(expected, TextOf(text)) << order << terminate << mark;
    }
    auto const marked =
        Unicode8("abc").GetString(kByteOrderLittleEndian, /*terminate=*/true, /*mark=*/true);
    EXPECT_EQ("\xEF\xBB\xBF" + "abc\0"s, TextOf(marked));
}

TEST_F(UnicodeEncodingValue, IsConvertedBothWaysOrEmptyWhereItCannotBeDecoded) {
    std::u16string const good = u"x\u00E4\u20AC\U0001F600";
    std::string const same = "x\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80";
    EXPECT_EQ(same, Plain(CreateUnicode8(CreateUnicode16(MakeBuffer(good)))));
    EXPECT_EQ(good, Plain(CreateUnicode16(MakeBuffer(same))));
    for (auto const& bad :
         {""s, "\xFF"s, "a\x80"s, "\xED\xA0\x80"s, "\xF5\x80\x80\x80"s, "\xC3 more than eight"s}) {
        EXPECT_EQ(u"", Plain(CreateUnicode16(MakeBuffer(bad))));
    }
    for (auto const& bad : {u"\xD83D"s, u""s, u"\xDE00"s, u"a\xD83D"s, u"\xD83D\xE000"s}) {
        EXPECT_EQ("", Plain(CreateUnicode8(CreateUnicode16(MakeBuffer(bad)))));
    }
}

} // namespace UnicodeEncodingNS
