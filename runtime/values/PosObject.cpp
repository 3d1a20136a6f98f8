#include "runtime/values/PosObject.h"

#include "api/POSObjectInterface.h"
#include "api/POSScalarInterfaces.h"
#include "runtime/objects/Container.h"
#include "runtime/objects/Errors.h"
#include "runtime/objects/Tables.h"

#include <cstring>

POSNumber::POSNumber(double value) noexcept : POSObject(bibrt::gNumberType), fValue(value) {}

POSString::POSString(std::string_view text) noexcept
    : POSObject(bibrt::gStringType),
      fLength(text.size()) {
    char* const copy = reinterpret_cast<char*>(this + 1);
    text.copy(copy, text.size());
    copy[text.size()] = '\0';
}

POSUnicodeString::POSUnicodeString(unsigned short const* units, unsigned long length) noexcept
    : POSObject(bibrt::gUnicodeStringType),
      fLength(length) {
    auto* const copy = reinterpret_cast<unsigned short*>(this + 1);
    if (length != 0) {
        std::memcpy(copy, units, length * sizeof(unsigned short));
    }
    copy[length] = 0;
}

POSBinData::POSBinData(
    std::string_view typeName, unsigned char const* data, unsigned long size) noexcept
    : POSObject(bibrt::gBinDataType),
      fSize(size) {
    auto* const copy = reinterpret_cast<unsigned char*>(this + 1);
    if (size != 0) {
        std::memcpy(copy, data, size);
    }
    auto* const name = reinterpret_cast<char*>(copy + size);
    typeName.copy(name, typeName.size());
    name[typeName.size()] = '\0';
}

namespace bibrt {

namespace {

constexpr char const* kValueParent = "POSObjectVirtualInterface";

constexpr bool kIsScalar = true;

POSNumber* NewPOSNumber(double value) {
    return AtRow<POSNumber*>(nullptr, [&] { return NewObject<POSNumber>(value); });
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

// The tables of numbers and of both kinds of strings each have a row of this name.
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

constinit ContainerType gNumberType = {
    "POSNumber", "POSNumberValue", kValueParent, &DestroyAs<POSNumber>, kIsScalar};
constinit ContainerType gStringType = {
    "POSString", "POSStringValue", kValueParent, &DestroyAs<POSString>, kIsScalar};
constinit ContainerType gUnicodeStringType = {
    "POSUnicodeString",
    "POSUnicodeStringValue",
    kValueParent,
    &DestroyAs<POSUnicodeString>,
    kIsScalar};
constinit ContainerType gBinDataType = {
    "POSBinData", "POSBinDataValue", kValueParent, &DestroyAs<POSBinData>, kIsScalar};

POSString* MakeString(std::string_view text) {
    return NewObjectWith<POSString>(text.size() + 1, text);
}

POSUnicodeString* MakeUnicodeString(unsigned short const* units, unsigned long length) {
    return NewObjectWith<POSUnicodeString>((length + 1) * sizeof(unsigned short), units, length);
}

POSBinData* MakeBinData(std::string_view typeName, unsigned char const* data, unsigned long size) {
    if (size > kMaxExtra) {
        throw std::bad_alloc();
    }
    return NewObjectWith<POSBinData>(size + typeName.size() + 1, typeName, data, size);
}

BIBRT_DEFINE_TABLE(POSNumberInterface, POS_NUMBER_INTERFACE_ROWS, 3)

BIBRT_DEFINE_TABLE(POSStringInterface, POS_STRING_INTERFACE_ROWS, 3)

BIBRT_DEFINE_TABLE(POSUnicodeStringInterface, POS_UNICODE_STRING_INTERFACE_ROWS, 3)

BIBRT_DEFINE_TABLE(POSBinDataInterface, POS_BIN_DATA_INTERFACE_ROWS, 5)

} // namespace bibrt
