#include "source/Boundary.h"

#include "tests/support/BoundClient.h"
#include "tests/support/ErrorLog.h"

namespace PDFSettingsImpl {

using BIB_T_NMT::CBIBError;
using BoundaryTrap = support::BoundClientTest;

TEST_F(BoundaryTrap, ReportsEachExceptionOnceAndMakesTheFailureValue) {
    struct {
        char const* fReport;
        void (*fThrow)();
    } const kCases[] = {
        {"text", [] { CBIBError::ThrowError("text", "", 0, nullptr, nullptr); }},
        {"unknown BIB error", [] { BIB_T_NMT::_POSSignalError("text"); }},
        {"unknown BIB error", [] { throw 1; }},
        {"Invalid CBIBError", [] { throw CBIBError(); }},
        {"Invalid CBIBError",
         [] { // no memory for the error
             bibrt::FailAllocation(1, /*andAllLater=*/true);
             CBIBError::ThrowError("a text", "", 0, nullptr, nullptr);
         }},
        {nullptr, [] {}},
    };
    for (auto const& row : kCases) {
        support::ErrorLog const log;
        auto const work = [&row] {
            row.fThrow();
            return 1;
        };
        EXPECT_EQ(row.fReport == nullptr ? 1 : -1, AtBoundary([] { return -1; }, work));
        bibrt::ResetFailures();
        EXPECT_EQ(
            std::vector<std::string>(
                row.fReport == nullptr ? 0 : 1, row.fReport == nullptr ? "" : row.fReport),
            log.fMessages);
    }
}

// A host's report procedure may throw: the call gives its failure value anyway.
TEST_F(BoundaryTrap, EndsWhatTheReportProcedureThrows) {
    static int reports = 0;
    reports = 0;
    BIBRuntimeSetErrorChannel(
        [](char const* /*message*/, void* /*client*/) {
            ++reports;
            throw 1;
        },
        nullptr);
    for (void (*const fail)() :
         {+[] { CBIBError::ThrowError("text", "", 0, nullptr, nullptr); }, +[] { throw 1; }}) {
        auto const work = [fail] {
            fail();
            return 1;
        };
        EXPECT_EQ(-1, AtBoundary([] { return -1; }, work));
    }
    EXPECT_EQ(2, reports);
    BIBRuntimeSetErrorChannel(nullptr, nullptr);
}

} // namespace PDFSettingsImpl
