// The job options text that the component makes of settings.

#include <clocale>
#include <cmath>
#include <fstream>
#include <iterator>

#include "tests/support/Describe.h"
#include "tests/support/Settings.h"
#include "tests/support/SmallStack.h"

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

std::string ReadFile(char const* name) {
    std::ifstream stream(std::string(PDFSETTINGS_TEST_DATA "/") + name);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

} // namespace

class JoboptionsWriter : public SettingsTest {
protected:
    // What is written of the settings that text is read to.
    std::string Rewrite(std::string_view text) const {
        PDFSettings* const settings = NewSettings(text);
        std::string const written = Text(settings);
        Release(settings);
        return written;
    }

    // What is written of a dictionary in the object notation.
    std::string WriteNotation(std::string const& notation) const {
        auto* const dict = NewValue<POSDict>(notation);
        std::string const written = WriteDict(dict);
        Release(dict);
        return written;
    }

    std::string WriteDict(POSDict* dict) const {
        PDFSettings* const settings = fNewFromDict(dict, "");
        AddRef(settings);
        std::string const written = Text(settings);
        Release(settings);
        return written;
    }

    template <class T>
    void Put(POSDict* dict, char const* key, T* value) const {
        BIBStringAtom* const atom = fTables.fStringAtom.NewStringAtom(key);
        AddRef(value);
        fTables.fDict.Put(dict, atom, reinterpret_cast<POSObject*>(value));
        Release(value);
        fTables.fStringAtom.DeleteStringAtom(atom);
    }

    void
    PutBinData(POSDict* dict, char const* key, char const* type, std::string const& data) const {
        auto const* const bytes = reinterpret_cast<unsigned char const*>(data.data());
        Put(dict, key, fTables.fBinData.NewPOSBinData(type, bytes, data.size()));
    }

    std::string WriteNumber(double value, char const* key = "N") const {
        auto* const dict = NewValue<POSDict>("<>");
        Put(dict, key, fTables.fNumber.NewPOSNumber(value));
        std::string const written = WriteDict(dict);
        Release(dict);
        std::string const expectedHead = std::string("<<\r\n  /") + key + " ";
        return written.substr(expectedHead.size(), written.find('\r', 4) - expectedHead.size());
    }
};

TEST_F(JoboptionsWriter, LaysOutEveryKindOfValue) {
    struct {
        std::string fRead;
        std::string fWritten;
    } const kCases[] = {
        {"<</CompatibilityLevel 1.4/Names [/A]/Sub<</X true >> >>setalembicorparams",
         Written("  /CompatibilityLevel 1.4\n  /Names [\n    /A\n  ]\n  /Sub <<\n    /X true\n"
                 "  >>\n")},
        {"<</T true/F false/N /true/W /a#20b >>setalembicorparams",
         Written("  /T true\n  /F false\n  /N true\n  /W /a#20b\n")},
        {"<</S (a\\)\\t\r\nb)/E ()/H <fe FF0>/I <> >>setalembicorparams",
         "<<\r\n  /S (a\\)\\t\r\nb)\r\n  /E ()\r\n  /H <fe FF0>\r\n  /I <>\r\n"
         ">> setalembicorparams\r\n" +
             kDefaultTail},
        {"<</A [[1 [ ] 2 ]<</D [3 ] >>] >>setalembicorparams",
         Written("  /A [\n    [\n      1\n      [\n      ]\n      2\n    ]\n    <<\n      /D [\n"
                 "        3\n      ]\n    >>\n  ]\n")},
        {"<</Last << >>>>setalembicorparams", Written("  /Last <<\n  >>\n")},
        {"<</O <</CompatibilityLevel 1 /SyntheticBoldness 1 >>/CompatibilityLevel /x "
         ">>setalembicorparams",
         Written("  /O <<\n    /CompatibilityLevel 1.0\n    /SyntheticBoldness 1.00\n  >>\n"
                 "  /CompatibilityLevel /x\n")},
        {"% prolog\n<<%c\n/B 2 /A 0x10 >>setalembicorparams \n(the tail)\n",
         "<<\r\n  /B 2\r\n  /A 16\r\n>> setalembicorparams\r\n(the tail)\n"},
        {"", Written("")},
        {"<</trueish /trueish /CompatibilityLevelX 1 /" + kLongKey + " 1 >>setalembicorparams",
         Written("  /trueish /trueish\n  /CompatibilityLevelX 1\n  /" + kLongKey + " 1\n")},
    };
    for (auto const& row : kCases) {
        EXPECT_EQ(row.fWritten, Rewrite(row.fRead)) << "of: " << row.fRead;
    }
    EXPECT_EQ(Written("  /two words /a )\n"), WriteNotation("<(two words) (a \\))>"));
}

TEST_F(JoboptionsWriter, DecidesBetweenWholeAndRealInSinglePrecision) {
    struct {
        double fValue;
        char const* fWritten;
    } const kCases[] = {
        {0, "0"},
        {-0.0, "0"},
        {1500, "1500"},
        {0.1, "0.10000"},
        {0.000001, "0.00000"},
        {-0.000001, "-0.00000"},
        {2.00000001, "2"},
        {0.999999999, "1"},
        {16777217, "16777216"},
        {2147483520, "2147483520"},
        {2147483647, "2147483647.00000"},
        {-2147483648.0, "-2147483648"},
        {-2147483700.0, "-2147483648"},
        {-2147483904.0, "-2147483904.00000"},
        {3000000000, "3000000000.00000"},
        {4294967296.0, "4294967296.00000"},
        {1e300 * 1e300, "inf"},
        {-1e300 * 1e300, "-inf"},
        {std::nan(""), "nan"},
        {-std::nan(""), "-nan"},
    };
    for (auto const& row : kCases) {
        EXPECT_EQ(row.fWritten, WriteNumber(row.fValue));
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
    char expected[400];
    double const largest = std::numeric_limits<double>::max();
    std::snprintf(expected, sizeof expected, "%.5f", -largest);
    EXPECT_EQ(expected, WriteNumber(-largest));
    expected[std::strlen(expected) - 4] = '\0';
    EXPECT_EQ(expected, WriteNumber(-largest, "CompatibilityLevel"));
}

// What was read and written is read again as the same settings, and written the same way.
TEST_F(JoboptionsWriter, ComesToRestAfterOneRoundTrip) {
    for (char const* const name : {"printer.joboptions", "screen.joboptions"}) {
        PDFSettings* const first = NewSettings(ReadFile(name));
        std::string const written = Text(first);
        PDFSettings* const second = NewSettings(written);
        ASSERT_NE(nullptr, second) << name;
        Describer const describe(fTables);
        EXPECT_EQ(describe.Dict(fGetSettings(first)), describe.Dict(fGetSettings(second))) << name;
        EXPECT_EQ(written, Text(second)) << name;
        Release(second);
        Release(first);
    }
}

TEST_F(JoboptionsWriter, ReadsBackWithTheDifferencesThatTheFormatHas) {
    struct {
        char const* fRead;
        char const* fWritten;
        char const* fReadAgain;
    } const kCases[] = {
        {"% c\n<< /B 1%c\n  /A 2 /B 3 >> setalembicorparams\n\n tail",
         "  /B 3\n  /A 2\n",
         "<<B 3 A 2 AlembicorData AlembicorData{tail}>>"},
        {"<</T /true >>setalembicorparams tail",
         "  /T true\n",
         "<<T /true AlembicorData AlembicorData{tail}>>"},
        {"<</A 1.0/B 0x10/C 010/D 1.5e3 >> setalembicorparams tail",
         "  /A 1\n  /B 16\n  /C 8\n  /D 1500\n",
         "<<A 1 B 16 C 8 D 1500 AlembicorData AlembicorData{tail}>>"},
        {"<</A 0.000001 /B 0.123456 /C 0.5 >>setalembicorparams tail",
         "  /A 0.00000\n  /B 0.12346\n  /C 0.50000\n",
         "<<A 0 B 0.12346 C 0.5 AlembicorData AlembicorData{tail}>>"},
        {"<</CompatibilityLevel 1 /SyntheticBoldness 1 >>setalembicorparams tail",
         "  /CompatibilityLevel 1.0\n  /SyntheticBoldness 1.00\n",
         "<<CompatibilityLevel 1 SyntheticBoldness 1 AlembicorData AlembicorData{tail}>>"},
        {"<</A (\\)\\061)/B <0 g> >>setalembicorparams tail",
         "  /A (\\)\\061)\n  /B <0 g>\n",
         "<<A (\\)\\061) B <0 g> AlembicorData AlembicorData{tail}>>"},
        {"<</A [ 1 2 ] /E [ ] >>setalembicorparams tail",
         "  /A [\n    1\n    2\n  ]\n  /E [\n  ]\n",
         "<<A [1 2] E [] AlembicorData AlembicorData{tail}>>"},
        {"<</A 1 >>setalembicorparams",
         "  /A 1\n",
         "<<A 1 AlembicorData AlembicorData{<<\r\n>> setpagedevice\r\n}>>"},
        {"<</A << >>>>setalembicorparams tail",
         "  /A <<\n  >>\n",
         "<<A <<>> AlembicorData AlembicorData{tail}>>"},
    };
    for (auto const& row : kCases) {
        std::string const written = Rewrite(row.fRead);
        std::string const expected = Written(row.fWritten);
        EXPECT_EQ(
            expected.substr(0, expected.size() - kDefaultTail.size()),
            written.substr(0, expected.size() - kDefaultTail.size()))
            << row.fRead;
        PDFSettings* const settings = NewSettings(written);
        ASSERT_NE(nullptr, settings) << row.fRead;
        EXPECT_EQ(row.fReadAgain, Describer(fTables).Dict(fGetSettings(settings))) << row.fRead;
        Release(settings);
    }
    // The empty dictionary takes the key behind it, and the text never ends as it should.
    auto* const dict = NewValue<POSDict>("<A < > B 1>");
    EXPECT_EQ(nullptr, NewSettings(WriteDict(dict)));
    Release(dict);
}

TEST_F(JoboptionsWriter, GivesNoErrorForAValueThatItCannotWrite) {
    struct {
        char const* fNotation; // the settings, to which a value of no known kind is added under X
        char const* fAt;       // the path of the dictionary that gets it; null for the settings
        char const* fTail;     // null for none
        std::string fWritten;
    } const kCases[] = {
        {"<A 1>", nullptr, nullptr, kDefaultTail},
        {"<A 1>", nullptr, "tail", ""},
        {"<A 1 D < E 1 >>", "D", nullptr, kDefaultTail},
        {"<A 1 D < E 1 > B 2>", "D", "tail", ""},
        {"<A 1 B [ 1 [ < E 1 > ] 2 ]>", "B/1/0", nullptr, kDefaultTail},
        {"<A 1 B [ 1 [ < E 1 > ] 2 ]>", "B/1/0", "tail", ""},
    };
    for (auto const& row : kCases) {
        auto* const dict = NewValue<POSDict>(row.fNotation);
        POSDict* target = dict;
        if (row.fAt != nullptr) {
            BIBStringAtom* const atom = fTables.fStringAtom.NewStringAtom(row.fAt);
            target = reinterpret_cast<POSDict*>(fTables.fDict.DeepGet(dict, atom));
            fTables.fStringAtom.DeleteStringAtom(atom);
        }
        // Below the settings this key is one like any other.
        PutBinData(target, row.fAt == nullptr ? "X" : "AlembicorData", "AlembicorData", "inner");
        if (row.fTail != nullptr) {
            PutBinData(dict, "AlembicorData", "AlembicorData", row.fTail);
        }
        std::string const before = Describer(fTables).Dict(dict);
        EXPECT_EQ(row.fWritten, WriteDict(dict)) << before;
        EXPECT_EQ(before, Describer(fTables).Dict(dict));
        Release(dict);
    }
    auto* const dict = NewValue<POSDict>("<A 1>");
    PutBinData(dict, "B", "JoboptionsStringX", "b");
    EXPECT_EQ(kDefaultTail, WriteDict(dict));
    unsigned short const units[] = {'u', 0};
    auto const strings = LoadTable<_t_POSUnicodeStringInterface>(&BIBRuntimeLookup);
    Put(dict, "B", strings.NewPOSUnicodeString(units));
    EXPECT_EQ(kDefaultTail, WriteDict(dict));
    Release(dict);
    EXPECT_TRUE(fLog.fMessages.empty());
}

TEST_F(JoboptionsWriter, FailsWhereTheTailIsNoBinaryData) {
    EXPECT_EQ("(null)", WriteNotation("<A 1 AlembicorData 2>"));
    EXPECT_EQ(std::vector<std::string>{"unknown BIB error"}, fLog.fMessages);
}

TEST_F(JoboptionsWriter, WritesBinaryDataWithAllItsBytes) {
    using namespace std::string_literals;
    auto* const dict = NewValue<POSDict>("<>");
    PutBinData(dict, "S", "JoboptionsString", "a\0b"s);
    PutBinData(dict, "H", "JoboptionsUnicodeString", "\0"s);
    PutBinData(dict, "AlembicorData", "AnyType", "t\0t"s);
    std::string const entries = "<<\r\n  /S (a\0b)\r\n  /H <\0>\r\n>> setalembicorparams\r\n"s;
    EXPECT_EQ(entries + "t\0t"s, WriteDict(dict));
    PutBinData(dict, "AlembicorData", "AlembicorData", "");
    EXPECT_EQ(entries, WriteDict(dict));
    Release(dict);
}

TEST_F(JoboptionsWriter, IndentsEveryLevel) {
    std::string notation;
    std::string expected = "  /A [\n";
    std::string closing;
    for (unsigned long level = 1; level < 40; ++level) {
        notation += "[ ";
        expected += std::string(2 * level + 2, ' ') + "[\n";
        closing.insert(0, std::string(2 * level + 2, ' ') + "]\n");
    }
    expected += std::string(82, ' ') + "1\n" + closing + "  ]\n";
    EXPECT_EQ(
        Written(expected), WriteNotation("<A [ " + notation + "1" + std::string(40, ']') + ">"));
}

// A boolean whose line fails once is written as a name, which is the same value.
TEST_F(JoboptionsWriter, WritesABooleanAgainWhereItsLineFails) {
    auto* const dict = NewValue<POSDict>("<A true>");
    PDFSettings* const settings = fNewFromDict(dict, "");
    AddRef(settings);
    std::string const whole = Text(settings);
    unsigned long rescued = 0;
    for (unsigned long n = 1; n < 20; ++n) {
        bibrt::FailStreamOperation(n, /*andAllLater=*/false);
        BIBPositionableStream* const stream = fGetJobOptionsData(settings);
        bibrt::ResetFailures();
        std::string const text = stream == nullptr ? "" : ReadAll(stream);
        bool const isRescued = text.find("/A /true\r\n>>") != std::string::npos;
        rescued += isRescued ? 1 : 0;
        EXPECT_TRUE(text == whole || text == kDefaultTail || text.empty() || isRescued) << text;
    }
    EXPECT_EQ(1U, rescued);
    Release(settings);
    Release(dict);
}

// Whichever stream operation fails: nothing or an empty text, and the settings as they were.
TEST_F(JoboptionsWriter, KeepsTheKeysOfSettingsWhoseWritingFails) {
    auto* const dict = NewValue<POSDict>("<A 1 B [ 2 (x) ] C < D 3 >>");
    PutBinData(dict, "S", "JoboptionsString", "s");
    PutBinData(dict, "AlembicorData", "AlembicorData", "tail");
    std::string const before = Describer(fTables).Dict(dict);
    PDFSettings* const settings = fNewFromDict(dict, "");
    AddRef(settings);
    unsigned long const start = bibrt::CountStreamOperations();
    std::string const whole = Text(settings);
    unsigned long const operations = bibrt::CountStreamOperations() - start - 1;
    EXPECT_GT(operations, 15U);
    for (unsigned long n = 1; n <= operations; ++n) {
        bibrt::FailStreamOperation(n, /*andAllLater=*/true);
        BIBPositionableStream* const stream = fGetJobOptionsData(settings);
        bibrt::ResetFailures();
        EXPECT_EQ(n <= operations - 2, stream != nullptr) << n;
        EXPECT_EQ("", stream == nullptr ? "" : ReadAll(stream)) << n;
        EXPECT_EQ(before, Describer(fTables).Dict(dict)) << n;
    }
    EXPECT_EQ(whole, Text(settings));
    Release(settings);
    Release(dict);
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

TEST_F(JoboptionsWriterDepth, BearsAThousandLevels) {
    std::string const written = WriteDeepArray(1000);
    EXPECT_NE(std::string::npos, written.find("\r\n  ]\r\n>> setalembicorparams\r\n"));
    EXPECT_EQ(1000, std::count(written.begin(), written.end(), ']'));
    std::string dicts;
    for (int i = 0; i < 1000; ++i) {
        dicts += "<A ";
    }
    OnSmallStack([&] { dicts = WriteNotation(dicts + "1" + std::string(1000, '>')); });
    EXPECT_EQ(1000, std::count(dicts.begin(), dicts.end(), 'A'));
}

// Blanks would fill the memory long before a stack of this size ends.
TEST_F(JoboptionsWriterDepth, EndsAtFiveThousandLevelsOnAnyStack) {
    EXPECT_NE("(null)", WriteDeepArray(5000, kLargeStack));
    EXPECT_EQ("(null)", WriteDeepArray(5001, kLargeStack));
}

TEST_F(JoboptionsWriterDepth, RunsOutOfMemoryWhereTheStackDoes) {
    EXPECT_EQ("(null)", WriteDeepArray(1000UL * 1000));
    auto* const dict = NewValue<POSDict>("<A 1>");
    PutBinData(dict, "AlembicorData", "AlembicorData", "tail");
    Put(dict, "Itself", dict);
    OnSmallStack([&] { EXPECT_EQ("(null)", WriteDict(dict)); });
    BIBStringAtom* const atom = fTables.fStringAtom.NewStringAtom("Itself");
    fTables.fDict.Remove(dict, atom);
    fTables.fStringAtom.DeleteStringAtom(atom);
    EXPECT_EQ("<<A 1 AlembicorData AlembicorData{tail}>>", Describer(fTables).Dict(dict));
    Release(dict);
    EXPECT_EQ(std::vector<std::string>(2, "out of memory"), fLog.fMessages);
}

} // namespace support
