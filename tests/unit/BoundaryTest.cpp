#include "source/Boundary.h"

#include "tests/support/BoundClient.h"
#include "tests/support/ErrorLog.h"

namespace PDFSettingsImpl {

class BoundaryTrap : public support::BoundClientTest {
protected:
    // What is reported of an exception that thrower throws.
    template <class Thrower>
    std::vector<std::string> Report(Thrower thrower) {
        fLog.fMessages.clear();
        EXPECT_EQ(
            -1,
            AtBoundary(
                [] { return -1; },
                [&thrower]() -> int {
                    thrower();
                    return 1;
                }));
        return fLog.fMessages;
    }

    support::ErrorLog fLog;
};

TEST_F(BoundaryTrap, MakesAFailureValueOnlyWhenNeeded) {
    bool isMade = false;
    auto const makeFailure = [&isMade] {
        isMade = true;
        return -1;
    };
    EXPECT_EQ(1, AtBoundary(makeFailure, [] { return 1; }));
    EXPECT_FALSE(isMade);
    EXPECT_TRUE(fLog.fMessages.empty());
}

TEST_F(BoundaryTrap, ReportsEachExceptionOnce) {
    using Messages = std::vector<std::string>;
    EXPECT_EQ(Messages{"text"}, Report([] {
                  BIB_T_NMT::CBIBError::ThrowError("text", "", 0, nullptr, nullptr);
              }));
    EXPECT_EQ(Messages{"unknown BIB error"}, Report([] { BIB_T_NMT::_POSSignalError("text"); }));
    EXPECT_EQ(Messages{"unknown BIB error"}, Report([] { throw 1; }));
    EXPECT_EQ(Messages{"Invalid CBIBError"}, Report([] { throw BIB_T_NMT::CBIBError(); }));
}

TEST_F(BoundaryTrap, ReportsAnInvalidErrorWithoutMemory) {
    bibrt::FailAllocation(1, /*andAllLater=*/true);
    auto const messages =
        Report([] { BIB_T_NMT::CBIBError::ThrowError("a text", "", 0, nullptr, nullptr); });
    bibrt::ResetFailures();
    EXPECT_EQ(std::vector<std::string>{"Invalid CBIBError"}, messages);
}

} // namespace PDFSettingsImpl
