#include "host/detail/Bindings.h"
#include "api/BIBRuntime.h"
#include "pdfsettings/Error.h"
#include "runtime/objects/Diagnostics.h"

#include <cstring>
#include <gtest/gtest.h>
#include <new>

using namespace pdfsettings;

namespace {

// Replaces a component's own rows, which are missing while no component is started.
void Nothing() {}

char const* gMissingOperation = nullptr;

void* LookupWithoutOne(char const* interfaceName, char const* operation, char const* procType) {
    if (gMissingOperation != nullptr && std::strcmp(operation, gMissingOperation) == 0) {
        return nullptr;
    }
    if (std::strncmp(interfaceName, "PDFSettings", std::strlen("PDFSettings")) == 0) {
        return reinterpret_cast<void*>(&Nothing);
    }
    return BIBRuntimeLookup(interfaceName, operation, procType);
}

std::string MessageWithout(char const* operation) {
    gMissingOperation = operation;
    try {
        detail::Bindings const bindings(&LookupWithoutOne);
    } catch (Error const& error) {
        return error.Message();
    }
    return "all rows were found";
}

} // namespace

TEST(Bindings, AMissingRowIsNamed) {
    struct {
        char const* fMissing;
        char const* fMessage;
    } const cases[] = {
        {nullptr, "all rows were found"},
        {"GetOffsetToPrimaryInstance",
         "missing procedure BIBContainerInterface/GetOffsetToPrimaryInstance of type "
         "BIBGetOffsetToPrimaryInstProc"},
        {"Append", "missing procedure POSArrayInterface/Append of type POSArrayAppendProc"},
        {"GetSettings",
         "missing procedure PDFSettingsInterface/GetSettings of type PDFSettingsGetSettingsProc"},
        {"GetListofPDFSettings",
         "missing procedure PDFSettingsStatics/GetListofPDFSettings of type "
         "PDFSettingsGetListofPDFSettingsProc"},
    };
    for (auto const& [missing, message] : cases) {
        EXPECT_EQ(MessageWithout(missing), message);
    }
}

TEST(Bindings, AnObjectThatCannotBeOwnedIsDeleted) {
    gMissingOperation = nullptr;
    detail::Bindings tables(&LookupWithoutOne);
    bibrt::LiveCounts const live = bibrt::CountLive();
    tables.containers.AddRef = [](BIBContainer* /*container*/) { return 0L; };
    EXPECT_THROW(detail::Share(tables, tables.dicts.NewPOSDict()), std::bad_alloc);
    EXPECT_EQ(live, bibrt::CountLive());
}
