// Which rows a runtime has, and its registry.
#include "conformance/Group.h"
#include "conformance/Groups.h"
#include "conformance/Models.h"

#include <tuple>

#include <cstring>

namespace conformance {

namespace {

template <class Table>
void HasAllRows(Runtime const& runtime) {
    std::string missing;
    for (RowName const& row : TableNames<Table>::kRows) {
        if (!runtime.Lookup()(TableNames<Table>::kInterface, row.fName, row.fProcType)) {
            missing +=
                std::string(missing.empty() ? "" : ", ") + row.fName + " (" + row.fProcType + ")";
        }
    }
    Require(missing.empty(), "every row of the header is registered", "missing: " + missing);
}

void HasTheBootstrap(Runtime const& runtime) {
    constexpr RowName kRows[] = {BIB_BOOTSTRAP_ROWS(BIB_TABLE_NAMES)};
    for (RowName const& row : kRows) {
        Require(
            runtime.Lookup()("BIB", row.fName, row.fName) != nullptr,
            "all five procedures of the bootstrap are registered",
            std::string("missing: ") + row.fName);
    }
}

void NeedsAllThreeNames(Runtime const& runtime) {
    auto* const lookup = runtime.Lookup();
    Expect("another interface", nullptr, lookup("POSNumber", "Get", "POSNumberGetProc"));
    Expect("another name", nullptr, lookup("POSNumberInterface", "Got", "POSNumberGetProc"));
    Expect("another type", nullptr, lookup("POSNumberInterface", "Get", "POSNumberGetProcV2"));
    Expect("empty names", nullptr, lookup("", "", ""));
}

void IsStable(Runtime const& runtime) {
    auto const find = [&] {
        return runtime.Lookup()("BIBStringInterface", "GetCString", "BIBGetCStringProc");
    };
    Require(find() == find(), "the same procedure each time", "another one");
}

constexpr Check kPresenceChecks[] = {
    {"presence.bootstrap",
     "A runtime has five procedures under the interface BIB, each with its own name as its type.",
     &HasTheBootstrap},
    {"presence.containers",
     "The rows of BIBContainerInterface are required.",
     &HasAllRows<_t_BIBContainerInterface>},
    {"presence.errors",
     "The rows of BIBErrorInterface are required.",
     &HasAllRows<_t_BIBErrorInterface>},
    {"presence.atoms",
     "The rows of BIBStringInterface are required.",
     &HasAllRows<_t_BIBStringInterface>},
    {"presence.memory",
     "The rows of BIBMemoryInterface are required.",
     &HasAllRows<_t_BIBMemoryInterface>},
    {"presence.buffers",
     "The rows of BIBSharedBuffInterface are required.",
     &HasAllRows<_t_BIBSharedBuffInterface>},
    {"presence.streams",
     "The rows of BIBStreamFactoryInterface are required.",
     &HasAllRows<_t_BIBStreamFactoryInterface>},
    {"presence.numbers",
     "The rows of POSNumberInterface are required.",
     &HasAllRows<_t_POSNumberInterface>},
    {"presence.strings",
     "The rows of POSStringInterface are required.",
     &HasAllRows<_t_POSStringInterface>},
    {"presence.unicode-strings",
     "The rows of POSUnicodeStringInterface are required.",
     &HasAllRows<_t_POSUnicodeStringInterface>},
    {"presence.binary-data",
     "The rows of POSBinDataInterface are required.",
     &HasAllRows<_t_POSBinDataInterface>},
    {"presence.arrays",
     "The rows of POSArrayInterface are required.",
     &HasAllRows<_t_POSArrayInterface>},
    {"presence.dictionaries",
     "The rows of POSDictInterface are required.",
     &HasAllRows<_t_POSDictInterface>},
    {"presence.cursors",
     "The rows of POSDictIteratorInterface are required.",
     &HasAllRows<_t_POSDictIteratorInterface>},
    {"presence.objects",
     "The rows of POSObjectStatics are required.",
     &HasAllRows<_t_POSObjectStatics>},
    {"presence.validators",
     "The rows of POSStructValidatorInterface are required.",
     &HasAllRows<_t_POSStructValidatorInterface>},
    {"presence.exact-names",
     "The lookup returns the procedure that is registered under exactly these three names, or "
     "null.",
     &NeedsAllThreeNames},
    {"presence.stable",
     "The lookup gives the same procedure as long as it is registered.",
     &IsStable},
};

// The registry.

constexpr char kInterface[] = "ConformanceInterface";
constexpr char kType[] = "ConformanceProc";

class Registry {
public:
    explicit Registry(Runtime const& runtime)
        : fRuntime(runtime),
          fRegister(runtime.Bootstrap<BIBRegisterProcAddressProc>("BIBRegisterProcAddress")),
          fUnregister(runtime.Bootstrap<BIBUnregisterInterfaceProc>("BIBUnregisterInterface")),
          fCounter(
              runtime.Bootstrap<BIBGetUnregisterCountAddrProc>("BIBGetUnregisterCountAddr")()) {
        Require(fCounter != nullptr, "an address of the counter", "null");
    }
    Registry(Registry const&) = delete;
    Registry& operator=(Registry const&) = delete;
    ~Registry() { fUnregister(kInterface); }

    int Register(char const* name, void* proc) const {
        return fRegister(kInterface, name, kType, proc);
    }
    void Unregister() const { fUnregister(kInterface); }
    unsigned long Count() const { return *fCounter; }
    void* Find(char const* name) const { return fRuntime.Lookup()(kInterface, name, kType); }

private:
    Runtime const& fRuntime;
    BIBRegisterProcAddressProc fRegister;
    BIBUnregisterInterfaceProc fUnregister;
    unsigned long const* fCounter;
};

void FindsWhatIsRegistered(Runtime const& runtime) {
    Registry const registry(runtime);
    int procs[2] = {};
    Require(registry.Register("First", &procs[0]) != 0, "nonzero for new names", "zero");
    Require(registry.Register("Second", &procs[1]) != 0, "nonzero for new names", "zero");
    for (auto const& [interface, name, type] :
         {std::tuple("ConformanceInterface", "FirstConformance", "Proc"),
          std::tuple("Conformance", "InterfaceFirst", "ConformanceProc"),
          std::tuple("ConformanceInterface", "Fir", "stConformanceProc")}) {
        Expect("names with the same letters", nullptr, runtime.Lookup()(interface, name, type));
    }
    Require(registry.Find("First") == &procs[0], "the procedure", "another one");
    Require(registry.Find("Second") == &procs[1], "the procedure", "another one");
    // However a runtime joins the names.
    for (char const separator : std::string("\n\t .,:;/|\x01")) {
        std::string const name = std::string("Third") + separator + "Part";
        std::string const interface = std::string("ConformanceInterface") + separator + "Third";
        Require(registry.Register(name.c_str(), &procs[0]) != 0, "nonzero for new names", "zero");
        Expect(
            "names that are joined elsewhere",
            nullptr,
            runtime.Lookup()(interface.c_str(), "Part", "ConformanceProc"));
    }
}

void RefusesNamesInUse(Runtime const& runtime) {
    Registry const registry(runtime);
    int procs[2] = {};
    registry.Register("First", &procs[0]);
    Expect("the result for names in use", 0, registry.Register("First", &procs[1]));
    Require(registry.Find("First") == &procs[0], "the first procedure", "another one");
}

void ForgetsAnInterface(Runtime const& runtime) {
    Registry const registry(runtime);
    int proc = 0;
    auto const add = runtime.Bootstrap<BIBRegisterProcAddressProc>("BIBRegisterProcAddress");
    auto const remove = runtime.Bootstrap<BIBUnregisterInterfaceProc>("BIBUnregisterInterface");
    constexpr char kLonger[] = "ConformanceInterfaceToo";
    constexpr char kShorter[] = "ConformanceInter";
    add(kLonger, "First", kType, &proc);
    for (char const* const name : {"First", "Second", "Third", "Fourth"}) {
        Require(
            registry.Register(name, &proc) != 0,
            "nonzero for names that are free, since earlier checks unregistered theirs",
            "zero");
    }
    remove(kShorter);
    bool const isKept = registry.Find("First") == &proc;
    registry.Unregister();
    bool const isLongerKept = runtime.Lookup()(kLonger, "First", kType) == &proc;
    remove(kLonger);
    Require(
        isKept && isLongerKept,
        "the procedures of interfaces with a longer name, or the beginning of it",
        "none");
    for (char const* const name : {"First", "Second", "Third", "Fourth"}) {
        Expect("a procedure of an unregistered interface", nullptr, registry.Find(name));
    }
    Require(
        registry.Register("First", &proc) != 0, "nonzero for names that are free again", "zero");
}

void CountsUnregistrations(Runtime const& runtime) {
    Registry const registry(runtime);
    int proc = 0;
    registry.Register("First", &proc);
    unsigned long const before = registry.Count();
    Require(before != 0, "a counter other than 0", "0");
    registry.Unregister();
    Require(registry.Count() != before, "another value of the counter", std::to_string(before));
    Require(registry.Count() != 0, "a counter other than 0", "0");
}

void KeepsTheAddressOfTheCounter(Runtime const& runtime) {
    auto* const address =
        runtime.Bootstrap<BIBGetUnregisterCountAddrProc>("BIBGetUnregisterCountAddr");
    Require(address() == address(), "the same address each time", "another one");
}

constexpr Check kRegistryChecks[] = {
    {"registry.finds",
     "BIBRegisterProcAddress adds a procedure under the three names: nonzero on success.",
     &FindsWhatIsRegistered},
    {"registry.names-in-use",
     "BIBRegisterProcAddress gives zero if the names are in use.",
     &RefusesNamesInUse},
    {"registry.model",
     "The registry does the same as a map over many random operations.",
     &FollowsARegistryModel},
    {"registry.unregister",
     "BIBUnregisterInterface removes a whole interface.",
     &ForgetsAnInterface},
    {"registry.counter",
     "BIBUnregisterInterface changes the unregister counter, which is never 0.",
     &CountsUnregistrations},
    {"registry.counter-address",
     "The address of the unregister counter never changes.",
     &KeepsTheAddressOfTheCounter},
};

} // namespace

constinit Group const kPresence = {"presence", "BIB", Demand::kRequired, kPresenceChecks};
constinit Group const kRegistry = {"registry", "BIB", Demand::kRequired, kRegistryChecks};

} // namespace conformance
