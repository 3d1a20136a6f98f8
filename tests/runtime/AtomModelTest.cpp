// Atoms against standard containers, under random operations: which are kept is this runtime's own.
#include "RuntimeFixture.h"
#include "tests/support/Rounds.h"

#include <algorithm>
#include <deque>
#include <map>
#include <random>

namespace runtimetest {
namespace {

// Which atoms there are: those that are held, and of the last 1,024 releases those that no object
// holds.
class AtomModelTest : public RuntimeTest {
protected:
    // Makes the released atoms known.
    void SetUp() override {
        for (int i = 0; i < 1024; ++i) {
            fReleased.push_back("first" + std::to_string(i));
            Atom const atom(fReleased.back());
        }
    }
    void TearDown() override {
        while (!fHeld.empty()) {
            Release(fHeld.begin());
        }
        RuntimeTest::TearDown();
    }

    void Take(std::string const& text) {
        auto const held = fHeld.find(text);
        auto const released = std::ranges::find(fReleased, text);
        bibrt::FailAllocation(1, /*andAllLater=*/true);
        BIBStringAtom* atom = Atoms().NewStringAtom(text.c_str());
        bibrt::ResetFailures();
        ASSERT_EQ(atom != nullptr, held != fHeld.end() || released != fReleased.end()) << text;
        atom = atom ? atom : Atoms().NewStringAtom(text.c_str());
        ASSERT_STREQ(Atoms().GetCString(atom), text.c_str());
        ASSERT_EQ(atom, held != fHeld.end() ? held->second : atom);
        if (released != fReleased.end()) {
            released->clear(); // its turn to be freed remains
        }
        fTexts += held == fHeld.end() ? 1U : 0U;
        fHeld.emplace(text, atom);
    }
    void Release(std::multimap<std::string, BIBStringAtom*>::iterator held) {
        std::string const text = held->first;
        Atoms().DeleteStringAtom(held->second);
        fHeld.erase(held);
        if (!fHeld.contains(text)) {
            --fTexts;
            fReleased.pop_front();
            fReleased.push_back(text);
        }
    }

    unsigned long Random(unsigned long below) { return fRandom() % below; }

    std::mt19937 fRandom{1};
    std::multimap<std::string, BIBStringAtom*> fHeld; // one entry for each reference
    unsigned long fTexts = 0;                         // that are held
    std::deque<std::string> fReleased;
};

TEST_F(AtomModelTest, BehavesLikeAMapOfTextsAndAQueueOfReleases) {
    unsigned long const others = bibrt::CountLive().fAtoms;
    for (int step = 0; step < support::Rounds(20000) && !HasFatalFailure(); ++step) {
        if (fHeld.size() > Random(300)) {
            Release(std::next(fHeld.begin(), static_cast<long>(Random(fHeld.size()))));
        } else {
            Take(std::to_string(Random(3000)));
        }
        ASSERT_EQ(bibrt::CountLive().fAtoms, others + fTexts);
    }
}

} // namespace
} // namespace runtimetest
