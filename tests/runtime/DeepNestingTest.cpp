// A million levels on a small stack.
#include <pthread.h>

#include "RuntimeFixture.h"

namespace runtimetest {
namespace {

constexpr int kLevels = 1000000;
constexpr std::size_t kStackSize = 512UL * 1024;

// Runs work on a thread with a small stack.
void OnSmallStack(void (*work)()) {
    auto const run = [](void* argument) -> void* {
        (*static_cast<void (**)()>(argument))();
        return nullptr;
    };
    pthread_attr_t attributes;
    pthread_t thread = {};
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStackSize), 0);
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
}

class DeepNestingTest : public RuntimeTest {};

TEST_F(DeepNestingTest, DictionariesAreReadClonedComparedWrittenAndReleased) {
    OnSmallStack([] {
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
    OnSmallStack([] {
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
    OnSmallStack([] {
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
