#include "RuntimeFixture.h"

#include <limits>

namespace runtimetest {
namespace {

class NotationTest : public RuntimeTest {
protected:
    // The dump of a value, whose last reference goes with it.
    static std::string Dump(POSObject* value) {
        Held const held(value);
        MemoryStream const stream;
        EXPECT_EQ(TakeMessage(Objects().DebugDumpRewind(value, stream.Self())), "");
        return stream.Read(100000);
    }
};

// Which texts are words and which are numbers is for the conformance kit to check.
constexpr std::pair<char const*, char const*> kDumps[] = {
    {" -0.50 ", "-0.5\n"},
    {"-0", "-0\n"},
    {"1.7976931348623157e308", "1.7976931348623157e+308\n"},
    {"a/b'\"{}&", "a/b'\"{}&\n"},
    {"()", "()\n"},
    {"(a b)", "(a b)\n"},
    {"(a(b)c)", "(a\\(b\\)c)\n"},
    {"(\\(\\)\\\\\\n\\r\\t)", "(\\(\\)\\\\\\n\\r\\t)\n"},
    {"(\\1\\101\\3771)", "(\\001A\\3771)\n"},
    {"(caf\xC3\xA9)", "(caf\\303\\251)\n"},
    {"<a 1(b c)x>", "<\n  a 1\n  (b c) x\n>\n"},
    {"< 7 8 >", "<\n  (7) 8\n>\n"},
    {"[1 [2<k<>>]x]", "[\n  1\n  [\n    2\n    <\n      k <\n      >\n    >\n  ]\n  x\n]\n"},
    {"% note\r1% end", "1\n"}};

TEST_F(NotationTest, TextsAreReadAndWrittenAndReadAgain) {
    for (auto const& [text, dump] : kDumps) {
        SCOPED_TRACE(text);
        Held const value(Ours().Parse(text));
        EXPECT_EQ(Dump(value), dump);
        Held const again(Ours().Parse(dump));
        EXPECT_NE(Values().IsEqual(value, again), 0);
    }
}

constexpr std::pair<char const*, char const*> kFaults[] = {
    {"", "line 1, column 1: expected a value"},
    {"% only\n ", "line 2, column 2: expected a value"},
    {"]", "line 1, column 1: expected a value"},
    {")", "line 1, column 1: ')' without a '(' before it"},
    {"1 2", "line 1, column 3: expected nothing more after the value"},
    {"< a\n1\n\n b", "line 4, column 3: expected a value for the key \"b\""},
    {"< a >", "line 1, column 5: expected a value for the key \"a\""},
    {"< [ 1 ] 2 >", "line 1, column 3: expected a key or '>'"},
    {"\r\n <\r a 1 ", "line 3, column 6: the dictionary opened at line 2, column 2 is not closed"},
    {"[ 1\n2", "line 2, column 2: the array opened at line 1, column 1 is not closed"},
    {"[ 1 >", "line 1, column 5: expected a value or ']'"},
    {"[ (a(b) ]", "line 1, column 10: the text opened at line 1, column 3 is not closed"},
    {"(\\q)", "line 1, column 2: unknown escape '\\q'"},
    {"(\\400)", "line 1, column 2: an octal escape goes up to \\377"},
    {"(\\0)", "line 1, column 2: a text cannot contain a zero byte"},
    {"< a 1e999 >", "line 1, column 5: the number is out of range"}};

TEST_F(NotationTest, FaultsAreToldWithLineAndColumn) {
    for (auto const& [text, expected] : kFaults) {
        SCOPED_TRACE(text);
        char const* message = "none";
        EXPECT_EQ(Objects().CreateFromText(text, &message), nullptr);
        EXPECT_STREQ(message, expected);
    }
    EXPECT_EQ(Objects().CreateFromText(nullptr, nullptr), nullptr);
    std::string const text = "< " + std::string(100000, 'k') + " >";
    char const* message = nullptr;
    EXPECT_EQ(Objects().CreateFromText(text.c_str(), &message), nullptr);
    EXPECT_EQ(
        message,
        "line 1, column 100004: expected a value for the key \"" + std::string(60, 'k') + "\"");
}

TEST_F(NotationTest, KindsWithoutNotationAreWrittenAsTextWithAComment) {
    unsigned short const units[] = {'a', 0xE9, 0x20AC, 0xD83D, 0xDE00, 0xD800, 'b', 0};
    unsigned char const bytes[] = {0, 0xAB, 16};
    auto const& strings = Rows<_t_POSUnicodeStringInterface>();
    EXPECT_EQ(
        Dump(As<POSObject>(strings.NewPOSUnicodeString(units))),
        "(a\\303\\251\\342\\202\\254\\360\\237\\230\\200\\357\\277\\275b) % 16-bit string\n");
    auto const& binary = Rows<_t_POSBinDataInterface>();
    EXPECT_EQ(
        Dump(As<POSObject>(binary.NewPOSBinData("a\nb", bytes, 3))),
        "(00AB10) % binary data of type a b\n");
    EXPECT_EQ(
        Dump(Ours().NewNumber(-std::numeric_limits<double>::infinity())), "(-inf) % number\n");
    EXPECT_EQ(Dump(Ours().NewNumber(std::numeric_limits<double>::quiet_NaN())), "(nan) % number\n");
    EXPECT_EQ(
        Dump(As<POSObject>(conformance::NewMemoryStream(Ours()))),
        "(BIBSourceStream) % container\n");
}

TEST_F(NotationTest, ADumpReportsWhatGoesWrong) {
    Held const value(Ours().NewNumber(3));
    MemoryStream const stream;
    EXPECT_EQ(TakeMessage(Objects().DebugDumpWithHeader(value, stream.Self(), "a\nb")), "");
    EXPECT_EQ(stream.Mark(), 8U);
    EXPECT_EQ(stream.ReadAll(), "% a b\n3\n");
    EXPECT_EQ(TakeMessage(Objects().DebugDump(nullptr, stream.Self())), "bad argument");
    EXPECT_EQ(TakeMessage(Objects().DebugDump(value, nullptr)), "bad argument");
    EXPECT_EQ(
        TakeMessage(Objects().DebugDump(value, As<BIBPositionableStream>(value.Value()))),
        "no such method");
    bibrt::FailStreamOperation(2, /*andAllLater=*/false);
    EXPECT_EQ(
        TakeMessage(Objects().DebugDumpRewind(value, stream.Self())), "stream operation failed");
    Held const dict(Dicts().NewPOSDict());
    Put(dict, "self", dict.Value());
    EXPECT_EQ(
        TakeMessage(Objects().DebugDump(dict.Value(), stream.Self())),
        "a value that contains itself cannot be written");
    EXPECT_EQ(Values().Clone(dict.Value()), nullptr);
    Dicts().Remove(dict, Atom("self"));
}

} // namespace
} // namespace runtimetest
