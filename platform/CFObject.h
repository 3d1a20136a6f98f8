// The objects behind the CoreFoundation references. Private to the platform layer.
#pragma once

#include "platform/CFBase.h"
#include "platform/CFString.h"

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

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

class StringObject : public CFObject {
public:
    explicit StringObject(std::u16string text) noexcept : fText(std::move(text)) {}

    CFTypeID TypeID() const noexcept override { return kStringType; }
    bool Equals(CFObject const& other) const noexcept override {
        return fText == static_cast<StringObject const&>(other).fText;
    }

    std::u16string_view Text() const noexcept { return fText; }

private:
    std::u16string fText;
};

// A new string of UTF-8; null for bytes that are none. Throws std::bad_alloc.
StringObject* NewString(std::string_view utf8);

struct ReleaseObject {
    void operator()(CFObject const* object) const noexcept { object->Release(); }
};

// A reference on an object.
using ObjectRef = std::unique_ptr<CFObject const, ReleaseObject>;

class ArrayObject : public CFObject {
public:
    CFTypeID TypeID() const noexcept override { return kArrayType; }
    bool Equals(CFObject const& other) const noexcept override;

    std::vector<ObjectRef> fElements;
};

class DictionaryObject : public CFObject {
public:
    CFTypeID TypeID() const noexcept override { return kDictionaryType; }
    bool Equals(CFObject const& other) const noexcept override;

    // The value under an equal key; null when there is none. Keys are strings.
    CFObject const* Find(CFObject const& key) const noexcept;

    // Adds an entry; a key that is there keeps its place and gets the new value. Throws
    // std::bad_alloc. REQUIRES: key is a string.
    void Set(ObjectRef key, ObjectRef value);

    std::vector<ObjectRef> const& Keys() const noexcept { return fKeys; }
    std::vector<ObjectRef> const& Values() const noexcept { return fValues; }

private:
    std::vector<ObjectRef> fKeys;
    std::vector<ObjectRef> fValues;
    // The place of each key, whose text it borrows.
    std::unordered_map<std::u16string_view, std::size_t> fPlaces;
};

} // namespace platform
