// The handle on the runtime's 8-bit strings.
#pragma once

#include "api/POSScalarInterfaces.h"
#include "bib/POSObject.h"

namespace BIB_T_NMT {

BIB_DECLARE_GLOBAL_PROCS(POSStringInterface);

// An 8-bit string. Names, booleans and other words of the settings are strings.
class CPOSString : public CPOSObject {
public:
    // A new value. Throws CBIBError.
    explicit CPOSString(char const* text);

    // object as an 8-bit string. Another type, and an invalid handle: an invalid handle if quiet,
    // else POSException "downcast from CPOSObject to CPOSString failed".
    CPOSString(CPOSObject const& object, bool quiet);

    // The value, not counted.
    operator POSString*() const noexcept { return As<POSString>(); }

    // The NUL-terminated text, which belongs to the value.
    char const* Get() const { return fProcs->Get(As<POSString>()); }
    operator char const*() const { return Get(); }

    // The table, stored for use by every handle of the class; null when it cannot be bound.
    static _t_POSStringInterface const* GetProcs();

private:
    static _t_POSStringInterface const* fProcs;
};

} // namespace BIB_T_NMT
