#include "platform/CFBase.h"

#include "platform/CFObject.h"

CFTypeID CFGetTypeID(CFTypeRef object) noexcept {
    return platform::AsObject(object)->TypeID();
}

Boolean CFEqual(CFTypeRef a, CFTypeRef b) noexcept {
    if (a == nullptr || b == nullptr || CFGetTypeID(a) != CFGetTypeID(b)) {
        return 0;
    }
    return platform::AsObject(a)->Equals(*platform::AsObject(b)) ? 1 : 0;
}

CFTypeRef CFRetain(CFTypeRef object) noexcept {
    platform::AsObject(object)->Retain();
    return object;
}

void CFRelease(CFTypeRef object) noexcept {
    platform::AsObject(object)->Release();
}
