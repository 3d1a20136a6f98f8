// The kinds of values, and making scalars.
//
// A scalar is immutable and is in one block with its text or bytes. Values are not thread safe,
// except for their reference counts.
#pragma once

#include "api/POSObjectInterface.h"
#include "api/POSScalarInterfaces.h"
#include "runtime/objects/Container.h"

#include <string_view>

struct POSObject : BIBContainer {
    using BIBContainer::BIBContainer;
};

struct POSNumber : POSObject {
    explicit POSNumber(double value) noexcept;

    double fValue;
};

// The text and its terminating zero byte follow the structure.
struct POSString : POSObject {
    explicit POSString(std::string_view text) noexcept;

    char const* Text() const noexcept { return reinterpret_cast<char const*>(this + 1); }
    std::string_view View() const noexcept { return {Text(), fLength}; }

    unsigned long fLength;
};

// The units and a terminating zero unit follow the structure.
struct POSUnicodeString : POSObject {
    POSUnicodeString(unsigned short const* units, unsigned long length) noexcept;

    unsigned short const* Units() const noexcept {
        return reinterpret_cast<unsigned short const*>(this + 1);
    }

    unsigned long fLength;
};

// The bytes follow the structure, then the name of the type with its terminating zero byte.
struct POSBinData : POSObject {
    POSBinData(std::string_view typeName, unsigned char const* data, unsigned long size) noexcept;

    unsigned char const* Data() const noexcept {
        return reinterpret_cast<unsigned char const*>(this + 1);
    }
    char const* TypeName() const noexcept { return reinterpret_cast<char const*>(Data() + fSize); }

    unsigned long fSize;
};

namespace bibrt {

extern ContainerType gNumberType;
extern ContainerType gStringType;
extern ContainerType gUnicodeStringType;
extern ContainerType gBinDataType;
extern ContainerType gArrayType;
extern ContainerType gDictType;
extern ContainerType gDictIteratorType;

inline bool IsOfType(BIBContainer const* container, ContainerType const& type) noexcept {
    return container && container->fType == &type;
}

inline bool IsCollection(BIBContainer const* container) noexcept {
    return IsOfType(container, gArrayType) || IsOfType(container, gDictType);
}

// New scalars, unowned. Throw std::bad_alloc.
POSString* MakeString(std::string_view text);
POSUnicodeString* MakeUnicodeString(unsigned short const* units, unsigned long length);
POSBinData* MakeBinData(std::string_view typeName, unsigned char const* data, unsigned long size);

} // namespace bibrt
