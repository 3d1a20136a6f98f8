// The root of the objects behind the CoreFoundation references. Private to the platform layer.
#pragma once

#include <atomic>

#include "platform/CFBase.h"

namespace platform {

// A counted object, made with one reference for its maker.
class CFObject {
public:
    CFObject() noexcept = default;
    CFObject(CFObject const&) = delete;
    CFObject& operator=(CFObject const&) = delete;
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

// The types.
enum : CFTypeID { kStringType = 1, kDataType, kScalarType, kArrayType, kDictionaryType, kURLType };

// The reference on an object.
template <class Ref>
Ref AsRef(CFObject const* object) noexcept {
    return reinterpret_cast<Ref>(object);
}

// The object behind a reference of any type.
inline CFObject const* AsObject(CFTypeRef reference) noexcept {
    return static_cast<CFObject const*>(reference);
}

} // namespace platform
