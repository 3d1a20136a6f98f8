#include "bib/BIBError.h"

#include "bib/BIBContainer.h"
#include "bib/BIBErrorTraits.h"
#include "bib/BIBMemory.h"
#include "bib/BIBStringTraits.h"
#include "source/JoboptionsReader.h"
#include "source/PDFSettingsError.h"
#include "tests/support/BoundClient.h"

namespace BIB_T_NMT {

using support::WhatItThrows;

namespace {

// The reference count of an error is the runtime's business: it is counted here by its calls.
long gReferences = 0;
BIBErrorAddRefProcV2 gRealAddRef = nullptr;
BIBErrorReleaseProc gRealRelease = nullptr;

BIBError* CountAddRef(BIBError* error) {
    gReferences += error != nullptr ? 1 : 0;
    return gRealAddRef(error);
}

void CountRelease(BIBError* error) {
    gReferences -= error != nullptr ? 1 : 0;
    gRealRelease(error);
}

} // namespace

static std::string Identity(CBIBError const& error) {
    auto const* const table = GetProcs<BIBErrorInterface>();
    BIBError* const raw = error;
    CBIBError const adopted(raw);
    CBIBStringAtom const component(table->GetComponent(raw), /*adopt=*/false);
    return std::string(error.what()) + ", " + component.c_str() + ", " +
           std::to_string(table->GetID(raw));
}

class BIBErrorHandle : public support::BoundClientTest {
protected:
    BIBErrorHandle() {
        auto& table = *TBIBInterfaceClient<BIBErrorInterface>::GetProcTable_Mutable();
        gRealAddRef = table.AddRef;
        gRealRelease = table.Release;
        table.AddRef = &CountAddRef;
        table.Release = &CountRelease;
        gReferences = 0;
    }

    ~BIBErrorHandle() override {
        auto& table = *TBIBInterfaceClient<BIBErrorInterface>::GetProcTable_Mutable();
        table.AddRef = gRealAddRef;
        table.Release = gRealRelease;
    }

    // With one reference, which gReferences does not know of.
    static BIBError* NewError() {
        return GetProcs<BIBErrorInterface>()->NewError("text", "component", 5, nullptr, nullptr);
    }
};

TEST_F(BIBErrorHandle, IsInvalidByDefaultAndSaysSo) {
    CBIBError const invalid;
    CBIBError const copy(invalid); // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_FALSE(copy.IsValid());
    EXPECT_STREQ("Invalid CBIBError", copy.what());
    EXPECT_EQ(nullptr, static_cast<BIBError*>(copy));
}

TEST_F(BIBErrorHandle, AdoptsCopiesAndAssignsWithOneReferenceEach) {
    {
        CBIBError error(NewError());
        EXPECT_EQ(0, gReferences);
        CBIBError const copy(error); // NOLINT(performance-unnecessary-copy-initialization)
        EXPECT_EQ(1, gReferences);
        CBIBError const& same = error;
        error = same;
        EXPECT_EQ(1, gReferences);
        BIBError* const raw = error;
        EXPECT_EQ(2, gReferences);
        CBIBError const adopted(raw);
        EXPECT_STREQ("text", adopted.what());
    }
    EXPECT_EQ(-1, gReferences);
}

TEST_F(BIBErrorHandle, KeepsItsCountThroughAThrow) {
    try {
        BIBThrowError(NewError());
    } catch (CBIBError const& error) {
        EXPECT_EQ(0, gReferences);
        EXPECT_STREQ("text", error.what());
    }
    EXPECT_EQ(-1, gReferences);
}

TEST_F(BIBErrorHandle, ThrowsTheMemoryErrorWithoutMemory) {
    bibrt::FailAllocation(1, /*andAllLater=*/true);
    std::string const first = WhatItThrows([] { CBIBMemory::ThrowMemError(); });
    std::string const second = WhatItThrows([] { CBIBStringAtom const atom("a new text"); });
    bibrt::ResetFailures();
    EXPECT_EQ("out of memory", first);
    EXPECT_EQ("out of memory", second);
    EXPECT_EQ(0, gReferences);
}

TEST_F(BIBErrorHandle, ThrowsAnInvalidErrorWhenNoneCanBeMade) {
    bibrt::FailAllocation(1, /*andAllLater=*/false);
    EXPECT_EQ("Invalid CBIBError", WhatItThrows([] {
                  CBIBError::ThrowError("text", "", 0, nullptr, nullptr);
              }));
    bibrt::ResetFailures();
}

TEST(BIBErrorStatics, AreInvalidBeforeStartAndAfterStop) {
    BIBClientTerminate();
    EXPECT_FALSE(CBIBError::GetMemError().IsValid());
    EXPECT_TRUE(BIBClientInit(&BIBRuntimeLookup));
    EXPECT_TRUE(CBIBError::GetMemError().IsValid());
    BIBClientTerminate();
    EXPECT_FALSE(CBIBError::GetMemError().IsValid());
    EXPECT_EQ("Invalid CBIBError", WhatItThrows([] { CBIBMemory::ThrowMemError(); }));
}

using BIBStringAtomHandle = support::BoundClientTest;

TEST_F(BIBStringAtomHandle, InternsAndCounts) {
    CBIBStringAtom atom("one text");
    EXPECT_EQ(atom.c_str(), CBIBStringAtom("one text").c_str());
    EXPECT_EQ(nullptr, CBIBStringAtom(nullptr, /*adopt=*/true).c_str());
    EXPECT_EQ(fLiveBefore.fAtoms + 1, bibrt::CountLive().fAtoms);
    { CBIBStringAtom const shared(atom, /*adopt=*/false); }
    EXPECT_EQ(fLiveBefore.fAtoms + 1, bibrt::CountLive().fAtoms);
    {
        CBIBStringAtom const adopted(
            GetProcs<BIBStringInterface>()->NewStringAtom("one text"), /*adopt=*/true);
    }
    atom = atom.c_str();
    EXPECT_STREQ("one text", atom.c_str());
    atom = "another text";
    EXPECT_STREQ("another text", atom.c_str());
    bibrt::FailAllocation(1, /*andAllLater=*/false);
    atom = "a third text";
    bibrt::ResetFailures();
    EXPECT_EQ(nullptr, atom.c_str());
    atom = "another text";
    EXPECT_EQ(fLiveBefore.fAtoms + 1, bibrt::CountLive().fAtoms);
}

using ErrorIdentity = support::BoundClientTest;

TEST_F(ErrorIdentity, IsMessageComponentAndId) {
    struct {
        char const* fIdentity;
        void (*fThrow)();
    } const kCases[] = {
        {"Error, PDFSettings, 2", [] { throw PDFSettingsImpl::CPDFSettingsError(); }},
        {"why, PDFSettings, 7", [] { PDFSettingsImpl::ThrowIfFalse(/*condition=*/false, "why"); }},
        {"Joboptions_To_CPOSDict joboptions file is invalid, PDFSettings, 6",
         [] { JoboptionsParserUtils::ThrowInvalidFile(); }},
        {"invalid container, , 0", [] { CBIBContainer::ThrowInvalidContainerException(); }},
        {"couldn't get signature, , 0", [] { CBIBContainer::ThrowNoSignatureException(); }},
        {"Missing Interface, BIB, 0", [] { BIBThrowMissingInterfaceError(); }},
    };
    for (auto const& row : kCases) {
        try {
            row.fThrow();
            ADD_FAILURE() << row.fIdentity;
        } catch (CBIBError const& error) {
            EXPECT_EQ(row.fIdentity, Identity(error));
        }
    }
    EXPECT_EQ(
        "nothing", WhatItThrows([] { PDFSettingsImpl::ThrowIfFalse(/*condition=*/true, "why"); }));
}

} // namespace BIB_T_NMT
