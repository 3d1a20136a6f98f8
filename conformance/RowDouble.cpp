#include "conformance/RowDouble.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string_view>
#include <type_traits>

namespace conformance {

namespace {

struct State {
    BIBLookupProc fLookup = nullptr;
    std::string fHidden; // "Interface.Name"
    std::string fFailing;
    unsigned long fCalls = 0;
    unsigned long fFailed = 0; // the call that fails, from 1
    bool fAndAllLater = false;
    bool fIsBroken = false;
};
State gState;

// Whether this call of the failing row fails.
bool Fails() {
    ++gState.fCalls;
    return gState.fCalls == gState.fFailed ||
           (gState.fAndAllLater && gState.fCalls > gState.fFailed);
}

template <class Result>
Result FailureValue() {
    if constexpr (std::is_same_v<Result, BIBError*>) {
        auto const getCoreError = reinterpret_cast<BIBGetCoreErrorProc>(
            gState.fLookup("BIBErrorInterface", "GetCoreError", "BIBGetCoreErrorProc"));
        return getCoreError(kBRVMemoryError);
    } else {
        return Result();
    }
}

// The procedure in front of a row, and the row behind it.
template <auto Row>
struct Front;

template <class Table, class Result, class... Arguments, Result (*Table::*Row)(Arguments...)>
struct Front<Row> {
    static inline Result (*fBehind)(Arguments...) = nullptr;

    static Result Call(Arguments... arguments) {
        return Fails() ? FailureValue<Result>() : fBehind(arguments...);
    }

    static void* PutInFront(void* behind) {
        fBehind = reinterpret_cast<decltype(fBehind)>(behind);
        return reinterpret_cast<void*>(&Call);
    }
};

struct Entry {
    void* (*fPutInFront)(void* behind) = nullptr;
    bool fCanFail = false;
};

// A row without a result cannot fail, nor can what an object says of itself.
template <class Result>
bool CanFail(std::string_view name) {
    constexpr std::string_view kCannot[] = {
        "CurKey",
        "DebugGetRefCountAddr",
        "Get",
        "GetBinData",
        "GetBlockSize",
        "GetBuffer",
        "GetCString",
        "GetComponent",
        "GetCoreError",
        "GetErrorInfo",
        "GetErrorMessage",
        "GetID",
        "GetSignature",
        "GetSize",
        "GetTypeName",
        "IsDone",
        "Count",
        "GetOffsetToPrimaryInstance"};
    // AddRef of errors gives the error itself.
    bool const isOfErrors = std::is_same_v<Result, BIBError*> && name == "AddRef";
    return !std::is_void_v<Result> && !isOfErrors &&
           std::ranges::find(kCannot, name) == std::end(kCannot);
}

template <auto Row>
struct ResultOf;
template <class Table, class Result, class... Arguments, Result (*Table::*Row)(Arguments...)>
struct ResultOf<Row> {
    using Type = Result;
};

template <auto Row>
Entry MakeEntry(char const* name) {
    return {&Front<Row>::PutInFront, CanFail<typename ResultOf<Row>::Type>(name)};
}

using Rows = std::vector<std::pair<NamedRow, Entry>>;

#define CONFORMANCE_ROW(operation, procType) \
    rows.push_back({{kInterface, #operation}, MakeEntry<&Table::operation>(#operation)});

#define CONFORMANCE_ROWS(NAME, ROWS) \
    { \
        using Table = _t_##NAME; \
        constexpr char const* kInterface = #NAME; \
        ROWS(CONFORMANCE_ROW) \
    }

Rows const& AllRows() {
    static Rows const kRows = [] {
        Rows rows;
        CONFORMANCE_ROWS(BIBContainerInterface, BIB_CONTAINER_INTERFACE_ROWS)
        CONFORMANCE_ROWS(BIBErrorInterface, BIB_ERROR_INTERFACE_ROWS)
        CONFORMANCE_ROWS(BIBStringInterface, BIB_STRING_INTERFACE_ROWS)
        CONFORMANCE_ROWS(BIBMemoryInterface, BIB_MEMORY_INTERFACE_ROWS)
        CONFORMANCE_ROWS(BIBSharedBuffInterface, BIB_SHARED_BUFF_INTERFACE_ROWS)
        CONFORMANCE_ROWS(BIBStreamFactoryInterface, BIB_STREAM_FACTORY_INTERFACE_ROWS)
        CONFORMANCE_ROWS(POSNumberInterface, POS_NUMBER_INTERFACE_ROWS)
        CONFORMANCE_ROWS(POSStringInterface, POS_STRING_INTERFACE_ROWS)
        CONFORMANCE_ROWS(POSUnicodeStringInterface, POS_UNICODE_STRING_INTERFACE_ROWS)
        CONFORMANCE_ROWS(POSBinDataInterface, POS_BIN_DATA_INTERFACE_ROWS)
        CONFORMANCE_ROWS(POSArrayInterface, POS_ARRAY_INTERFACE_ROWS)
        CONFORMANCE_ROWS(POSDictInterface, POS_DICT_INTERFACE_ROWS)
        CONFORMANCE_ROWS(POSDictIteratorInterface, POS_DICT_ITERATOR_INTERFACE_ROWS)
        CONFORMANCE_ROWS(POSObjectStatics, POS_OBJECT_STATICS_ROWS)
        CONFORMANCE_ROWS(POSStructValidatorInterface, POS_STRUCT_VALIDATOR_INTERFACE_ROWS)
        return rows;
    }();
    return kRows;
}

std::string FullName(NamedRow const& row) {
    return row.fInterface + "." + row.fName;
}

Entry EntryOf(std::string const& name) {
    static std::map<std::string, Entry> const kEntries = [] {
        std::map<std::string, Entry> entries;
        for (auto const& [row, entry] : AllRows()) {
            entries[FullName(row)] = entry;
        }
        return entries;
    }();
    auto const found = kEntries.find(name);
    return found == kEntries.end() ? Entry{} : found->second;
}

} // namespace

std::vector<NamedRow> RowsOfTheComponent() {
    std::vector<NamedRow> rows;
    for (auto const& [row, entry] : AllRows()) {
        rows.push_back(row);
    }
    return rows;
}

RowDouble::RowDouble(Runtime const& runtime) {
    gState = {};
    gState.fLookup = runtime.Lookup();
}

RowDouble::~RowDouble() {
    Restore();
}

void* RowDouble::Lookup(char const* interfaceName, char const* procName, char const* procType) {
    std::string const name = std::string(interfaceName) + "." + procName;
    void* const proc = gState.fLookup(interfaceName, procName, procType);
    if (name == gState.fHidden) {
        return nullptr;
    }
    Entry const entry = name == gState.fFailing ? EntryOf(name) : Entry{};
    bool const isReplaced = proc && (entry.fCanFail || (gState.fIsBroken && entry.fPutInFront));
    return isReplaced ? entry.fPutInFront(proc) : proc;
}

void RowDouble::Hide(NamedRow const& row) {
    gState.fHidden = FullName(row);
}

bool RowDouble::FailCall(NamedRow const& row, unsigned long n, bool andAllLater) {
    gState.fFailing = FullName(row);
    gState.fCalls = 0;
    gState.fFailed = n;
    gState.fAndAllLater = andAllLater;
    return EntryOf(gState.fFailing).fCanFail;
}

void RowDouble::Break(NamedRow const& row) {
    FailCall(row, 1, /*andAllLater=*/true);
    gState.fIsBroken = true;
}

void RowDouble::Restore() {
    gState.fHidden.clear();
    gState.fFailing.clear();
    gState.fFailed = 0;
    gState.fAndAllLater = false;
    gState.fIsBroken = false;
}

unsigned long RowDouble::CountCalls() {
    return gState.fCalls;
}

} // namespace conformance
