// Typed access to the tables of a runtime, filled through its lookup or by a container's signature.
//
//     auto const dict = conformance::LoadTable<_t_POSDictInterface>(&BIBRuntimeLookup);
//     auto const methods = conformance::LoadMethods<_t_BIBSimpleStreamInterface>(lookup, stream);
//
// A row that cannot be found is null in the structure; MissingRows counts them.
#pragma once

#include "api/BIBBootstrap.h"
#include "api/BIBCacheInterface.h"
#include "api/BIBContainerInterface.h"
#include "api/BIBDataInterface.h"
#include "api/BIBErrorInterface.h"
#include "api/BIBMemoryInterface.h"
#include "api/BIBSharedBuffInterface.h"
#include "api/BIBStreamInterface.h"
#include "api/BIBStringInterface.h"
#include "api/POSCollectionInterfaces.h"
#include "api/POSObjectInterface.h"
#include "api/POSScalarInterfaces.h"
#include "api/POSValidatorInterface.h"

#include <cstddef>
#include <cstring>

namespace conformance {

struct RowName {
    char const* fName;
    char const* fProcType;
};

// The interface name and the row names of a table; kRows is in slot order.
template <class Table>
struct TableNames;

// clang-format off
#define CONFORMANCE_TABLE(NAME, ROWS)                                    \
    template <>                                                      \
    struct TableNames<_t_##NAME> {                                   \
        static constexpr char const* kInterface = #NAME;             \
        static constexpr RowName kRows[] = {ROWS(BIB_TABLE_NAMES)};  \
    };
// clang-format on

CONFORMANCE_TABLE(BIBContainerInterface, BIB_CONTAINER_INTERFACE_ROWS)
CONFORMANCE_TABLE(BIBErrorInterface, BIB_ERROR_INTERFACE_ROWS)
CONFORMANCE_TABLE(BIBStringInterface, BIB_STRING_INTERFACE_ROWS)
CONFORMANCE_TABLE(BIBMemoryInterface, BIB_MEMORY_INTERFACE_ROWS)
CONFORMANCE_TABLE(BIBSharedBuffInterface, BIB_SHARED_BUFF_INTERFACE_ROWS)
CONFORMANCE_TABLE(BIBCacheInterface, BIB_CACHE_INTERFACE_ROWS)
CONFORMANCE_TABLE(BIBStreamFactoryInterface, BIB_STREAM_FACTORY_INTERFACE_ROWS)
CONFORMANCE_TABLE(BIBSimpleStreamInterface, BIB_SIMPLE_STREAM_INTERFACE_ROWS)
CONFORMANCE_TABLE(BIBRewindableStreamInterface, BIB_REWINDABLE_STREAM_INTERFACE_ROWS)
CONFORMANCE_TABLE(BIBPositionableStreamInterface, BIB_POSITIONABLE_STREAM_INTERFACE_ROWS)
CONFORMANCE_TABLE(BIBDataBlockStreamInterface, BIB_DATA_BLOCK_STREAM_INTERFACE_ROWS)
CONFORMANCE_TABLE(BIBSizedDataStoreInterface, BIB_SIZED_DATA_STORE_INTERFACE_ROWS)
CONFORMANCE_TABLE(BIBDataStoreInterface, BIB_DATA_STORE_INTERFACE_ROWS)
CONFORMANCE_TABLE(POSObjectVirtualInterface, POS_OBJECT_VIRTUAL_INTERFACE_ROWS)
CONFORMANCE_TABLE(POSObjectStatics, POS_OBJECT_STATICS_ROWS)
CONFORMANCE_TABLE(POSNumberInterface, POS_NUMBER_INTERFACE_ROWS)
CONFORMANCE_TABLE(POSStringInterface, POS_STRING_INTERFACE_ROWS)
CONFORMANCE_TABLE(POSUnicodeStringInterface, POS_UNICODE_STRING_INTERFACE_ROWS)
CONFORMANCE_TABLE(POSBinDataInterface, POS_BIN_DATA_INTERFACE_ROWS)
CONFORMANCE_TABLE(POSArrayInterface, POS_ARRAY_INTERFACE_ROWS)
CONFORMANCE_TABLE(POSDictInterface, POS_DICT_INTERFACE_ROWS)
CONFORMANCE_TABLE(POSDictIteratorInterface, POS_DICT_ITERATOR_INTERFACE_ROWS)
CONFORMANCE_TABLE(POSValidatorVirtualInterface, POS_VALIDATOR_VIRTUAL_INTERFACE_ROWS)
CONFORMANCE_TABLE(POSStructValidatorInterface, POS_STRUCT_VALIDATOR_INTERFACE_ROWS)

// Fills a table with what find gives for each row.
template <class Table, class Find>
Table FillTable(Find find) {
    using Names = TableNames<Table>;
    constexpr std::size_t kCount = sizeof(Names::kRows) / sizeof(RowName);
    static_assert(sizeof(Table) == kCount * sizeof(void*));
    void* procs[kCount] = {};
    for (std::size_t row = 0; row < kCount; ++row) {
        procs[row] = find(Names::kRows[row]);
    }
    Table table = {};
    std::memcpy(&table, procs, sizeof(table));
    return table;
}

// The table as the lookup knows it.
template <class Table>
Table LoadTable(BIBLookupProc lookup) {
    return FillTable<Table>([lookup](RowName const& row) {
        return lookup(TableNames<Table>::kInterface, row.fName, row.fProcType);
    });
}

// The methods under the signature of a container, or of any runtime object that is one underneath.
template <class Table, class Object>
Table LoadMethods(BIBLookupProc lookup, Object* object) {
    auto const strings = LoadTable<_t_BIBStringInterface>(lookup);
    auto const containers = LoadTable<_t_BIBContainerInterface>(lookup);
    return FillTable<Table>([&](RowName const& row) {
        BIBStringAtom* const name = strings.NewStringAtom(row.fName);
        BIBStringAtom* const procType = strings.NewStringAtom(row.fProcType);
        void* method = nullptr;
        containers.GetMethod(
            &method, reinterpret_cast<BIBContainer*>(object), name, procType, /*optional=*/1);
        strings.DeleteStringAtom(procType);
        strings.DeleteStringAtom(name);
        return method;
    });
}

// How many rows of a table are null.
template <class Table>
std::size_t MissingRows(Table const& table) {
    void* procs[sizeof(Table) / sizeof(void*)] = {};
    std::memcpy(procs, &table, sizeof(table));
    std::size_t missing = 0;
    for (void const* const proc : procs) {
        missing += proc ? 0 : 1;
    }
    return missing;
}

} // namespace conformance
