#include "pdfsettings/Value.h"

#include "pdfsettings/Path.h"
#include "tests/support/SmallStack.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace pdfsettings;

namespace {

Dictionary OneEntry(std::string const& key, Value value) {
    Dictionary dictionary;
    dictionary.Set(key, std::move(value));
    return dictionary;
}

// Arrays and dictionaries in turn, each with a scalar before and one behind the nested one.
Value Nested(int levels) {
    Value value = Word{"innermost"};
    for (int level = 0; level < levels; ++level) {
        if (level % 2 == 0) {
            Array array = Array::Of({Value(1.0)});
            array.Append(std::move(value));
            array.Append(2.0);
            value = std::move(array);
        } else {
            Dictionary dictionary = OneEntry("Before", Word{"b"});
            dictionary.Set("Nested", std::move(value));
            dictionary.Set("Behind", 3.0);
            value = std::move(dictionary);
        }
    }
    return value;
}

// A tree in which every element of every array is an array.
Value Bushy(int levels) {
    Value value = Array();
    for (int level = 0; level < levels; ++level) {
        value = Array::Of({value, value, value});
    }
    return value;
}

std::vector<Value> OneOfEachKind() {
    return {
        Word{"x"},
        1.0,
        String{"x"},
        HexString{"x"},
        Binary{"T", "x"},
        Text16(u"x"),
        Array::Of({1.0}),
        OneEntry("x", 1.0)};
}

} // namespace

TEST(Value, ANewValueIsTheEmptyWord) {
    EXPECT_EQ(Value(), Value(Word{""}));
}

TEST(Value, EqualOnlyToItsOwnKind) {
    std::vector<Value> const one = OneOfEachKind();
    std::vector<Value> const other = OneOfEachKind();
    for (std::size_t left = 0; left < one.size(); ++left) {
        for (std::size_t right = 0; right < other.size(); ++right) {
            EXPECT_EQ(one[left] == other[right], left == right) << left << " and " << right;
        }
    }
}

TEST(Value, UnequalWhereContentsDiffer) {
    struct {
        char const* fWhat;
        Value fLeft;
        Value fRight;
    } const cases[] = {
        {"array size", Array::Of({1.0}), Array::Of({1.0, 1.0})},
        {"array order", Array::Of({1.0, 2.0}), Array::Of({2.0, 1.0})},
        {"key", OneEntry("a", 1.0), OneEntry("b", 1.0)},
        {"value under a key", OneEntry("a", 1.0), OneEntry("a", 2.0)},
        {"binary type", Binary{"A", "x"}, Binary{"B", "x"}},
        {"not a number", std::nan(""), std::nan("")},
        {"deep inside", Array::Of({Value(Array::Of({1.0}))}), Array::Of({Value(Array::Of({2.0}))})},
    };
    for (auto const& [what, left, right] : cases) {
        EXPECT_FALSE(left == right) << what;
    }
}

TEST(Value, DictionariesAreEqualInAnyOrder) {
    Dictionary left = OneEntry("a", 1.0);
    left.Set("b", 2.0);
    Dictionary right = OneEntry("b", 2.0);
    right.Set("a", 1.0);
    EXPECT_EQ(left, right);
}

TEST(Value, AReplacedKeyKeepsItsPlace) {
    Dictionary dictionary = OneEntry("first", 1.0);
    dictionary.Set("second", 2.0);
    dictionary.Set("first", 3.0);
    ASSERT_EQ(dictionary.Size(), 2u);
    EXPECT_EQ(dictionary.KeyAt(0), "first");
    EXPECT_EQ(dictionary.ValueAt(0), Value(3.0));
    EXPECT_EQ(dictionary.Get("second"), &dictionary.ValueAt(1));
    EXPECT_EQ(dictionary.Get("third"), nullptr);
}

TEST(Value, ACopyIsIndependent) {
    Array const original = Array::Of({Value(OneEntry("a", Array::Of({1.0})))});
    Array copy = original;
    (*copy[0].If<Dictionary>()->Get("a")->If<Array>())[0] = 2.0;
    EXPECT_EQ(*Find(OneEntry("r", original), "r/0/a/0"), Value(1.0));
    EXPECT_EQ(*Find(OneEntry("r", copy), "r/0/a/0"), Value(2.0));
}

TEST(Value, MayBeReplacedByAPartOfItself) {
    Array moved = Array::Of({Value(Array::Of({1.0, 2.0})), 3.0});
    moved = std::move(*moved[0].If<Array>());
    EXPECT_EQ(moved, Array::Of({1.0, 2.0}));
    Array copied = Array::Of({Value(Array::Of({1.0, 2.0})), 3.0});
    copied = *copied[0].If<Array>();
    EXPECT_EQ(copied, Array::Of({1.0, 2.0}));
}

TEST(Value, AMovedFromCollectionIsEmpty) {
    Array array = Array::Of({1.0});
    Array const takenArray = std::move(array);
    EXPECT_EQ(array.Size(), 0u); // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
    Dictionary dictionary = OneEntry("a", 1.0);
    Dictionary const takenDictionary = std::move(dictionary);
    EXPECT_EQ(
        dictionary.Size(), 0u); // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
}

TEST(Value, DeepNestingTakesNoStack) {
    bool equal = false;
    bool different = true;
    support::OnSmallStack([&] {
        Value const value = Nested(20'000);
        Value const copy = value;
        equal = copy == value;
        different = value == Nested(20'001);
    });
    EXPECT_TRUE(equal);
    EXPECT_FALSE(different);
}

TEST(Value, BushyTreesAreCopiedAndComparedWhole) {
    Value const tree = Bushy(8);
    Value copy = tree;
    EXPECT_EQ(copy, tree);
    (*copy.If<Array>())[2] = 1.0;
    EXPECT_FALSE(copy == tree);
}

TEST(Path, FindsByKeysAndPositions) {
    Dictionary settings = OneEntry("Plain", 1.0);
    settings.Set("Image", OneEntry("QFactor", 0.5));
    settings.Set("List", Array::Of({Value(OneEntry("Namespace", Array::Of({7.0, 8.0})))}));
    settings.Set("/Slash", OneEntry("/In", 9.0));
    settings.Set("", 10.0);
    struct {
        char const* fPath;
        double fExpected; // 0: nothing is found
    } const cases[] = {
        {"Plain", 1},
        {"Image/QFactor", 0.5},
        {"List/0/Namespace/1", 8},
        {"/Slash//In", 9},
        {"", 10},
        {"plain", 0},
        {"Plain/", 0},
        {"Plain/0", 0},
        {"Image/", 0},
        {"Image/Other", 0},
        {"List/1", 0},
        {"List/-0", 0},
        {"List/0x0", 0},
        {"List/", 0},
        {"List/99999999999999999999", 0},
        {"List/0/Namespace/2", 0},
    };
    for (auto const& [path, expected] : cases) {
        Value const* const found = Find(settings, path);
        EXPECT_EQ(found != nullptr, expected != 0) << path;
        if (found != nullptr) {
            EXPECT_EQ(*found, Value(expected)) << path;
        }
    }
}

TEST(Path, StoresWhereThereIsAPlace) {
    struct {
        char const* fPath;
        bool fIsStored;
    } const cases[] = {
        {"new", true},
        {"dict/new", true},
        {"dict/a", true},
        {"array/0", true},
        {"array/1", false},
        {"array/x", false},
        {"missing/a", false},
        {"dict/a/b", false},
        {"dict//slash", true},
    };
    for (auto const& [path, isStored] : cases) {
        Dictionary settings = OneEntry("dict", OneEntry("a", 1.0));
        settings.Set("array", Array::Of({1.0}));
        Dictionary const before = settings;
        EXPECT_EQ(SetAt(settings, path, 7.0), isStored) << path;
        Value const* const stored = Find(settings, path);
        EXPECT_EQ(stored != nullptr && *stored == Value(7.0), isStored) << path;
        EXPECT_EQ(settings == before, !isStored) << path;
    }
    EXPECT_EQ(FirstPart("/a/b/c"), "/a");
    EXPECT_EQ(LastPart("a/b//c"), "/c");
    EXPECT_EQ(LastPart("/a"), "/a");
}
