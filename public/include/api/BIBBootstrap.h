// The lookup function, a host's one way into a runtime, and the procedures that a client asks
// first.
#pragma once

#include "api/BIBTable.h"

// Gives the procedure that is registered under all three texts, or null. The texts match exactly.
// It must work from a client's start to the end of its stop, and the procedures that it gave must
// stay loaded until the client is unloaded. A client that is started again expects the same
// runtime: it takes a table for current when the unregister counter has the value of its last load.
typedef void* (*BIBLookupProc)(
    char const* interfaceName, char const* procName, char const* procType);

// Adds a procedure under the three texts. Non-zero on success; zero on failure, also when they are
// taken already.
typedef int (*BIBRegisterProcAddressProc)(
    char const* interfaceName, char const* procName, char const* procType, void* proc);

// Shows a message to the host's error channel. The result is not looked at.
typedef int (*BIBReportErrorProc)(char const* message);

// Removes a whole interface and raises the unregister counter. The result is not looked at.
typedef int (*BIBUnregisterInterfaceProc)(char const* interfaceName);

// The address of the unregister counter. It stays the same, and the counter is never 0: a client
// stamps a table that it has not yet filled with 0.
typedef unsigned long* (*BIBGetUnregisterCountAddrProc)(void);

// Non-zero when the runtime may be used from several threads.
typedef int (*BIBIsMultiThreadedProc)(void);

// Found as lookup("BIB", name, name), in this order: ROW(name, type of the procedure).
// clang-format off
#define BIB_BOOTSTRAP_ROWS(ROW)                                      \
    ROW(BIBRegisterProcAddress,    BIBRegisterProcAddressProc)       \
    ROW(BIBReportError,            BIBReportErrorProc)               \
    ROW(BIBUnregisterInterface,    BIBUnregisterInterfaceProc)       \
    ROW(BIBGetUnregisterCountAddr, BIBGetUnregisterCountAddrProc)    \
    ROW(BIBIsMultiThreaded,        BIBIsMultiThreadedProc)
// clang-format on
