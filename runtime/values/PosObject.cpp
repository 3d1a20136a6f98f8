#include "runtime/values/PosObject.h"

#include "api/POSObjectInterface.h"
#include "api/POSScalarInterfaces.h"
#include "runtime/objects/Container.h"
#include "runtime/objects/Errors.h"
#include "runtime/objects/Tables.h"

#include <cmath>
#include <cstring>

namespace bibrt {

namespace {

constexpr char const* kValueParent = "POSObjectVirtualInterface";

bool AreStringsEqual(POSString const& a, POSString const& b) noexcept {
    return a.fLength == b.fLength && std::memcmp(a.Text(), b.Text(), a.fLength) == 0;
}

bool AreUnitsEqual(POSUnicodeString const& a, POSUnicodeString const& b) noexcept {
    return a.fLength == b.fLength &&
           std::memcmp(a.Units(), b.Units(), a.fLength * sizeof(unsigned short)) == 0;
}

bool IsBinDataEqual(POSBinData const& a, POSBinData const& b) noexcept {
    return a.fSize == b.fSize && std::memcmp(a.Data(), b.Data(), a.fSize) == 0 &&
           std::strcmp(a.TypeName(), b.TypeName()) == 0;
}

bool AreNumbersEqual(double a, double b) noexcept {
    return a == b || (std::isnan(a) && std::isnan(b));
}

POSObject* CloneByMethod(POSObject& source) {
    auto const clone = FindTypedMethod<POSObjectCloneProc>(source, "Clone", "POSObjectCloneProc");
    return clone ? clone(&source) : nullptr;
}

bool IsEqualByMethod(POSObject& a, POSObject& b) {
    auto const isEqual =
        FindTypedMethod<POSObjectIsEqualProc>(a, "IsEqual", "POSObjectIsEqualProc");
    return isEqual && isEqual(&a, &b) != 0;
}

} // namespace

constexpr bool kIsScalar = true;

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

POSNumber* MakeNumber(double value) {
    return NewObject<POSNumber>(value);
}

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

POSObject* CloneLeaf(POSObject& source) {
    if (IsOfType(&source, gNumberType)) {
        return MakeNumber(static_cast<POSNumber&>(source).fValue);
    }
    if (IsOfType(&source, gStringType)) {
        auto const& string = static_cast<POSString&>(source);
        return MakeString({string.Text(), string.fLength});
    }
    if (IsOfType(&source, gUnicodeStringType)) {
        auto const& string = static_cast<POSUnicodeString&>(source);
        return MakeUnicodeString(string.Units(), string.fLength);
    }
    if (IsOfType(&source, gBinDataType)) {
        auto const& binData = static_cast<POSBinData&>(source);
        return MakeBinData(binData.TypeName(), binData.Data(), binData.fSize);
    }
    return CloneByMethod(source);
}

bool AreLeavesEqual(POSObject& a, POSObject& b) {
    if (a.fType != b.fType) {
        return false;
    }
    if (IsOfType(&a, gNumberType)) {
        return AreNumbersEqual(
            static_cast<POSNumber&>(a).fValue, static_cast<POSNumber&>(b).fValue);
    }
    if (IsOfType(&a, gStringType)) {
        return AreStringsEqual(static_cast<POSString&>(a), static_cast<POSString&>(b));
    }
    if (IsOfType(&a, gUnicodeStringType)) {
        return AreUnitsEqual(static_cast<POSUnicodeString&>(a), static_cast<POSUnicodeString&>(b));
    }
    if (IsOfType(&a, gBinDataType)) {
        return IsBinDataEqual(static_cast<POSBinData&>(a), static_cast<POSBinData&>(b));
    }
    return IsEqualByMethod(a, b);
}

} // namespace bibrt

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

BIBRT_DEFINE_TABLE(POSNumberInterface, POS_NUMBER_INTERFACE_ROWS, 3)

BIBRT_DEFINE_TABLE(POSStringInterface, POS_STRING_INTERFACE_ROWS, 3)

BIBRT_DEFINE_TABLE(POSUnicodeStringInterface, POS_UNICODE_STRING_INTERFACE_ROWS, 3)

BIBRT_DEFINE_TABLE(POSBinDataInterface, POS_BIN_DATA_INTERFACE_ROWS, 5)

namespace {

POSObject* Clone(POSObject* self) {
    return self ? AtRow<POSObject*>(nullptr, [&] { return CloneValue(*self); }) : nullptr;
}

long IsEqual(POSObject* self, POSObject* other) {
    if (!self || !other) {
        return 0;
    }
    return AtRow<long>(0, [&] { return AreValuesEqual(*self, *other) ? 1 : 0; });
}

} // namespace

BIBRT_DEFINE_TABLE(POSObjectVirtualInterface, POS_OBJECT_VIRTUAL_INTERFACE_ROWS, 2)

} // namespace bibrt
