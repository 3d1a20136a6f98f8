// The standard layout: what it looks like, what it keeps, and what it refuses.
#include "pdfsettings/Document.h"

#include "pdfsettings/Error.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/GeneratedTexts.h"
#include "tests/support/Rounds.h"
#include "tests/support/SmallStack.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace pdfsettings {

namespace {

constexpr LayoutOptions kSorted{.isSorted = true};

// The bytes that are no blanks; in any order if settings move.
std::string InkOf(std::string text, bool isSorted) {
    std::erase_if(text, [](char byte) {
        return std::string_view("\t\n\r ").find(byte) != std::string_view::npos;
    });
    if (isSorted) {
        std::ranges::sort(text);
    }
    return text;
}

std::string Repeated(std::string const& text, std::size_t times) {
    std::string all;
    for (; times > 0; --times) {
        all += text;
    }
    return all;
}

// Whether the text is formatted; it may also be refused.
bool ExpectSameInLayout(Document const& document, LayoutOptions const& options) {
    try {
        Document const result = document.Formatted(options);
        bool const isKept =
            result.Values() == document.Values() && result.Tail() == document.Tail() &&
            InkOf(result.Text(), options.isSorted) == InkOf(document.Text(), options.isSorted);
        EXPECT_TRUE(isKept && result.Formatted(options).Text() == result.Text())
            << document.Text() << "\nbecame\n"
            << result.Text();
        return document.Body().has_value();
    } catch (Error const& error) {
        bool const isSound = document.WhyRefused() == Refusal::kNone && document.Findings().empty();
        EXPECT_TRUE(error.Where() && (options.isSorted || !isSound)) << document.Text() << "\n"
                                                                     << error.what();
        return false;
    }
}

} // namespace

TEST(Layout, IsStandard) {
    std::string const wide = std::string(86, 'x') + "\xC3\xA4"; // fills a line of 100 columns
    struct {
        std::string fText;
        std::string fExpected;
        bool fIsSorted = false;
    } const cases[] = {
        {"", ""},
        {" % none\n", " % none\n"},
        {"<<>>setalembicorparams/", "<<>> setalembicorparams/"},
        {"<< >> setalembicorparams", "<<\n>> setalembicorparams"},
        // Digits and strings stay, and so do head and tail.
        {"%a\n\n  <</A 1.50/B(x\n y)/C<FE 0>/D 1.0e2>>setalembicorparams % t\n\n<< tail",
         "%a\n\n  <<\n  /A 1.50\n  /B (x\n y)\n  /C <FE 0>\n  /D 1.0e2\n>> setalembicorparams % "
         "t\n\n<< tail"},
        // Comments stay where they are.
        {"<<%a\n\n%b\n/A%c\n%d\n1%e\n\n\n\n%f\n\t/B[%g\n1]%h\n/"
         "C[[1][2%i\n]]%j\n%k\n>>%l\n%m\nsetalembicorparams",
         "<< %a\n  %b\n  /A %c\n    %d\n    1 %e\n\n  %f\n  /B [ %g\n    1\n  ] %h\n  /C [\n    [ "
         "1 ]\n    [\n      2 "
         "%i\n    ]\n  ] %j\n  %k\n>> %l\n%m\nsetalembicorparams"},
        // Nesting: dictionaries take lines, arrays only if they must.
        {"<</A<<\n\n/B[]/C[<</D 1>>[/E]]>>>>setalembicorparams",
         "<<\n  /A <<\n    /B [ ]\n    /C [\n      <<\n        /D 1\n      >>\n      [ /E ]\n    "
         "]\n  >>\n"
         ">> setalembicorparams"},
        {"<</A[1[2]]\n\n/B[(" + wide + ") 1 ]/C[(" + wide + "x) 1]/D[(a\n)]>>setalembicorparams",
         "<<\n  /A [ 1 [ 2 ] ]\n\n  /B [ (" + wide + ") 1 ]\n  /C [\n    (" + wide +
             "x)\n    1\n  ]\n  /D [\n    (a\n)\n  ]\n>> setalembicorparams"},
        // The first line end outside values is that of all lines.
        {"<</A(a\nb)\r/B 1\r\n>>setalembicorparams\n",
         "<<\r  /A (a\nb)\r  /B 1\r>> setalembicorparams\n"},
        {"<</A 1>>setalembicorparams\r\n", "<<\r\n  /A 1\r\n>> setalembicorparams\r\n"},
        // What belongs to a setting moves with it; equal keys keep their order.
        {"<<\n\n%c\n/C<</b 1/B 2>>%C\n\n%b\n/B[2 1]\n/A 2\n/A 1\n%e\n>>setalembicorparams",
         "<<\n  /A 2\n  /A 1\n\n  %b\n  /B [ 2 1 ]\n\n  %c\n  /C <<\n    /B 2\n    /b 1\n  >> %C\n "
         " %e\n"
         ">> setalembicorparams",
         true},
    };
    for (auto const& [text, expected, isSorted] : cases) {
        EXPECT_EQ(Document(text).Formatted({isSorted}).Text(), expected);
        EXPECT_EQ(Document(expected).Formatted({isSorted}).Text(), expected);
    }
}

TEST(Layout, IsRefusedWhereItWouldChangeWhatIsRead) {
    struct {
        std::string fBody;
        std::string fId;
        std::size_t fColumn;
        Fault fCode = Fault::kUnwritable;
    } const cases[] = {
        {"/A 1 junk /B 2", "stray", 9},
        {"/A << /B 1 junk >> /C 2 >>", "stray", 15},
        {"/A 12abc /B 2", "stuck", 7},
        {"/A [ 09 ]", "stuck", 9},
        {"/A 010/B.x 2", "far-point", 7},
        {"/A (a(b)c) /B 2", "nested-brackets", 7},
        {"/A (abc /B 2", "open-string", 7},
        {"/A << /B 1 > /C 2", "single-close", 15},
        {"/A - /B 2", "no-number", 7},
        {"/A << >> /B 2", "empty-dictionary", 7, Fault::kSyntax},
        {"/B 1 /A << >>", "", 12},
        {"/A", "missing-value", 4, Fault::kSyntax},
    };
    for (auto const& example : cases) {
        Document const document("<< " + example.fBody + " >> setalembicorparams");
        auto const error = support::ErrorOf([&] { document.Formatted(kSorted); });
        ASSERT_TRUE(error) << example.fBody;
        EXPECT_EQ(error->Code(), example.fCode) << example.fBody;
        EXPECT_EQ(error->Id(), example.fId) << example.fBody;
        EXPECT_EQ(error->Where(), (Place{1, example.fColumn})) << example.fBody;
    }
}

TEST(Layout, KeepsEverythingOfGeneratedTexts) {
    support::GeneratedTexts texts(
        "%p\r\n<< /A 1.4 % why\n\n %own\n /C [ /x(x\\)%) 10 <FE> % in\n ]\r\n"
        "/D<</J -1/F<</G true>> % g\n/H(b)/I[1 2]>>/B 5>> % end\n "
        "setalembicorparams\n<< /K [ 600 ] >> setpagedevice\n");
    std::size_t formatted = 0;
    for (int i = 0; i < support::Rounds(10000) && !testing::Test::HasFailure(); ++i) {
        Document const document(texts.Next());
        formatted +=
            ExpectSameInLayout(document, {}) && ExpectSameInLayout(document, kSorted) ? 1U : 0U;
    }
    EXPECT_GT(formatted, 500U);
}

TEST(Layout, NeedsNoStackAndNoSpaceForDeepNesting) {
    support::OnSmallStack([] {
        for (std::size_t const levels : {1000U, 4000U}) {
            Document const document(
                "<<" + Repeated("/A[<<", levels / 2) + "/A 1" + Repeated(">>]", levels / 2) +
                ">>setalembicorparams");
            EXPECT_TRUE(ExpectSameInLayout(document, kSorted));
            EXPECT_LT(document.Formatted().Text().size(), levels * 250);
        }
    });
}

} // namespace pdfsettings
