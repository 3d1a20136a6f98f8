// Root classes of the client's objects, which live in the runtime's memory.
#pragma once

#include "api/BIBBootstrap.h"

#include <cstddef>

// Root of list elements that live in static storage: it has no allocator.
class BIBDLLEParent {};

namespace BIB_T_NMT {

// Gives its descendants the runtime's allocator. Allocation throws the memory error.
class CBIBClientBase {
public:
    static void* operator new(std::size_t size);
    static void operator delete(void* block) noexcept;
};

// The same with a virtual destructor.
class CBIBVirtualClientBase : public CBIBClientBase {
public:
    virtual ~CBIBVirtualClientBase() = default;
};

class CBIBClientBasePMT : public CBIBClientBase {};

// The host's lookup; null while the client is not bound.
extern BIBLookupProc gGetProc;

// The runtime's bootstrap procedures; null until the first start.
extern BIBRegisterProcAddressProc gRegisterProc;
extern BIBReportErrorProc gErrorProc;
extern BIBUnregisterInterfaceProc gUnregisterInterfaceProc;
extern BIBGetUnregisterCountAddrProc gGetUnregisterCountAddrProc;
extern BIBIsMultiThreadedProc gBIBIsMultiThreadedProc;

// The runtime's unregister counter: a table whose stamp differs from it is stale.
extern unsigned long* gBIBUnregisterCount;

// False while the core tables are being bound, true from then on.
extern bool gFinishedInit;

// Binds the client to the runtime behind lookup. True when it is bound, at once if it was already.
// On false, and when a CBIBError passes out, the layer stays half bound: further calls give true.
// Where no error table was ever bound that error is invalid, and not even its what() may be called.
bool BIBClientInit(BIBLookupProc lookup);

// Ends the binding. Does nothing when there is none. No handle may outlive it.
void BIBClientTerminate();

// The procedure under the three names. None: null while unbound or binding, and once bound a thrown
// CBIBError with an empty message and component "BIB".
void* BIBGetProcAddress(char const* interfaceName, char const* procName, char const* procType);

// The runtime's procedures of the same names. REQUIRES: the first two, that the client is bound.
// BIBReportError does nothing and gives 0 before the first start has found it; it stays known after
// a stop.
int BIBRegisterProcAddress(
    char const* interfaceName, char const* procName, char const* procType, void* proc);
int BIBUnregisterInterface(char const* interfaceName);
int BIBReportError(char const* message);

} // namespace BIB_T_NMT
