// Handles to the runtime's numbers, strings and binary data.
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

    CPOSNumber(CPOSObject const& object, bool quiet);

    operator POSNumber*() const noexcept { return As<POSNumber>(); }

    double Get() const { return fProcs->Get(As<POSNumber>()); }
    operator double() const { return Get(); }

    BIB_KEEP_GLOBAL_PROCS(POSNumberInterface)
};

BIB_DECLARE_GLOBAL_PROCS(POSStringInterface);

// An 8-bit string. Names, booleans and other words in settings are such strings.
class CPOSString : public CPOSObject {
public:
    // A new value. Throws CBIBError.
    explicit CPOSString(char const* text);

    CPOSString(CPOSObject const& object, bool quiet);

    operator POSString*() const noexcept { return As<POSString>(); }

    // The NUL-terminated string, owned by the value.
    char const* Get() const { return fProcs->Get(As<POSString>()); }
    operator char const*() const { return Get(); }

    BIB_KEEP_GLOBAL_PROCS(POSStringInterface)
};

BIB_DECLARE_GLOBAL_PROCS(POSUnicodeStringInterface);

// A 16-bit string: UTF-16 in the machine's byte order, terminated by a zero unit.
class CPOSUnicodeString : public CPOSObject {
public:
    // A new value. Throws CBIBError.
    explicit CPOSUnicodeString(unsigned short const* text);

    CPOSUnicodeString(CPOSObject const& object, bool quiet);

    operator POSUnicodeString*() const noexcept { return As<POSUnicodeString>(); }

    // The string, owned by the value.
    unsigned short const* Get() const { return fProcs->Get(As<POSUnicodeString>()); }

    // The number of units before the zero unit, counted on each call.
    unsigned int GetLength() const { return GetLength(Get()); }
    static unsigned int GetLength(unsigned short const* text) noexcept;

    BIB_KEEP_GLOBAL_PROCS(POSUnicodeStringInterface)
};

BIB_DECLARE_GLOBAL_PROCS(POSBinDataInterface);

// Binary data with a type name.
class CPOSBinData : public CPOSObject {
public:
    // A new value. Throws CBIBError.
    CPOSBinData(char const* typeName, unsigned char const* data, unsigned long size);

    CPOSBinData(CPOSObject const& object, bool quiet);

    operator POSBinData*() const noexcept { return As<POSBinData>(); }

    // The type name and the bytes, owned by the value, and the number of bytes.
    char const* GetTypeName() const { return fProcs->GetTypeName(As<POSBinData>()); }
    unsigned char const* GetBinData() const { return fProcs->GetBinData(As<POSBinData>()); }
    unsigned long GetSize() const { return fProcs->GetSize(As<POSBinData>()); }

    BIB_KEEP_GLOBAL_PROCS(POSBinDataInterface)
};

} // namespace BIB_T_NMT
