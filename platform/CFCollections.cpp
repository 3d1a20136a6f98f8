#include "platform/CFCollections.h"

#include <algorithm>
#include <utility>

#include "platform/CFCollectionObjects.h"

namespace platform {

namespace {

bool AreEqual(ObjectRef const& a, ObjectRef const& b) noexcept {
    return CFEqual(a.get(), b.get()) != 0;
}

} // namespace

bool ArrayObject::Equals(CFObject const& other) const noexcept {
    auto const& elements = static_cast<ArrayObject const&>(other).fElements;
    return std::equal(
        fElements.begin(), fElements.end(), elements.begin(), elements.end(), &AreEqual);
}

bool DictionaryObject::Equals(CFObject const& other) const noexcept {
    auto const& dict = static_cast<DictionaryObject const&>(other);
    if (fKeys.size() != dict.fKeys.size()) {
        return false;
    }
    for (std::size_t place = 0; place < fKeys.size(); ++place) {
        if (CFEqual(fValues[place].get(), dict.Find(*fKeys[place])) == 0) {
            return false;
        }
    }
    return true;
}

CFObject const* DictionaryObject::Find(CFObject const& key) const noexcept {
    auto const found = std::find_if(fKeys.begin(), fKeys.end(), [&key](ObjectRef const& candidate) {
        return CFEqual(candidate.get(), &key) != 0;
    });
    return found == fKeys.end() ? nullptr
                                : fValues[static_cast<std::size_t>(found - fKeys.begin())].get();
}

void DictionaryObject::Set(ObjectRef key, ObjectRef value) {
    auto const found = std::find_if(fKeys.begin(), fKeys.end(), [&key](ObjectRef const& candidate) {
        return AreEqual(candidate, key);
    });
    if (found != fKeys.end()) {
        fValues[static_cast<std::size_t>(found - fKeys.begin())] = std::move(value);
        return;
    }
    fKeys.reserve(fKeys.size() + 1);
    fValues.push_back(std::move(value));
    fKeys.push_back(std::move(key));
}

} // namespace platform

namespace {

platform::ArrayObject const& ArrayOf(CFArrayRef array) noexcept {
    return *static_cast<platform::ArrayObject const*>(platform::AsObject(array));
}

platform::DictionaryObject const& DictionaryOf(CFDictionaryRef dict) noexcept {
    return *static_cast<platform::DictionaryObject const*>(platform::AsObject(dict));
}

void CopyAll(std::vector<platform::ObjectRef> const& objects, void const** target) noexcept {
    if (target != nullptr) {
        std::transform(objects.begin(), objects.end(), target, [](auto const& object) {
            return object.get();
        });
    }
}

} // namespace

CFTypeID CFArrayGetTypeID() noexcept {
    return platform::kArrayType;
}

CFIndex CFArrayGetCount(CFArrayRef array) noexcept {
    return static_cast<CFIndex>(ArrayOf(array).fElements.size());
}

void const* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) noexcept {
    return ArrayOf(array).fElements[static_cast<std::size_t>(index)].get();
}

CFTypeID CFDictionaryGetTypeID() noexcept {
    return platform::kDictionaryType;
}

CFIndex CFDictionaryGetCount(CFDictionaryRef dict) noexcept {
    return static_cast<CFIndex>(DictionaryOf(dict).fKeys.size());
}

void const* CFDictionaryGetValue(CFDictionaryRef dict, void const* key) noexcept {
    return key == nullptr ? nullptr : DictionaryOf(dict).Find(*platform::AsObject(key));
}

void CFDictionaryGetKeysAndValues(
    CFDictionaryRef dict, void const** keys, void const** values) noexcept {
    CopyAll(DictionaryOf(dict).fKeys, keys);
    CopyAll(DictionaryOf(dict).fValues, values);
}
