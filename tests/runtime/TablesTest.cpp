#include "RuntimeFixture.h"

#include <vector>

namespace runtimetest {
namespace {

class TablesTest : public RuntimeTest {};

template <class... Tables>
void ExpectBoundWhole() {
    auto const missing = {
        conformance::MissingRows(conformance::LoadTable<Tables>(&BIBRuntimeLookup))...};
    EXPECT_EQ(std::vector<std::size_t>(missing), std::vector<std::size_t>(sizeof...(Tables), 0));
}

template <class... Tables>
void ExpectServedWhole(BIBPositionableStream* stream) {
    auto const missing = {
        conformance::MissingRows(conformance::LoadMethods<Tables>(&BIBRuntimeLookup, stream))...};
    EXPECT_EQ(std::vector<std::size_t>(missing), std::vector<std::size_t>(sizeof...(Tables), 0));
}

// clang-format off
TEST_F(TablesTest, EveryTableResolvesWhole) {
    ExpectBoundWhole<
        _t_BIBContainerInterface, _t_BIBErrorInterface, _t_BIBStringInterface,
        _t_BIBMemoryInterface, _t_BIBSharedBuffInterface, _t_BIBCacheInterface,
        _t_BIBStreamFactoryInterface, _t_POSObjectVirtualInterface, _t_POSObjectStatics,
        _t_POSNumberInterface, _t_POSStringInterface, _t_POSUnicodeStringInterface,
        _t_POSBinDataInterface, _t_POSArrayInterface, _t_POSDictInterface,
        _t_POSDictIteratorInterface, _t_POSStructValidatorInterface>();
}

TEST_F(TablesTest, AMemoryStreamServesEveryLevelWhole) {
    Held const stream(NewMemoryStream());
    ExpectServedWhole<
        _t_BIBSimpleStreamInterface, _t_BIBRewindableStreamInterface,
        _t_BIBPositionableStreamInterface, _t_BIBDataBlockStreamInterface,
        _t_BIBSizedDataStoreInterface, _t_BIBDataStoreInterface>(stream);
}
// clang-format on

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
            conformance::LoadMethods<_t_POSObjectVirtualInterface>(&BIBRuntimeLookup, value);
        EXPECT_EQ(conformance::MissingRows(methods), 0U);
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
