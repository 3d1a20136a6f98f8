#include "platform/CFBase.h"

#include "platform/CFObject.h"

CFTypeRef CFRetain(CFTypeRef object) noexcept {
    platform::AsObject(object)->Retain();
    return object;
}

void CFRelease(CFTypeRef object) noexcept {
    platform::AsObject(object)->Release();
}
