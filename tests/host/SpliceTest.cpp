// Changes in the text are the changes that were asked for, and nothing else moves.
#include "pdfsettings/Splice.h"

#include "pdfsettings/Path.h"
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
    Document const changed(WithValue(document, path, value).value());
    Dictionary expected = document.Values();
    Document const alone("<</V " + value + " >>setalembicorparams");
    EXPECT_TRUE(SetAt(expected, path, alone.Values().ValueAt(0)));
    EXPECT_TRUE(expected == changed.Values())
        << path << " = " << value << " in " << document.Text() << " gave " << changed.Text();
    Span const place = document.Find(path)->value;
    EXPECT_TRUE(changed.Text().starts_with(document.Text().substr(0, place.begin)));
    EXPECT_TRUE(changed.Text().ends_with(document.Text().substr(place.end)));
}

void ExpectAdded(Document const& document, std::string const& parent) {
    std::string const path = (parent.empty() ? "" : parent + "/") + "New";
    auto const text = WithValue(document, path, "[ 1 ]");
    if (!text) {
        return; // no dictionary
    }
    Dictionary expected = document.Values();
    EXPECT_TRUE(SetAt(expected, path, Array::Of({1.0})));
    EXPECT_TRUE(expected == Document(*text).Values())
        << path << " in " << document.Text() << " gave " << *text;
}

void ExpectRemoved(Document const& document, std::string const& path) {
    Document const changed(Without(document, path).value());
    Dictionary expected = document.Values();
    EXPECT_TRUE(RemoveAt(expected, path));
    std::size_t const slash = path.rfind('/');
    Value const* const parent =
        slash == std::string::npos ? nullptr : Find(expected, path.substr(0, slash));
    auto const* const dictionary = parent == nullptr ? nullptr : parent->If<Dictionary>();
    // No dictionary can be left empty, nor can settings with a comment.
    bool const isLeftEmpty = parent == nullptr
                                 ? document.Entries().front().next == document.Entries().size()
                                 : dictionary != nullptr && dictionary->Size() == 0;
    EXPECT_TRUE(isLeftEmpty || expected == changed.Values())
        << path << " out of " << document.Text() << " gave " << changed.Text();
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

TEST(Splice, HasNoPlaceWhereThereIsNone) {
    Document const document("<< /A [ 1 ] /B 2 >> setalembicorparams");
    for (char const* const path : {"C/D", "B/C", "A/1", "A/X"}) {
        EXPECT_FALSE(WithValue(document, path, "1")) << path;
        EXPECT_FALSE(Without(document, path)) << path;
    }
    EXPECT_FALSE(WithValue(Document("% nothing"), "A", "1"));
    EXPECT_FALSE(WithValue(Document("<< /A 1 >>"), "A", "1"));
}

} // namespace pdfsettings
