#include "api/UnicodeEncoding.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "platform/CFString.h"
#include "source/EncodingConverter.h"
#include "tests/support/BoundClient.h"

namespace UnicodeEncodingNS {

namespace {

using Text16 = std::u16string;

Buffer16 MakeBuffer(std::u16string_view text) {
    Buffer16 const buffer(text.size(), nullptr);
    std::copy(text.begin(), text.end(), buffer.GetBuffer());
    return buffer;
}

Buffer8 MakeBuffer(std::string_view text) {
    Buffer8 const buffer(text.size(), nullptr);
    std::copy(text.begin(), text.end(), buffer.GetBuffer());
    return buffer;
}

Text16 TextOf(Buffer16 const& buffer) {
    return Text16(buffer.GetBuffer(), buffer.GetBuffer() + buffer.GetNumElements());
}

std::string TextOf(Buffer8 const& buffer) {
    return std::string(buffer.GetBuffer(), buffer.GetBuffer() + buffer.GetNumElements());
}

template <class T>
auto Plain(TUnicodeEncoding<T> const& value) {
    return TextOf(value.GetString(kByteOrderNative, /*terminate=*/false, /*mark=*/false));
}

} // namespace

using UnicodeEncodingValue = support::BoundClientTest;

TEST_F(UnicodeEncodingValue, LosesItsMarkOnCreation) {
    EXPECT_EQ(u"ab", Plain(CreateUnicode16(MakeBuffer(u"ab"))));
    EXPECT_EQ(u"ab", Plain(CreateUnicode16(MakeBuffer(u"\xFEFF\u0061\u0062"))));
    EXPECT_EQ(u"ab", Plain(CreateUnicode16(MakeBuffer(u"\xFFFE\u6100\u6200"))));
    EXPECT_EQ(u"", Plain(CreateUnicode16(MakeBuffer(u"\xFEFF"))));
    EXPECT_EQ(u"", Plain(CreateUnicode16(MakeBuffer(u""))));
    EXPECT_EQ(u"", Plain(CreateUnicode16(Buffer16())));
    EXPECT_EQ(
        "ab",
        Plain(CreateUnicode8(MakeBuffer("\xEF\xBB\xBF"
                                        "ab"))));
    EXPECT_EQ("\xEF\xBB", Plain(CreateUnicode8(MakeBuffer("\xEF\xBB"))));
    EXPECT_EQ("\xEF\xBBx", Plain(CreateUnicode8(MakeBuffer("\xEF\xBBx"))));
    char text[] = "\xEF\xBB\xBF"
                  "c";
    EXPECT_EQ("c", Plain(Unicode8(text)));
    EXPECT_EQ("", Plain(Unicode8(text + 4)));
}

TEST_F(UnicodeEncodingValue, HandsOutEveryForm) {
    Unicode16 const value = CreateUnicode16(MakeBuffer(u"\u0141"));
    struct {
        int fOrder;
        bool fTerminate;
        bool fMark;
        Text16 fExpected;
    } const kCases[] = {
        {0, false, false, u"\u0141"},
        {0, true, false, Text16(u"\u0141\0", 2)},
        {0, false, true, u"\xFEFF\u0141"},
        {0, true, true, Text16(u"\xFEFF\u0141\0", 3)},
        {1, false, false, u"\u4101"},
        {1, true, true, Text16(u"\xFFFE\u4101\0", 3)},
        {2, false, false, u"\u0141"},
        {2, true, true, Text16(u"\xFEFF\u0141\0", 3)},
        {3, false, false, u""},
    };
    for (auto const& row : kCases) {
        EXPECT_EQ(
            row.fExpected,
            TextOf(value.GetString(static_cast<ByteOrder>(row.fOrder), row.fTerminate, row.fMark)))
            << row.fOrder << row.fTerminate << row.fMark;
    }
    EXPECT_EQ(
        1U,
        Unicode16()
            .GetString(kByteOrderNative, /*terminate=*/true, /*mark=*/false)
            .GetNumElements());
    Unicode8 const text8 = CreateUnicode8(MakeBuffer("abc"));
    EXPECT_EQ(6U, text8.GetString(kByteOrderNative, /*terminate=*/false, /*mark=*/true).GetSize());
    EXPECT_EQ(
        std::string(
            "\xEF\xBB\xBF"
            "abc\0",
            7),
        TextOf(text8.GetString(kByteOrderLittleEndian, /*terminate=*/true, /*mark=*/true)));
}

TEST_F(UnicodeEncodingValue, ComesBackFromTheOtherOrder) {
    Unicode16 const value = CreateUnicode16(MakeBuffer(u"\u0141\u00E4"));
    Buffer16 const swapped =
        value.GetString(kByteOrderLittleEndian, /*terminate=*/false, /*mark=*/true);
    EXPECT_EQ(u"\u0141\u00E4", Plain(CreateUnicode16(swapped)));
}

TEST_F(UnicodeEncodingValue, SharesTheTextWhenItIsAskedForAsItStands) {
    Buffer16 const buffer = MakeBuffer(u"ab");
    Unicode16 const value = CreateUnicode16(buffer);
    Unicode16 const copy = value; // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(
        buffer.GetBuffer(),
        copy.GetString(kByteOrderBigEndian, /*terminate=*/false, /*mark=*/false).GetBuffer());
}

TEST_F(UnicodeEncodingValue, ConvertsBothWays) {
    struct {
        Text16 fText16;
        std::string fText8;
    } const kCases[] = {
        {u"plain", "plain"},
        {u"\u00E4\u20AC", "\xC3\xA4\xE2\x82\xAC"},
        {u"\U0001F600x", "\xF0\x9F\x98\x80x"},
    };
    for (auto const& row : kCases) {
        EXPECT_EQ(row.fText8, Plain(CreateUnicode8(CreateUnicode16(MakeBuffer(row.fText16)))));
        EXPECT_EQ(row.fText16, Plain(CreateUnicode16(MakeBuffer(row.fText8))));
    }
}

TEST_F(UnicodeEncodingValue, IsEmptyForTextThatCannotBeDecoded) {
    for (char const* const bad :
         {"", "\xFF", "a\x80", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\xC3"}) {
        EXPECT_EQ(u"", Plain(CreateUnicode16(MakeBuffer(std::string_view(bad)))));
    }
    Text16 const loneSurrogates[] = {Text16(1, u'\xD83D'), u"", Text16(1, u'\xDE00')};
    for (auto const& bad : loneSurrogates) {
        EXPECT_EQ("", Plain(CreateUnicode8(CreateUnicode16(MakeBuffer(bad)))));
    }
    EXPECT_EQ("", Plain(CreateUnicode8(CreateUnicode16(MakeBuffer(u"a" + loneSurrogates[0])))));
}

TEST_F(UnicodeEncodingValue, BridgesTo16BitStrings) {
    auto const string = CreateCPOSUnicodeString(CreateUnicode16(MakeBuffer(u"ab")));
    EXPECT_EQ(3U, string.GetLength());
    EXPECT_EQ(0xFEFF, string.Get()[0]);
    EXPECT_EQ(u"ab", Plain(Unicode16FromCPOSUnicodeString(string)));
    EXPECT_EQ(u"", Plain(Unicode16FromCPOSUnicodeString(CreateCPOSUnicodeString(Unicode16()))));
}

TEST(CFString, MeasuresWritesAndStopsAtTheEndOfTheBuffer) {
    UInt8 const text[] = {'a', 0xC3, 0xA4, 'b'};
    UnicodeEncoding_AutoCFRelease<CFStringRef> const string(
        CFStringCreateWithBytes(kCFAllocatorDefault, text, 4, kCFStringEncodingUTF8, 0),
        /*retain=*/false);
    UnicodeEncoding_AutoCFRelease<CFStringRef> const retained(string, /*retain=*/true);
    EXPECT_EQ(3, CFStringGetLength(retained));
    UInt8 bytes[8] = {};
    CFIndex used = 0;
    CFRange const all = CFRangeMake(0, 3);
    EXPECT_EQ(3, CFStringGetBytes(string, all, kCFStringEncodingUTF8, 0, 0, nullptr, 0, &used));
    EXPECT_EQ(4, used);
    EXPECT_EQ(1, CFStringGetBytes(string, all, kCFStringEncodingUTF8, 0, 0, bytes, 2, &used));
    EXPECT_EQ(1, used);
    CFRange const rest = CFRangeMake(1, 99);
    EXPECT_EQ(2, CFStringGetBytes(string, rest, kCFStringEncodingUnicode, 0, 0, bytes, 8, &used));
    EXPECT_EQ(4, used);
    EXPECT_EQ(0, CFStringGetBytes(string, all, 7, 0, 0, bytes, 8, nullptr));
    EXPECT_EQ(nullptr, CFStringCreateWithBytes(kCFAllocatorDefault, text, 4, 7, 0));
}

} // namespace UnicodeEncodingNS
