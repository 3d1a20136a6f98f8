#include "bib/BIBContainer.h"

#include "bib/POSCollections.h"
#include "bib/POSScalars.h"
#include "tests/support/BoundClient.h"

namespace BIB_T_NMT {

using support::WhatItThrows;

class BIBContainerHandle : public support::BoundClientTest {
protected:
    static long CountOf(BIBContainer const* container) {
        return *GetProcs<BIBContainerInterface>()->DebugGetRefCountAddr(container);
    }
};

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
    CPOSNumber const& same = number;
    number = same;
    EXPECT_EQ(1, CountOf(raw));
    EXPECT_EQ(raw, number.BIBContainerBaseGeneric::UnownedReturn());
    EXPECT_FALSE(number.IsValid());
    EXPECT_EQ(0, CountOf(raw));
    BIBContainerBaseGeneric const handle(raw);
    EXPECT_EQ(1, CountOf(raw));
}

TEST_F(BIBContainerHandle, IsNulledWhenNoReferenceIsToBeHad) {
    CPOSNumber const number(1.0);
    auto& table = *TBIBInterfaceClient<BIBContainerInterface>::GetProcTable_Mutable();
    auto const saved = table.AddRef;
    table.AddRef = [](BIBContainer*) { return 0L; };
    EXPECT_EQ("invalid container", WhatItThrows([&] {
                  BIBContainerBaseGeneric const h(number.operator BIBContainer*());
              }));
    EXPECT_EQ("invalid container", WhatItThrows([&] { CPOSObject const copy(number); }));
    table.AddRef = saved;
    EXPECT_EQ(1, CountOf(number));
}

TEST_F(BIBContainerHandle, FindsInstancesMethodsAndSignaturesOrSaysSo) {
    int instance = 0;
    int second = 0;
    CBIBStringAtom const name("TestInstance");
    CBIBStringAtom const other("TestOther");
    CBIBStringAtom const signature("TestSignature");
    auto const make = [&](CBIBStringAtom const& itsSignature) {
        return CBIBContainer::NewFullContainer(
            &instance, name, nullptr, itsSignature, nullptr, nullptr, nullptr);
    };
    BIBContainerBaseGeneric const container(make(signature));
    EXPECT_EQ(&instance, CBIBContainer::GetInstance(container, name));
    EXPECT_EQ(&instance, CBIBContainer::BCGetInstance(container, name));
    EXPECT_EQ(signature.c_str(), CBIBContainer::GetSignature(container));
    GetProcs<BIBContainerInterface>()->RegisterInstance(container, &second, other, nullptr);
    EXPECT_EQ(&second, CBIBContainer::GetInstance(container, other));
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

} // namespace BIB_T_NMT
