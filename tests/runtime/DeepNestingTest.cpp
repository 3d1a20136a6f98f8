// A million levels on a small stack.
#include "ValidatorFixture.h"
#include "tests/support/SmallStack.h"

namespace runtimetest {
namespace {

constexpr int kLevels = 1000000;

class DeepNestingTest : public RuntimeTest {};

// begin so many times, middle, end so many times.
std::string Nest(char const* begin, char const* middle, char const* end, int levels = kLevels) {
    std::string text;
    for (int i = 0; i < levels; ++i) {
        text += begin;
    }
    text += middle;
    for (int i = 0; i < levels; ++i) {
        text += end;
    }
    return text;
}

TEST_F(DeepNestingTest, ValuesAreReadClonedComparedWrittenAndReleased) {
    support::OnSmallStack([] {
        std::string const text = Nest("< a [ ", "1", " ] >", kLevels / 2);
        Held const value(Ours().Parse(text.c_str()));
        Held const clone(Values().Clone(value));
        EXPECT_NE(Values().IsEqual(value, clone), 0);
        MemoryStream const stream;
        EXPECT_EQ(TakeMessage(Objects().DebugDump(value, stream.Self())), "");
        EXPECT_GT(stream.Mark(), static_cast<unsigned long>(kLevels));
    });
}

TEST_F(DeepNestingTest, SettingsAreValidatedAndASchemaIsChecked) {
    support::OnSmallStack([] {
        // A tenth of the others': each level is a trial of its own.
        constexpr int kTrials = kLevels / 10;
        Validator const validator("< S < optional < a S > > >");
        std::string const messages =
            validator.Validate(NewSettings(Nest("< a ", "1", " >", kTrials)));
        EXPECT_EQ(messages.substr(0, 7), ".../a/a");
        EXPECT_EQ(messages.substr(1003), " expected a dictionary, found the number 1");
        Validator const deep("< S < K " + Nest("< type array of ", "3", " >", kTrials) + " > >");
        EXPECT_EQ(
            deep.CheckSchema().substr(1003),
            " says the number 3, which is neither a word nor a dictionary");
    });
}

TEST_F(DeepNestingTest, AValueIsLocatedAndAnUnclosedTextRefused) {
    support::OnSmallStack([] {
        std::string const text = "< b " + Nest("[ ", "", " ]") + " a [ 1 ] >";
        unsigned long line = 0;
        unsigned long column = 0;
        EXPECT_EQ(BIBRuntimeLocateValue(text.c_str(), "a/0", &line, &column), 1);
        EXPECT_EQ(column, 4UL * kLevels + 10);
        char const* message = nullptr;
        std::string const open(kLevels, '[');
        EXPECT_EQ(Objects().CreateFromText(open.c_str(), &message), nullptr);
        EXPECT_STREQ(
            message,
            "line 1, column 1000001: the array opened at line 1, column 1000000 is not closed");
    });
}

} // namespace
} // namespace runtimetest
