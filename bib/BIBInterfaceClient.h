// The bound tables of the core interfaces, checked against the runtime's unregister counter.
#pragma once

#include "api/BIBErrorInterface.h"
#include "api/BIBStringInterface.h"
#include "bib/BIBClient.h"
#include "bib/BIBError.h"
#include "bib/BIBTable.h"

namespace BIB_T_NMT {

// The bound table of one core interface. Interface is a traits class with proctable_type, the names
// (GetRows, kRowCount) and GetInterfaceName(). All static and, like the counter, without a lock.
template <class Interface>
class TBIBInterfaceClient {
public:
    using proctable_type = typename Interface::proctable_type;

    // Binds the table anew; whether every name was found. The argument is handed on and not read.
    static bool LoadProcTable(bool reload) {
        static_assert(sizeof(proctable_type) == Interface::kRowCount * sizeof(void*));
        return BIBLoadProcTable(
                   Interface::GetRows(),
                   Interface::kRowCount,
                   Interface::GetInterfaceName(),
                   reinterpret_cast<void**>(&fProcTable),
                   static_cast<int>(reload)) != 0;
    }

    // The table as it stands, with no check: the path of every ordinary call.
    static proctable_type const* GetProcTable() noexcept { return &fProcTable; }
    static proctable_type* GetProcTable_Mutable() noexcept { return &fProcTable; }

    // The table, bound anew if the counter has moved; null when a name is missing.
    // REQUIRES: BIBClientInit has found the counter.
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

    // The same, with a thrown CBIBError "Missing Interface" in place of null.
    static void CheckInterface() {
        if (PeekProcTable() == nullptr) {
            BIBThrowMissingInterfaceError();
        }
    }

    static proctable_type fProcTable;
    // The counter's value at the last load; 0 for never.
    static unsigned long fCount;
};

template <class Interface>
constinit typename Interface::proctable_type TBIBInterfaceClient<Interface>::fProcTable = {};

template <class Interface>
constinit unsigned long TBIBInterfaceClient<Interface>::fCount = 0;

// The table unchecked, and the table checked: see TBIBInterfaceClient.
template <class Interface>
typename Interface::proctable_type const* GetProcs() noexcept {
    return TBIBInterfaceClient<Interface>::GetProcTable();
}

template <class Interface>
typename Interface::proctable_type const* PeekProcs() {
    return TBIBInterfaceClient<Interface>::PeekProcTable();
}

// Stores a bound table, or null, as the one that is known. Where it is known already nothing is
// written, so that threads whose calls bind no table meet no write of each other.
template <class Table>
Table const* Renew(Table const*& known, Table const* bound) noexcept {
    if (known != bound) {
        known = bound;
    }
    return known;
}

} // namespace BIB_T_NMT

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

// NOLINTEND(bugprone-macro-parentheses)

namespace BIB_T_NMT {

// The bound tables that the handles on atoms and errors call.
BIB_DECLARE_INTERFACE(BIBStringInterface, BIBStringTraits, BIB_STRING_INTERFACE_ROWS, 4);
BIB_DECLARE_INTERFACE(BIBErrorInterface, BIBErrorTraits, BIB_ERROR_INTERFACE_ROWS, 8);

} // namespace BIB_T_NMT
