#include "source/PropertyLists.h"

#include <new>

#include "source/ExactString.h"

using UnicodeEncodingNS::Buffer16;

namespace PropertyLists {

namespace {

template <class T>
T AsType(void const* value, CFTypeID type) noexcept {
    bool const isOfType = value != nullptr && CFGetTypeID(value) == type;
    return isOfType ? static_cast<T>(value) : nullptr;
}

void const* Find(CFDictionaryRef dict, char const* key) {
    return CFDictionaryGetValue(dict, MakeString(key).Get());
}

Buffer16 UnitsOf(CFStringRef string) {
    CFIndex const length = CFStringGetLength(string);
    Buffer16 const units(static_cast<unsigned long>(length), nullptr);
    CFStringGetCharacters(string, CFRangeMake(0, length), units.GetBuffer());
    return units;
}

} // namespace

CFStringRef FindString(CFDictionaryRef dict, char const* key) {
    return AsString(Find(dict, key));
}

CFArrayRef FindArray(CFDictionaryRef dict, char const* key) {
    return AsType<CFArrayRef>(Find(dict, key), CFArrayGetTypeID());
}

CFDictionaryRef FindDictionary(CFDictionaryRef dict, char const* key) {
    return AsDictionary(Find(dict, key));
}

CFStringRef AsString(void const* value) noexcept {
    return AsType<CFStringRef>(value, CFStringGetTypeID());
}

CFDictionaryRef AsDictionary(void const* value) noexcept {
    return AsType<CFDictionaryRef>(value, CFDictionaryGetTypeID());
}

std::vector<CFStringRef> KeysOf(CFDictionaryRef dict) {
    std::vector<void const*> keys(static_cast<std::size_t>(CFDictionaryGetCount(dict)));
    CFDictionaryGetKeysAndValues(dict, keys.data(), nullptr);
    std::vector<CFStringRef> strings;
    for (void const* const key : keys) {
        if (AsString(key) != nullptr) {
            strings.push_back(AsString(key));
        }
    }
    return strings;
}

// Every byte is a character of Mac Roman, so that there is but one reason for none.
AutoCFRelease<CFStringRef> MakeString(char const* text) {
    AutoCFRelease<CFStringRef> string(
        CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingMacRoman),
        /*retain=*/false);
    if (string.Get() == nullptr) {
        throw std::bad_alloc();
    }
    return string;
}

BIB_T_NMT::CPOSUnicodeString StringOf(CFStringRef string) {
    Buffer16 const units = UnitsOf(string);
    return UnicodeEncodingNS::ExactString({units.GetBuffer(), units.GetNumElements()});
}

UnicodeEncodingNS::Unicode16 PathOf(CFStringRef string) {
    return UnicodeEncodingNS::CreateUnicode16(UnitsOf(string));
}

} // namespace PropertyLists
