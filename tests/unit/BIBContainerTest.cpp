#include "bib/BIBContainer.h"

#include "bib/POSDict.h"
#include "bib/POSNumber.h"
#include "tests/support/BoundClient.h"

namespace BIB_T_NMT {

using support::WhatItThrows;

class BIBContainerHandle : public support::BoundClientTest {
protected:
    static long CountOf(BIBContainer const* container) {
        return *GetProcs<BIBContainerInterface>()->DebugGetRefCountAddr(container);
    }
};

namespace {

long RefuseReference(BIBContainer* /*container*/) {
    return 0;
}

std::vector<BIBContainer*> gReleased;
std::vector<BIBContainer*> gDecremented;

void RecordRelease(BIBContainer* container) {
    gReleased.push_back(container);
}

void RecordDecrement(BIBContainer* container) {
    gDecremented.push_back(container);
}

} // namespace

TEST_F(BIBContainerHandle, IsRefusedForNullButCopiedWhenInvalid) {
    EXPECT_EQ("invalid container", WhatItThrows([] { BIBContainerBaseGeneric const h(nullptr); }));
    BIBContainerBaseGeneric const invalid;
    EXPECT_FALSE(BIBContainerBaseGeneric(invalid).IsValid());
}

TEST_F(BIBContainerHandle, CountsOnceAndReturnsUnowned) {
    CPOSNumber number(1.0);
    BIBContainer* const raw = number;
    EXPECT_EQ(1, CountOf(raw));
    {
        CPOSObject const copy(number);
        EXPECT_EQ(2, CountOf(raw));
    }
    EXPECT_EQ(raw, number.BIBContainerBaseGeneric::UnownedReturn());
    EXPECT_FALSE(number.IsValid());
    EXPECT_EQ(0, CountOf(raw));
    BIBContainerBaseGeneric const handle(raw);
    EXPECT_EQ(1, CountOf(raw));
}

TEST_F(BIBContainerHandle, TakesTheNewReferenceBeforeItDropsTheOld) {
    CPOSDict dict;
    CPOSDict const& same = dict;
    dict = same;
    EXPECT_EQ(1, CountOf(dict));
    dict = CPOSDict();
    EXPECT_EQ(1, CountOf(dict));
}

TEST_F(BIBContainerHandle, HandsNullThroughToTheRuntime) {
    auto& table = *TBIBInterfaceClient<BIBContainerInterface>::GetProcTable_Mutable();
    auto const saved = table;
    table.Release = &RecordRelease;
    table.DecrementWithoutDelete = &RecordDecrement;
    gReleased.clear();
    gDecremented.clear();
    {
        BIBContainerBaseGeneric handle;
        EXPECT_EQ(nullptr, handle.UnownedReturn());
    }
    table = saved;
    EXPECT_EQ(std::vector<BIBContainer*>{nullptr}, gReleased);
    EXPECT_EQ(std::vector<BIBContainer*>{nullptr}, gDecremented);
}

TEST_F(BIBContainerHandle, IsNulledWhenNoReferenceIsToBeHad) {
    CPOSNumber const number(1.0);
    auto& table = *TBIBInterfaceClient<BIBContainerInterface>::GetProcTable_Mutable();
    auto const saved = table.AddRef;
    table.AddRef = &RefuseReference;
    EXPECT_EQ("invalid container", WhatItThrows([&] {
                  BIBContainerBaseGeneric const h(number.operator BIBContainer*());
              }));
    EXPECT_EQ("invalid container", WhatItThrows([&] { CPOSObject const copy(number); }));
    table.AddRef = saved;
    EXPECT_EQ(1, CountOf(number));
}

TEST_F(BIBContainerHandle, FindsInstancesByPointerOrByName) {
    int instance = 0;
    int second = 0;
    CBIBStringAtom const name("TestInstance");
    CBIBStringAtom const other("TestOther");
    CBIBStringAtom const signature("TestSignature");
    BIBContainerBaseGeneric const container(CBIBContainer::NewFullContainer(
        &instance, name, nullptr, signature, nullptr, nullptr, nullptr));
    EXPECT_EQ(&instance, CBIBContainer::GetInstance(container, name));
    EXPECT_EQ(&instance, CBIBContainer::BCGetInstance(container, name));
    EXPECT_EQ(signature.c_str(), CBIBContainer::GetSignature(container));
    EXPECT_EQ(
        nullptr,
        GetProcs<BIBContainerInterface>()->RegisterInstance(container, &second, other, nullptr));
    EXPECT_EQ(&second, CBIBContainer::GetInstance(container, other));
    EXPECT_NE("nothing", WhatItThrows([&] { CBIBContainer::GetInstance(container, signature); }));
}

TEST_F(BIBContainerHandle, MissesASignature) {
    EXPECT_EQ("couldn't get signature", WhatItThrows([] { CBIBContainer::GetSignature(nullptr); }));
    int instance = 0;
    BIBContainerBaseGeneric const container(CBIBContainer::NewFullContainer(
        &instance, CBIBStringAtom("Named"), nullptr, CBIBStringAtom(), nullptr, nullptr, nullptr));
    EXPECT_EQ(
        "couldn't get signature", WhatItThrows([&] { CBIBContainer::GetSignature(container); }));
}

TEST_F(BIBContainerHandle, GivesNoMethodOrAnErrorForAMissingOne) {
    CPOSNumber const number(1.0);
    CBIBStringAtom const name("NoSuchMethod");
    EXPECT_EQ(nullptr, CBIBContainer::GetMethod(number, name, name, /*mustExist=*/false));
    EXPECT_NE("nothing", WhatItThrows([&] {
                  CBIBContainer::GetMethod(number, name, name, /*mustExist=*/true);
              }));
}

} // namespace BIB_T_NMT
