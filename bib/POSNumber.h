// The handle on the runtime's numbers.
#pragma once

#include "api/POSScalarInterfaces.h"
#include "bib/POSObject.h"

namespace BIB_T_NMT {

BIB_DECLARE_GLOBAL_PROCS(POSNumberInterface);

// A number.
class CPOSNumber : public CPOSObject {
public:
    // A new value. Throws CBIBError.
    explicit CPOSNumber(double value);

    // object as a number. Another type, and an invalid handle: an invalid handle if quiet, else
    // POSException "downcast from CPOSObject to CPOSNumber failed".
    CPOSNumber(CPOSObject const& object, bool quiet);

    // The value, not counted.
    operator POSNumber*() const noexcept { return As<POSNumber>(); }

    double Get() const { return fProcs->Get(As<POSNumber>()); }
    operator double() const { return Get(); }

    // The table, stored for use by every handle of the class; null when it cannot be bound.
    static _t_POSNumberInterface const* GetProcs();

private:
    static _t_POSNumberInterface const* fProcs;
};

} // namespace BIB_T_NMT
