#include "RuntimeFixture.h"

namespace runtimetest {
namespace {

template <class Table>
class BoundTable : public ::testing::Test {};

using BoundTables = ::testing::Types<
    _t_BIBContainerInterface,
    _t_BIBErrorInterface,
    _t_BIBStringInterface,
    _t_BIBMemoryInterface,
    _t_BIBSharedBuffInterface,
    _t_BIBCacheInterface,
    _t_BIBStreamFactoryInterface,
    _t_POSObjectVirtualInterface,
    _t_POSObjectStatics,
    _t_POSNumberInterface,
    _t_POSStringInterface,
    _t_POSUnicodeStringInterface,
    _t_POSBinDataInterface,
    _t_POSArrayInterface,
    _t_POSDictInterface,
    _t_POSDictIteratorInterface,
    _t_POSStructValidatorInterface>;
TYPED_TEST_SUITE(BoundTable, BoundTables);

TYPED_TEST(BoundTable, ResolvesWhole) {
    EXPECT_EQ(support::MissingRows(support::LoadTable<TypeParam>(&BIBRuntimeLookup)), 0U);
}

template <class Table>
class StreamTable : public RuntimeTest {};

using StreamTables = ::testing::Types<
    _t_BIBSimpleStreamInterface,
    _t_BIBRewindableStreamInterface,
    _t_BIBPositionableStreamInterface,
    _t_BIBDataBlockStreamInterface,
    _t_BIBSizedDataStoreInterface,
    _t_BIBDataStoreInterface>;
TYPED_TEST_SUITE(StreamTable, StreamTables);

TYPED_TEST(StreamTable, ResolvesWholeForAMemoryStream) {
    Held const stream(NewMemoryStream());
    auto const methods = support::LoadMethods<TypeParam>(
        &BIBRuntimeLookup, static_cast<BIBPositionableStream*>(stream));
    EXPECT_EQ(support::MissingRows(methods), 0U);
}

class TablesTest : public RuntimeTest {};

TEST_F(TablesTest, EveryBootstrapNameResolves) {
    for (char const* const name :
         {"BIBRegisterProcAddress",
          "BIBReportError",
          "BIBUnregisterInterface",
          "BIBGetUnregisterCountAddr",
          "BIBIsMultiThreaded"}) {
        EXPECT_NE(BIBRuntimeLookup("BIB", name, name), nullptr) << name;
    }
}

TEST_F(TablesTest, EveryKindOfValueHasCloneAndIsEqual) {
    unsigned short const noUnits[] = {0};
    POSObject* const values[] = {
        NewNumber(1),
        As<POSObject>(Rows<_t_POSStringInterface>().NewPOSString("")),
        As<POSObject>(Rows<_t_POSUnicodeStringInterface>().NewPOSUnicodeString(noUnits)),
        As<POSObject>(Rows<_t_POSBinDataInterface>().NewPOSBinData("", nullptr, 0)),
        As<POSObject>(Arrays().NewPOSArray()),
        As<POSObject>(Dicts().NewPOSDict())};
    for (POSObject* const value : values) {
        Held const held(value);
        auto const methods =
            support::LoadMethods<_t_POSObjectVirtualInterface>(&BIBRuntimeLookup, value);
        EXPECT_EQ(support::MissingRows(methods), 0U);
    }
}

TEST_F(TablesTest, LookupMatchesAllThreeTextsExactly) {
    EXPECT_EQ(BIBRuntimeLookup("BIBStringInterface", "AddRef", "BIBErrorAddRefProcV2"), nullptr);
    EXPECT_EQ(BIBRuntimeLookup("BIBErrorInterface", "AddRef", "BIBErrorAddRefProc"), nullptr);
    EXPECT_EQ(BIBRuntimeLookup("BIBErrorInterface", "addref", "BIBErrorAddRefProcV2"), nullptr);
    EXPECT_EQ(BIBRuntimeLookup("BIB", "BIBReportError", "BIBReportErrorProc"), nullptr);
    EXPECT_EQ(BIBRuntimeLookup(nullptr, "AddRef", "BIBErrorAddRefProcV2"), nullptr);
}

} // namespace
} // namespace runtimetest
