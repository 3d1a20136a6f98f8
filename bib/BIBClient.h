// Base classes of the client's objects, which are allocated in the runtime's memory.
#pragma once

#include "api/BIBBootstrap.h"

#include <cstddef>

// Base of list elements in static storage: it has no allocator.
class BIBDLLEParent {};

namespace BIB_T_NMT {

// Allocates derived objects with the runtime's allocator. Allocation throws the memory error.
class CBIBClientBase {
public:
    static void* operator new(std::size_t size);
    static void operator delete(void* block) noexcept;
};

// As CBIBClientBase, with a virtual destructor.
class CBIBVirtualClientBase : public CBIBClientBase {
public:
    virtual ~CBIBVirtualClientBase() = default;
};

class CBIBClientBasePMT : public CBIBClientBase {};

// The host's lookup function; null while the client is not bound.
extern BIBLookupProc gGetProc;

// The runtime's bootstrap procedures; null until the first start.
extern BIBRegisterProcAddressProc gRegisterProc;
extern BIBReportErrorProc gErrorProc;
extern BIBUnregisterInterfaceProc gUnregisterInterfaceProc;
extern BIBGetUnregisterCountAddrProc gGetUnregisterCountAddrProc;
extern BIBIsMultiThreadedProc gBIBIsMultiThreadedProc;

// The runtime's unregister counter. A table is stale if its stamp differs from the counter.
extern unsigned long* gBIBUnregisterCount;

// False while the core tables are being bound, then true.
extern bool gFinishedInit;

// Binds the client to the runtime behind lookup. Returns true when the client is bound, at once if
// it was bound already. If it returns false or throws a CBIBError, the client stays partly bound
// and further calls return true. If the error table was never bound, the thrown error is invalid,
// and calling its what() is an error.
bool BIBClientInit(BIBLookupProc lookup);

// Ends the binding; does nothing if there is none. No handle may outlive the binding.
void BIBClientTerminate();

// The procedure registered under the three names. If there is none: null while the client is
// unbound or being bound; once it is bound, throws a CBIBError with an empty message and component
// "BIB".
void* BIBGetProcAddress(char const* interfaceName, char const* procName, char const* procType);

// These call the runtime's procedures of the same names. REQUIRES, for the first two: the client is
// bound. BIBReportError returns 0 and does nothing until the first start has found it; it stays
// usable after a stop.
int BIBRegisterProcAddress(
    char const* interfaceName, char const* procName, char const* procType, void* proc);
int BIBUnregisterInterface(char const* interfaceName);
int BIBReportError(char const* message);

} // namespace BIB_T_NMT
