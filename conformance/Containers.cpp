// Containers: counts, instances, signatures and methods.
#include "conformance/Group.h"
#include "conformance/Groups.h"

#include <algorithm>
#include <vector>

namespace conformance {

namespace {

void Count(void* counter) {
    ++*static_cast<int*>(counter);
}

constexpr char kName[] = "ConformanceThing";
constexpr char kSignature[] = "ConformanceMethods";

// A new container around counter, which counts its destructions, or null with an error.
BIBContainer* NewThing(Runtime const& runtime, int& counter, char const* signature = kSignature) {
    BIBContainer* container = nullptr;
    runtime.Succeed(
        "NewFullContainer",
        runtime.Containers().NewFullContainer(
            &container,
            &counter,
            Atom(runtime, kName),
            &Count,
            Atom(runtime, signature),
            nullptr,
            nullptr,
            nullptr));
    Require(container != nullptr, "a container", "null");
    return container;
}

BIBPrimaryRecord const& PrimaryOf(Runtime const& runtime, BIBContainer const* container) {
    return *reinterpret_cast<BIBPrimaryRecord const*>(
        reinterpret_cast<char const*>(container) +
        runtime.Containers().GetOffsetToPrimaryInstance());
}

void CountsFromZero(Runtime const& runtime) {
    auto const rows = runtime.Containers();
    int deleted = 0;
    BIBContainer* const container = NewThing(runtime, deleted);
    Expect("the count of a new container", 0L, runtime.CountOf(container));
    Require(rows.AddRef(container) != 0, "nonzero of AddRef", "zero");
    Require(rows.AddRef(container) != 0, "nonzero of AddRef", "zero");
    Expect("the count after two AddRef", 2L, runtime.CountOf(container));
    rows.Release(container);
    Expect("destructions with a reference left", 0, deleted);
    rows.Release(container);
    Expect("destructions after the last release", 1, deleted);
}

void ReturnsWithoutDestroying(Runtime const& runtime) {
    auto const rows = runtime.Containers();
    int deleted = 0;
    BIBContainer* const container = NewThing(runtime, deleted);
    rows.AddRef(container);
    Expect("DeleteUnownedContainer with a reference", 0L, rows.DeleteUnownedContainer(container));
    rows.DecrementWithoutDelete(container);
    Expect("destructions after DecrementWithoutDelete", 0, deleted);
    Expect("the count after it", 0L, runtime.CountOf(container));
    rows.Release(container);
    Expect("destructions after Release without references", 0, deleted);
    Expect("the count after it, still", 0L, runtime.CountOf(container));
    Require(rows.DeleteUnownedContainer(container) != 0, "nonzero without references", "zero");
    Expect("destructions after DeleteUnownedContainer", 1, deleted);
}

void AcceptsNull(Runtime const& runtime) {
    auto const rows = runtime.Containers();
    Expect("AddRef(null)", 0L, rows.AddRef(nullptr));
    Expect("DeleteUnownedContainer(null)", 0L, rows.DeleteUnownedContainer(nullptr));
    rows.Release(nullptr);
    rows.DecrementWithoutDelete(nullptr);
}

void HasAPrimaryRecord(Runtime const& runtime) {
    int deleted = 0;
    auto const container = runtime.Hold(NewThing(runtime, deleted));
    BIBPrimaryRecord const& record = PrimaryOf(runtime, container);
    Atom const name(runtime, kName);
    Atom const signature(runtime, kSignature);
    Require(record.instanceName == name.Text(), "the interned name", "another string");
    Require(record.signature == signature.Text(), "the interned signature", "another string");
    Require(record.instance == &deleted, "the instance", "another one");
    Require(
        runtime.Containers().GetSignature(container) == signature,
        "the atom of the signature",
        "another one");
    int deletedOther = 0;
    auto const other = runtime.Hold(NewThing(runtime, deletedOther, "ConformanceOwnedSignature"));
    for (int i = 0; i < 4; ++i) {
        runtime.Containers().DeleteUnownedContainer(NewThing(runtime, deletedOther));
    }
    for (int i = 0; i < 20000; ++i) {
        Atom const passing(runtime, "Conformance passing " + std::to_string(i));
    }
    Expect(
        "the signature, with the caller's atom released",
        std::string("ConformanceOwnedSignature"),
        PrimaryOf(runtime, other).signature);
    for (auto const& [atom, text] : {std::pair(&name, kName), std::pair(&signature, kSignature)}) {
        Require(
            Atom(runtime, text) == *atom,
            "the caller's atoms, after the end of a container with these names",
            "others");
    }
}

void MayHaveNoInstance(Runtime const& runtime) {
    auto const rows = runtime.Containers();
    BIBContainer* made = nullptr;
    runtime.Succeed("NewContainer", rows.NewContainer(&made, Atom(runtime, kSignature)));
    auto const container = runtime.Hold(made);
    Expect("the name of no instance", nullptr, PrimaryOf(runtime, container).instanceName);
    Expect("the instance", nullptr, PrimaryOf(runtime, container).instance);
    int deleted = 0;
    runtime.Succeed(
        "RegisterInstance",
        rows.RegisterInstance(container, &deleted, Atom(runtime, kName), &Count));
    Require(
        PrimaryOf(runtime, container).instance == &deleted,
        "the first instance as the primary one",
        "another one");
}

void HasFurtherInstances(Runtime const& runtime) {
    auto const rows = runtime.Containers();
    int first = 0;
    int second = 0;
    {
        auto const container = runtime.Hold(NewThing(runtime, first));
        Atom const name(runtime, "ConformanceSecond");
        Atom const missing(runtime, "ConformanceMissing");
        runtime.Succeed(
            "RegisterInstance", rows.RegisterInstance(container, &second, name, &Count));
        runtime.Fail(
            "RegisterInstance of a name in use",
            rows.RegisterInstance(container, &first, name, &Count));
        Require(rows.GetInstance(container, name) == &second, "the second instance", "another");
        Require(
            rows.GetInstance(container, Atom(runtime, kName)) == &first,
            "the first instance",
            "another");
        Expect("an instance of no such name", nullptr, rows.GetInstance(container, missing));
        void* found = nullptr;
        runtime.Succeed("NGetInstance", rows.NGetInstance(&found, container, name));
        Require(found == &second, "the second instance", "another");
        runtime.Fail("NGetInstance of no such name", rows.NGetInstance(&found, container, missing));
        Expect("*result of NGetInstance after an error", nullptr, found);
        Require(
            PrimaryOf(runtime, container).instance == &first,
            "the first instance as the primary one",
            "another");
    }
    Expect("destructions of the first instance", 1, first);
    Expect("destructions of the second instance", 1, second);
}

// Methods of signatures that are registered for one check.
class Methods {
public:
    explicit Methods(Runtime const& runtime)
        : fRuntime(runtime),
          fRegister(runtime.Bootstrap<BIBRegisterProcAddressProc>("BIBRegisterProcAddress")),
          fUnregister(runtime.Bootstrap<BIBUnregisterInterfaceProc>("BIBUnregisterInterface")) {}
    Methods(Methods const&) = delete;
    Methods& operator=(Methods const&) = delete;
    ~Methods() {
        for (char const* const name : kSignatures) {
            fUnregister(name);
        }
    }

    void Add(int signature, char const* name, void* proc) const {
        Require(
            fRegister(kSignatures[signature], name, "ConformanceProc", proc) != 0,
            "nonzero of BIBRegisterProcAddress",
            "zero");
    }
    void Forget(int signature) const { fUnregister(kSignatures[signature]); }
    BIBError* Derive(int signature, int parent) const {
        return fRuntime.Containers().RegisterInterface(
            Atom(fRuntime, kSignatures[signature]), Atom(fRuntime, kSignatures[parent]));
    }
    // The method that row finds; null for an error, which is released.
    void* Find(BIBGetMethodV3Proc row, BIBContainer* container, char const* name) const {
        void* method = nullptr;
        fRuntime.TakeMessage(
            row(&method,
                container,
                Atom(fRuntime, name),
                Atom(fRuntime, "ConformanceProc"),
                /*optional=*/0));
        return method;
    }

private:
    static constexpr char const* kSignatures[] = {
        kSignature, "ConformanceParent", "ConformanceGrandparent"};

    Runtime const& fRuntime;
    BIBRegisterProcAddressProc fRegister;
    BIBUnregisterInterfaceProc fUnregister;
};

void FindsMethodsBySignature(Runtime const& runtime) {
    auto const rows = runtime.Containers();
    Methods const methods(runtime);
    int procs[3] = {};
    methods.Add(0, "Own", &procs[0]);
    methods.Add(1, "Own", &procs[1]);
    methods.Add(2, "Inherited", &procs[2]);
    int deleted = 0;
    auto const container = runtime.Hold(NewThing(runtime, deleted));
    Expect(
        "GetParentMethod under a signature without a parent",
        nullptr,
        methods.Find(rows.GetParentMethod, container, "Own"));
    runtime.Succeed("RegisterInterface", methods.Derive(0, 1));
    runtime.Succeed("RegisterInterface", methods.Derive(1, 2));
    Require(
        methods.Find(rows.GetMethod, container, "Own") == &procs[0],
        "the method under the signature",
        "another one");
    Require(
        methods.Find(rows.GetMethod, container, "Inherited") == &procs[2],
        "a method under a parent of the parent",
        "another one");
    Require(
        methods.Find(rows.GetParentMethod, container, "Own") == &procs[1],
        "the method under the parent",
        "another one");
    Require(
        methods.Find(rows.GetParentMethod, container, "Inherited") == &procs[2],
        "GetParentMethod: a method under a parent of the parent",
        "another one");
    methods.Add(0, "OwnAlone", &procs[0]);
    Expect(
        "GetParentMethod of a method under the signature alone",
        nullptr,
        methods.Find(rows.GetParentMethod, container, "OwnAlone"));
}

void ReportsMissingMethods(Runtime const& runtime) {
    auto const rows = runtime.Containers();
    int deleted = 0;
    auto const container = runtime.Hold(NewThing(runtime, deleted));
    Atom const name(runtime, "ConformanceNone");
    Atom const type(runtime, "ConformanceProc");
    void* method = &deleted;
    BIBError* const error = rows.GetMethod(&method, container, name, type, 0);
    Require(error != nullptr, "an error of GetMethod for no such name", "null");
    Expect("*result of GetMethod after an error", nullptr, method);
    // Its reference is the caller's: what is made next does not take its place.
    long const id = runtime.Errors().GetID(error);
    std::vector<BIBError*> others;
    others.reserve(101);
    for (int i = 0; i < 100; ++i) {
        others.push_back(runtime.Errors().NewError("other", "other", 4242, nullptr, nullptr));
    }
    Expect("the id of the error", id, runtime.Errors().GetID(error));
    others.push_back(error);
    std::ranges::for_each(others, runtime.Errors().Release);
    method = &deleted;
    runtime.Succeed(
        "GetMethod of no such name, optional", rows.GetMethod(&method, container, name, type, 1));
    Expect("the method", nullptr, method);
}

void AllowsNoCycleOfParents(Runtime const& runtime) {
    Methods const methods(runtime);
    runtime.Succeed("RegisterInterface", methods.Derive(0, 1));
    runtime.Succeed("RegisterInterface of the same parent again", methods.Derive(0, 1));
    runtime.Succeed("RegisterInterface", methods.Derive(1, 2));
    runtime.Fail("RegisterInterface of a cycle", methods.Derive(2, 0));
    runtime.Fail("RegisterInterface of a parent of itself", methods.Derive(2, 2));
    runtime.Fail("RegisterInterface of a second parent", methods.Derive(0, 2));
    methods.Forget(0);
    runtime.Succeed("RegisterInterface of an unregistered signature", methods.Derive(0, 2));
}

void ClonesByItsOwnMethod(Runtime const& runtime) {
    auto const rows = runtime.Containers();
    int deleted = 0;
    auto const thing = runtime.Hold(NewThing(runtime, deleted));
    BIBContainer* copy = thing;
    runtime.Fail("CloneContainer without a method Clone", rows.CloneContainer(&copy, thing));
    Expect("the result after the error", nullptr, copy);
    auto const add = runtime.Bootstrap<BIBRegisterProcAddressProc>("BIBRegisterProcAddress");
    auto const remove = runtime.Bootstrap<BIBUnregisterInterfaceProc>("BIBUnregisterInterface");
    POSObjectCloneProc const failing = [](POSObject* /*self*/) -> POSObject* { return nullptr; };
    add(kSignature, "Clone", "POSObjectCloneProc", reinterpret_cast<void*>(failing));
    copy = thing;
    BIBError* const error = rows.CloneContainer(&copy, thing);
    remove(kSignature);
    Expect("the result after the error", nullptr, copy);
    runtime.Fail("CloneContainer with a method Clone that gives null", error);
    auto const number = runtime.Hold(runtime.NewNumber(4));
    runtime.Succeed("CloneContainer", rows.CloneContainer(&copy, number.Container()));
    auto const held = runtime.Hold(copy);
    Require(held != number.Container(), "an independent copy", "the same container");
    Require(runtime.NumberOf(As<POSObject>(copy)) == 4.0, "a copy of the value", "another value");
}

// An instance that holds a container.
struct Holder {
    Runtime const& fRuntime;
    BIBContainer* fHeld;
    int fDeletedOfHeld = 0;
    int fSeen = 0;
};

void ReleaseHeld(void* instance) {
    auto* const holder = static_cast<Holder*>(instance);
    holder->fRuntime.Containers().Release(holder->fHeld);
    holder->fSeen = holder->fDeletedOfHeld;
}

void DestroysNestedContainersAtOnce(Runtime const& runtime) {
    auto const rows = runtime.Containers();
    int deleted = 0;
    POSObject* const number = runtime.NewNumber(1);
    runtime.Succeed(
        "RegisterInstance",
        rows.RegisterInstance(As<BIBContainer>(number), &deleted, Atom(runtime, kName), &Count));
    auto* const array = runtime.Arrays().NewPOSArray();
    Require(array != nullptr, "an array", "null");
    Require(runtime.Arrays().Append(array, number) != 0, "nonzero of Append", "zero");
    Require(rows.DeleteUnownedContainer(As<BIBContainer>(array)) != 0, "nonzero", "zero");
    Expect("destructions of an instance of what the array held", 1, deleted);
    Holder holder{runtime, nullptr};
    holder.fHeld = NewThing(runtime, holder.fDeletedOfHeld);
    rows.AddRef(holder.fHeld);
    BIBContainer* outer = nullptr;
    runtime.Succeed("NewContainer", rows.NewContainer(&outer, Atom(runtime, kSignature)));
    runtime.Succeed(
        "RegisterInstance",
        rows.RegisterInstance(outer, &holder, Atom(runtime, kName), &ReleaseHeld));
    rows.DeleteUnownedContainer(outer);
    Expect("destructions when Release in a deleteProc returns", 1, holder.fSeen);
    // Recursion would need more than a stack.
    auto* const deep = As<BIBContainer>(runtime.NewNested(200000));
    Require(rows.DeleteUnownedContainer(deep) != 0, "nonzero for 200,000 nested arrays", "zero");
}

constexpr Check kContainerChecks[] = {
    {"container.counts-from-zero",
     "A new container is unowned: it exists with a reference count of zero; the last release "
     "destroys it, and its instance through deleteProc.",
     &CountsFromZero},
    {"container.unowned",
     "DecrementWithoutDelete removes a reference without destroying; DeleteUnownedContainer "
     "destroys a container without references only.",
     &ReturnsWithoutDestroying},
    {"container.null", "The rows that count accept null.", &AcceptsNull},
    {"container.primary-record",
     "The primary record, at the offset that GetOffsetToPrimaryInstance gives, holds the instance "
     "and two interned strings.",
     &HasAPrimaryRecord},
    {"container.no-instance",
     "NewContainer makes a container without instance; the first one that is registered becomes "
     "its primary instance.",
     &MayHaveNoInstance},
    {"container.instances",
     "RegisterInstance adds another instance under its own name; a name in use is an error. All "
     "are destroyed with the container.",
     &HasFurtherInstances},
    {"container.methods",
     "GetMethod searches under the signature, then under its parents; GetParentMethod starts with "
     "the parent.",
     &FindsMethodsBySignature},
    {"container.no-method",
     "A missing method is an error, or with optional nonzero no error and a null result.",
     &ReportsMissingMethods},
    {"container.parents",
     "A cycle of parents is an error, and so is a second, different parent; the parent goes with "
     "the interface.",
     &AllowsNoCycleOfParents},
    {"container.clone",
     "CloneContainer makes an independent copy through the container's own Clone method; an error "
     "if its signature has none.",
     &ClonesByItsOwnMethod},
    {"container.nested",
     "A container that loses its last reference is destroyed at once, at any depth.",
     &DestroysNestedContainersAtOnce},
};

} // namespace

constinit Group const kContainers = {
    "containers", "BIBContainerInterface", Demand::kRequired, kContainerChecks};

} // namespace conformance
