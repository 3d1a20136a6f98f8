// The objects behind arrays and dictionaries. Private to the platform layer.
#pragma once

#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/CFObject.h"
#include "platform/CFStringObject.h"

namespace platform {

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
