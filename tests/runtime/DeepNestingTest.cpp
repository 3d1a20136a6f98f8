// A million levels on a small stack.
#include "RuntimeFixture.h"
#include "tests/support/SmallStack.h"

namespace runtimetest {
namespace {

constexpr int kLevels = 1000000;

class DeepNestingTest : public RuntimeTest {};

TEST_F(DeepNestingTest, DictionariesAreReadClonedComparedWrittenAndReleased) {
    support::OnSmallStack([] {
        std::string text;
        for (int i = 0; i < kLevels; ++i) {
            text += "< a ";
        }
        text += '1';
        for (int i = 0; i < kLevels; ++i) {
            text += " >";
        }
        auto const& statics = Rows<_t_POSObjectStatics>();
        Held const value(statics.CreateFromText(text.c_str(), nullptr));
        ASSERT_NE(static_cast<POSObject*>(value), nullptr);
        Held const clone(Values().Clone(value));
        EXPECT_NE(Values().IsEqual(value, clone), 0);
        Held const stream(NewMemoryStream());
        EXPECT_EQ(TakeMessage(statics.DebugDump(value, stream)), "");
        EXPECT_GT(StreamMethods(stream).Mark(), static_cast<unsigned long>(kLevels));
    });
}

TEST_F(DeepNestingTest, ArraysBuiltByAppendingAreReleased) {
    support::OnSmallStack([] {
        POSObject* value = NewNumber(1);
        for (int i = 0; i < kLevels; ++i) {
            POSArray* const outer = Arrays().NewPOSArray();
            Arrays().Append(outer, value);
            value = As<POSObject>(outer);
        }
        EXPECT_NE(Containers().DeleteUnownedContainer(As<BIBContainer>(value)), 0);
    });
}

TEST_F(DeepNestingTest, AnUnclosedTextIsRefused) {
    support::OnSmallStack([] {
        std::string const text(kLevels, '[');
        char const* message = nullptr;
        EXPECT_EQ(Rows<_t_POSObjectStatics>().CreateFromText(text.c_str(), &message), nullptr);
        EXPECT_STREQ(
            message,
            "line 1, column 1000001: the array opened at line 1, column 1000000 is not closed");
    });
}

} // namespace
} // namespace runtimetest
