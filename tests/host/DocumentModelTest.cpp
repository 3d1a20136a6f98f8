// A document against a generator that knows what it puts into a text: each setting with its place
// and value, and each finding with its kind and place.
#include "pdfsettings/Component.h"
#include "pdfsettings/Document.h"
#include "tests/support/Agreement.h"
#include "tests/support/Rounds.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace pdfsettings {

namespace {

// A value as it is in a file, what the component makes of it, and what there is to find.
struct Sample {
    std::string fText;
    Value fValue;
    char const* fFinding = nullptr; // null for nothing
    bool fLeavesRest = false;       // behind the value, which only a dictionary passes over
};

std::vector<Sample> const& Samples() {
    static std::vector<Sample> const kSamples = {
        {"12", 12.0},
        {"-1.5", -1.5},
        {"0x10", 16.0},
        {"/All", Name{"All"}},
        {"/A#", Name{"A#"}},
        {"true", Name{"true"}},
        {"()", RawString{""}},
        {"(a \\) / << % b)", RawString{"a \\) / << % b"}},
        {"(one\r\ntwo)", RawString{"one\r\ntwo"}},
        {"<FEFF 0041>", HexString{"FEFF 0041"}},
        {"010", 8.0, "octal"},
        {"(a(b)c)", RawString{"a(b"}, "nested-brackets", true},
        {"(a\\\\\\)", RawString{"a\\\\\\"}, "backslashes"},
        {"<0 g>", HexString{"0 g"}, "bad-hex"},
        {"/ x", Name{" x"}, "odd-name"},
        {"12abc", 12.0, "stuck", true},
        {"1e5", 1.0, "stuck", true},
        {"1,5", 1.0, "stuck", true},
        {"08", 0.0, "stuck", true},
        {"trueish", Name{"true"}, "stuck", true},
        {"-", 0.0, "no-number", true},
    };
    return kSamples;
}

struct Known {
    std::string fPath;
    Span fKey;
    Span fValue;
    bool fIsWhole; // the value is all that is there
};

class Generator {
public:
    explicit Generator(unsigned seed) : fRandom(seed) {
        fText = Below(2) == 0 ? "% prolog\r\n" : "";
        fText += "<<";
        fValues = Settings("", 0);
        fText += ">> setalembicorparams\n" + std::string(Below(2) == 0 ? "tail / >>" : "");
    }

    std::size_t Below(std::size_t end) { return fRandom() % end; }

    std::string fText;
    Dictionary fValues;          // without the tail
    std::vector<Known> fEntries; // of equal keys the last one
    std::vector<std::string> fFindings;

private:
    // Whatever belongs to no key is passed over up to the next slash, comments or not.
    void Separate(bool isAfterRest = false) {
        static char const* const kSeparators[] = {
            " ", "\n", "\r\n", "\t", " % /X 1 >> ( [\r", "\n%\n"};
        for (std::size_t count = 1 + Below(2); count > 0; --count) {
            fText += kSeparators[Below(isAfterRest ? 4 : std::size(kSeparators))];
        }
    }

    Span Add(std::string const& text) {
        std::size_t const begin = fText.size();
        fText += text;
        return {begin, fText.size()};
    }

    void Find(std::string const& finding, Span span) {
        fFindings.push_back(
            std::to_string(span.begin) + "-" + std::to_string(span.end) + " " + finding);
    }

    Dictionary Settings(std::string const& prefix, int depth) {
        Dictionary values;
        Separate();
        for (std::size_t count = 1 + Below(4); count > 0; --count) {
            // What is passed over already is found once.
            if (!fHasRest && Below(8) == 0) {
                Find("stray", Add("junk"));
                Separate(/*isAfterRest=*/true);
            }
            bool const isLast = count == 1;
            AddEntry(prefix, depth, values, !isLast);
            Separate(!isLast);
        }
        return values;
    }

    // What a value may leave behind it must have a key behind that.
    void AddEntry(std::string const& prefix, int depth, Dictionary& values, bool mayLeaveRest) {
        std::string const key = "K" + std::to_string(Below(8));
        Span const span = Add("/" + key);
        fHasRest = false;
        if (values.FindKey(key) != nullptr) {
            Find("duplicate", span);
            Forget(prefix + key);
        }
        Separate();
        Value const value = AddValue(prefix + key, span, depth, mayLeaveRest);
        values.SetKey(key, value);
    }

    // What a lost value holds is lost too.
    void Forget(std::string const& path) {
        std::erase_if(fEntries, [&](Known const& entry) {
            return entry.fPath == path || entry.fPath.starts_with(path + "/");
        });
    }

    Value AddValue(std::string const& path, Span key, int depth, bool mayLeaveRest) {
        std::size_t const place = fEntries.size();
        fEntries.push_back({path, key, {fText.size(), 0}, true});
        std::size_t const kind = depth < 3 ? Below(8) : 7;
        Value value = kind == 0   ? Value(AddArray(path, depth))
                      : kind == 1 ? Value(AddDictionary(path, depth))
                                  : AddSample(place, mayLeaveRest);
        if (kind < 2) {
            fEntries[place].fValue.end = fText.size();
        }
        return value;
    }

    Array AddArray(std::string const& path, int depth) {
        Array values;
        fText += "[";
        Separate();
        for (std::size_t index = 0; index < Below(4); ++index) {
            std::string const element = path + "/" + std::to_string(index);
            Span const none{fText.size(), fText.size()};
            values.push_back(AddValue(element, none, depth + 1, /*mayLeaveRest=*/false));
            Separate();
        }
        fText += "]";
        return values;
    }

    Dictionary AddDictionary(std::string const& path, int depth) {
        fText += "<<";
        Dictionary values = Settings(path + "/", depth + 1);
        fText += ">>";
        return values;
    }

    Value AddSample(std::size_t place, bool mayLeaveRest) {
        Sample const* sample = nullptr;
        do {
            sample = &Samples()[Below(Samples().size())];
        } while (sample->fLeavesRest && !mayLeaveRest);
        Span const span = Add(sample->fText);
        if (sample->fFinding != nullptr) {
            Find(sample->fFinding, span);
        }
        fHasRest = sample->fLeavesRest;
        fEntries[place].fValue = span;
        fEntries[place].fIsWhole = !sample->fLeavesRest;
        return sample->fValue;
    }

    std::mt19937 fRandom;
    bool fHasRest = false;
};

std::vector<std::string> FindingsOf(Document const& document) {
    std::vector<std::string> findings;
    for (Finding const& finding : document.Findings()) {
        EXPECT_EQ(finding.Level(), Severity::kWarning);
        findings.push_back(
            std::to_string(finding.Bytes()->begin) + "-" + std::to_string(finding.Bytes()->end) +
            " " + finding.Id());
    }
    return findings;
}

} // namespace

TEST(DocumentModel, FindsWhatAGeneratorPutIn) {
    Component const component = Component::Start();
    for (int seed = 0; seed < support::Rounds(3000) && !testing::Test::HasFailure(); ++seed) {
        Generator const made(static_cast<unsigned>(seed));
        SCOPED_TRACE(made.fText);
        Document const document(made.fText);
        ASSERT_EQ(document.WhyRefused(), Refusal::kNone);
        EXPECT_EQ(support::Outcome(made.fText), support::Outcome(document));
        EXPECT_EQ(support::Describe(document.Values()), support::Describe(made.fValues));
        EXPECT_EQ(FindingsOf(document), made.fFindings);
        for (Known const& known : made.fEntries) {
            DocumentEntry const* const entry = document.Find(known.fPath);
            ASSERT_NE(entry, nullptr) << known.fPath;
            EXPECT_EQ(entry->key, known.fKey) << known.fPath;
            EXPECT_EQ(entry->value.begin, known.fValue.begin) << known.fPath;
            EXPECT_TRUE(!known.fIsWhole || entry->value.end == known.fValue.end) << known.fPath;
        }
    }
}

TEST(DocumentModel, ChangesNothingButTheValueThatIsSet) {
    for (int seed = 0; seed < support::Rounds(3000) && !testing::Test::HasFailure(); ++seed) {
        Generator made(static_cast<unsigned>(seed));
        SCOPED_TRACE(made.fText);
        Known const& known = made.fEntries[made.Below(made.fEntries.size())];
        if (known.fIsWhole) {
            std::string expected = made.fText;
            expected.replace(known.fValue.begin, known.fValue.Size(), "(new)");
            EXPECT_EQ(Document(made.fText).WithText(known.fPath, "(new)").Text(), expected)
                << known.fPath;
        }
    }
}

} // namespace pdfsettings
