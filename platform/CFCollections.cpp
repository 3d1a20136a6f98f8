#include "platform/CFCollections.h"

#include <algorithm>
#include <utility>

#include "platform/CFCollectionObjects.h"

namespace platform {

namespace {

bool AreEqual(ObjectRef const& a, ObjectRef const& b) noexcept {
    return CFEqual(a.get(), b.get()) != 0;
}

std::u16string_view TextOf(CFObject const& string) noexcept {
    return static_cast<StringObject const&>(string).Text();
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
    if (key.TypeID() != kStringType) {
        return nullptr;
    }
    auto const found = fPlaces.find(TextOf(key));
    return found == fPlaces.end() ? nullptr : fValues[found->second].get();
}

void DictionaryObject::Set(ObjectRef key, ObjectRef value) {
    auto const [place, isNew] = fPlaces.emplace(TextOf(*key), fKeys.size());
    if (!isNew) {
        fValues[place->second] = std::move(value);
        return;
    }
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
    return static_cast<CFIndex>(DictionaryOf(dict).Keys().size());
}

void const* CFDictionaryGetValue(CFDictionaryRef dict, void const* key) noexcept {
    return key == nullptr ? nullptr : DictionaryOf(dict).Find(*platform::AsObject(key));
}

void CFDictionaryGetKeysAndValues(
    CFDictionaryRef dict, void const** keys, void const** values) noexcept {
    CopyAll(DictionaryOf(dict).Keys(), keys);
    CopyAll(DictionaryOf(dict).Values(), values);
}
