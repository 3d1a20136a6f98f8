// Defining the runtime's tables: procedures named like the rows fill the typed structure, so that
// the compiler checks each signature.
#pragma once

#include "api/BIBTable.h"

#include <cstddef>

namespace bibrt {

// The names of one row.
struct RowName {
    char const* fName;
    char const* fProcType;
};

// A table: its interface, the names of its rows, and its procedure pointers in the same order.
struct BuiltInTable {
    char const* fInterface;
    RowName const* fRows;
    void const* fProcs;
    std::size_t fCount;
};

// The table of rows and procs. REQUIRES: both outlive the result.
template <std::size_t kCount, class Procs>
constexpr BuiltInTable
MakeTable(char const* interfaceName, RowName const (&rows)[kCount], Procs const& procs) {
    static_assert(sizeof(Procs) == kCount * sizeof(void*), "a row has no name or a name no row");
    return {interfaceName, rows, &procs, kCount};
}

// NOLINTBEGIN(bugprone-macro-parentheses): names of types, members and functions are in no
// brackets.
// clang-format off
// Initializes a row with the procedure of the same name in scope.
#define BIBRT_TABLE_PROC(operation, procType) .operation = &operation,

// Defines the table of an interface in a function named after it, and checks the number of its
// rows. An interface NAME has a structure _t_NAME and a row list ROWS. The table of methods of a
// class of objects is registered under the signature of the objects.
#define BIBRT_DEFINE_OBJECT_TABLE(interface, registeredName, ROWS, count)         \
    BuiltInTable interface##Table() noexcept {                                    \
        static constexpr RowName kRows[] = {ROWS(BIB_TABLE_NAMES)};               \
        static constexpr _t_##interface kProcs = {ROWS(BIBRT_TABLE_PROC)};        \
        static_assert(sizeof(kRows) / sizeof(kRows[0]) == (count));               \
        return MakeTable(registeredName, kRows, kProcs);                          \
    }
#define BIBRT_DEFINE_TABLE(interface, ROWS, count) \
    BIBRT_DEFINE_OBJECT_TABLE(interface, #interface, ROWS, count)
// clang-format on
// NOLINTEND(bugprone-macro-parentheses)

} // namespace bibrt
