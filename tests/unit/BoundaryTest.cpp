#include "source/Boundary.h"

#include "tests/support/BoundClient.h"
#include "tests/support/ErrorLog.h"

namespace PDFSettingsImpl {

using BIB_T_NMT::CBIBError;
using BoundaryTrap = support::BoundClientTest;

TEST_F(BoundaryTrap, ReportsEachExceptionOnceAndMakesTheFailureValue) {
    struct {
        std::vector<std::string> fReports;
        void (*fThrow)();
    } const kCases[] = {
        {{"text"}, [] { CBIBError::ThrowError("text", "", 0, nullptr, nullptr); }},
        {{"unknown BIB error"}, [] { BIB_T_NMT::_POSSignalError("text"); }},
        {{"unknown BIB error"}, [] { throw 1; }},
        {{"Invalid CBIBError"}, [] { throw CBIBError(); }},
        {{"Invalid CBIBError"},
         [] { // no memory for the error
             bibrt::FailAllocation(1, /*andAllLater=*/true);
             CBIBError::ThrowError("a text", "", 0, nullptr, nullptr);
         }},
        {{}, [] {}},
    };
    for (auto const& row : kCases) {
        support::ErrorLog const log;
        auto const work = [&row] {
            row.fThrow();
            return 1;
        };
        EXPECT_EQ(row.fReports.empty() ? 1 : -1, AtBoundary([] { return -1; }, work));
        bibrt::ResetFailures();
        EXPECT_EQ(row.fReports, log.fMessages);
    }
}

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
