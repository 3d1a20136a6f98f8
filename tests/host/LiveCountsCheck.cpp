// Every test of the program releases all that it had of the runtime.

#include "pdfsettings/Schema.h"
#include "runtime/objects/Diagnostics.h"

#include <gtest/gtest.h>

namespace {

class LiveCountsCheck : public testing::EmptyTestEventListener {
    // It stays, with the values of its rules.
    void OnTestProgramStart(testing::UnitTest const& /*program*/) override {
        pdfsettings::Schema::Standard();
    }
    void OnTestStart(testing::TestInfo const& /*test*/) override { fBefore = bibrt::CountLive(); }
    void OnTestEnd(testing::TestInfo const& /*test*/) override {
        EXPECT_EQ(fBefore, bibrt::CountLive());
    }

    bibrt::LiveCounts fBefore{};
};

// The list of listeners takes it over.
[[maybe_unused]] bool const kIsAdded = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new LiveCountsCheck);
    return true;
}();

} // namespace
