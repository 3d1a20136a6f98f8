#include "source/Boundary.h"

#include "tests/support/BoundClient.h"

namespace PDFSettingsImpl {

using BIB_T_NMT::CBIBError;
using BoundaryTrap = support::BoundClientTest;

// A host's report procedure may throw: the call gives its failure value anyway.
TEST_F(BoundaryTrap, EndsWhatTheReportProcedureThrows) {
    static int reports = 0;
    reports = 0;
    auto const report = [](char const* /*message*/, void* /*client*/) {
        ++reports;
        throw 1;
    };
    BIBRuntimeSetErrorChannel(report, nullptr);
    auto const fail = []() -> int { throw 1; };
    auto const failWithText = []() -> int {
        CBIBError::ThrowError("text", "", 0, nullptr, nullptr);
        return 1;
    };
    EXPECT_EQ(-1, AtBoundary([] { return -1; }, fail));
    EXPECT_EQ(-1, AtBoundary([] { return -1; }, failWithText));
    EXPECT_EQ(2, reports);
    BIBRuntimeSetErrorChannel(nullptr, nullptr);
}

} // namespace PDFSettingsImpl
