// Changes in the text are the changes that were asked for, and nothing else moves.
#include "pdfsettings/Document.h"

#include "pdfsettings/Error.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/GeneratedTexts.h"
#include "tests/support/Rounds.h"

#include <gtest/gtest.h>

namespace pdfsettings {

namespace {

// Nothing in it is read otherwise than it looks, and a "/" in the tail waits for a missing end.
constexpr char kGood[] = "% prolog\r\n<<\n  /A 1.4 % why\n  /B [ /C (x\\)) 10 <FE> ]\r\n"
                         "  /D << /E -1 /F << /G true >>\n\t\t/H(b)/I[1 2]>>/J 5>> "
                         "setalembicorparams\n<< /K [ 600 ] >> setpagedevice\n";

// The path of each entry in their order; empty for one that no path leads to.
std::vector<std::string> PathsOf(Document const& document) {
    std::vector<std::string> paths;
    std::vector<std::string> parents{""};
    std::vector<std::size_t> positions{0};
    for (DocumentEntry const& entry : document.Entries()) {
        parents.resize(entry.depth + 1);
        positions.resize(entry.depth + 1);
        std::string const key =
            entry.key.Size() == 0 ? std::to_string(positions.back()++) : document.KeyOf(entry);
        bool const isPart = !key.empty() && key.find('/') == std::string::npos;
        std::string const path = (parents.back().empty() ? "" : parents.back() + "/") + key;
        paths.push_back(isPart && document.Find(path) == &entry ? path : "");
        parents.push_back(path);
        positions.push_back(0);
    }
    return paths;
}

bool HasEmptyDictionary(Document const& document) {
    auto const& entries = document.Entries();
    for (std::size_t i = 0; i < entries.size(); ++i) {
        bool const isDictionary = document.Text().compare(entries[i].value.begin, 2, "<<") == 0;
        if (isDictionary && entries[i].next == i + 1) {
            return true;
        }
    }
    return false;
}

// A text that is read as it looks. Nothing can be put behind an empty dictionary.
bool IsSound(Document const& document) {
    return document.Body() && document.Findings().empty() && !HasEmptyDictionary(document);
}

void ExpectReplaced(Document const& document, std::string const& path, std::string const& value) {
    Document const changed = document.WithText(path, value);
    Dictionary expected = document.Values();
    expected.Set(path, Value::Parse(value));
    EXPECT_TRUE(expected == changed.Values())
        << path << " = " << value << " in " << document.Text() << " gave " << changed.Text();
    Span const place = document.Find(path)->value;
    EXPECT_TRUE(changed.Text().starts_with(document.Text().substr(0, place.begin)));
    EXPECT_TRUE(changed.Text().ends_with(document.Text().substr(place.end)));
}

void ExpectAddedAt(Document const& document, std::string const& path) {
    Dictionary expected = document.Values();
    auto const code = support::CodeOf([&] { expected.Set(path, Array::Of({1})); });
    if (code) {
        EXPECT_EQ(support::CodeOf([&] { document.WithText(path, "[ 1 ]"); }), code) << path;
        return;
    }
    Document const changed = document.WithText(path, "[ 1 ]");
    EXPECT_TRUE(expected == changed.Values())
        << path << " in " << document.Text() << " gave " << changed.Text();
}

// With parents that are missing, in a dictionary; as the next element of an array.
void ExpectAdded(Document const& document, std::string const& parent) {
    Value const* const value = document.Values().Find(parent);
    auto const array = value == nullptr ? std::nullopt : value->If<Array>();
    std::string const prefix = parent.empty() ? "" : parent + "/";
    for (std::string const& path :
         {prefix + "New", prefix + "N/e/w", prefix + std::to_string(array ? array->size() : 0)}) {
        ExpectAddedAt(document, path);
    }
}

void ExpectRemoved(Document const& document, std::string const& path) {
    Dictionary expected = document.Values();
    EXPECT_TRUE(expected.Remove(path));
    std::size_t const slash = path.rfind('/');
    Value const* const parent =
        slash == std::string::npos ? nullptr : expected.Find(path.substr(0, slash));
    // No dictionary can be left empty, nor can settings with a comment.
    bool const isLeftEmpty = parent == nullptr
                                 ? document.Entries().front().next == document.Entries().size()
                                 : *parent == Value(Dictionary());
    auto const code = support::CodeOf([&] {
        Document const changed = document.Without(path);
        EXPECT_TRUE(expected == changed.Values())
            << path << " out of " << document.Text() << " gave " << changed.Text();
    });
    EXPECT_TRUE(!code || (isLeftEmpty && code == Fault::kUnwritable))
        << path << " out of " << document.Text();
}

// All changes of one text. How many values were replaced.
std::size_t ExpectChanges(Document const& document) {
    static std::string const kValues[] = {
        "true", "-1.5", "/N", "(a\\)b)", "<00>", "[ 1 /x ]", "<< /Y 1 >>"};
    std::size_t changes = 0;
    ExpectAdded(document, "");
    for (std::string const& path : PathsOf(document)) {
        if (!path.empty()) {
            std::size_t const choice = document.Text().size() + changes++;
            ExpectReplaced(document, path, kValues[choice % std::size(kValues)]);
            ExpectAdded(document, path);
            ExpectRemoved(document, path);
        }
    }
    return changes;
}

} // namespace

TEST(Splice, DoesWhatIsAskedInGeneratedTexts) {
    support::GeneratedTexts texts(kGood);
    std::size_t changes = ExpectChanges(Document(kGood));
    for (int i = 0; i < support::Rounds(10000) && !testing::Test::HasFailure(); ++i) {
        Document const document(texts.Next());
        changes += IsSound(document) ? ExpectChanges(document) : 0;
    }
    EXPECT_GT(changes, 5000U);
}

TEST(Splice, IsRefusedWhereThereIsNoWayOrNoForm) {
    struct {
        std::string_view fText;
        char const* fPath;
        Value fValue;
        Fault fCode;
    } const cases[] = {
        {"<< /A 1 >>", "A", 1, Fault::kSyntax},
        {"", "A/(", 1, Fault::kKey},
        {"", "", 1, Fault::kKey},
        {"", "A", Name{"a b"}, Fault::kUnwritable},
        {"", "A", Name{""}, Fault::kUnwritable},
        {"", "A", RawString{"a\\"}, Fault::kUnwritable},
        {"", "A", RawString{"a) /B (c"}, Fault::kUnwritable},
        {std::string_view("\0x", 2), "A", 1, Fault::kUnwritable},
        {"", "A", HexString{"g>"}, Fault::kUnwritable},
    };
    for (auto const& example : cases) {
        EXPECT_EQ(
            support::CodeOf(
                [&] { Document(std::string(example.fText)).With(example.fPath, example.fValue); }),
            example.fCode)
            << example.fPath;
    }
    // What a file holds can be set, though it is read otherwise than it looks.
    for (Value const& value : {Value(RawString{"a(b"}), Value(HexString{"FF zz"})}) {
        EXPECT_EQ(Document(std::string()).With("A", value).At("A"), value);
    }
    Document const document("<< /A << /B 1 >> /C 2 >> setalembicorparams");
    EXPECT_EQ(support::CodeOf([&] { document.Without("A/C"); }), Fault::kNoValue);
}

TEST(Splice, KeepsCommentsWhereNoSettingIsLeft) {
    Document const document("% a\n<<\n  % b\n  /A 1 % c\n>> setalembicorparams\n<< /X 1 >> x\n");
    Document const without = document.Without("A");
    EXPECT_EQ(without.Text(), "% a\n% b\n  % c\n<<>> setalembicorparams\n<< /X 1 >> x\n");
    EXPECT_EQ(without.With("B", 1).Values(), Dictionary::Of({{"B", 1}}));
}

TEST(Splice, TakesWhatBelongsToABrokenValueWithIt) {
    for (std::string const value : {"1,5", "-x", "(a(b)c)", "12abc"}) {
        Document const document("<< /A " + value + " /B 2 >> setalembicorparams");
        EXPECT_EQ(document.With("A", 7).Text(), "<< /A 7 /B 2 >> setalembicorparams");
    }
    Document const document("<< /A 1 ,5 /B 2 >> setalembicorparams");
    EXPECT_EQ(document.With("A", 7).Text(), "<< /A 7 ,5 /B 2 >> setalembicorparams");
}

} // namespace pdfsettings
