#include "RuntimeFixture.h"

namespace runtimetest {
namespace {

class ErrorsTest : public RuntimeTest {};

void Increment(void* counter) {
    ++*static_cast<int*>(counter);
}

TEST_F(ErrorsTest, CarriesWhatItWasMadeOfAndFreesItsInfoOnce) {
    int freed = 0;
    std::string message("went wrong");
    BIBError* const error = Errors().NewError(message.c_str(), "tests", 42, &freed, &Increment);
    message.assign("overwritten");
    EXPECT_STREQ(Atoms().GetCString(Errors().GetErrorMessage(error)), "went wrong");
    EXPECT_STREQ(Atoms().GetCString(Errors().GetComponent(error)), "tests");
    EXPECT_EQ(Errors().GetID(error), 42);
    EXPECT_EQ(Errors().GetErrorInfo(error), &freed);
    EXPECT_EQ(Errors().AddRef(error), error);
    Errors().Release(error);
    EXPECT_EQ(freed, 0);
    Errors().Release(error);
    EXPECT_EQ(freed, 1);
}

TEST_F(ErrorsTest, CoreErrorsAreAlwaysThere) {
    for (auto const& [id, text] :
         {std::pair(kBRVUnknownError, "unknown error"),
          std::pair(kBRVMemoryError, "out of memory")}) {
        BIBError* const error = Errors().GetCoreError(id);
        Errors().Release(error);
        Errors().Release(error);
        EXPECT_EQ(Errors().GetCoreError(id), error);
        EXPECT_EQ(Errors().GetID(error), id);
        EXPECT_EQ(TakeMessage(error), text);
    }
    EXPECT_EQ(Errors().GetCoreError(static_cast<BRVErrorID>(2)), nullptr);
}

TEST_F(ErrorsTest, NullsAreAccepted) {
    EXPECT_EQ(Errors().AddRef(nullptr), nullptr);
    Errors().Release(nullptr);
    EXPECT_EQ(Errors().GetErrorMessage(nullptr), nullptr);
    EXPECT_EQ(TakeMessage(Errors().NewError(nullptr, nullptr, 0, nullptr, nullptr)), "");
}

TEST_F(ErrorsTest, WithoutMemoryThereIsNoErrorAndInfoStays) {
    int freed = 0;
    for (unsigned long n = 1; n <= 3; ++n) {
        bibrt::FailAllocation(n, /*andAllLater=*/true);
        std::string const unique = "message " + std::to_string(n);
        EXPECT_EQ(
            Errors().NewError(unique.c_str(), unique.c_str() + 1, 0, &freed, &Increment), nullptr);
        bibrt::ResetFailures();
    }
    EXPECT_EQ(freed, 0);
}

TEST_F(ErrorsTest, AStatusWithoutMemoryIsTheMemoryError) {
    Held const number(NewNumber(1));
    Atom const name("NoSuchMethodAtAll");
    void* method = &method;
    bibrt::FailAllocation(1, /*andAllLater=*/true);
    BIBError* const error =
        Containers().GetMethod(&method, number.Container(), name, name, /*optional=*/0);
    EXPECT_EQ(error, Errors().GetCoreError(kBRVMemoryError));
    EXPECT_EQ(method, nullptr);
}

} // namespace
} // namespace runtimetest
