#include "RuntimeFixture.h"

#include <future>
#include <thread>
#include <vector>

namespace runtimetest {
namespace {

class AtomsTest : public RuntimeTest {};

TEST_F(AtomsTest, EqualTextsHaveOnePointer) {
    Atom const a(std::string("colour"));
    Atom const b(std::string("colour"));
    Atom const other("color");
    EXPECT_EQ(a.Text(), b.Text());
    EXPECT_EQ(Atom(a.Text()).Text(), a.Text());
    EXPECT_NE(a.Text(), other.Text());
    EXPECT_STREQ(other.Text(), "color");
}

TEST_F(AtomsTest, TextStaysAfterTheLastReferenceAndComesBackAtItsPlace) {
    char const* text = nullptr;
    {
        Atom const atom("short-lived");
        text = atom.Text();
    }
    EXPECT_STREQ(text, "short-lived");
    EXPECT_EQ(Atom(text).Text(), text);
    for (int i = 0; i < 1000; ++i) {
        Atom const passing(std::to_string(i));
    }
    EXPECT_STREQ(text, "short-lived");
}

TEST_F(AtomsTest, KeepsThoseThatWereReleasedLast) {
    constexpr int kMany = 20000;
    for (int i = 0; i < kMany; ++i) {
        Atom const passing(std::to_string(i));
    }
    bibrt::FailAllocation(1, /*andAllLater=*/true);
    BIBStringAtom* const newest = Atoms().NewStringAtom(std::to_string(kMany - 1).c_str());
    EXPECT_NE(newest, nullptr);
    EXPECT_EQ(Atoms().NewStringAtom("0"), nullptr);
    bibrt::ResetFailures();
    Atoms().DeleteStringAtom(newest);
}

TEST_F(AtomsTest, ReleasedAtomsDoNotCountAsLive) {
    unsigned long const before = bibrt::CountLive().fAtoms;
    {
        Atom const atom("counted");
        Atom const same("counted");
        EXPECT_EQ(bibrt::CountLive().fAtoms, before + 1);
    }
    EXPECT_EQ(bibrt::CountLive().fAtoms, before);
}

TEST_F(AtomsTest, ManyAtomsAreFoundAgainWhileHeld) {
    std::vector<BIBStringAtom*> atoms;
    atoms.reserve(5000);
    for (int i = 0; i < 5000; ++i) {
        atoms.push_back(Atoms().NewStringAtom(std::to_string(i).c_str()));
    }
    for (int i = 0; i < 5000; ++i) {
        EXPECT_EQ(Atom(std::to_string(i)), atoms[static_cast<std::size_t>(i)]);
    }
    for (BIBStringAtom* const atom : atoms) {
        Atoms().DeleteStringAtom(atom);
    }
}

TEST_F(AtomsTest, NullsAreAcceptedAndMemoryFailureGivesNull) {
    Atoms().DeleteStringAtom(nullptr);
    Atoms().AddRef(nullptr);
    EXPECT_EQ(Atoms().GetCString(nullptr), nullptr);
    EXPECT_EQ(Atoms().NewStringAtom(nullptr), nullptr);
    bibrt::FailAllocation(1, /*andAllLater=*/false);
    EXPECT_EQ(Atoms().NewStringAtom("never seen before"), nullptr);
}

TEST_F(AtomsTest, NamesOfBuiltInTypesOutliveEveryRelease) {
    Held const number(NewNumber(1));
    BIBStringAtom* const signature = Containers().GetSignature(number.Container());
    Atoms().DeleteStringAtom(signature);
    Atoms().DeleteStringAtom(signature);
    EXPECT_STREQ(Atoms().GetCString(signature), "POSNumberValue");
}

// Takes and releases the same few texts, so that counts go through zero all the time. False when a
// text is not what was asked for.
bool UseAtoms() {
    bool isGood = true;
    for (int i = 0; i < 20000; ++i) {
        std::string const text = std::to_string(i % 7);
        Atom const atom(text);
        Atoms().AddRef(atom);
        Atoms().DeleteStringAtom(atom);
        isGood = isGood && text == atom.Text();
    }
    return isGood;
}

TEST_F(AtomsTest, ThreadsShareAtoms) {
    std::future<bool> others[3];
    for (std::future<bool>& other : others) {
        other = std::async(std::launch::async, &UseAtoms);
    }
    EXPECT_TRUE(UseAtoms());
    for (std::future<bool>& other : others) {
        EXPECT_TRUE(other.get());
    }
}

TEST_F(AtomsTest, ThreadsShareTheReferenceCountsOfContainersAndErrors) {
    Held const number(NewNumber(1));
    BIBError* const error = Errors().NewError("shared", "here", 1, nullptr, nullptr);
    auto const work = [&] {
        for (int i = 0; i < 20000; ++i) {
            Held const mine(static_cast<POSObject*>(number));
            Errors().Release(Errors().AddRef(error));
            BIBRuntimeLookup("BIB", "BIBReportError", "BIBReportError");
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(*Containers().DebugGetRefCountAddr(number.Container()), 1);
    EXPECT_EQ(TakeMessage(error), "shared");
}

} // namespace
} // namespace runtimetest
