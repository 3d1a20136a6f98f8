// The lookup function, the only entry point of a runtime, and the procedures that a client looks up
// first.
#pragma once

#include "api/BIBTable.h"

// Returns the procedure that is registered under exactly these three names, or null. The lookup
// must work from a client's start to the end of its stop, and the procedures it has returned must
// stay loaded until the client is unloaded. A client that is started again expects the same
// runtime: it treats a table as current if the unregister counter has the value from its last load.
typedef void* (*BIBLookupProc)(
    char const* interfaceName, char const* procName, char const* procType);

// Adds a procedure under the three names. Nonzero on success; zero on failure, also if the names
// are in use.
typedef int (*BIBRegisterProcAddressProc)(
    char const* interfaceName, char const* procName, char const* procType, void* proc);

// Reports a message to the host's error channel. The client ignores the result.
typedef int (*BIBReportErrorProc)(char const* message);

// Removes a whole interface and increases the unregister counter. The client ignores the result.
typedef int (*BIBUnregisterInterfaceProc)(char const* interfaceName);

// The address of the unregister counter. The address never changes, and the counter is never 0: a
// client stamps a table with 0 until it has loaded it.
typedef unsigned long* (*BIBGetUnregisterCountAddrProc)(void);

// Nonzero if several threads may use the runtime.
typedef int (*BIBIsMultiThreadedProc)(void);

// Looked up as lookup("BIB", name, name), in this order: ROW(name, type of the procedure).
// clang-format off
#define BIB_BOOTSTRAP_ROWS(ROW)                                      \
    ROW(BIBRegisterProcAddress,    BIBRegisterProcAddressProc)       \
    ROW(BIBReportError,            BIBReportErrorProc)               \
    ROW(BIBUnregisterInterface,    BIBUnregisterInterfaceProc)       \
    ROW(BIBGetUnregisterCountAddr, BIBGetUnregisterCountAddrProc)    \
    ROW(BIBIsMultiThreaded,        BIBIsMultiThreadedProc)
// clang-format on
