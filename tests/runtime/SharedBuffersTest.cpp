#include "RuntimeFixture.h"

#include <cstring>

namespace runtimetest {
namespace {

class SharedBuffersTest : public RuntimeTest {
protected:
    _t_BIBSharedBuffInterface const& fRows = Rows<_t_BIBSharedBuffInterface>();
};

void Increment(void* counter) {
    ++*static_cast<int*>(counter);
}

TEST_F(SharedBuffersTest, AllocatesItsBytes) {
    BIBSharedBuffer* const buffer = fRows.NewBuffer(10, nullptr, &Increment, nullptr, nullptr);
    ASSERT_NE(fRows.GetBuffer(buffer), nullptr);
    std::memset(fRows.GetBuffer(buffer), 7, 10);
    EXPECT_EQ(fRows.GetSize(buffer), 10U);
    fRows.Release(buffer);
}

TEST_F(SharedBuffersTest, TakesABlockOverAndFreesItWithTheLastReference) {
    int freed = 0;
    BIBSharedBuffer* const buffer =
        fRows.NewBuffer(sizeof(freed), &freed, &Increment, nullptr, nullptr);
    EXPECT_EQ(fRows.GetBuffer(buffer), &freed);
    fRows.AddRef(buffer);
    EXPECT_EQ(fRows.DeleteUnowned(buffer), 0);
    fRows.Release(buffer);
    EXPECT_EQ(freed, 0);
    EXPECT_NE(fRows.DeleteUnowned(buffer), 0);
    EXPECT_EQ(freed, 1);
}

TEST_F(SharedBuffersTest, OnFailureTheBlockStaysTheCallers) {
    int freed = 0;
    bibrt::FailAllocation(1, /*andAllLater=*/false);
    EXPECT_EQ(fRows.NewBuffer(4, &freed, &Increment, nullptr, nullptr), nullptr);
    EXPECT_EQ(freed, 0);
}

TEST_F(SharedBuffersTest, NullIsAccepted) {
    fRows.AddRef(nullptr);
    fRows.Release(nullptr);
    EXPECT_EQ(fRows.GetBuffer(nullptr), nullptr);
    EXPECT_EQ(fRows.GetSize(nullptr), 0U);
    EXPECT_EQ(fRows.DeleteUnowned(nullptr), 0);
}

} // namespace
} // namespace runtimetest
