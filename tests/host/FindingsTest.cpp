// Each mistake in a text, at its position, and what is said of it.
#include "pdfsettings/Document.h"

#include <gtest/gtest.h>
#include <set>
#include <string>
#include <string_view>

namespace pdfsettings {

namespace {

using namespace std::string_view_literals;

struct Mistakes {
    std::string_view fText;     // with $ for the keyword and ~ for a name of 256 bytes
    std::string_view fFindings; // position, size and id of each; ! where the text is refused
};

constexpr Mistakes kMistakes[] = {
    {"\xEF\xBB\xBF<< /EmbedAllFonts true $", "0+3 !encoding"},
    {"<< /EmbedAllFonts true >> setpagedevice", "26+13 !keyword"},
    {"<< /EmbedAllFonts true $X", "26+19 stuck"},
    {"% a << b\n<<\n$\n", "4+2 !prolog"},
    {"hello world", "0+11 !no-settings"},
    {"<< /MaxSubsetPct +100 $", "17+4 !unknown-value"},
    {"<<\n  /EmbedAllFonts true junk % was /this\n  /MaxSubsetPct 50\n$\n",
     "25+4 stray, 58+2 !stray"},
    {"<< /EmbedAllFonts true junk $ << /X [ 1 ] >> setpagedevice", "23+4 !stray"},
    {"<< /ColorImageDict << >> /EmbedAllFonts true $", "19+5 !empty-dictionary"},
    {"<< $ << /PageSize [ 1 2 ] >> setpagedevice", "0+5 !empty-dictionary"},
    {"<< /A (x\n/B true\n$", "6+2 open-string"},
    {"<< /A (x\n/B [ /C (y) ] $", "6+2 !runaway-string"},
    {"<< /A 010 /B 3e2 /C 08 /D 0.123456 /E 010/F.5 1 /G - 5 /H 12abc /I 16777217 /J 1 $",
     "6+3 octal, 13+3 stuck, 20+2 stuck, 38+7 far-point, 51+1 no-number, 58+5 stuck"},
    {"<< /A trueish $", "6+7 !stuck"},
    {"<< /A <FEZZ> $", "6+6 bad-hex"},
    {"<< /A 08 /F 1 /F 2 $", "6+2 stuck, 14+2 duplicate"},
    {"<< /AlembicorData 1 /AlembicorData 2 $",
     "3+14 reserved-key, 20+14 duplicate, 20+14 reserved-key"},
    {"<< /D /E 1 / 5 /K 1 $", "9+1 stray, 11+2 odd-key, 18+1 !stray"},
    {"<< /ColorImageDict << /QFactor 0.5 > /EmbedAllFonts true $", "35+2 single-close"},
    {"<< /NeverEmbed [ /A /B /EmbedAllFonts true $", "15+1 !open-array"},
    {"<< /NeverEmbed [ - ] $", "17+1 !no-number"},
    {"<< /HSamples [ 1e5 ] $", "15+3 !stuck"},
    {"<< /CalRGBProfile /EmbedAllFonts true /MaxSubsetPct $", "33+4 stray, 38+13 !missing-value"},
    {"<< /ColorImageDict << /QFactor 0.5 /EmbedAllFonts true $ << /PageSize [ 1 2 ] >> "
     "setpagedevice",
     "58+18 !unclosed"},
    {"<<\n  /A 1\n", "10+0 !unclosed"},
    {"<<\n  /A <<\n    /B 1\n  >>\n  /C <<\n    /D 1\n  /E 2\n$", "52+18 !unclosed"},
    {"<<\n  /A [ 1\n", "8+1 !open-array"},
    {"<< /A <FE", "6+3 !open-hexstring"},
    {"<< /A /~ /B 1 $", "6+257 long-name"},
    {"<< /A null $", "6+4 !unknown-value"},
    {"<< /A { 1 } $", "6+1 !unknown-value"},
    {"<< /A 1e /B 2 $", "6+2 stuck"},
    {"<< /W 1 /Y << /B 1x> /X True $", "17+2 stuck, 24+4 !unknown-value"},
    {"<< /W 1\n/Y (x\n/y)\n/X $\n", "11+2 runaway-string, 18+2 !missing-value"},
    {"<< /W 1 /Y 1 <FE> /Z (s>t) u (s>>t) /X True $",
     "13+4 stray, 27+4 stray, 39+4 !unknown-value"},
    {"<< /W 1 /Y 1 > /Z << /B 1 >>> /X 2 $", "13+1 stray, 28+1 stray"},
    {"<< /W 1 /Y /~ /Z [ /~ 1 ] /X +1 $",
     "11+257 long-name, 274+257 long-name, 539+2 !unknown-value"},
    {"<< /Y << >> /C 1 >> /X True $", "6+5 empty-dictionary, 23+4 !unknown-value"},
    {"\x00<< /A 1 $"sv, "0+1 zero-byte"},
    {"\xFF\xFE<\x00<\x00 \x00"sv, "0+2 !encoding"},
    {"<\x00<\x00 \x00/\x00"
     "A\x00"sv,
     "0+2 !encoding"},
    {"% c\x00\n<< /A 1 $\n"sv, "3+1 !zero-byte"},
    {"<< /A << /B 1 \x00 >> $"sv, "14+1 !zero-byte"},
    {"<< /A (a\x00"
     "b) /B 1 $"sv,
     "8+1 !zero-byte"},
    {"<< /A <FE\x00> $"sv, "9+1 !zero-byte"},
    {"<< /A 12 >>\x00 setalembicorparams"sv, "11+1 !zero-byte"},
    {"<< /\x00"
     "A 1 $"sv,
     "3+2 odd-key"},
    {"<< /A (abc /B 1 /C (x) /D 2 $", "6+16 runaway-string"},
    {"<< /A (abc (x) /D 2 $", "6+8 nested-brackets"},
    {"<< /A 99999999999999999999 /B 9007199254740993 /C -00 /D -0 $",
     "6+20 rounded, 30+16 rounded, 50+3 octal"},
    {"<< /A (x\\\\\\) /B (y\\\\) /C 1 $", "6+6 backslashes"},
    {"<< 1 /~ 1 $", "3+1 stray, 5+257 !long-key"},
    {"<< /A 010abc.5 1 /B 08x. 1 /C -inf.0 /D 1 $",
     "6+8 far-point, 20+4 far-point, 30+6 far-point"},
    {"<< /A << /B (x)>/C 2 /D 3 $", "15+2 single-close"},
    {"<</A<< 1>>> /B 1 $", "7+1 !stray"},
    {"<< // $", "3+2 !missing-value"},
    {"<</A<<>>/A<< 1$", "4+4 !empty-dictionary, 15+2 single-close"},
    {"<< /QFactor 0,4 /B 1, /C (x)) /D 300dpi /E 1; $",
     "12+3 stuck, 19+2 stuck, 25+4 stuck, 33+6 stuck, 43+2 !stuck"},
    {"<< /A 1 Optimize true /B 2 OPM = 1 $", "8+13 stray, 27+7 !stray"},
    {"<< /A Left $", "6+4 !unknown-value"},
    {"<< /A \"Left\" $", "6+6 !unknown-value"},
    {"<< /A <FEFF /B 2\n$", "6+10 !runaway-hexstring"},
    {"<< /A (\x80\xA9) 010 /B 1 $", "11+3 stray"},
};

// What findings of these texts say, where that depends on the text.
constexpr char const* kMessages[] = {
    "expected setalembicorparams behind the settings, found \"setpagedevice\"",
    "\"+100\" is not a value: write 100",
    "\"junk\" is ignored: it has no key, or is a / missing before it?",
    ("\"junk\" before the end of a dictionary hides that end: remove it, or is a / missing before "
     "it?"),
    "an empty dictionary swallows the entries after it: remove it",
    "empty settings with a blank between << and >> are misread: write <<>>",
    "the leading 0 makes 010 octal, and it is read as 8: write 10",
    "\"trueish\" is read as true: remove \"ish\"",
    "/F is repeated: the earlier value is lost",
    ("\"1\" is ignored: /K is read as the value of the key before it, and the end of the "
     "dictionary is skipped too"),
    "a single > ends the dictionary, and both bytes of \"> \" are skipped: write >>",
    "\"1e5\" is read as 1, since an exponent needs a point: write 1.0e5",
    "\"true\" is ignored: /EmbedAllFonts is read as the value of the key before it",
    ("setalembicorparams is inside a dictionary: a >> is missing before it; the << in line 1 is "
     "not closed"),
    ("setalembicorparams is inside a dictionary: a >> is missing before it; the << in line 5 is "
     "not closed"),
    "the settings do not end: expected >> setalembicorparams; the << in line 1 is not closed",
    "\"null\" is not a value: write /null for a name, (null) for a text",
    "\"1e\" is read as 1: remove \"e\"",
    "\"True\" is not a value: write true",
    "/X has no value",
    "\"<FE>\" is ignored: it has no key",
    sizeof(long) == 8 ? "99999999999999999999 is read as 9223372036854775808"
                      : "99999999999999999999 is read as 2147483647",
    "the point in the characters after it makes 010 the number 10: put a blank behind the number",
    "\"1\" before the end of a dictionary hides that end: remove it",
    "// has no value",
    "\"0,4\" is read as 0: write 0.4, or leave the comma out",
    "\"Left\" is not a value: write /Left for a name, (Left) for a text",
    R"(""Left"" is not a value: write (text) for a string, /Name for a name)",
};

std::string Replaced(std::string text, char placeholder, std::string const& by) {
    for (std::size_t at = 0; (at = text.find(placeholder, at)) != std::string::npos;) {
        text.replace(at, 1, by);
        at += by.size();
    }
    return text;
}

std::string FindingsOf(Document const& document) {
    std::string findings;
    for (Finding const& finding : document.Findings()) {
        Span const span = *finding.Bytes();
        findings += (findings.empty() ? "" : ", ") + std::to_string(span.begin) + "+" +
                    std::to_string(span.end - span.begin) +
                    (finding.Level() == Severity::kError ? " !" : " ") + std::string(finding.Id());
    }
    return findings;
}

} // namespace

TEST(Findings, AreAtTheirPositionsAndSayWhatToDo) {
    std::set<std::string> messages;
    for (Mistakes const& mistakes : kMistakes) {
        std::string const text = Replaced(
            Replaced(std::string(mistakes.fText), '$', ">> setalembicorparams"),
            '~',
            std::string(256, 'n'));
        Document const document(text);
        EXPECT_EQ(mistakes.fFindings, FindingsOf(document)) << text;
        for (Finding const& finding : document.Findings()) {
            messages.insert(finding.Message());
        }
    }
    for (char const* const message : kMessages) {
        EXPECT_TRUE(messages.contains(message)) << message;
    }
}

} // namespace pdfsettings
