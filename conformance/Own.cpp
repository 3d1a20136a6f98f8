// What only the project's own runtime promises: caches, several threads, the whole schema language.
#include "conformance/Group.h"
#include "conformance/Groups.h"
#include "conformance/StructValidator.h"

#include <atomic>
#include <thread>
#include <vector>

namespace conformance {

namespace {

void Count(void* counter) {
    ++*static_cast<int*>(counter);
}

// Three entries with costs of 10, 20 and 30, the first one locked.
class Entries {
public:
    explicit Entries(Runtime const& runtime) : fRows(runtime.Rows<_t_BIBCacheInterface>()) {
        for (int i = 0; i < kCount; ++i) {
            fIds[i] = fRows.NewCacheID();
            Require(fIds[i] != nullptr, "a cache id", "null");
            fRows.Add(fIds[i], &fDropped[i], 10UL * static_cast<unsigned long>(i + 1), &Count);
        }
        Require(fRows.MarkNoPurge(fIds[0]) == &fDropped[0], "the data, locked", "another pointer");
    }
    Entries(Entries const&) = delete;
    Entries& operator=(Entries const&) = delete;
    ~Entries() {
        for (BIBCacheID* const id : fIds) {
            fRows.Release(id);
        }
    }

    static constexpr int kCount = 3;
    _t_BIBCacheInterface fRows;
    BIBCacheID* fIds[kCount] = {};
    int fDropped[kCount] = {};
};

void KnowsItsCosts(Runtime const& runtime) {
    Entries const entries(runtime);
    auto const& rows = entries.fRows;
    Expect("the cost of an entry", 20UL, rows.ReturnCost(entries.fIds[1]));
    unsigned long const total = rows.CurrentCacheSize();
    rows.UpdateCost(entries.fIds[1], 5);
    Expect("the total cost after a change by 15", total - 15, rows.CurrentCacheSize());
    rows.RemoveID(entries.fIds[1]);
    Expect("the cost without data", 0UL, rows.ReturnCost(entries.fIds[1]));
    Expect("calls of purgeProc", 1, entries.fDropped[1]);
    rows.UpdateCost(entries.fIds[1], 99);
    int other = 0;
    rows.Add(entries.fIds[0], &other, 1, &Count);
    Expect("calls of purgeProc for what was replaced", 1, entries.fDropped[0]);
    Expect("the total cost in the end", total - 20 - 9, rows.CurrentCacheSize());
    rows.Add(entries.fIds[0], nullptr, 8, &Count);
    Expect("calls of purgeProc for what nothing replaced", 1, other);
    Expect("the data then", nullptr, rows.MarkNoPurge(entries.fIds[0]));
}

void PurgesUnlockedEntries(Runtime const& runtime) {
    Entries entries(runtime);
    auto const& rows = entries.fRows;
    unsigned long const time = rows.GetCacheTime();
    rows.MarkNoPurge(entries.fIds[1]);
    rows.MarkPurge(entries.fIds[1]);
    Require(rows.GetCacheTime() > time, "a later time with each use", "the same");
    BIBCachePurge* const purge = rows.NewCachePurge();
    Require(purge != nullptr, "a purge", "null");
    unsigned long cost = 0;
    int const first = rows.PurgeNextBlock(purge, &cost);
    rows.Add(entries.fIds[2], &entries.fDropped[2], 1, &Count);
    while (rows.PurgeNextBlock(purge, nullptr) != 0) {
    }
    rows.DeleteCachePurge(purge);
    rows.DeleteCachePurge(nullptr);
    Require(first != 0, "nonzero for a dropped entry", "zero");
    Expect("the cost of the entry that was used longest ago", 30UL, cost);
    Expect("drops of the locked entry", 0, entries.fDropped[0]);
    Expect("drops of the entry that was used last before the purge", 1, entries.fDropped[1]);
    Expect("drops of the entry that was used since", 1, entries.fDropped[2]);
    Require(rows.MarkNoPurge(entries.fIds[1]) == nullptr, "null without data", "a pointer");
    rows.MarkPurge(entries.fIds[0]);
}

void KeepsSets(Runtime const& runtime) {
    Entries const entries(runtime);
    auto const& rows = entries.fRows;
    BIBCacheSet* const set = rows.NewCacheSet();
    Require(set != nullptr, "a set", "null");
    int const attached = rows.Attach(entries.fIds[2], set);
    int const found = rows.SearchForID(set, entries.fIds[2]);
    int const other = rows.SearchForID(set, entries.fIds[1]);
    rows.Attach(entries.fIds[0], set);
    rows.Attach(entries.fIds[1], set);
    rows.Attach(entries.fIds[1], nullptr);
    int released = 0;
    BIBCacheID* const id = rows.NewCacheID();
    rows.Attach(id, set);
    rows.Add(id, &released, 1, &Count);
    rows.AddRef(id);
    rows.Release(id);
    int const early = released;
    rows.Release(id);
    rows.AddRefCacheSet(set);
    rows.DeleteCacheSet(set);
    rows.RemoveIDs(set);
    int const dropped = entries.fDropped[2];
    rows.DeleteCacheSet(set);
    rows.Attach(entries.fIds[2], nullptr);
    Require(attached != 0, "nonzero of Attach", "zero");
    Require(found != 0, "nonzero for an id in the set", "zero");
    Expect("SearchForID of another id", 0, other);
    Expect("drops by RemoveIDs", 1, dropped);
    Expect("drops of a locked entry in the set", 1, entries.fDropped[0]);
    Expect("drops of an entry that left the set", 0, entries.fDropped[1]);
    Expect("drops with a reference left", 0, early);
    Expect("drops with the last reference", 1, released);
}

int gPurges = 0;
void CountPurge() {
    ++gPurges;
}

_t_BIBCacheInterface gCache;
void Leave() {
    gCache.RemoveClientPurge(&Leave, 0);
    CountPurge();
}
void ComeBack() {
    gCache.RemoveClientPurge(&ComeBack, 0);
    if (++gPurges < 100) {
        gCache.AddClientPurge(&ComeBack, 0);
    }
}
void Throw() {
    throw 3;
}

// The calls of procedures of the client by PurgeAllStaticCaches.
int CountPurges() {
    gPurges = 0;
    gCache.PurgeAllStaticCaches();
    return gPurges;
}

void CallsClients(Runtime const& runtime) {
    gCache = runtime.Rows<_t_BIBCacheInterface>();
    gCache.AddClientPurge(&CountPurge, 1);
    Expect("calls with flags", 0, CountPurges());
    gCache.AddClientPurge(&Leave, 0);
    gCache.AddClientPurge(&CountPurge, 0);
    gCache.AddClientPurge(&CountPurge, 0);
    Expect("calls of a procedure that was added twice, behind one that leaves", 2, CountPurges());
    Expect("calls without the one that has left", 1, CountPurges());
    gCache.RemoveClientPurge(&CountPurge, 0);
    gCache.AddClientPurge(&ComeBack, 0);
    Expect("calls of one that is added while it runs", 1, CountPurges());
    gCache.RemoveClientPurge(&ComeBack, 0);
    gCache.AddClientPurge(&Throw, 0);
    bool isCaught = false;
    try {
        gCache.PurgeAllStaticCaches();
    } catch (int) {
        isCaught = true;
    }
    gCache.RemoveClientPurge(&Throw, 0);
    Require(isCaught, "the exception of a procedure reaches the caller", "it does not");
}

void AcceptsNullIds(Runtime const& runtime) {
    auto const rows = runtime.Rows<_t_BIBCacheInterface>();
    rows.AddRef(nullptr);
    rows.Release(nullptr);
    rows.RemoveID(nullptr);
    rows.RemoveIDs(nullptr);
    rows.DeleteCacheSet(nullptr);
    Expect("Attach of null", 0, rows.Attach(nullptr, nullptr));
    Expect("PurgeNextBlock of null", 0, rows.PurgeNextBlock(nullptr, nullptr));
}

constexpr Check kCacheChecks[] = {
    {"cache.cost", "A cache knows the cost of its entries and their total.", &KnowsItsCosts},
    {"cache.purge",
     "A purge drops entries without a lock, the least recently used one first.",
     &PurgesUnlockedEntries},
    {"cache.sets",
     "A set finds its ids, and RemoveIDs drops their data; it owns no reference.",
     &KeepsSets},
    {"cache.clients",
     "PurgeAllStaticCaches calls every client purge procedure once, but none that is added "
     "meanwhile.",
     &CallsClients},
    {"cache.null", "Rows on null do nothing.", &AcceptsNullIds},
};

// Runs work on four threads, with their number.
template <class Work>
void OnThreads(Work work) {
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([work, thread] { work(thread); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void SaysSo(Runtime const& runtime) {
    auto* const isMultiThreaded = runtime.Bootstrap<BIBIsMultiThreadedProc>("BIBIsMultiThreaded");
    Require(isMultiThreaded() != 0, "nonzero, as several threads may use it", "zero");
}

void CountsOnThreads(Runtime const& runtime) {
    auto const number = runtime.Hold(runtime.NewNumber(1));
    auto const rows = runtime.Containers();
    auto const errors = runtime.Errors();
    int freed = 0;
    BIBError* const error = errors.NewError("m", "c", 1, &freed, &Count);
    OnThreads([&](int /*thread*/) {
        for (int i = 0; i < 20000; ++i) {
            rows.AddRef(number.Container());
            rows.Release(number.Container());
            errors.Release(errors.AddRef(error));
        }
    });
    int const early = freed;
    errors.Release(error);
    Expect("the references in the end", 1L, runtime.CountOf(number.Container()));
    Expect("destructions of an error with a reference left", 0, early);
    Expect("destructions of an error in the end", 1, freed);
}

void InternsOnThreads(Runtime const& runtime) {
    auto const rows = runtime.Atoms();
    std::atomic<int> failures = 0;
    OnThreads([&](int /*thread*/) {
        for (int i = 0; i < 5000; ++i) {
            std::string const text = "Conformance thread " + std::to_string(i % 100);
            BIBStringAtom* const atom = rows.NewStringAtom(text.c_str());
            BIBStringAtom* const same = rows.NewStringAtom(text.c_str());
            failures += atom == same && text == rows.GetCString(atom) ? 0 : 1;
            rows.DeleteStringAtom(atom);
            rows.DeleteStringAtom(same);
        }
    });
    Expect("atoms that are not what they were made of", 0, failures.load());
}

// Whether a value can be made, changed and read 200 times.
bool MakesValues(Runtime const& runtime, int thread) {
    for (int i = 0; i < 200; ++i) {
        auto const value = runtime.Hold(runtime.Parse("< A [ 1 (text) < B word > ] >"));
        auto* const dict = As<POSDict>(static_cast<POSObject*>(value));
        runtime.Put(dict, "C", runtime.NewNumber(thread));
        if (runtime.NumberOf(runtime.Get(dict, "C")) != thread) {
            return false;
        }
    }
    return true;
}

void MakesValuesOnThreads(Runtime const& runtime) {
    std::atomic<int> failures = 0;
    OnThreads([&](int thread) {
        try {
            failures += MakesValues(runtime, thread) ? 0 : 1;
        } catch (Failure const&) {
            ++failures;
        }
    });
    Expect("threads with values that are not what they were made of", 0, failures.load());
}

void RegistersOnThreads(Runtime const& runtime) {
    auto const add = runtime.Bootstrap<BIBRegisterProcAddressProc>("BIBRegisterProcAddress");
    auto const remove = runtime.Bootstrap<BIBUnregisterInterfaceProc>("BIBUnregisterInterface");
    std::atomic<int> failures = 0;
    int proc = 0;
    OnThreads([&](int thread) {
        std::string const name = "ConformanceThread" + std::to_string(thread);
        for (int i = 0; i < 500; ++i) {
            add(name.c_str(), std::to_string(i).c_str(), "ConformanceProc", &proc);
            failures += runtime.Lookup()(
                            name.c_str(), std::to_string(i).c_str(), "ConformanceProc") == &proc
                            ? 0
                            : 1;
        }
        remove(name.c_str());
    });
    Expect("registered procedures that are not found", 0, failures.load());
}

constexpr Check kThreadChecks[] = {
    {"thread.said",
     "BIBIsMultiThreaded gives nonzero if several threads may use the runtime.",
     &SaysSo},
    {"thread.counts", "Reference counts are safe for threads.", &CountsOnThreads},
    {"thread.atoms", "Atoms are safe for threads.", &InternsOnThreads},
    {"thread.registry", "The registry is safe for threads.", &RegistersOnThreads},
    {"thread.values", "Threads may have values of their own.", &MakesValuesOnThreads},
};

// The messages, in the words of the project's own runtime.

std::string MessageFor(
    Runtime const& runtime,
    std::string const& rule,
    std::string const& value,
    std::string const& key = "K") {
    StructValidator const validator(runtime, "< S < optional < " + key + " " + rule + " > > >");
    auto const messages =
        validator.Validate(runtime.Parse(("< " + key + " " + value + " >").c_str()), "S");
    return messages.empty() ? "" : messages.back();
}

void SaysWhatItExpects(Runtime const& runtime) {
    struct Row {
        char const* fRule;
        char const* fValue;
        char const* fMessage;
    };
    for (Row const& row : {
             Row{"boolean", "3", "K expected a boolean, found the number 3"},
             {"number", "Foo", "K expected a number, found the name Foo"},
             {"< type integer min 1 max 10 >",
              "12",
              "K expected an integer from 1 to 10, found 12"},
             {"< type number min 1 >", "0", "K expected a number of at least 1, found 0"},
             {"< type number in [ 1 2 ] >", "3", "K 3 is not one of 1, 2"},
             {"< type array count 4 >", "[ 1 2 3 ]", "K expected 4 elements, found 3"},
             {"numbr",
              "3",
              "K cannot be validated: the schema says numbr, which is not a kind, structure or "
              "registered check"},
         }) {
        Expect(row.fRule, std::string(row.fMessage), MessageFor(runtime, row.fRule, row.fValue));
    }
    for (auto const& [size, shown] : {std::pair(1000UL, 1000UL), std::pair(1001UL, 1003UL)}) {
        std::string const message = MessageFor(runtime, "number", "Foo", std::string(size, 'k'));
        Expect("the bytes of a long path, with ... where it is cut", shown, message.find(' '));
    }
}

constexpr Check kSchemaChecks[] = {
    {"schema.messages", "Messages have the texts of docs/schema.md.", &SaysWhatItExpects},
};

} // namespace

constinit Group const kCaches = {"caches", "BIBCacheInterface", Demand::kStrict, kCacheChecks};
constinit Group const kThreads = {"threads", "BIB", Demand::kStrict, kThreadChecks};
constinit Group const kSchemas = {
    "schemas", "POSStructValidatorInterface", Demand::kStrict, kSchemaChecks};

} // namespace conformance
