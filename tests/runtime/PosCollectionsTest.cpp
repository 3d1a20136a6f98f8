#include "RuntimeFixture.h"

#include <cmath>
#include <vector>

namespace runtimetest {
namespace {

std::vector<std::string> KeysOf(POSDict* dict) {
    Held const cursor(Cursors().NewPOSDictIterator(dict));
    std::vector<std::string> keys;
    for (Cursors().Begin(cursor); !Cursors().IsDone(cursor); Cursors().Next(cursor)) {
        keys.emplace_back(Cursors().CurKey(cursor));
    }
    return keys;
}

using Keys = std::vector<std::string>;

class PosArrayTest : public RuntimeTest {
protected:
    std::string Text() const {
        std::string text;
        for (unsigned long i = 0; i < Arrays().Count(fArray); ++i) {
            text += std::to_string(std::lround(NumberAt(Arrays().GetAt(fArray, i)))) + " ";
        }
        return text;
    }
    void Fill(int count) {
        for (int i = 0; i < count; ++i) {
            EXPECT_NE(Arrays().Append(fArray, NewNumber(i)), 0);
        }
    }
    void TearDown() override {
        Containers().Release(As<BIBContainer>(fArray));
        RuntimeTest::TearDown();
    }
    void SetUp() override {
        RuntimeTest::SetUp();
        fArray = Arrays().NewPOSArray();
        Containers().AddRef(As<BIBContainer>(fArray));
    }

    POSArray* fArray = nullptr;
};

TEST_F(PosArrayTest, AppendsReplacesAndRemoves) {
    Fill(4);
    EXPECT_EQ(Text(), "0 1 2 3 ");
    EXPECT_NE(Arrays().SetAt(fArray, 1, NewNumber(9)), 0);
    EXPECT_NE(Arrays().Remove(fArray, 2), 0);
    EXPECT_EQ(Text(), "0 9 3 ");
}

TEST_F(PosArrayTest, RefusesWhatIsOutOfRangeOrNull) {
    Fill(1);
    Held const number(NewNumber(5));
    EXPECT_EQ(Arrays().GetAt(fArray, 1), nullptr);
    EXPECT_EQ(Arrays().SetAt(fArray, 1, number), 0);
    EXPECT_EQ(Arrays().SetAt(fArray, 0, nullptr), 0);
    EXPECT_EQ(Arrays().Append(fArray, nullptr), 0);
    EXPECT_EQ(Arrays().Remove(fArray, 1), 0);
    EXPECT_EQ(Text(), "0 ");
    EXPECT_NE(Containers().AddRef(As<BIBContainer>(fArray)), 0);
    Containers().DecrementWithoutDelete(As<BIBContainer>(fArray));
}

class PosDictTest : public RuntimeTest {
protected:
    void SetUp() override {
        RuntimeTest::SetUp();
        fDict = Dicts().NewPOSDict();
        Containers().AddRef(As<BIBContainer>(fDict));
    }
    void TearDown() override {
        Containers().Release(As<BIBContainer>(fDict));
        RuntimeTest::TearDown();
    }
    double At(std::string const& key) const { return NumberAt(Dicts().Get(fDict, Atom(key))); }
    double DeepAt(char const* path) const { return NumberAt(Dicts().DeepGet(fDict, Atom(path))); }
    bool Remove(std::string const& key) const { return Dicts().Remove(fDict, Atom(key)) != 0; }
    void Fill(int count) const {
        for (int i = 0; i < count; ++i) {
            EXPECT_NE(Put(fDict, std::to_string(i), NewNumber(i)), 0);
        }
    }

    POSDict* fDict = nullptr;
};

TEST_F(PosDictTest, KeysKeepTheirPlaceUntilRemoved) {
    Fill(4);
    Put(fDict, "1", NewNumber(10));
    EXPECT_EQ(KeysOf(fDict), (Keys{"0", "1", "2", "3"}));
    EXPECT_EQ(At("1"), 10);
    EXPECT_TRUE(Remove("1"));
    EXPECT_FALSE(Remove("1"));
    EXPECT_EQ(At("1"), -1);
    Put(fDict, "1", NewNumber(11));
    EXPECT_EQ(KeysOf(fDict), (Keys{"0", "2", "3", "1"}));
}

TEST_F(PosDictTest, ValuesAreCountedAndReadsAreBorrowed) {
    Held const number(NewNumber(3));
    long const* const count = Containers().DebugGetRefCountAddr(number.Container());
    Put(fDict, "a", number);
    Put(fDict, "b", number);
    EXPECT_EQ(*count, 3);
    Put(fDict, "b", number);
    EXPECT_EQ(Dicts().Get(fDict, Atom("a")), number);
    EXPECT_EQ(*count, 3);
    Remove("a");
    EXPECT_EQ(*count, 2);
}

TEST_F(PosDictTest, NullsAreRefusedAndHarmless) {
    Held const number(NewNumber(3));
    EXPECT_EQ(Put(fDict, "a", nullptr), 0);
    EXPECT_EQ(Dicts().Put(fDict, nullptr, number), 0);
    EXPECT_EQ(Dicts().Get(fDict, nullptr), nullptr);
    EXPECT_EQ(Dicts().Remove(fDict, nullptr), 0);
    EXPECT_NE(Put(fDict, "a", number), 0);
}

// Sizes on both sides of every change of the storage, with every second key removed and put
// again.
TEST_F(PosDictTest, FindsEveryKeyAtAnySize) {
    for (int const size : {1, 5, 6, 7, 8, 9, 16, 17, 100, 5000}) {
        SCOPED_TRACE(size);
        Fill(size);
        for (int i = 0; i < size; i += 2) {
            ASSERT_TRUE(Remove(std::to_string(i)));
        }
        for (int i = 0; i < size; ++i) {
            ASSERT_EQ(At(std::to_string(i)), i % 2 == 0 ? -1 : i);
        }
        EXPECT_EQ(KeysOf(fDict).size(), static_cast<std::size_t>(size / 2));
        Fill(size);
        for (int i = 0; i < size; ++i) {
            ASSERT_EQ(At(std::to_string(i)), i);
        }
        for (std::string const& key : KeysOf(fDict)) {
            ASSERT_TRUE(Remove(key));
        }
    }
}

TEST_F(PosDictTest, RemovingAndPuttingAKeyNeedsNoMemory) {
    for (int const size : {1, 6, 8, 40}) {
        Fill(size);
        Held const number(NewNumber(-5));
        Atom const key("0");
        bibrt::FailAllocation(1, /*andAllLater=*/true);
        for (int i = 0; i < 3 * size; ++i) {
            ASSERT_NE(Dicts().Remove(fDict, key), 0);
            ASSERT_NE(Dicts().Put(fDict, key, number), 0) << size << " keys, turn " << i;
        }
        bibrt::ResetFailures();
    }
}

TEST_F(PosDictTest, EmptiesFromTheFrontKeyByKey) {
    constexpr int kMany = 200000;
    Fill(kMany);
    Held const cursor(Cursors().NewPOSDictIterator(fDict));
    for (int i = 0; i < kMany; ++i) {
        Cursors().Begin(cursor);
        ASSERT_EQ(Cursors().CurKey(cursor), std::to_string(i));
        Remove(Cursors().CurKey(cursor));
    }
    Cursors().Begin(cursor);
    EXPECT_NE(Cursors().IsDone(cursor), 0);
}

TEST_F(PosDictTest, DeepGetFollowsKeysAndPositions) {
    auto const& statics = Rows<_t_POSObjectStatics>();
    Put(fDict, "List", statics.CreateFromText("[ < Name 7 () 5 > [ 8 ] ]", nullptr));
    Put(fDict, "Top", NewNumber(1));
    EXPECT_EQ(DeepAt("Top"), 1);
    EXPECT_EQ(DeepAt("List/0/Name"), 7);
    EXPECT_EQ(DeepAt("List/0/"), 5);
    EXPECT_EQ(DeepAt("List/1/0"), 8);
    for (char const* const path :
         {"",
          "/",
          "Top/",
          "Top/0",
          "List/2",
          "List/-1",
          "List/x",
          "List/0x0",
          "List/0/Nam",
          "List/99999999999999999999",
          "List/1/",
          "Unseen key"}) {
        EXPECT_EQ(DeepAt(path), -1) << path;
    }
}

TEST_F(PosDictTest, ADictionaryInItselfIsRefusedByWhateverWalksIt) {
    POSObject* const self = As<POSObject>(fDict);
    Fill(3);
    EXPECT_NE(Put(fDict, "self", self), 0);
    EXPECT_EQ(Values().Clone(self), nullptr);
    Held const stream(NewMemoryStream());
    EXPECT_EQ(
        TakeMessage(Rows<_t_POSObjectStatics>().DebugDump(self, stream)),
        "a value that contains itself cannot be written");
    EXPECT_EQ(DeepAt("self/self/2"), 2);
    Remove("self");
}

TEST_F(PosDictTest, EqualityDoesNotLookAtTheOrderOfKeys) {
    Fill(3);
    Held const other(Dicts().NewPOSDict());
    for (char const* const key : {"2", "0", "1"}) {
        Put(other, key, NewNumber(std::stoi(key)));
    }
    EXPECT_NE(Values().IsEqual(As<POSObject>(fDict), other.Value()), 0);
    Put(other, "1", NewNumber(5));
    EXPECT_EQ(Values().IsEqual(As<POSObject>(fDict), other.Value()), 0);
    Dicts().Remove(other, Atom("1"));
    EXPECT_EQ(Values().IsEqual(As<POSObject>(fDict), other.Value()), 0);
    Put(other, "3", NewNumber(1));
    EXPECT_EQ(Values().IsEqual(As<POSObject>(fDict), other.Value()), 0);
}

TEST_F(PosDictTest, CloneIsDeepAndKeepsTheOrder) {
    Fill(12);
    Put(fDict, "inner", Rows<_t_POSObjectStatics>().CreateFromText("[ < a 1 > ]", nullptr));
    Remove("4");
    Held const clone(As<POSDict>(Values().Clone(As<POSObject>(fDict))));
    EXPECT_EQ(KeysOf(clone), KeysOf(fDict));
    EXPECT_NE(Values().IsEqual(clone.Value(), As<POSObject>(fDict)), 0);
    EXPECT_NE(Dicts().Get(clone, Atom("inner")), Dicts().Get(fDict, Atom("inner")));
    Put(As<POSDict>(Dicts().DeepGet(clone, Atom("inner/0"))), "a", NewNumber(2));
    EXPECT_EQ(DeepAt("inner/0/a"), 1);
}

class DictCursorTest : public PosDictTest {
protected:
    void SetUp() override {
        PosDictTest::SetUp();
        Fill(4);
        fCursor = Cursors().NewPOSDictIterator(fDict);
        Containers().AddRef(As<BIBContainer>(fCursor));
    }
    void TearDown() override {
        Containers().Release(As<BIBContainer>(fCursor));
        PosDictTest::TearDown();
    }
    void Advance(int steps) const {
        for (; steps > 0; --steps) {
            Cursors().Next(fCursor);
        }
    }
    std::string Key() const {
        char const* const key = Cursors().CurKey(fCursor);
        EXPECT_EQ(key == nullptr, Cursors().IsDone(fCursor) != 0);
        return key ? key : "done";
    }

    POSDictIterator* fCursor = nullptr;
};

TEST_F(DictCursorTest, StandsOnNoKeyBeforeBegin) {
    EXPECT_EQ(Key(), "done");
    Cursors().Begin(fCursor);
    EXPECT_EQ(Key(), "0");
    Advance(4);
    EXPECT_EQ(Key(), "done");
    Advance(1);
    EXPECT_EQ(Key(), "done");
    Cursors().Begin(fCursor);
    EXPECT_EQ(Key(), "0");
}

TEST_F(DictCursorTest, ARemovedKeyStaysCurrentUntilTheCursorMoves) {
    Cursors().Begin(fCursor);
    Advance(1);
    Remove("1");
    EXPECT_EQ(Key(), "1");
    Remove("2");
    Advance(1);
    EXPECT_EQ(Key(), "3");
    Remove("3");
    EXPECT_EQ(Key(), "3");
    Advance(1);
    EXPECT_EQ(Key(), "done");
}

TEST_F(DictCursorTest, AKeyPutAgainIsMetAgain) {
    Cursors().Begin(fCursor);
    Remove("0");
    Put(fDict, "0", NewNumber(0));
    EXPECT_EQ(Key(), "0");
    Advance(3);
    EXPECT_EQ(Key(), "3");
    Advance(1);
    EXPECT_EQ(Key(), "0");
    Advance(1);
    EXPECT_EQ(Key(), "done");
}

TEST_F(DictCursorTest, KeepsItsPlaceWhileTheStorageMoves) {
    Cursors().Begin(fCursor);
    Advance(2);
    for (int i = 10; i < 1000; ++i) {
        Put(fDict, std::to_string(i), NewNumber(i));
    }
    for (int i = 10; i < 999; ++i) {
        Remove(std::to_string(i));
    }
    Remove("0");
    Remove("2");
    EXPECT_EQ(Key(), "2");
    Advance(1);
    EXPECT_EQ(Key(), "3");
    Advance(1);
    EXPECT_EQ(Key(), "999");
}

TEST_F(DictCursorTest, KeepsItsDictionaryAlive) {
    Held const cursor(Cursors().NewPOSDictIterator(Dicts().NewPOSDict()));
    Cursors().Begin(cursor);
    EXPECT_NE(Cursors().IsDone(cursor), 0);
    EXPECT_EQ(Cursors().NewPOSDictIterator(nullptr), nullptr);
}

} // namespace
} // namespace runtimetest
