// The job options text that the component makes of settings.

#include "tests/support/Settings.h"
#include "tests/support/SmallStack.h"

#include <clocale>
#include <cmath>

namespace support {

namespace {

std::string const kLongKey(200, 'k');
std::string const kDefaultTail = "<<\r\n>> setpagedevice\r\n";

// lines, which end with \n, as the entries of a written file with the default tail.
std::string Written(std::string const& lines) {
    std::string text = "<<\r\n";
    for (char const c : lines) {
        text += c == '\n' ? "\r\n" : std::string(1, c);
    }
    return text + ">> setalembicorparams\r\n" + kDefaultTail;
}

} // namespace

class JoboptionsWriter : public SettingsTest {
protected:
    std::string WriteDict(POSDict* dict) const { return Text(Own(fNewFromDict(dict, ""))); }

    // What is written of a dictionary in the object notation.
    std::string WriteNotation(std::string const& notation) const {
        return WriteDict(NewValue<POSDict>(notation));
    }

    void
    PutBinData(POSDict* dict, char const* key, char const* type, std::string const& data) const {
        auto const* const bytes = reinterpret_cast<unsigned char const*>(data.data());
        auto const& rows = fRuntime.Rows<_t_POSBinDataInterface>();
        Put(dict, key, rows.NewPOSBinData(type, bytes, data.size()));
    }

    std::string WriteNumber(double value, char const* key = "N") const {
        auto const dict = NewValue<POSDict>("<>");
        Put(dict, key, fRuntime.Numbers().NewPOSNumber(value));
        std::string const written = WriteDict(dict);
        std::string const expectedHead = std::string("<<\r\n  /") + key + " ";
        return written.substr(expectedHead.size(), written.find('\r', 4) - expectedHead.size());
    }
};

TEST_F(JoboptionsWriter, LaysOutEveryKindOfValue) {
    // Entries and the lines that are written.
    std::pair<std::string, std::string> const kCases[] = {
        {"/CompatibilityLevel 1.4/Names [/A]/Sub<</X true >> ",
         "  /CompatibilityLevel 1.4\n  /Names [\n    /A\n  ]\n  /Sub <<\n    /X true\n  >>\n"},
        {"/T true/F false/N /true/W /a#20b ", "  /T true\n  /F false\n  /N true\n  /W /a#20b\n"},
        {"/S (a\\)\\t\r\nb)/E ()/H <fe FF0>/I <> ",
         "  /S (a\\)\\t\nb)\n  /E ()\n  /H <fe FF0>\n  /I <>\n"},
        {"/A [[1 [ ] 2 ]<</D [3 ] >>] ",
         "  /A [\n    [\n      1\n      [\n      ]\n      2\n    ]\n    <<\n      /D [\n"
         "        3\n      ]\n    >>\n  ]\n"},
        {"/Last << >>", "  /Last <<\n  >>\n"},
        {"/O <</CompatibilityLevel 1 /SyntheticBoldness 1 >>/CompatibilityLevel /x ",
         "  /O <<\n    /CompatibilityLevel 1.0\n    /SyntheticBoldness 1.00\n  >>\n"
         "  /CompatibilityLevel /x\n"},
        {"/trueish /trueish /CompatibilityLevelX 1 /" + kLongKey + " 1 ",
         "  /trueish /trueish\n  /CompatibilityLevelX 1\n  /" + kLongKey + " 1\n"},
        {"", ""},
    };
    for (auto const& [read, written] : kCases) {
        EXPECT_EQ(Written(written), Text(NewSettings("<<" + read + ">>setalembicorparams")));
    }
    EXPECT_EQ(Written(""), Text(NewSettings("")));
    EXPECT_EQ(Written("  /two words /a )\n"), WriteNotation("<(two words) (a \\))>"));
}

TEST_F(JoboptionsWriter, DecidesBetweenWholeAndRealInSinglePrecision) {
    std::pair<double, char const*> const kCases[] = {
        {0, "0"},
        {-0.0, "0"},
        {0.1, "0.10000"},
        {0.000001, "0.00000"},
        {2.00000001, "2"},
        {16777217, "16777216"},
        {2147483647, "2147483647.00000"},
        {-2147483648.0, "-2147483648"},
        {-2147483904.0, "-2147483904.00000"},
        {3000000000, "3000000000.00000"},
        {1e300 * 1e300, "inf"},
        {-1e300 * 1e300, "-inf"},
        {std::nan(""), "nan"},
        {-std::nan(""), "-nan"},
    };
    for (auto const& [value, written] : kCases) {
        EXPECT_EQ(written, WriteNumber(value));
    }
    EXPECT_EQ("1.3", WriteNumber(1.3000000001, "CompatibilityLevel"));
    EXPECT_EQ("0.13", WriteNumber(0.125001, "SyntheticBoldness"));
}

TEST_F(JoboptionsWriter, WritesAPointWhateverTheHostsLocale) {
    ASSERT_NE(nullptr, std::setlocale(LC_NUMERIC, "de_DE.UTF-8"))
        << "LOCPATH must name the test locale";
    EXPECT_EQ("0.50000", WriteNumber(0.5));
    EXPECT_EQ("1.5", WriteNumber(1.5, "CompatibilityLevel"));
    std::setlocale(LC_NUMERIC, "C");
}

TEST_F(JoboptionsWriter, WritesTheLargestNumberWhole) {
    double const largest = -std::numeric_limits<double>::max();
    char expected[400];
    std::snprintf(expected, sizeof expected, "%.5f", largest);
    EXPECT_EQ(expected, WriteNumber(largest));
    EXPECT_EQ(
        std::string(expected, std::strlen(expected) - 4),
        WriteNumber(largest, "CompatibilityLevel"));
}

// What it writes then is the text that stands for a tail, or nothing where there is a tail.
TEST_F(JoboptionsWriter, GivesNoErrorForAValueThatItCannotWrite) {
    for (char const* const path : {"D", "B/1/0"}) {
        auto const dict = NewValue<POSDict>("<A 1 D < E 1 > B [ 1 [ < E 1 > ] 2 ]>");
        auto* const inner = reinterpret_cast<POSDict*>(
            fRuntime.Dicts().DeepGet(dict, conformance::Atom(fRuntime, path)));
        // Below the settings this key is one like any other.
        PutBinData(inner, "AlembicorData", "AlembicorData", "inner");
        std::string const before = Describe(dict);
        EXPECT_EQ(kDefaultTail, WriteDict(dict));
        EXPECT_EQ(before, Describe(dict));
        PutBinData(dict, "AlembicorData", "AlembicorData", "tail");
        EXPECT_EQ("", WriteDict(dict));
    }
    auto const dict = NewValue<POSDict>("<A 1>");
    PutBinData(dict, "B", "JoboptionsStringX", "b");
    EXPECT_EQ(kDefaultTail, WriteDict(dict));
    unsigned short const units[] = {'u', 0};
    Put(dict, "B", fRuntime.Rows<_t_POSUnicodeStringInterface>().NewPOSUnicodeString(units));
    EXPECT_EQ(kDefaultTail, WriteDict(dict));
    EXPECT_TRUE(fLog.fMessages.empty());
    // A tail that is no binary data is an error.
    EXPECT_EQ("(null)", WriteNotation("<A 1 AlembicorData 2>"));
    EXPECT_EQ(std::vector<std::string>{"unknown BIB error"}, fLog.fMessages);
}

TEST_F(JoboptionsWriter, WritesBinaryDataWithAllItsBytes) {
    using namespace std::string_literals;
    auto const dict = NewValue<POSDict>("<>");
    PutBinData(dict, "S", "JoboptionsString", "a\0b"s);
    PutBinData(dict, "H", "JoboptionsUnicodeString", "\0"s);
    PutBinData(dict, "AlembicorData", "AnyType", "t\0t"s);
    std::string const entries = "<<\r\n  /S (a\0b)\r\n  /H <\0>\r\n>> setalembicorparams\r\n"s;
    EXPECT_EQ(entries + "t\0t"s, WriteDict(dict));
    PutBinData(dict, "AlembicorData", "AlembicorData", "");
    EXPECT_EQ(entries, WriteDict(dict));
}

class JoboptionsWriterDepth : public JoboptionsWriter {
protected:
    // The text of an array that is nested so deep, written on a stack of that size.
    std::string WriteDeepArray(unsigned long levels, unsigned long stackSize = kSmallStack) const {
        std::string const brackets(levels, '[');
        std::string written;
        OnStack(stackSize, [&] {
            written = WriteNotation("<A " + brackets + std::string(levels, ']') + ">");
        });
        return written;
    }
};

// Blanks would fill the memory long before a stack of this size ends.
TEST_F(JoboptionsWriterDepth, EndsAtFiveThousandLevelsOnAnyStack) {
    EXPECT_NE("(null)", WriteDeepArray(5000, kLargeStack));
    EXPECT_EQ("(null)", WriteDeepArray(5001, kLargeStack));
}

TEST_F(JoboptionsWriterDepth, RunsOutOfMemoryWhereTheStackDoes) {
    EXPECT_EQ("(null)", WriteDeepArray(1000UL * 1000));
    auto const dict = NewValue<POSDict>("<A 1>");
    PutBinData(dict, "AlembicorData", "AlembicorData", "tail");
    Put(dict, "Itself", dict.get());
    OnSmallStack([&] { EXPECT_EQ("(null)", WriteDict(dict)); });
    Remove(dict, "Itself");
    EXPECT_EQ("<<A 1 AlembicorData AlembicorData{tail}>>", Describe(dict));
    EXPECT_EQ(std::vector<std::string>(2, "out of memory"), fLog.fMessages);
}

} // namespace support
