// What a document says of a text is what the component makes of it.
#include "host/Document.h"

#include "host/Component.h"
#include "host/Error.h"
#include "host/Settings.h"
#include "tests/support/GeneratedTexts.h"
#include "tests/support/TemporaryFolder.h"

#include <bit>
#include <cstdint>
#include <filesystem>

#include <gtest/gtest.h>

namespace pdfsettings {

namespace {

// Every kind of value, with comments.
constexpr char kGood[] = "% prolog\r\n<<\n  /A 1.4 % why\n  /B [ /C (x\\)) 010 <FE> ]\r\n"
                         "  /D << /E -1 /F << /G true >> >>\n>> setalembicorparams\n"
                         "<< /H [ 600 ] >> setpagedevice\n";

// Settings in one line, where no two different ones look alike.
std::string Describe(Value const& value);

std::string Describe(Dictionary const& values) {
    std::string text;
    for (std::size_t place = 0; place < values.Size(); ++place) {
        text += "/" + values.KeyAt(place) + " " + Describe(values.ValueAt(place)) + ";";
    }
    return "<<" + text + ">>";
}

struct Describer {
    std::string operator()(Word const& word) const { return "/" + word.text; }
    std::string operator()(double number) const {
        return std::to_string(std::bit_cast<std::uint64_t>(number));
    }
    std::string operator()(String const& string) const { return "(" + string.bytes + ")"; }
    std::string operator()(HexString const& string) const { return "<" + string.text + ">"; }
    std::string operator()(Binary const& data) const { return data.type + "{" + data.bytes + "}"; }
    std::string operator()(Text16 const&) const { return "text"; }
    std::string operator()(Dictionary const& values) const { return Describe(values); }
    std::string operator()(Array const& values) const {
        std::string text;
        for (std::size_t index = 0; index < values.Size(); ++index) {
            text += Describe(values[index]) + ",";
        }
        return "[" + text + "]";
    }
};

std::string Describe(Value const& value) {
    return std::visit(Describer(), value.Get());
}

char const* Name(Refusal refusal) {
    constexpr char const* kNames[] = {"read", "invalid file", "unknown value", "memory"};
    return kNames[static_cast<int>(refusal)];
}

// What the component makes of a text.
std::string Outcome(Component const& component, std::string const& text) {
    try {
        return Describe(Settings::FromText(component, text).Values());
    } catch (Error const& error) {
        std::string const reason = error.what();
        bool const isInvalid = reason.find("file is invalid") != std::string::npos;
        bool const isUnknown = reason.find("is unknow type") != std::string::npos;
        return Name(
            isInvalid   ? Refusal::kInvalidFile
            : isUnknown ? Refusal::kUnknownValue
                        : Refusal::kMemory);
    }
}

std::size_t CountErrors(Document const& document) {
    return static_cast<std::size_t>(
        std::ranges::count(document.Findings(), Severity::kError, &TextFinding::severity));
}

bool LiesIn(Document const& document, Span span) {
    return span.begin <= span.end && span.end <= document.Text().size();
}

// Every fault and entry lies in the text, and a refused text has one error.
void ExpectSound(Document const& document) {
    bool const isRefused = document.WhyRefused() != Refusal::kNone;
    EXPECT_EQ(isRefused ? 1U : 0U, CountErrors(document)) << document.Text();
    for (TextFinding const& finding : document.Findings()) {
        EXPECT_TRUE(LiesIn(document, finding.span)) << finding.id << ": " << document.Text();
    }
    for (DocumentEntry const& entry : document.Entries()) {
        EXPECT_TRUE(LiesIn(document, entry.key)) << document.Text();
        EXPECT_TRUE(LiesIn(document, entry.value)) << document.Text();
    }
}

// Whether both read the text.
bool ExpectAgreement(Component const& component, std::string const& text) {
    Document const document(text);
    bool const isRefused = document.WhyRefused() != Refusal::kNone;
    std::string const found = isRefused ? Name(document.WhyRefused()) : Describe(document.Values());
    EXPECT_EQ(Outcome(component, text), found) << "text: " << text;
    ExpectSound(document);
    return !isRefused;
}

} // namespace

TEST(Document, AgreesWithTheComponentOnFiles) {
    Component const component;
    std::size_t files = 0;
    for (char const* const folder : {"data", "tests/data", "tests/tool/cases"}) {
        for (auto const& file : std::filesystem::directory_iterator(
                 std::filesystem::path(PDFSETTINGS_DATA) / folder)) {
            ExpectAgreement(component, support::ReadBytes(file.path()));
            ++files;
        }
    }
    EXPECT_GT(files, 10U);
}

TEST(Document, AgreesWithTheComponentOnGeneratedTexts) {
    Component const component;
    support::GeneratedTexts texts(kGood);
    std::size_t readable = 0;
    for (int i = 0; i < 100000 && !HasFailure(); ++i) {
        readable += ExpectAgreement(component, texts.Next()) ? 1U : 0U;
    }
    EXPECT_GT(readable, 10000U);
}

} // namespace pdfsettings
