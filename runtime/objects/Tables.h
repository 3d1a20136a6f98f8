// How the runtime's own tables are written: procedures of the names of the rows, put into the typed
// structure, so that the compiler checks each signature.
#pragma once

#include "api/BIBTable.h"

#include <cstddef>

namespace bibrt {

// The names of a row.
struct RowName {
    char const* fName;
    char const* fProcType;
};

// A whole table: its interface, its rows, and the structure of procedure pointers in the same
// order.
struct BuiltInTable {
    char const* fInterface;
    RowName const* fRows;
    void const* fProcs;
    std::size_t fCount;
};

// The table of rows and procs, which both must live on.
template <std::size_t kCount, class Procs>
constexpr BuiltInTable
MakeTable(char const* interfaceName, RowName const (&rows)[kCount], Procs const& procs) {
    static_assert(sizeof(Procs) == kCount * sizeof(void*), "a row has no name or a name no row");
    return {interfaceName, rows, &procs, kCount};
}

// NOLINTBEGIN(bugprone-macro-parentheses): names of types, members and functions stand in no
// brackets.
// clang-format off
// A row's procedure: the one of its name in scope.
#define BIBRT_TABLE_PROC(operation, procType) .operation = &operation,

// Defines the table function `function` for an interface whose rows are ROWS and whose structure is
// structType, and checks the count of its rows.
#define BIBRT_DEFINE_TABLE(function, interfaceName, structType, ROWS, count)      \
    BuiltInTable function() noexcept {                                            \
        static constexpr RowName kRows[] = {ROWS(BIB_TABLE_NAMES)};               \
        static constexpr structType kProcs = {ROWS(BIBRT_TABLE_PROC)};            \
        static_assert(sizeof(kRows) / sizeof(kRows[0]) == (count));               \
        return MakeTable(interfaceName, kRows, kProcs);                           \
    }
// clang-format on
// NOLINTEND(bugprone-macro-parentheses)

// The tables, each defined beside its procedures.
BuiltInTable BootstrapTable() noexcept;
BuiltInTable MemoryTable() noexcept;
BuiltInTable StringTable() noexcept;
BuiltInTable ErrorTable() noexcept;
BuiltInTable SharedBuffTable() noexcept;
BuiltInTable ContainerTable() noexcept;
BuiltInTable CacheTable() noexcept;
BuiltInTable StreamFactoryTable() noexcept;
BuiltInTable SimpleStreamTable() noexcept;
BuiltInTable RewindableStreamTable() noexcept;
BuiltInTable PositionableStreamTable() noexcept;
BuiltInTable DataBlockStreamTable() noexcept;
BuiltInTable SizedDataStoreTable() noexcept;
BuiltInTable DataStoreTable() noexcept;
BuiltInTable ObjectVirtualTable() noexcept;
BuiltInTable ObjectStaticsTable() noexcept;
BuiltInTable NumberTable() noexcept;
BuiltInTable StringValueTable() noexcept;
BuiltInTable UnicodeStringTable() noexcept;
BuiltInTable BinDataTable() noexcept;
BuiltInTable ArrayTable() noexcept;
BuiltInTable DictTable() noexcept;
BuiltInTable DictIteratorTable() noexcept;
BuiltInTable ValidatorVirtualTable() noexcept;
BuiltInTable StructValidatorTable() noexcept;

} // namespace bibrt
