// The objects behind the CoreFoundation references. Private to the platform layer.
#pragma once

#include "platform/CFBase.h"
#include "platform/CFString.h"

#include <atomic>
#include <string>
#include <string_view>
#include <utility>

namespace platform {

// A reference-counted object. Its creator owns the first reference.
class CFObject {
public:
    virtual ~CFObject() = default;

    virtual CFTypeID TypeID() const noexcept = 0;

    // REQUIRES: other is of the same type.
    virtual bool Equals(CFObject const& other) const noexcept = 0;

    void Retain() const noexcept { fCount.fetch_add(1, std::memory_order_relaxed); }

    void Release() const noexcept {
        if (fCount.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete this;
        }
    }

private:
    mutable std::atomic<long> fCount{1};
};

// The type ids.
enum : CFTypeID { kStringType = 1, kDataType, kScalarType, kArrayType, kDictionaryType, kURLType };

// The reference to an object.
template <class Ref>
Ref AsRef(CFObject const* object) noexcept {
    return reinterpret_cast<Ref>(object);
}

// The object behind a reference of any type.
inline CFObject const* AsObject(CFTypeRef reference) noexcept {
    return static_cast<CFObject const*>(reference);
}

// The T behind a reference.
template <class T>
T const& ObjectOf(CFTypeRef reference) noexcept {
    return *static_cast<T const*>(AsObject(reference));
}

// An immutable object that holds one value.
template <CFTypeID kType, class Value>
class ValueObject final : public CFObject {
public:
    explicit ValueObject(Value value) noexcept : fValue(std::move(value)) {}

    CFTypeID TypeID() const noexcept override { return kType; }
    bool Equals(CFObject const& other) const noexcept override {
        return fValue == static_cast<ValueObject const&>(other).fValue;
    }

    Value const fValue;
};

using StringObject = ValueObject<kStringType, std::u16string>;

// A new string from UTF-8; null for invalid UTF-8. Throws std::bad_alloc.
StringObject* NewString(std::string_view utf8);

} // namespace platform
