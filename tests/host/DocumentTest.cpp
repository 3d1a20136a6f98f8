// What a document says of a text is what the component makes of it.
#include "pdfsettings/Document.h"

#include "pdfsettings/Component.h"
#include "tests/support/Agreement.h"
#include "tests/support/GeneratedTexts.h"
#include "tests/support/Rounds.h"
#include "tests/support/SmallStack.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace pdfsettings {

namespace {

// Every kind of value, with comments.
constexpr char kGood[] = "% prolog\r\n<<\n  /A 1.4 % why\n  /B [ /C (x\\)) 010 <FE> ]\r\n"
                         "  /D << /E -1 /F << /G true >> >>\n>> setalembicorparams\n"
                         "<< /H [ 600 ] >> setpagedevice\n";

// Whether both read the text. Every finding and entry is in it, and a refused text has one error.
bool ExpectAgreement(std::string const& text) {
    SCOPED_TRACE(text);
    Document const document(text);
    bool const isRefused = document.WhyRefused() != Refusal::kNone;
    EXPECT_EQ(support::Outcome(text), support::Outcome(document));
    auto const liesIn = [&](Span span) {
        return span.begin <= span.end && span.end <= text.size();
    };
    auto const findings = document.Findings();
    EXPECT_EQ(std::ranges::count(findings, Severity::kError, &Finding::Level), isRefused ? 1 : 0);
    for (Finding const& finding : findings) {
        EXPECT_TRUE(liesIn(*finding.Bytes())) << finding.Id();
        EXPECT_EQ(finding.Where(), document.PlaceOf(finding.Bytes()->begin));
    }
    for (DocumentEntry const& entry : document.Entries()) {
        EXPECT_TRUE(liesIn(entry.key) && liesIn(entry.value));
    }
    return !isRefused;
}

// Settings with a value that so many arrays or dictionaries are opened for, and closed again.
std::string Nested(std::string const& open, int levels) {
    std::string text = "<</K ";
    std::string close;
    for (int level = 0; level < levels; ++level) {
        text += open;
        close += open == "[" ? "]" : open.front() == '[' ? ">>]" : ">>";
    }
    return text + "1" + close + ">>setalembicorparams";
}

} // namespace

TEST(Document, AgreesWithTheComponentOnGeneratedTexts) {
    Component const component = Component::Start();
    support::GeneratedTexts texts(kGood);
    std::size_t readable = 0;
    for (int i = 0; i < support::Rounds(60000) && !HasFailure(); ++i) {
        readable += ExpectAgreement(texts.Next()) ? 1U : 0U;
    }
    EXPECT_GT(readable, 6000U);
}

// As deep as the component reads on the same stack, and deeper.
TEST(Document, ReadsNestedTextsOnASmallStack) {
    Component const component = Component::Start();
    support::OnSmallStack([] {
        for (auto const& [open, levels] :
             {std::pair("[", 1000), std::pair("<</A ", 1000), std::pair("[<</B ", 500)}) {
            std::string const text = Nested(open, levels);
            EXPECT_EQ(Document(text).WhyRefused(), Refusal::kNone) << open;
            detail::Turn const turn;
            EXPECT_NO_THROW(detail::ComponentSettings(turn, text)) << open;
            Document const deep(Nested(open, 4000));
            EXPECT_EQ(deep.WhyRefused(), Refusal::kNone) << open;
            EXPECT_EQ(deep.Findings().size(), 1U) << open;
            // Nor do values take more for being compared and written.
            Document const other(Nested(open, 4001));
            EXPECT_TRUE(deep.Values() == Document(deep.Text()).Values()) << open;
            EXPECT_FALSE(deep.Values() == other.Values()) << open;
            EXPECT_GT(Value(deep.Values()).Text().size(), 8000U) << open;
        }
    });
    EXPECT_EQ(Document(Nested("[", 1000000)).WhyRefused(), Refusal::kMemory);
}

// Line ends of all kinds, long lines, and characters of every size beside bytes that are none.
TEST(Document, CountsPlacesInLinesAndCharacters) {
    std::string const wide = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"; // four characters
    std::string const none = "\x80\xC3(\xE2\x82\xF8\xBF";             // seven bytes
    std::string text = "% " + wide + "\r% " + none + "\r\n\n% ";
    std::size_t const lastLine = text.size() - 2;
    for (int i = 0; i < 1000; ++i) {
        text += wide;
    }
    Document const document(text);
    EXPECT_EQ(document.PlaceOf(0), (Place{1, 1}));
    EXPECT_EQ(document.PlaceOf(2 + wide.size()), (Place{1, 7}));
    EXPECT_EQ(document.PlaceOf(text.find('(')), (Place{2, 5}));
    EXPECT_EQ(document.PlaceOf(text.find("\r\n")), (Place{2, 10}));
    EXPECT_EQ(document.PlaceOf(lastLine), (Place{4, 1}));
    for (std::size_t i = 0; i < 1000; ++i) {
        std::size_t const begin = lastLine + 2 + i * wide.size();
        EXPECT_EQ(document.PlaceOf(begin), (Place{4, 3 + 4 * i}));
        EXPECT_EQ(document.PlaceOf(begin + 6), (Place{4, 6 + 4 * i}));
    }
    EXPECT_EQ(document.PlaceOf(text.size()), (Place{4, 4003}));
    EXPECT_EQ(document.LineAt(3), (Span{0, 2 + wide.size()}));
    EXPECT_EQ(document.LineAt(lastLine - 1), (Span{lastLine - 1, lastLine - 1}));
    EXPECT_EQ(document.LineAt(text.size()), (Span{lastLine, text.size()}));
}

} // namespace pdfsettings
