#include "api/POSScalarInterfaces.h"

#include "runtime/objects/Boundary.h"
#include "runtime/objects/Tables.h"
#include "runtime/values/PosObject.h"

namespace bibrt {

namespace {

POSNumber* NewPOSNumber(double value) {
    return AtRow<POSNumber*>(nullptr, [&] { return MakeNumber(value); });
}

long IsPOSNumber(POSObject* object) {
    return IsOfType(object, gNumberType) ? 1 : 0;
}

POSString* NewPOSString(char const* text) {
    return AtRow<POSString*>(nullptr, [&] { return MakeString(text ? text : ""); });
}

long IsPOSString(POSObject* object) {
    return IsOfType(object, gStringType) ? 1 : 0;
}

unsigned long CountUnits(unsigned short const* text) noexcept {
    unsigned long length = 0;
    while (text && text[length] != 0) {
        ++length;
    }
    return length;
}

POSUnicodeString* NewPOSUnicodeString(unsigned short const* text) {
    return AtRow<POSUnicodeString*>(
        nullptr, [&] { return MakeUnicodeString(text, CountUnits(text)); });
}

long IsPOSUnicodeString(POSObject* object) {
    return IsOfType(object, gUnicodeStringType) ? 1 : 0;
}

POSBinData* NewPOSBinData(char const* typeName, unsigned char const* data, unsigned long size) {
    if (!data && size != 0) {
        return nullptr;
    }
    return AtRow<POSBinData*>(
        nullptr, [&] { return MakeBinData(typeName ? typeName : "", data, size); });
}

long IsPOSBinData(POSObject* object) {
    return IsOfType(object, gBinDataType) ? 1 : 0;
}

char const* GetTypeName(POSBinData* self) {
    return IsOfType(self, gBinDataType) ? self->TypeName() : nullptr;
}

unsigned char const* GetBinData(POSBinData* self) {
    return IsOfType(self, gBinDataType) ? self->Data() : nullptr;
}

unsigned long GetSize(POSBinData* self) {
    return IsOfType(self, gBinDataType) ? self->fSize : 0;
}

// The three tables have a row of the same name.
double Get(POSNumber* self) {
    return IsOfType(self, gNumberType) ? self->fValue : 0;
}

char const* Get(POSString* self) {
    return IsOfType(self, gStringType) ? self->Text() : nullptr;
}

unsigned short const* Get(POSUnicodeString* self) {
    return IsOfType(self, gUnicodeStringType) ? self->Units() : nullptr;
}

} // namespace

BIBRT_DEFINE_TABLE(
    NumberTable, "POSNumberInterface", _t_POSNumberInterface, POS_NUMBER_INTERFACE_ROWS, 3)

BIBRT_DEFINE_TABLE(
    StringValueTable, "POSStringInterface", _t_POSStringInterface, POS_STRING_INTERFACE_ROWS, 3)

BIBRT_DEFINE_TABLE(
    UnicodeStringTable,
    "POSUnicodeStringInterface",
    _t_POSUnicodeStringInterface,
    POS_UNICODE_STRING_INTERFACE_ROWS,
    3)

BIBRT_DEFINE_TABLE(
    BinDataTable, "POSBinDataInterface", _t_POSBinDataInterface, POS_BIN_DATA_INTERFACE_ROWS, 5)

} // namespace bibrt
