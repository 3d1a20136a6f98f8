// The bound tables of the interfaces that are bound on their first use, each by a pair of
// functions.
#pragma once

#include "bib/BIBClient.h"
#include "bib/BIBTable.h"

namespace BIB_T_NMT {

// The table, bound anew through construct if the counter has moved from stamp; null when a name is
// missing, and then the table's first slot is null too, so that a stale pointer to it shows.
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

} // namespace BIB_T_NMT

// Declares the table of Interface, its stamp (0 for never bound), the function that binds it (1, or
// 0 when a name is missing) and the one that guards it (see GuardGlobalProcs). The guard throws
// CBIBError for a missing name once the client is bound. REQUIRES: BIBClientInit has found the
// counter.
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
