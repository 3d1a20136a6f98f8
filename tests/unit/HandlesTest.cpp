// The handles on what the runtime counts: containers, errors, atoms, buffers, streams and values.
#include "bib/BIBContainer.h"
#include "bib/BIBError.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/BIBMemory.h"
#include "bib/BIBSharedBuffer.h"
#include "bib/BIBStream.h"
#include "bib/BIBStringAtom.h"
#include "bib/POSCollections.h"
#include "bib/POSScalars.h"
#include "source/PDFSettingsError.h"
#include "tests/support/BoundClient.h"

#include <functional>
#include <limits>

namespace BIB_T_NMT {

using support::WhatItThrows;

class Handles : public support::BoundClientTest {
protected:
    static long CountOf(BIBContainer const* container) {
        return *GetProcs<BIBContainerInterface>()->DebugGetRefCountAddr(container);
    }
};

TEST_F(Handles, OfContainersCountOnceAndReturnUnowned) {
    EXPECT_EQ("invalid container", WhatItThrows([] { BIBContainerBaseGeneric const h(nullptr); }));
    EXPECT_FALSE(BIBContainerBaseGeneric(BIBContainerBaseGeneric()).IsValid());
    CPOSNumber number(1.0);
    BIBContainer* const raw = number;
    EXPECT_EQ(1, CountOf(raw));
    {
        CPOSObject const copy(number);
        EXPECT_EQ(2, CountOf(raw));
    }
    CPOSNumber const& same = number;
    number = same;
    EXPECT_EQ(1, CountOf(raw));
    EXPECT_EQ(raw, number.BIBContainerBaseGeneric::UnownedReturn());
    EXPECT_FALSE(number.IsValid());
    EXPECT_EQ(0, CountOf(raw));
    BIBContainerBaseGeneric const handle(raw);
    EXPECT_EQ(1, CountOf(raw));
}

TEST_F(Handles, FindInstancesMethodsAndSignaturesOrSaySo) {
    int instance = 0;
    CBIBStringAtom const name("TestInstance");
    CBIBStringAtom const signature("TestSignature");
    auto const make = [&](CBIBStringAtom const& itsSignature) {
        return CBIBContainer::NewFullContainer(
            &instance, name, nullptr, itsSignature, nullptr, nullptr, nullptr);
    };
    BIBContainerBaseGeneric const container(make(signature));
    EXPECT_EQ(&instance, CBIBContainer::GetInstance(container, name));
    EXPECT_EQ(&instance, CBIBContainer::BCGetInstance(container, name));
    EXPECT_EQ(signature.c_str(), CBIBContainer::GetSignature(container));
    EXPECT_NE("nothing", WhatItThrows([&] { CBIBContainer::GetInstance(container, signature); }));
    EXPECT_EQ(nullptr, CBIBContainer::GetMethod(container, name, name, /*mustExist=*/false));
    EXPECT_NE("nothing", WhatItThrows([&] {
                  CBIBContainer::GetMethod(container, name, name, /*mustExist=*/true);
              }));
    BIBContainerBaseGeneric const nameless(make(CBIBStringAtom()));
    for (BIBContainer* const none :
         {static_cast<BIBContainer*>(nullptr), nameless.operator BIBContainer*()}) {
        EXPECT_EQ(
            "couldn't get signature", WhatItThrows([&] { CBIBContainer::GetSignature(none); }));
    }
}

TEST_F(Handles, OfErrorsHoldOneReferenceEach) {
    try {
        CBIBError::ThrowError("text", "component", 5, nullptr, nullptr);
    } catch (CBIBError& error) {
        CBIBError const copy(error);
        CBIBError const& same = error;
        error = same;
        BIBError* const raw = error;
        CBIBError const adopted(raw);
        EXPECT_STREQ("text", adopted.what());
    }
    EXPECT_STREQ("Invalid CBIBError", CBIBError(CBIBError()).what());
}

TEST_F(Handles, OfErrorsHaveMessageComponentAndId) {
    struct {
        char const* fMessage;
        char const* fComponent;
        long fId;
        void (*fThrow)();
    } const kCases[] = {
        {"Error", "PDFSettings", 2, [] { throw PDFSettingsImpl::CPDFSettingsError(); }},
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
            unsigned long const atoms = bibrt::CountLive().fAtoms;
            EXPECT_STREQ(message, error.what());
            EXPECT_EQ(atoms, bibrt::CountLive().fAtoms);
            EXPECT_STREQ(component, CBIBStringAtom(errors->GetComponent(raw), false).c_str());
            EXPECT_EQ(id, errors->GetID(raw)) << message;
        }
    }
}

TEST_F(Handles, OfAtomsInternAndCount) {
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
}

using Units = TBIBMemoryBuffer<unsigned short, CBIBMemory>;
using SharedUnits = TBIBSharedBuffer<unsigned short>;

TEST_F(Handles, OfBuffersKeepTheBlockAsLongAsAnybodyHoldsIt) {
    BIBSharedBuffer* raw = nullptr;
    {
        unsigned short const source[] = {1, 2, 3};
        Units units(0);
        units = Units(source, 3);
        EXPECT_EQ(6U, units.GetSize());
        SharedUnits shared(units, &BIBDeleteSharedBuff);
        EXPECT_EQ(6U, shared.GetSize());
        EXPECT_EQ(3U, shared.GetNumElements());
        EXPECT_EQ(0U, units.GetSize());
        SharedUnits const& same = shared;
        shared = same;
        SharedUnits copy;
        copy = shared;
        shared = SharedUnits();
        EXPECT_EQ(2, copy[1]);
        raw = copy.GetSharedBuffer();
    }
    SharedUnits const adopted(raw, /*adopt=*/true);
    EXPECT_EQ(3, adopted[2]);
    EXPECT_FALSE(SharedUnits(SharedUnits(nullptr, /*adopt=*/false)).IsValid());
}

TEST_F(Handles, OfBuffersRunOutOfMemoryWhereASizeHasNoNumber) {
    constexpr unsigned long kTooMany = std::numeric_limits<unsigned long>::max() / 2 + 1;
    EXPECT_EQ("out of memory", WhatItThrows([] { Units const units(kTooMany); }));
    EXPECT_EQ("out of memory", WhatItThrows([] { SharedUnits const units(kTooMany, nullptr); }));
    EXPECT_EQ("out of memory", WhatItThrows([] { Units const units(kTooMany / 2); }));
}

TEST_F(Handles, OfBuffersFreeABlockOnceWhenThereIsNoBuffer) {
    int deleted = 0;
    auto const make = [&deleted] {
        auto const count = [](void* block) { ++*static_cast<int*>(block); };
        CBIBSharedBuff::NewBuffer(sizeof deleted, &deleted, count, nullptr, nullptr);
    };
    bibrt::FailAllocation(1, /*andAllLater=*/false);
    EXPECT_EQ("out of memory", WhatItThrows(make));
    EXPECT_EQ(1, deleted);
    fLookup.Hide("BIBSharedBuffInterface.GetSize");
    MoveCounter();
    EXPECT_EQ("", WhatItThrows(make));
    EXPECT_EQ(2, deleted);
    fLookup.Show("BIBSharedBuffInterface.GetSize");
}

TEST_F(Handles, OfValuesFailQuietlyIfAsked) {
    auto const parse = [](char const* text, bool quiet) {
        return CPOSObject::CreateFromText(text, nullptr, quiet);
    };
    CPOSDict const dict(parse("< number 1 dict < > array [ 1 ] >", false), /*quiet=*/false);
    CPOSArray const array = dict.GetArray("array", /*quiet=*/false);
    CBIBStringAtom const number("number");
    struct {
        char const* fThrows;
        std::function<void(bool)> fRead;
    } const kCases[] = {
        {"CreateFromText failed", [&](bool quiet) { parse("< A", quiet); }},
        {"CPOSDict::Get failed", [&](bool quiet) { dict.Get("none", quiet); }},
        {"CPOSDict::Get failed", [&](bool quiet) { dict.GetDict("none", quiet); }},
        {"CPOSDict::Get failed", [&](bool quiet) { dict.GetArray("none", quiet); }},
        {"downcast from CPOSObject to CPOSDict failed",
         [&](bool quiet) { dict.GetDict("array", quiet); }},
        {"downcast from CPOSObject to CPOSDict failed",
         [&](bool quiet) { EXPECT_FALSE(CPOSDict(CPOSObject(), quiet).IsValid()); }},
        {"downcast from CPOSObject to CPOSString failed",
         [&](bool quiet) { EXPECT_FALSE(CPOSString(dict, quiet).IsValid()); }},
        {"downcast from CPOSObject to CPOSBinData failed",
         [&](bool quiet) { EXPECT_FALSE(CPOSBinData(dict, quiet).IsValid()); }},
        {"downcast from CPOSObject to CPOSNumber failed",
         [&](bool quiet) { EXPECT_FALSE(CPOSNumber(dict, quiet).IsValid()); }},
        {"downcast from CPOSObject to CPOSArray failed",
         [&](bool quiet) { dict.GetArray("number", quiet); }},
        {"downcast from CPOSObject to CPOSUnicodeString failed",
         [&](bool quiet) { dict.GetUnicodeString(number, quiet); }},
        {"CPOSArray::GetAt subscript failed", [&](bool quiet) { array.GetAt(1, quiet); }},
        {"nothing", [&](bool quiet) { dict.GetDict("dict", quiet); }},
    };
    for (auto const& row : kCases) {
        EXPECT_EQ(row.fThrows, WhatItThrows([&row] { row.fRead(false); }));
        EXPECT_EQ("nothing", WhatItThrows([&row] { row.fRead(true); })) << row.fThrows;
    }
    EXPECT_TRUE(dict == dict.Clone());
    EXPECT_TRUE(dict != CPOSDict());
}

TEST_F(Handles, AreNotMadeDuringAStartThatFindsNoTable) {
    CPOSDict const dict;
    POSDict* const raw = dict;
    for (char const* const row :
         {"POSDictInterface.DeepGet",
          "POSArrayInterface.SetAt",
          "POSDictIteratorInterface.Next",
          "POSNumberInterface.Get",
          "POSObjectStatics.DebugDump",
          "BIBStreamFactoryInterface.NewClientSimpleStream"}) {
        fLookup.Hide(row);
    }
    MoveCounter();
    gFinishedInit = false;
    EXPECT_FALSE(CPOSDict(raw).IsValid());
    EXPECT_FALSE(CPOSDict(CPOSObject(dict), /*quiet=*/true).IsValid());
    EXPECT_EQ("invalid container", WhatItThrows([] { CPOSDict const handle; }));
    EXPECT_EQ("invalid container", WhatItThrows([] { CPOSArray const handle; }));
    EXPECT_EQ("invalid container", WhatItThrows([] { CPOSNumber const handle(1.0); }));
    EXPECT_EQ("invalid container", WhatItThrows([&] { CPOSDictIterator const handle(dict); }));
    EXPECT_EQ(nullptr, CBIBStreamFactory::NewMemoryStream());
    EXPECT_FALSE(CPOSObject::CreateFromText("1", nullptr, /*quiet=*/false).IsValid());
    gFinishedInit = true;
}

} // namespace BIB_T_NMT
