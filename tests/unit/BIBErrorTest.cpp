#include "bib/BIBError.h"

#include "bib/BIBContainer.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/BIBMemory.h"
#include "bib/BIBStringAtom.h"
#include "source/PDFSettingsError.h"
#include "source/PDFSettingsParser.h"
#include "tests/support/BoundClient.h"

namespace BIB_T_NMT {

using support::WhatItThrows;

// The reference count of an error is the runtime's business: it is counted here by its calls.
class BIBErrorHandle : public support::BoundClientTest {
protected:
    BIBErrorHandle() {
        fReal = Table();
        Table().AddRef = [](BIBError* error) {
            fReferences += error != nullptr ? 1 : 0;
            return fReal.AddRef(error);
        };
        Table().Release = [](BIBError* error) {
            fReferences -= error != nullptr ? 1 : 0;
            fReal.Release(error);
        };
        fReferences = 0;
    }
    ~BIBErrorHandle() override { Table() = fReal; }

    static _t_BIBErrorInterface& Table() {
        return *TBIBInterfaceClient<BIBErrorInterface>::GetProcTable_Mutable();
    }

    // With one reference, which fReferences does not know of.
    static BIBError* NewError() {
        return Table().NewError("text", "component", 5, nullptr, nullptr);
    }

    static inline long fReferences;
    static inline _t_BIBErrorInterface fReal;
};

TEST_F(BIBErrorHandle, IsInvalidByDefaultAndSaysSo) {
    CBIBError const invalid;
    CBIBError const copy(invalid);
    EXPECT_FALSE(copy.IsValid());
    EXPECT_STREQ("Invalid CBIBError", copy.what());
    EXPECT_EQ(nullptr, static_cast<BIBError*>(copy));
}

TEST_F(BIBErrorHandle, LeavesTheMessageToTheError) {
    unsigned long const before = bibrt::CountLive().fAtoms;
    {
        CBIBError const error("a message of its own", "component", 5, nullptr, nullptr);
        EXPECT_STREQ("a message of its own", error.what());
        EXPECT_EQ(before + 2, bibrt::CountLive().fAtoms);
        EXPECT_STREQ("a message of its own", error.what());
        EXPECT_EQ(before + 2, bibrt::CountLive().fAtoms);
    }
    EXPECT_EQ(before, bibrt::CountLive().fAtoms);
}

TEST_F(BIBErrorHandle, AdoptsCopiesThrowsAndAssignsWithOneReferenceEach) {
    try {
        BIBThrowError(NewError());
    } catch (CBIBError& error) {
        EXPECT_EQ(0, fReferences);
        CBIBError const copy(error);
        EXPECT_EQ(1, fReferences);
        CBIBError const& same = error;
        error = same;
        EXPECT_EQ(1, fReferences);
        BIBError* const raw = error;
        EXPECT_EQ(2, fReferences);
        CBIBError const adopted(raw);
        EXPECT_STREQ("text", adopted.what());
    }
    EXPECT_EQ(-1, fReferences);
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
    { CBIBStringAtom const shared(atom, /*adopt=*/false); }
    {
        CBIBStringAtom const adopted(
            GetProcs<BIBStringInterface>()->NewStringAtom("one text"), /*adopt=*/true);
    }
    atom = atom.c_str();
    EXPECT_STREQ("one text", atom.c_str());
    EXPECT_EQ(fLiveBefore.fAtoms + 1, bibrt::CountLive().fAtoms);
    bibrt::FailAllocation(1, /*andAllLater=*/true);
    std::string const thrown = WhatItThrows([] { CBIBStringAtom const none("a new text"); });
    atom = "a third text";
    bibrt::ResetFailures();
    EXPECT_EQ("out of memory", thrown);
    EXPECT_EQ(nullptr, atom.c_str());
    atom = "another text";
    EXPECT_EQ(fLiveBefore.fAtoms + 1, bibrt::CountLive().fAtoms);
}

using ErrorIdentity = support::BoundClientTest;

TEST_F(ErrorIdentity, IsMessageComponentAndId) {
    struct {
        char const* fMessage;
        char const* fComponent;
        long fId;
        void (*fThrow)();
    } const kCases[] = {
        {"Error", "PDFSettings", 2, [] { throw PDFSettingsImpl::CPDFSettingsError(); }},
        {"why",
         "PDFSettings",
         7,
         [] { PDFSettingsImpl::ThrowIfFalse(/*condition=*/false, "why"); }},
        {"Joboptions_To_CPOSDict joboptions file is invalid",
         "PDFSettings",
         6,
         [] { JoboptionsParserUtils::ThrowInvalidFile(); }},
        {"invalid container", "", 0, [] { CBIBContainer::ThrowInvalidContainerException(); }},
        {"Missing Interface", "BIB", 0, [] { BIBThrowMissingInterfaceError(); }},
    };
    auto const* const errors = GetProcs<BIBErrorInterface>();
    for (auto const& [message, component, id, throwIt] : kCases) {
        try {
            throwIt();
            ADD_FAILURE() << message;
        } catch (CBIBError const& error) {
            BIBError* const raw = error;
            CBIBError const adopted(raw);
            EXPECT_STREQ(message, error.what());
            EXPECT_STREQ(component, CBIBStringAtom(errors->GetComponent(raw), false).c_str());
            EXPECT_EQ(id, errors->GetID(raw)) << message;
        }
    }
    EXPECT_EQ(
        "nothing", WhatItThrows([] { PDFSettingsImpl::ThrowIfFalse(/*condition=*/true, "why"); }));
}

} // namespace BIB_T_NMT
