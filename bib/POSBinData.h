// The handle on the runtime's binary data.
#pragma once

#include "api/POSScalarInterfaces.h"
#include "bib/POSObject.h"

namespace BIB_T_NMT {

BIB_DECLARE_GLOBAL_PROCS(POSBinDataInterface);

// Binary data with the name of its type.
class CPOSBinData : public CPOSObject {
public:
    // A new value. Throws CBIBError.
    CPOSBinData(char const* typeName, unsigned char const* data, unsigned long size);

    // object as binary data. Another type, and an invalid handle: an invalid handle if quiet,
    // else POSException "downcast from CPOSObject to CPOSBinData failed".
    CPOSBinData(CPOSObject const& object, bool quiet);

    // The value, not counted.
    operator POSBinData*() const noexcept { return As<POSBinData>(); }

    // The name and the bytes, which belong to the value, and the number of bytes.
    char const* GetTypeName() const { return fProcs->GetTypeName(As<POSBinData>()); }
    unsigned char const* GetBinData() const { return fProcs->GetBinData(As<POSBinData>()); }
    unsigned long GetSize() const { return fProcs->GetSize(As<POSBinData>()); }

    // The table, stored for use by every handle of the class; null when it cannot be bound.
    static _t_POSBinDataInterface const* GetProcs();

private:
    static _t_POSBinDataInterface const* fProcs;
};

} // namespace BIB_T_NMT
