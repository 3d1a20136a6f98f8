// The handle on the runtime's 16-bit strings.
#pragma once

#include "api/POSScalarInterfaces.h"
#include "bib/POSObject.h"

namespace BIB_T_NMT {

BIB_DECLARE_GLOBAL_PROCS(POSUnicodeStringInterface);

// A 16-bit string: UTF-16 in the machine's byte order, ended by a zero unit.
class CPOSUnicodeString : public CPOSObject {
public:
    // A new value. Throws CBIBError.
    explicit CPOSUnicodeString(unsigned short const* text);

    // object as a 16-bit string. Another type, and an invalid handle: an invalid handle if quiet,
    // else POSException "downcast from CPOSObject to CPOSUnicodeString failed".
    CPOSUnicodeString(CPOSObject const& object, bool quiet);

    // The value, not counted.
    operator POSUnicodeString*() const noexcept { return As<POSUnicodeString>(); }

    // The text, which belongs to the value.
    unsigned short const* Get() const { return fProcs->Get(As<POSUnicodeString>()); }

    // The number of units before the zero unit, counted at each call.
    unsigned int GetLength() const { return GetLength(Get()); }
    static unsigned int GetLength(unsigned short const* text) noexcept;

    // The table, stored for use by every handle of the class; null when it cannot be bound.
    static _t_POSUnicodeStringInterface const* GetProcs();

private:
    static _t_POSUnicodeStringInterface const* fProcs;
};

} // namespace BIB_T_NMT
