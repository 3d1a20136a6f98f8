#include "pdfsettings/Value.h"

#include "pdfsettings/Document.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Rounds.h"

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>

using namespace pdfsettings;

// A text alone does not say what it is to be, and a letter is no number.
static_assert(!std::is_constructible_v<Value, char const*>);
static_assert(!std::is_constructible_v<Value, std::string>);
static_assert(!std::is_constructible_v<Value, char>);
static_assert(!std::is_constructible_v<Value, void*>);
static_assert(sizeof(Value) == sizeof(void*) && sizeof(Dictionary) == sizeof(void*));

namespace {

template <class T>
bool Is(Value const& value, std::optional<T> const& expected) {
    return value.If<T>() == expected;
}

} // namespace

TEST(Value, IsReadAsItsTypeAndNoOther) {
    Value const flag = true;
    EXPECT_TRUE(Is<bool>(flag, true) && Is<Name>(flag, Name{"true"}) && Is<double>(flag, {}));
    EXPECT_EQ(flag, Value(Name{"true"}));
    EXPECT_TRUE(Is<bool>(Value(), false));
    EXPECT_TRUE(Is<bool>(Name{"True"}, {}) && Is<bool>(1, {}) && Is<Name>(String{"true"}, {}));
    EXPECT_TRUE(Is<int>(2.0, 2) && Is<int>(2.5, {}) && Is<float>(2.5, 2.5F) && Is<int>(1e10, {}));
    EXPECT_TRUE(Is<unsigned>(-1, {}) && Is<std::int8_t>(-128, std::int8_t{-128}));
    EXPECT_TRUE(Is<std::int8_t>(128, {}) && Is<std::uint64_t>(0x1p64, {}));
    EXPECT_TRUE(Is<std::int64_t>(0x1p63, {}) && Is<std::int64_t>(-0x1p63, INT64_MIN));
    EXPECT_TRUE(Is<float>(1e300, {}) && Is<int>(std::nan(""), {}));
    EXPECT_TRUE(Is<String>(RawString{"a\\)"}, String{"a)"}));
    EXPECT_TRUE(Is<RawString>(String{"a)"}, RawString{"a\\)"}));
    Value const numbers = Array::Of({1, 2.5});
    EXPECT_TRUE(Is<std::vector<double>>(numbers, std::vector<double>{1, 2.5}));
    EXPECT_TRUE(Is<std::vector<int>>(numbers, {}) && Is<std::vector<Name>>(Array(), {{}}));
    EXPECT_EQ(Value(0.4F).Text(), "0.4");
    Value const large = std::int64_t{1} << 53;
    EXPECT_TRUE(Is<std::int64_t>(Value::Parse(large.Text()), std::int64_t{1} << 53));
    EXPECT_TRUE(sizeof(long) < 8 || large.Text() == "9007199254740992");
    EXPECT_EQ(
        support::CodeOf([] { static_cast<void>(Value((std::int64_t{1} << 53) + 1)); }),
        Fault::kKind);
    auto const error = support::ErrorOf([] { static_cast<void>(Value(2.5).As<int>()); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->Code(), Fault::kKind);
    EXPECT_STREQ(error->what(), "expected a whole number in range; found 2.5");
}

TEST(Value, EqualsWhatMeansTheSame) {
    Array different = Value::Parse("[ true false /0 0 1 (0) <0> [ ] [ 1 ] [ 2 1 ] [ [ 1 ] ] "
                                   "<< /x 1 >> << /y 1 >> << /x 2 >> << >> ]")
                          .As<Array>();
    different.push_back(std::nan(""));
    for (std::size_t left = 0; left < different.size(); ++left) {
        for (std::size_t right = 0; right < different.size(); ++right) {
            EXPECT_EQ(different[left] == different[right], left == right) << left << " " << right;
        }
    }
    EXPECT_EQ(Value(std::nan("")), Value(-std::nan("")));
    EXPECT_EQ(Value(RawString{"\\050\\n"}), Value(String{"(\n"}));
    EXPECT_EQ(Dictionary::Of({{"a", 1}, {"b", 2}}), Dictionary::Of({{"b", 2}, {"a", 1}}));
}

TEST(Value, HasATextThatParsesAsTheSame) {
    std::string const values = "[ true /All 12 -0.0 0.1 1.0e+22 1.0e+300 () (a\\)b) <FE FF> [ ] "
                               "[ 1 /A << /B [ (x) ] >> ] ]";
    EXPECT_EQ(Value::Parse(values).Text(), values);
    EXPECT_EQ(Value::Parse(" % why\r12% so").Text(), "12");
    struct {
        char const* fText;
        Place fPlace;
        char const* fMessage;
    } const cases[] = {
        {"", {1, 1}, "expected a single value"},
        {"1 2", {1, 1}, "expected a single value"},
        {"1 ]\n>> setalembicorparams", {1, 1}, "expected a single value"},
        {"[\n\t1x ]", {2, 2}, "\"1x\" is read as 1: remove \"x\""},
    };
    for (auto const& [text, place, message] : cases) {
        auto const error = support::ErrorOf([&, &bad = text] { Value::Parse(bad); });
        ASSERT_TRUE(error) << text;
        EXPECT_EQ(error->Code(), Fault::kSyntax) << text;
        EXPECT_EQ(error->Where(), place) << text;
        EXPECT_EQ(error->Message(), message) << text;
    }
}

// Any bytes, and many of those that have a meaning.
TEST(Value, StringsOfAnyBytesReadBack) {
    std::mt19937 random(1);
    std::string const special("()\\\r\n\0n01", 9);
    Document const empty{std::string()};
    for (int round = 0; round < support::Rounds(3000) && !testing::Test::HasFailure(); ++round) {
        std::string text;
        for (unsigned long i = random() % 8; i > 0; --i) {
            text += random() % 4 == 0 ? static_cast<char>(random() % 256)
                                      : special[random() % special.size()];
        }
        Document const document = empty.With("A", String{text}).With("B", 1);
        EXPECT_EQ(document.At("A").As<String>().text, text) << document.Text();
        EXPECT_EQ(document.Findings().size(), 0U) << document.Text();
    }
    EXPECT_EQ(String::FromRaw("\\7\\1234\\q\\\r\nx\r\ny\\").text, "\7S4qx\ny");
}

TEST(Value, MayBeReplacedByAPartOfItself) {
    Array array = Array::Of({Array::Of({1, 2}), 3});
    array = array[0].As<Array>();
    EXPECT_EQ(array, Array::Of({1, 2}));
    array.push_back(array);
    array.push_back(array[2]);
    EXPECT_EQ(array, Array::Of({1, 2, Array::Of({1, 2}), Array::Of({1, 2})}));
    Value value = Dictionary::Of({{"A", Array::Of({7})}});
    value = *value.As<Dictionary>().begin()->value.As<Array>().begin();
    EXPECT_EQ(value, Value(7));
}

TEST(Dictionary, FindsByKeysAndPositions) {
    Dictionary settings = Dictionary::Of(
        {{"Plain", 1},
         {"List", Array::Of({Dictionary::Of({{"Namespace", Array::Of({7, 8})}})})},
         {"/Slash", Dictionary::Of({{"/In", 9}})},
         {"", 10}});
    std::pair<char const*, std::optional<double>> const kCases[] = {
        {"List/0/Namespace/1", 8},
        {"/Slash//In", 9},
        {"", 10},
        {"Plain/0", {}},
        {"List/1", {}},
        {"List/-0", {}},
        {"List/0x0", {}},
        {"List/99999999999999999999", {}},
        {"List/0/Namespace/2", {}},
    };
    for (auto const& [path, number] : kCases) {
        Value const* const found = settings.Find(path);
        EXPECT_EQ(found == nullptr ? std::nullopt : found->If<double>(), number) << path;
    }
    settings.SetKey("a/b", 11);
    EXPECT_EQ(settings.Find("a/b"), nullptr);
    EXPECT_EQ(*settings.FindKey("a/b"), Value(11));
}

// So many have an index.
TEST(Dictionary, OfManyKeysFindsEachAndIsApartFromItsCopies) {
    Dictionary many;
    for (int i = 0; i < 40; ++i) {
        many.SetKey("K" + std::to_string(i), i);
    }
    Dictionary const copy = many;
    EXPECT_TRUE(many.Remove("K3"));
    many.SetKey("K40", 40);
    EXPECT_EQ(many.Find("K3"), nullptr);
    EXPECT_EQ(copy.Find("K40"), nullptr);
    for (int i = 4; i < 40; ++i) {
        EXPECT_EQ(*many.Find("K" + std::to_string(i)), Value(i));
        EXPECT_EQ(*copy.Find("K" + std::to_string(i)), Value(i));
    }
}
