// The start of the runtime, and its one way in.
#include "api/BIBRuntime.h"
#include "runtime/objects/Boundary.h"
#include "runtime/objects/Registry.h"
#include "runtime/objects/Tables.h"
#include "runtime/schema/StructValidator.h"
#include "runtime/streams/Streams.h"
#include "runtime/values/PosObject.h"

namespace bibrt {

namespace {

using TableFunction = BuiltInTable (*)() noexcept;

constexpr TableFunction kTables[] = {
    &BootstrapTable,
    &MemoryTable,
    &StringTable,
    &ErrorTable,
    &SharedBuffTable,
    &ContainerTable,
    &CacheTable,
    &StreamFactoryTable,
    &SimpleStreamTable,
    &RewindableStreamTable,
    &PositionableStreamTable,
    &DataBlockStreamTable,
    &SizedDataStoreTable,
    &DataStoreTable,
    &ObjectVirtualTable,
    &ObjectStaticsTable,
    &NumberTable,
    &StringValueTable,
    &UnicodeStringTable,
    &BinDataTable,
    &ArrayTable,
    &DictTable,
    &DictIteratorTable,
    &ValidatorVirtualTable,
    &StructValidatorTable};

constexpr ContainerType* kTypes[] = {
    &gNumberType,
    &gStringType,
    &gUnicodeStringType,
    &gBinDataType,
    &gArrayType,
    &gDictType,
    &gDictIteratorType,
    &gStructValidatorType,
    &gSimpleStreamType,
    &gRewindableStreamType,
    &gPositionableStreamType,
    &gSourceStreamType};

void StartType(ContainerType& type) {
    type.fInstanceName = InternForever(type.fInstanceName);
    type.fSignature = InternForever(type.fSignature);
    if (type.fParent) {
        Registry::The().SetParent(type.fSignature, type.fParent);
    }
}

// Makes what every row may count on. Throws std::bad_alloc, and then may be called again.
bool StartRuntime() {
    StartErrors();
    for (ContainerType* const type : kTypes) {
        StartType(*type);
    }
    for (TableFunction const table : kTables) {
        Registry::The().AddTable(table());
    }
    return true;
}

bool IsStarted() {
    static bool const kIsStarted = StartRuntime();
    return kIsStarted;
}

} // namespace

} // namespace bibrt

void* BIBRuntimeLookup(char const* interfaceName, char const* procName, char const* procType) {
    if (!interfaceName || !procName || !procType) {
        return nullptr;
    }
    return bibrt::AtRow<void*>(nullptr, [&]() -> void* {
        return bibrt::IsStarted() ? bibrt::Registry::The().Find({interfaceName, procName, procType})
                                  : nullptr;
    });
}
