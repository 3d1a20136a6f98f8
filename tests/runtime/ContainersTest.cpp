#include "RuntimeFixture.h"

#include <cstring>

namespace runtimetest {
namespace {

void Increment(void* counter) {
    ++*static_cast<int*>(counter);
}

void ThrowFromDelete(void* counter) {
    Increment(counter);
    throw 1;
}

class ContainersTest : public RuntimeTest {
protected:
    // A host's container, unowned, with counter as its instance.
    BIBContainer* New(int& counter, void (*deleteProc)(void*) = &Increment) const {
        BIBContainer* container = nullptr;
        TakeMessage(Containers().NewFullContainer(
            &container,
            &counter,
            Atom("HostThing"),
            deleteProc,
            Atom("HostThingMethods"),
            nullptr,
            nullptr,
            nullptr));
        return container;
    }
    BIBPrimaryRecord const& PrimaryOf(BIBContainer const* container) const {
        return *reinterpret_cast<BIBPrimaryRecord const*>(
            reinterpret_cast<char const*>(container) + Containers().GetOffsetToPrimaryInstance());
    }
    std::string GetMethod(
        BIBGetMethodV3Proc row,
        BIBContainer const* container,
        char const* name,
        void** result,
        long optional = 0) const {
        return TakeMessage(row(result, container, Atom(name), Atom("HostProc"), optional));
    }
    static int Register(char const* interfaceName, char const* name, void* proc) {
        return reinterpret_cast<BIBRegisterProcAddressProc>(
            BIBRuntimeLookup("BIB", "BIBRegisterProcAddress", "BIBRegisterProcAddress"))(
            interfaceName, name, "HostProc", proc);
    }
    static void Unregister(char const* interfaceName) {
        reinterpret_cast<BIBUnregisterInterfaceProc>(BIBRuntimeLookup(
            "BIB", "BIBUnregisterInterface", "BIBUnregisterInterface"))(interfaceName);
    }
};

TEST_F(ContainersTest, CountsFromZeroAndDestroysWithTheLastReference) {
    int deleted = 0;
    BIBContainer* const container = New(deleted);
    long const* const count = Containers().DebugGetRefCountAddr(container);
    EXPECT_EQ(*count, 0);
    EXPECT_NE(Containers().AddRef(container), 0);
    EXPECT_NE(Containers().AddRef(container), 0);
    Containers().Release(container);
    EXPECT_EQ(Containers().DeleteUnownedContainer(container), 0);
    Containers().DecrementWithoutDelete(container);
    EXPECT_EQ(*count, 0);
    EXPECT_EQ(deleted, 0);
    EXPECT_NE(Containers().DeleteUnownedContainer(container), 0);
    EXPECT_EQ(deleted, 1);
}

TEST_F(ContainersTest, NullIsAcceptedWhereItMayCome) {
    EXPECT_EQ(Containers().AddRef(nullptr), 0);
    Containers().Release(nullptr);
    Containers().DecrementWithoutDelete(nullptr);
    EXPECT_EQ(Containers().DeleteUnownedContainer(nullptr), 0);
    EXPECT_EQ(Containers().GetSignature(nullptr), nullptr);
}

TEST_F(ContainersTest, PrimaryRecordHoldsInternedTexts) {
    int deleted = 0;
    BIBContainer* const container = New(deleted);
    BIBPrimaryRecord const& record = PrimaryOf(container);
    EXPECT_EQ(record.instanceName, Atom("HostThing").Text());
    EXPECT_EQ(record.signature, Atom("HostThingMethods").Text());
    EXPECT_EQ(record.instance, &deleted);
    EXPECT_EQ(Containers().GetSignature(container), Atom("HostThingMethods"));
    Containers().DeleteUnownedContainer(container);
}

TEST_F(ContainersTest, HoldsFurtherInstancesByName) {
    int first = 0;
    int second = 0;
    BIBContainer* container = nullptr;
    ASSERT_EQ(TakeMessage(Containers().NewContainer(&container, Atom("Bare"))), "");
    EXPECT_EQ(PrimaryOf(container).instanceName, nullptr);
    auto const add = [&](char const* name, int& instance) {
        return TakeMessage(
            Containers().RegisterInstance(container, &instance, Atom(name), &Increment));
    };
    EXPECT_EQ(add("First", first), "");
    EXPECT_EQ(add("Second", second), "");
    EXPECT_EQ(add("First", second), "the instance name is in use");
    EXPECT_EQ(PrimaryOf(container).instance, &first);
    EXPECT_EQ(Containers().GetInstance(container, Atom("Second")), &second);
    EXPECT_EQ(Containers().GetInstance(container, Atom("Third")), nullptr);
    void* found = nullptr;
    EXPECT_EQ(TakeMessage(Containers().NGetInstance(&found, container, Atom("First"))), "");
    EXPECT_EQ(found, &first);
    EXPECT_EQ(
        TakeMessage(Containers().NGetInstance(&found, container, Atom("Third"))),
        "no such instance");
    EXPECT_EQ(found, nullptr);
    Atom const name("First");
    unsigned long const atoms = bibrt::CountLive().fAtoms;
    Containers().DeleteUnownedContainer(container);
    EXPECT_EQ(first + second, 2);
    EXPECT_EQ(bibrt::CountLive().fAtoms, atoms - 2) << "the type and the second name";
}

TEST_F(ContainersTest, AValueTakesFurtherInstancesToo) {
    int deleted = 0;
    {
        Held const number(NewNumber(1));
        EXPECT_EQ(
            TakeMessage(Containers().RegisterInstance(
                number.Container(), &deleted, Atom("Note"), &Increment)),
            "");
        EXPECT_EQ(Containers().GetInstance(number.Container(), Atom("Note")), &deleted);
        EXPECT_EQ(Containers().GetInstance(number.Container(), Atom("POSNumber")), number);
    }
    EXPECT_EQ(deleted, 1);
}

TEST_F(ContainersTest, MethodsAreFoundUnderTheSignatureAndItsParents) {
    int deleted = 0;
    int procs[3] = {};
    Register("HostThingMethods", "Own", &procs[0]);
    Register("HostParent", "Own", &procs[1]);
    Register("HostGrandparent", "Inherited", &procs[2]);
    auto const& rows = Containers();
    EXPECT_EQ(
        TakeMessage(rows.RegisterInterface(Atom("HostThingMethods"), Atom("HostParent"))), "");
    EXPECT_EQ(TakeMessage(rows.RegisterInterface(Atom("HostParent"), Atom("HostGrandparent"))), "");
    BIBContainer* const container = New(deleted);
    void* method = nullptr;
    EXPECT_EQ(GetMethod(rows.GetMethod, container, "Own", &method), "");
    EXPECT_EQ(method, &procs[0]);
    EXPECT_EQ(GetMethod(rows.GetParentMethod, container, "Own", &method), "");
    EXPECT_EQ(method, &procs[1]);
    EXPECT_EQ(GetMethod(rows.GetMethod, container, "Inherited", &method), "");
    EXPECT_EQ(method, &procs[2]);
    EXPECT_EQ(GetMethod(rows.GetMethod, container, "None", &method), "no such method");
    EXPECT_EQ(method, nullptr);
    EXPECT_EQ(GetMethod(rows.GetMethod, container, "None", &method, /*optional=*/1), "");
    EXPECT_EQ(method, nullptr);
    for (char const* const name : {"HostThingMethods", "HostParent", "HostGrandparent"}) {
        Unregister(name);
    }
    EXPECT_EQ(GetMethod(rows.GetMethod, container, "Own", &method), "no such method");
    rows.DeleteUnownedContainer(container);
}

TEST_F(ContainersTest, ParentsFormNoCircle) {
    auto const declare = [](char const* signature, char const* parent) {
        return TakeMessage(Containers().RegisterInterface(Atom(signature), Atom(parent)));
    };
    std::string const circle = "the parents of the signature would form a circle";
    EXPECT_EQ(declare("A", "A"), circle);
    EXPECT_EQ(declare("A", "B"), "");
    EXPECT_EQ(declare("A", "B"), "");
    EXPECT_EQ(declare("B", "C"), "");
    EXPECT_EQ(declare("C", "A"), circle);
    EXPECT_EQ(declare("A", "C"), "the signature has another parent");
    Unregister("A");
    EXPECT_EQ(declare("A", "D"), "") << "the parent goes with the interface";
    Unregister("A");
    Unregister("B");
}

TEST_F(ContainersTest, CloneGoesThroughTheContainersOwnMethod) {
    int deleted = 0;
    Held const host(New(deleted));
    Held const number(NewNumber(4));
    BIBContainer* copy = nullptr;
    EXPECT_EQ(TakeMessage(Containers().CloneContainer(&copy, host)), "no such method");
    EXPECT_EQ(copy, nullptr);
    ASSERT_EQ(TakeMessage(Containers().CloneContainer(&copy, number.Container())), "");
    EXPECT_NE(copy, number.Container());
    EXPECT_EQ(NumberAt(As<POSObject>(copy)), 4);
    Containers().DeleteUnownedContainer(copy);
}

TEST_F(ContainersTest, AnInstanceThatFailsToBecomeAContainerStaysTheHosts) {
    int deleted = 0;
    Atom const name("HostThing");
    Atom const signature("HostThingMethods");
    for (unsigned long n = 1; n <= 2; ++n) {
        bibrt::FailAllocation(n, /*andAllLater=*/false);
        BIBContainer* container = As<BIBContainer>(&deleted);
        BIBError* const error = Containers().NewFullContainer(
            &container, &deleted, name, &Increment, signature, nullptr, nullptr, nullptr);
        EXPECT_EQ(TakeMessage(error), "out of memory");
        EXPECT_EQ(container, nullptr);
    }
    EXPECT_EQ(deleted, 0);
}

// An instance that holds a container, which must be gone when its release returns.
struct Holder {
    BIBContainer* fHeld;
    int* fDeletedOfHeld;
    int fSeen = 0;
};

void ReleaseHeld(void* holder) {
    auto* const self = static_cast<Holder*>(holder);
    Containers().Release(self->fHeld);
    self->fSeen = *self->fDeletedOfHeld;
}

TEST_F(ContainersTest, ReleaseWithinADeleteProcedureDestroysAtOnce) {
    int deleted = 0;
    Holder holder = {New(deleted), &deleted};
    Containers().AddRef(holder.fHeld);
    BIBContainer* outer = nullptr;
    TakeMessage(Containers().NewContainer(&outer, nullptr));
    TakeMessage(Containers().RegisterInstance(outer, &holder, Atom("Holder"), &ReleaseHeld));
    Containers().DeleteUnownedContainer(outer);
    EXPECT_EQ(holder.fSeen, 1);
}

TEST_F(ContainersTest, AThrowingDeleteProcedureStopsNothing) {
    int deleted = 0;
    {
        Held const dict(Dicts().NewPOSDict());
        Put(dict, "first", As<POSObject>(New(deleted, &ThrowFromDelete)));
        Put(dict, "second", As<POSObject>(New(deleted)));
    }
    EXPECT_EQ(deleted, 2);
}

} // namespace
} // namespace runtimetest
