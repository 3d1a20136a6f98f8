// The bootstrap procedures that a client looks up first, and the error channel.

#include "api/BIBBootstrap.h"
#include "api/BIBRuntime.h"
#include "runtime/objects/Errors.h"
#include "runtime/objects/Registry.h"
#include "runtime/objects/Tables.h"
#include "runtime/schema/Schema.h"
#include "runtime/streams/Streams.h"
#include "runtime/values/PosObject.h"

#include <cstdio>
#include <mutex>
#include <utility>

// clang-format off
// The interfaces. Each table is defined in the file of its procedures.
#define BIBRT_INTERFACES(TABLE) \
    TABLE(BIBMemoryInterface) \
    TABLE(BIBStringInterface) \
    TABLE(BIBErrorInterface) \
    TABLE(BIBSharedBuffInterface) \
    TABLE(BIBContainerInterface) \
    TABLE(BIBCacheInterface) \
    TABLE(BIBStreamFactoryInterface) \
    TABLE(BIBSimpleStreamInterface) \
    TABLE(BIBRewindableStreamInterface) \
    TABLE(BIBPositionableStreamInterface) \
    TABLE(BIBDataBlockStreamInterface) \
    TABLE(BIBSizedDataStoreInterface) \
    TABLE(BIBDataStoreInterface) \
    TABLE(POSObjectVirtualInterface) \
    TABLE(POSObjectStatics) \
    TABLE(POSNumberInterface) \
    TABLE(POSStringInterface) \
    TABLE(POSUnicodeStringInterface) \
    TABLE(POSBinDataInterface) \
    TABLE(POSArrayInterface) \
    TABLE(POSDictInterface) \
    TABLE(POSDictIteratorInterface) \
    TABLE(POSValidatorVirtualInterface) \
    TABLE(POSStructValidatorInterface)
// clang-format on

namespace bibrt {

#define BIBRT_DECLARE_TABLE(interface) BuiltInTable interface##Table() noexcept;
BIBRT_INTERFACES(BIBRT_DECLARE_TABLE)

namespace {

void WriteToStandardError(char const* message, void* /*client*/) {
    std::fprintf(stderr, "%s\n", message);
}

struct ErrorChannel {
    BIBRuntimeErrorProc fProc = &WriteToStandardError;
    void* fClient = nullptr;
};

std::mutex gChannelLock;
constinit ErrorChannel gChannel;
thread_local constinit ErrorChannel gThreadChannel{nullptr, nullptr};

// Never destroyed: calls may be made while the process ends.
std::recursive_mutex& CallsLock() {
    static auto& lock = *new std::recursive_mutex;
    return lock;
}

ErrorChannel CurrentChannel() {
    if (gThreadChannel.fProc) {
        return gThreadChannel;
    }
    std::lock_guard const guard(gChannelLock);
    return gChannel;
}

// The rows of the bootstrap table.

int BIBRegisterProcAddress(
    char const* interfaceName, char const* procName, char const* procType, void* proc) {
    if (!interfaceName || !procName || !procType || !proc) {
        return 0;
    }
    return AtRow(0, [&] {
        return Registry::The().Add({interfaceName, procName, procType}, proc) ? 1 : 0;
    });
}

int BIBReportError(char const* message) {
    ErrorChannel const channel = CurrentChannel();
    channel.fProc(message ? message : "", channel.fClient);
    return 1;
}

int BIBUnregisterInterface(char const* interfaceName) {
    return interfaceName && Registry::The().Remove(interfaceName) ? 1 : 0;
}

unsigned long* BIBGetUnregisterCountAddr() {
    return Registry::The().CounterAddress();
}

int BIBIsMultiThreaded() {
    return 1;
}

struct BootstrapProcs {
    BIB_BOOTSTRAP_ROWS(BIB_TABLE_SLOT)
};

// Unlike all other rows, these are registered with their own name as the procedure type.
#define BIBRT_NAME_TWICE(name, procType) {#name, #name},

BuiltInTable BootstrapTable() noexcept {
    static constexpr RowName kRows[] = {BIB_BOOTSTRAP_ROWS(BIBRT_NAME_TWICE)};
    static constexpr BootstrapProcs kProcs = {BIB_BOOTSTRAP_ROWS(BIBRT_TABLE_PROC)};
    static_assert(std::size(kRows) == 5);
    return MakeTable("BIB", kRows, kProcs);
}

using TableFunction = BuiltInTable (*)() noexcept;

#define BIBRT_TABLE_FUNCTION(interface) &interface##Table,
constexpr TableFunction kTables[] = {&BootstrapTable, BIBRT_INTERFACES(BIBRT_TABLE_FUNCTION)};

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

// Creates what all rows rely on. Throws std::bad_alloc, and may be called again after that.
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

void BIBRuntimeSetErrorChannel(BIBRuntimeErrorProc proc, void* client) {
    std::lock_guard const guard(bibrt::gChannelLock);
    bibrt::gChannel = proc ? bibrt::ErrorChannel{proc, client} : bibrt::ErrorChannel{};
}

BIBRuntimeErrorProc
BIBRuntimeSetThreadErrorChannel(BIBRuntimeErrorProc proc, void* client, void** formerClient) {
    bibrt::ErrorChannel const former = std::exchange(bibrt::gThreadChannel, {proc, client});
    if (formerClient) {
        *formerClient = former.fClient;
    }
    return former.fProc;
}

void BIBRuntimeLockCalls() {
    bibrt::CallsLock().lock();
}

void BIBRuntimeUnlockCalls() {
    bibrt::CallsLock().unlock();
}

void* BIBRuntimeLookup(char const* interfaceName, char const* procName, char const* procType) {
    if (!interfaceName || !procName || !procType) {
        return nullptr;
    }
    return bibrt::AtRow<void*>(nullptr, [&]() -> void* {
        return bibrt::IsStarted() ? bibrt::Registry::The().Find({interfaceName, procName, procType})
                                  : nullptr;
    });
}
