// A check is worth what it notices: each must fail on a runtime with some mistake.
#include "bib/Conformance.h"
#include "api/BIBCacheInterface.h"
#include "api/BIBRuntime.h"
#include "conformance/Group.h"
#include "conformance/RowDouble.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using conformance::NamedRow;
using conformance::RowDouble;
using conformance::Runtime;
using Ids = std::set<std::string>;

void AddId(BIBConformanceResult const* result, void* descriptor) {
    if (result->outcome == kBIBConformanceFailed) {
        std::string const line = std::string(result->id) + "\n";
        static_cast<void>(::write(*static_cast<int*>(descriptor), line.data(), line.size()));
    }
}

// The checks of a group or interface, or of all, that fail on the runtime behind lookup, which
// prepare makes ready in a process of its own; "crash" if that ends.
Ids FailedChecks(
    BIBLookupProc lookup, std::string const& only = {}, std::function<void()> const& prepare = [] {
    }) {
    int ends[2] = {};
    EXPECT_EQ(::pipe(ends), 0);
    pid_t const child = ::fork();
    if (child == 0) {
        ::alarm(10);
        prepare();
        BIBConformanceOptions options = {};
        options.only = only.c_str();
        options.strict = 1;
        options.component = CONFORMANCE_COMPONENT;
        options.report = &AddId;
        options.userData = &ends[1];
        BIBConformanceRun(lookup, &options);
        ::_exit(0);
    }
    ::close(ends[1]);
    std::string text;
    char part[4096];
    for (ssize_t size = 0; (size = ::read(ends[0], part, sizeof part)) > 0;) {
        text.append(part, static_cast<std::size_t>(size));
    }
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    std::istringstream lines(text);
    Ids ids{std::istream_iterator<std::string>(lines), {}};
    if (status != 0) {
        ids.insert("crash");
    }
    return ids;
}

// The runtime, with a mistake in its lookup or in one of its rows.

template <void* (*Mistake)(char const*, char const*, char const*)>
void* LookupWith(char const* interfaceName, char const* procName, char const* procType) {
    void* const proc = Mistake(interfaceName, procName, procType);
    return proc ? proc : BIBRuntimeLookup(interfaceName, procName, procType);
}

bool Is(char const* name, char const* other) {
    return std::strcmp(name, other) == 0;
}

// Answers for Name with Proc.
template <auto Name, auto Proc>
void* Replace(char const* /*interfaceName*/, char const* procName, char const* /*procType*/) {
    return Is(procName, Name) ? reinterpret_cast<void*>(Proc) : nullptr;
}

void* IgnoreType(char const* interfaceName, char const* procName, char const* /*procType*/) {
    return Is(interfaceName, "POSNumberInterface") && Is(procName, "Get")
               ? BIBRuntimeLookup(interfaceName, procName, "POSNumberGetProc")
               : nullptr;
}

void* Alternate(char const* interfaceName, char const* procName, char const* /*procType*/) {
    static bool isOther = false;
    isOther = !isOther;
    return isOther && Is(interfaceName, "BIBStringInterface") && Is(procName, "GetCString")
               ? reinterpret_cast<void*>(&Alternate)
               : nullptr;
}

constexpr char kRegister[] = "BIBRegisterProcAddress";
constexpr char kUnregister[] = "BIBUnregisterInterface";
constexpr char kCounter[] = "BIBGetUnregisterCountAddr";
constexpr char kThreads[] = "BIBIsMultiThreaded";
constexpr char kNewAtom[] = "NewStringAtom";
constexpr char kGetSize[] = "GetSize";
constexpr char kAddRef[] = "AddRef";
constexpr char kAlloc[] = "Alloc";
constexpr char kReturnCost[] = "ReturnCost";
constexpr char kPurgeNext[] = "PurgeNextBlock";
constexpr char kSearch[] = "SearchForID";
constexpr char kAddPurge[] = "AddClientPurge";
constexpr char kAttach[] = "Attach";
constexpr char kNewFile[] = "NewPositionableFileStream";

int AcceptAll(char const* /*i*/, char const* /*n*/, char const* /*t*/, void* /*proc*/) {
    return 1;
}
int UnregisterNothing(char const* /*interfaceName*/) {
    return 1;
}
unsigned long* NewCounter() {
    static unsigned long counters[1000] = {1};
    static int next = 0;
    return &counters[next++ % 1000];
}
int IsSingleThreaded() {
    return 0;
}
BIBStringAtom* AtomOfNull(char const* text) {
    auto const rows = conformance::LoadTable<_t_BIBStringInterface>(&BIBRuntimeLookup);
    return rows.NewStringAtom(text ? text : "null");
}
void* SmallBlock(unsigned long size) {
    auto const rows = conformance::LoadTable<_t_BIBMemoryInterface>(&BIBRuntimeLookup);
    return rows.Alloc(size > 1000000000 ? 8 : size);
}
unsigned long SizeOfNull(BIBSharedBuffer* buffer) {
    auto const rows = conformance::LoadTable<_t_BIBSharedBuffInterface>(&BIBRuntimeLookup);
    return buffer ? rows.GetSize(buffer) : 1;
}
long AddRefOfNull(BIBContainer* container) {
    auto const rows = conformance::LoadTable<_t_BIBContainerInterface>(&BIBRuntimeLookup);
    return container ? rows.AddRef(container) : 1;
}
void* ReplaceAddRef(char const* interfaceName, char const* procName, char const* /*procType*/) {
    return Is(interfaceName, "BIBContainerInterface") && Is(procName, kAddRef)
               ? reinterpret_cast<void*>(&AddRefOfNull)
               : nullptr;
}
void* ReplaceGetSize(char const* interfaceName, char const* procName, char const* /*procType*/) {
    return Is(interfaceName, "BIBSharedBuffInterface") && Is(procName, kGetSize)
               ? reinterpret_cast<void*>(&SizeOfNull)
               : nullptr;
}
unsigned long NoCost(BIBCacheID* /*id*/) {
    return 0;
}
int PurgeNothing(BIBCachePurge* /*purge*/, unsigned long* /*cost*/) {
    return 0;
}
int FindAll(BIBCacheSet* /*set*/, BIBCacheID* /*id*/) {
    return 1;
}
void AddNoPurge(void (* /*purge*/)(), long /*flags*/) {}
int AttachAll(BIBCacheID* /*id*/, BIBCacheSet* /*set*/) {
    return 1;
}
BIBError* OpenAnything(BIBPositionableStream** result, char const* path, int writable) {
    auto const rows = conformance::LoadTable<_t_BIBStreamFactoryInterface>(&BIBRuntimeLookup);
    return Is(path, "/nonexistent/file") ? rows.NewPositionableMemoryStream(result)
                                         : rows.NewPositionableFileStream(result, path, writable);
}

struct Mistake {
    BIBLookupProc fLookup;
    char const* fGroup; // or interface that notices it
};

Mistake const kMistakes[] = {
    {&LookupWith<&IgnoreType>, "presence"},
    {&LookupWith<&Alternate>, "presence"},
    {&LookupWith<&Replace<kRegister, &AcceptAll>>, "registry"},
    {&LookupWith<&Replace<kRegister, &AcceptAll>>, "threads"},
    {&LookupWith<&Replace<kUnregister, &UnregisterNothing>>, "registry"},
    {&LookupWith<&Replace<kUnregister, &UnregisterNothing>>, "containers"},
    {&LookupWith<&Replace<kCounter, &NewCounter>>, "registry"},
    {&LookupWith<&Replace<kRegister, &AcceptAll>>, "component"},
    {&LookupWith<&Replace<kThreads, &IsSingleThreaded>>, "threads"},
    {&LookupWith<&Replace<kNewAtom, &AtomOfNull>>, "atoms"},
    {&LookupWith<&Replace<kAlloc, &SmallBlock>>, "memory"},
    {&LookupWith<&Replace<kReturnCost, &NoCost>>, "caches"},
    {&LookupWith<&Replace<kPurgeNext, &PurgeNothing>>, "caches"},
    {&LookupWith<&Replace<kSearch, &FindAll>>, "caches"},
    {&LookupWith<&Replace<kAddPurge, &AddNoPurge>>, "caches"},
    {&LookupWith<&Replace<kAttach, &AttachAll>>, "caches"},
    {&LookupWith<&Replace<kNewFile, &OpenAnything>>, "own-streams"},
    {&LookupWith<&ReplaceAddRef>, "containers"},
    {&LookupWith<&ReplaceGetSize>, "buffers"},
    {[](char const* interfaceName, char const* procName, char const* procType) -> void* {
         return Is(procName, "BIBIsMultiThreaded")
                    ? nullptr
                    : BIBRuntimeLookup(interfaceName, procName, procType);
     },
     "presence"},
};

void Add(Ids& all, Ids const& ids) {
    all.insert(ids.begin(), ids.end());
}

// The checks that fail where row does nothing, or is missing: there is one for each.
Ids FailedWithout(NamedRow const& row) {
    static Runtime const kRuntime(&BIBRuntimeLookup);
    auto const failedOf = [&](std::string const& only, bool isBroken) {
        return FailedChecks(&RowDouble::Lookup, only, [&] {
            static RowDouble rows(kRuntime);
            isBroken ? rows.Break(row) : rows.Hide(row);
        });
    };
    // All else needs containers.
    bool const isOfAll = row.fInterface == "BIBContainerInterface";
    Ids failed = failedOf(isOfAll ? "" : row.fInterface, true);
    Ids const missing = failedOf("presence", false);
    EXPECT_FALSE(failed.empty()) << row.fInterface << "." << row.fName << " does nothing";
    EXPECT_FALSE(missing.empty()) << row.fInterface << "." << row.fName << " is missing";
    Add(failed, missing);
    // The component would never come to the end of a dictionary.
    if (row.fName != "Next") {
        Add(failed, failedOf("component", true));
    }
    return failed;
}

// A race, and a component that is broken, have no double here.
bool HasNoDouble(conformance::Group const& group, conformance::Check const& check) {
    return Is(check.fId, "thread.atoms") || Is(group.fName, "rows") || Is(group.fName, "sweep");
}

TEST(Conformance, EachRowAndEachCheckIsNeeded) {
    Ids failed;
    for (NamedRow const& row : conformance::RowsOfTheComponent()) {
        Add(failed, FailedWithout(row));
    }
    for (auto const& [lookup, group] : kMistakes) {
        Add(failed, FailedChecks(lookup, group));
    }
    for (conformance::Group const* const group : conformance::AllGroups()) {
        for (conformance::Check const& check : group->fChecks) {
            EXPECT_TRUE(failed.contains(check.fId) || HasNoDouble(*group, check)) << check.fId;
        }
    }
}

TEST(Conformance, AnUnknownGroupIsAnError) {
    BIBConformanceOptions options = {};
    options.only = "nothing";
    EXPECT_EQ(BIBConformanceRun(&BIBRuntimeLookup, &options), -1);
    options.only = "POSDictInterface";
    EXPECT_EQ(BIBConformanceRun(&BIBRuntimeLookup, &options), 0);
}

} // namespace
