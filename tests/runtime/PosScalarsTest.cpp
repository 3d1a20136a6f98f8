#include "RuntimeFixture.h"

#include <cmath>
#include <limits>

namespace runtimetest {
namespace {

class PosScalarsTest : public RuntimeTest {
protected:
    static POSObject* String(char const* text) {
        return As<POSObject>(Rows<_t_POSStringInterface>().NewPOSString(text));
    }
    static POSObject* Unicode(unsigned short const* text) {
        return As<POSObject>(Rows<_t_POSUnicodeStringInterface>().NewPOSUnicodeString(text));
    }
    static POSObject* BinData(char const* type, std::string const& bytes) {
        return As<POSObject>(Rows<_t_POSBinDataInterface>().NewPOSBinData(
            type, reinterpret_cast<unsigned char const*>(bytes.data()), bytes.size()));
    }
};

TEST_F(PosScalarsTest, TextsAndBytesAreCopied) {
    std::string text("abc");
    std::u16string units(u"\u00e9\U0001F600");
    std::string bytes("\0\1\2", 3);
    Held const string(String(text.c_str()));
    Held const unicode(Unicode(reinterpret_cast<unsigned short const*>(units.c_str())));
    Held const binData(BinData("JPEG", bytes));
    text = "xxx";
    units = u"xxx";
    bytes = "xxx";
    EXPECT_STREQ(Rows<_t_POSStringInterface>().Get(As<POSString>(string.Value())), "abc");
    auto const* const copy =
        Rows<_t_POSUnicodeStringInterface>().Get(As<POSUnicodeString>(unicode.Value()));
    EXPECT_EQ(std::u16string(reinterpret_cast<char16_t const*>(copy)), u"\u00e9\U0001F600");
    auto const& rows = Rows<_t_POSBinDataInterface>();
    auto* const data = As<POSBinData>(binData.Value());
    EXPECT_STREQ(rows.GetTypeName(data), "JPEG");
    EXPECT_EQ(
        std::string(reinterpret_cast<char const*>(rows.GetBinData(data)), rows.GetSize(data)),
        std::string("\0\1\2", 3));
}

TEST_F(PosScalarsTest, NullTextsAreEmptyAndNullBytesWithASizeAreRefused) {
    Held const string(String(nullptr));
    Held const unicode(Unicode(nullptr));
    EXPECT_STREQ(Rows<_t_POSStringInterface>().Get(As<POSString>(string.Value())), "");
    EXPECT_EQ(*Rows<_t_POSUnicodeStringInterface>().Get(As<POSUnicodeString>(unicode.Value())), 0);
    EXPECT_EQ(Rows<_t_POSBinDataInterface>().NewPOSBinData("", nullptr, 1), nullptr);
}

TEST_F(PosScalarsTest, OnlyOnesOwnKindIsAnswered) {
    unsigned short const noUnits[] = {0};
    POSObject* const values[] = {
        NewNumber(1),
        String(""),
        Unicode(noUnits),
        BinData("", ""),
        As<POSObject>(Arrays().NewPOSArray()),
        As<POSObject>(Dicts().NewPOSDict())};
    for (std::size_t i = 0; i < std::size(values); ++i) {
        Held const held(values[i]);
        long const answers[] = {
            Numbers().IsPOSNumber(values[i]),
            Rows<_t_POSStringInterface>().IsPOSString(values[i]),
            Rows<_t_POSUnicodeStringInterface>().IsPOSUnicodeString(values[i]),
            Rows<_t_POSBinDataInterface>().IsPOSBinData(values[i]),
            Arrays().IsPOSArray(values[i]),
            Dicts().IsPOSDict(values[i])};
        for (std::size_t kind = 0; kind < std::size(answers); ++kind) {
            EXPECT_EQ(answers[kind] != 0, kind == i) << i << " asked as " << kind;
        }
    }
    EXPECT_EQ(Numbers().IsPOSNumber(nullptr), 0);
    EXPECT_EQ(Dicts().IsPOSDict(nullptr), 0);
}

TEST_F(PosScalarsTest, EqualityComparesTypeThenContents) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    unsigned short const a[] = {'a', 0};
    // Each is in a class of its own, and its clone in the same.
    POSObject* const values[] = {
        NewNumber(0),
        NewNumber(1),
        NewNumber(nan),
        String("a"),
        String("b"),
        String(""),
        Unicode(a),
        BinData("T", "a"),
        BinData("U", "a"),
        BinData("T", "ab")};
    for (POSObject* const one : values) {
        Held const clone(Values().Clone(one));
        EXPECT_NE(static_cast<POSObject*>(clone), one);
        for (POSObject* const other : values) {
            EXPECT_EQ(Values().IsEqual(clone, other) != 0, one == other);
        }
        EXPECT_EQ(Values().IsEqual(one, nullptr), 0);
    }
    for (POSObject* const value : values) {
        Containers().DeleteUnownedContainer(As<BIBContainer>(value));
    }
}

TEST_F(PosScalarsTest, AScalarTakesOneBlock) {
    unsigned long const before = bibrt::CountAllocations();
    Held const number(NewNumber(1));
    Held const string(String("some text that is longer than a small one"));
    Held const binData(BinData("type", "bytes"));
    EXPECT_EQ(bibrt::CountAllocations(), before + 3);
}

} // namespace
} // namespace runtimetest
