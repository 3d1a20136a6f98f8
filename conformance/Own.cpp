// What only the project's own runtime promises: caches, several threads, the whole schema language.
#include "conformance/Group.h"
#include "conformance/Groups.h"

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
}

void PurgesUnlockedEntries(Runtime const& runtime) {
    Entries const entries(runtime);
    auto const& rows = entries.fRows;
    BIBCachePurge* const purge = rows.NewCachePurge();
    Require(purge != nullptr, "a purge", "null");
    unsigned long cost = 0;
    int const first = rows.PurgeNextBlock(purge, &cost);
    while (rows.PurgeNextBlock(purge, nullptr) != 0) {
    }
    rows.DeleteCachePurge(purge);
    Require(first != 0, "nonzero for a dropped entry", "zero");
    Require(cost != 0, "its cost", "0");
    Expect("drops of the locked entry", 0, entries.fDropped[0]);
    Expect("drops of an unlocked entry", 1, entries.fDropped[1]);
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
    rows.RemoveIDs(set);
    int const dropped = entries.fDropped[2];
    rows.DeleteCacheSet(set);
    Require(attached != 0, "nonzero of Attach", "zero");
    Require(found != 0, "nonzero for an id in the set", "zero");
    Expect("SearchForID of another id", 0, other);
    Expect("drops by RemoveIDs", 1, dropped);
}

constexpr Check kCacheChecks[] = {
    {"cache.cost", "A cache knows the cost of its entries and their total.", &KnowsItsCosts},
    {"cache.purge",
     "A purge drops entries without a lock, the least recently used one first.",
     &PurgesUnlockedEntries},
    {"cache.sets", "A set finds its ids, and RemoveIDs drops their data.", &KeepsSets},
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
    OnThreads([&](int /*thread*/) {
        for (int i = 0; i < 20000; ++i) {
            rows.AddRef(number.Container());
            rows.Release(number.Container());
        }
    });
    Expect("the references in the end", 1L, runtime.CountOf(number.Container()));
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

constexpr Check kThreadChecks[] = {
    {"thread.said",
     "BIBIsMultiThreaded gives nonzero if several threads may use the runtime.",
     &SaysSo},
    {"thread.counts", "Reference counts are safe for threads.", &CountsOnThreads},
    {"thread.atoms", "Atoms are safe for threads.", &InternsOnThreads},
    {"thread.values", "Threads may have values of their own.", &MakesValuesOnThreads},
};

// The messages, in the words of the project's own runtime.

thread_local std::string gMessage;

std::string MessageFor(Runtime const& runtime, char const* rule, char const* value) {
    std::string const schema = std::string("< S < optional < K ") + rule + " > > >";
    std::string const settings = std::string("< K ") + value + " >";
    auto const rows = runtime.Rows<_t_POSStructValidatorInterface>();
    auto const dict = runtime.Hold(As<POSDict>(runtime.Parse(schema.c_str())));
    auto const validator = runtime.Hold(rows.NewPOSStructValidator(dict));
    auto const methods =
        runtime.Methods<_t_POSValidatorVirtualInterface>(static_cast<POSValidator*>(validator));
    auto const object = runtime.Hold(runtime.Parse(settings.c_str()));
    gMessage.clear();
    methods.Validate(
        validator, object, Atom(runtime, "S"), [](char const* message) { gMessage = message; });
    return gMessage;
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
