// Tables of named procedures: their rows, and how a table is bound, checked against the runtime's
// unregister counter, and registered.
#pragma once

#include "api/BIBErrorInterface.h"
#include "api/BIBStringInterface.h"
#include "bib/BIBClient.h"

namespace BIB_T_NMT {

// NOLINTBEGIN(readability-identifier-naming): the rows keep the names they have everywhere

// One row of a table to bind. A table ends with a row of two empty strings, which is never read.
struct _t_BIBFTabEntry {
    char const* name;     // the procedure's name within its interface
    char const* procType; // the name of the procedure's signature
};

// One row of a table to register. The last row also has a null proc.
struct _t_BIBFTabRegEntry {
    char const* name;     // the procedure's name within its interface
    char const* procType; // the name of the procedure's signature
    void* proc;           // the procedure
};

// NOLINTEND(readability-identifier-naming)

// Fills procs, one slot for each of the count rows (the empty last row is not counted), from the
// last row to the first. Returns 1 on success. Returns 0 at the first name that is not found: its
// slot is then null, and the slots before it are unchanged. Once the client is bound, throws
// CBIBError for such a name instead. The last argument is ignored.
int BIBLoadProcTable(
    _t_BIBFTabEntry const* table,
    unsigned long count,
    char const* interfaceName,
    void** procs,
    int);

// Registers the count rows under interfaceName, from the first to the last. Returns 1 on success,
// and 0 at the first row that the runtime rejects; earlier rows stay registered.
int BIBRegisterProcTable(
    _t_BIBFTabRegEntry const* table, unsigned long count, char const* interfaceName);

// Stores proc in a slot of a table whose slots have different procedure pointer types.
void StoreProc(void** procs, unsigned long slot, void* proc) noexcept;

// Throws the CBIBError "Missing Interface" with component "BIB". If the error table was never
// bound, the error is invalid, and its what() must not be called.
[[noreturn]] void BIBThrowMissingInterfaceError();

// The bound table of one core interface. Interface is a traits class with proctable_type, the names
// (GetRows, kRowCount) and GetInterfaceName(). All members are static and, like the counter, not
// synchronized.
template <class Interface>
class TBIBInterfaceClient {
public:
    using proctable_type = typename Interface::proctable_type;

    // Binds the table again. Returns whether every name was found. The argument has no effect.
    static bool LoadProcTable(bool reload) {
        static_assert(sizeof(proctable_type) == Interface::kRowCount * sizeof(void*));
        return BIBLoadProcTable(
                   Interface::GetRows(),
                   Interface::kRowCount,
                   Interface::GetInterfaceName(),
                   reinterpret_cast<void**>(&fProcTable),
                   static_cast<int>(reload)) != 0;
    }

    // The table without a check: ordinary calls use this.
    static proctable_type const* GetProcTable() noexcept { return &fProcTable; }
    static proctable_type* GetProcTable_Mutable() noexcept { return &fProcTable; }

    // The table, bound again if the counter has changed; null if a name is missing. REQUIRES:
    // BIBClientInit has found the counter.
    static proctable_type const* PeekProcTable() {
        unsigned long const count = *gBIBUnregisterCount;
        if (count != fCount) {
            if (!LoadProcTable(/*reload=*/true)) {
                return nullptr;
            }
            fCount = count;
        }
        return &fProcTable;
    }

    // The same check, but throws the CBIBError "Missing Interface" where PeekProcTable returns
    // null.
    static void CheckInterface() {
        if (PeekProcTable() == nullptr) {
            BIBThrowMissingInterfaceError();
        }
    }

    static inline constinit proctable_type fProcTable = {};
    // The counter's value at the last successful load; 0 before the first.
    static inline constinit unsigned long fCount = 0;
};

// GetProcs returns the table without a check, PeekProcs with one: see TBIBInterfaceClient.
template <class Interface>
typename Interface::proctable_type const* GetProcs() noexcept {
    return TBIBInterfaceClient<Interface>::GetProcTable();
}

template <class Interface>
typename Interface::proctable_type const* PeekProcs() {
    return TBIBInterfaceClient<Interface>::PeekProcTable();
}

// Stores a bound table, or null, in known. Writes only if the value changes, so that threads whose
// calls bind no table do not write to shared memory.
template <class Table>
Table const* Renew(Table const*& known, Table const* bound) noexcept {
    if (known != bound) {
        known = bound;
    }
    return known;
}

// The table of an interface that is bound on first use. If the counter differs from stamp,
// construct binds the table again. Returns null if a name is missing; the first slot of the table
// is then null too, so that a call through a stale pointer to the table fails visibly.
template <class Table>
Table const* GuardGlobalProcs(Table& table, unsigned long& stamp, int (*construct)(Table*)) {
    unsigned long const count = *gBIBUnregisterCount;
    if (count != stamp) {
        if (construct(&table) == 0) {
            StoreProc(reinterpret_cast<void**>(&table), 0, nullptr);
            return nullptr;
        }
        stamp = count;
    }
    return &table;
}

// NOLINTBEGIN(bugprone-macro-parentheses): the arguments are names

// Declares the traits of the interface that is registered as #Interface and has rowCount rows,
// ROWS.
#define BIB_DECLARE_INTERFACE(Interface, Traits, ROWS, rowCount) \
    struct Traits { \
        using proctable_type = _t_##Interface; \
        static constexpr unsigned long kRowCount = rowCount; \
        static char const* GetInterfaceName() noexcept { return #Interface; } \
        static _t_BIBFTabEntry const* GetRows() noexcept { \
            static constexpr _t_BIBFTabEntry kRows[] = {ROWS(BIB_TABLE_NAMES){"", ""}}; \
            static_assert(sizeof kRows / sizeof *kRows == kRowCount + 1); \
            return kRows; \
        } \
    }; \
    using Interface = Traits

// Declares the table of Interface, its stamp (0 before the first load), the function that binds the
// table (1, or 0 if a name is missing), and the function that returns the checked table (see
// GuardGlobalProcs). The latter throws CBIBError for a missing name once the client is bound.
// REQUIRES: BIBClientInit has found the counter.
#define BIB_DECLARE_GLOBAL_PROCS(Interface) \
    extern _t_##Interface g##Interface; \
    extern unsigned long g##Interface##Count; \
    int Construct##Interface##Procs(_t_##Interface* table); \
    _t_##Interface const* GetGlobal##Interface##Procs()

#define BIB_DEFINE_GLOBAL_PROCS(Interface, ROWS, rowCount) \
    constinit _t_##Interface g##Interface = {}; \
    constinit unsigned long g##Interface##Count = 0; \
    int Construct##Interface##Procs(_t_##Interface* table) { \
        static constexpr _t_BIBFTabEntry kRows[] = {ROWS(BIB_TABLE_NAMES){"", ""}}; \
        static_assert(sizeof kRows / sizeof *kRows == (rowCount) + 1); \
        static_assert(sizeof(_t_##Interface) == (rowCount) * sizeof(void*)); \
        return BIBLoadProcTable(kRows, rowCount, #Interface, reinterpret_cast<void**>(table), 0); \
    } \
    _t_##Interface const* GetGlobal##Interface##Procs() { \
        return GuardGlobalProcs(g##Interface, g##Interface##Count, &Construct##Interface##Procs); \
    }

// Use at the end of a class. GetProcs() returns the current table of Interface and stores it in
// fProcs.
#define BIB_KEEP_GLOBAL_PROCS(Interface) \
    static _t_##Interface const* GetProcs() { \
        return Renew(fProcs, GetGlobal##Interface##Procs()); \
    } \
\
private: \
    static _t_##Interface const* fProcs;

// NOLINTEND(bugprone-macro-parentheses)

// The bound tables that the handles for atoms and errors call.
BIB_DECLARE_INTERFACE(BIBStringInterface, BIBStringTraits, BIB_STRING_INTERFACE_ROWS, 4);
BIB_DECLARE_INTERFACE(BIBErrorInterface, BIBErrorTraits, BIB_ERROR_INTERFACE_ROWS, 8);

} // namespace BIB_T_NMT
