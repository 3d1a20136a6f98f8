// The object behind a CFStringRef. Private to the platform layer.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "platform/CFObject.h"
#include "platform/CFString.h"

namespace platform {

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

} // namespace platform
