// Dictionaries, cursors, streams and atoms against standard containers, under random operations of
// which some have no memory.
#include "RuntimeFixture.h"
#include "tests/support/Rounds.h"

#include <algorithm>
#include <deque>
#include <map>
#include <random>
#include <vector>

namespace runtimetest {
namespace {

constexpr int kSteps = 200;

class ModelTest : public RuntimeTest {
protected:
    unsigned long Random(unsigned long below) {
        return std::uniform_int_distribution<unsigned long>(0, below - 1)(fRandom);
    }

    // Does work, now and then without memory for its n-th allocation.
    template <class Work>
    auto Try(Work work) {
        if (Random(100) == 0) {
            bibrt::FailAllocation(1 + Random(2), /*andAllLater=*/Random(2) == 0);
        }
        auto const result = work();
        bibrt::ResetFailures();
        return result;
    }

private:
    std::mt19937 fRandom{1};
};

// A dictionary and a cursor, against entries in the order of their first putting and one of them,
// which may be gone.
class DictModelTest : public ModelTest {
protected:
    struct Entry {
        unsigned long fNumber;
        std::string fKey;
        double fValue;
    };

    void Step() {
        switch (Random(6)) {
        case 0:
        case 1:
            PutBoth("k" + std::to_string(Random(30)));
            break;
        case 2:
            RemoveBoth("k" + std::to_string(Random(30)));
            break;
        case 3:
            Cursors().Begin(fCursor);
            MoveBehind(0);
            break;
        default:
            if (!fIsDone) {
                Cursors().Next(fCursor);
                MoveBehind(fCurrent.fNumber);
            }
        }
    }

    void PutBoth(std::string const& key) {
        auto const value = static_cast<double>(Random(1000));
        Held const number(Ours().NewNumber(value));
        Atom const atom(key);
        fHasLost = Try([&] { return Dicts().Put(fDict, atom, number); }) == 0;
        auto const entry = std::ranges::find(fEntries, key, &Entry::fKey);
        if (entry != fEntries.end()) {
            entry->fValue = fHasLost ? entry->fValue : value;
        } else if (!fHasLost) {
            fEntries.push_back({++fLast, key, value});
        }
    }

    void RemoveBoth(std::string const& key) {
        Atom const atom(key);
        bool const isRemoved = Try([&] { return Dicts().Remove(fDict, atom); }) != 0;
        EXPECT_EQ(isRemoved, std::erase_if(fEntries, [&](Entry const& entry) {
                                 return entry.fKey == key;
                             }) == 1);
    }

    // The cursor on the first entry behind a number.
    void MoveBehind(unsigned long number) {
        auto const next = std::ranges::upper_bound(fEntries, number, {}, &Entry::fNumber);
        fIsDone = next == fEntries.end();
        fCurrent = fIsDone ? Entry{} : *next;
    }

    void CompareValues() const {
        for (Entry const& entry : fEntries) {
            ASSERT_EQ(Ours().NumberOf(Dicts().Get(fDict, Atom(entry.fKey))), entry.fValue);
        }
    }

    void CompareCursors() const {
        Held const all(Cursors().NewPOSDictIterator(fDict));
        Cursors().Begin(all);
        for (Entry const& entry : fEntries) {
            ASSERT_STREQ(Cursors().CurKey(all), entry.fKey.c_str());
            Cursors().Next(all);
        }
        ASSERT_NE(Cursors().IsDone(all), 0);
        ASSERT_EQ(Cursors().IsDone(fCursor) != 0, fIsDone);
        ASSERT_EQ(fIsDone ? "" : Cursors().CurKey(fCursor), fCurrent.fKey);
    }

    POSDict* fDict = nullptr;
    POSDictIterator* fCursor = nullptr;
    std::vector<Entry> fEntries;
    unsigned long fLast = 0;
    Entry fCurrent{};
    bool fIsDone = true;
    bool fHasLost = false; // a value: no reference can be added any more
};

TEST_F(DictModelTest, BehavesLikeAListOfEntries) {
    for (int round = 0; round < support::Rounds(200) && !HasFatalFailure(); ++round) {
        Held const dict(fDict = Dicts().NewPOSDict());
        Held const cursor(fCursor = Cursors().NewPOSDictIterator(dict));
        fEntries.clear();
        MoveBehind(0);
        fHasLost = false;
        for (int step = 0; step < kSteps && !HasFatalFailure() && !fHasLost; ++step) {
            SCOPED_TRACE(testing::Message() << round << " " << step);
            CompareValues();
            CompareCursors();
            Step();
        }
        CompareValues();
        EXPECT_EQ(Containers().AddRef(dict.Container()) == 0, fHasLost);
        Containers().DecrementWithoutDelete(fHasLost ? nullptr : dict.Container());
    }
}

class StreamModelTest : public ModelTest {
protected:
    void Step(conformance::Stream const& stream, std::string& model, std::size_t& position) {
        std::string const text(Random(40), static_cast<char>('a' + Random(26)));
        switch (Random(3)) {
        case 0:
            if (Try([&] { return TakeMessage(stream.TryWrite(text)); }).empty()) {
                model.resize(std::max(model.size(), position + text.size()));
                model.replace(position, text.size(), text);
                position += text.size();
            }
            break;
        case 1: {
            std::string const expected = model.substr(position, text.size());
            EXPECT_EQ(stream.Read(text.size()), expected);
            position += expected.size();
            break;
        }
        default:
            Seek(stream, model, position);
        }
        EXPECT_EQ(stream.Mark(), position);
    }

    void Seek(conformance::Stream const& stream, std::string const& model, std::size_t& position) {
        std::size_t const bases[] = {0, position, model.size()};
        auto const origin = static_cast<BIBPositionableStream_SeekOrigin>(Random(3));
        long const offset = static_cast<long>(Random(100)) - 50;
        long const target = static_cast<long>(bases[origin]) + offset;
        bool const isIn = target >= 0 && target <= static_cast<long>(model.size());
        EXPECT_EQ(TakeMessage(stream.TrySeek(offset, origin)).empty(), isIn);
        position = isIn ? static_cast<std::size_t>(target) : position;
    }
};

TEST_F(StreamModelTest, BehavesLikeAString) {
    for (int round = 0; round < support::Rounds(200); ++round) {
        MemoryStream const stream;
        std::string model;
        std::size_t position = 0;
        for (int step = 0; step < kSteps; ++step) {
            Step(stream, model, position);
        }
        ASSERT_EQ(stream.ReadAll(), model);
    }
}

// Which atoms there are: those that are held, and of the last 1,024 releases those that no object
// holds.
class AtomModelTest : public ModelTest {
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
        ModelTest::TearDown();
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
