#include "platform/FileNames.h"

#include <cstring>

#include "platform/Utf8.h"

namespace platform {

namespace {

constexpr std::size_t kLongestName = 255; // in bytes

// Whether a file can have the name.
bool IsUsable(std::string const& name) noexcept {
    return !name.empty() && name.size() <= kLongestName && name.find('\0') == std::string::npos &&
           name.find('/') == std::string::npos;
}

} // namespace

bool DecodeName(char const* bytes, HFSUniStr255* name) noexcept {
    std::size_t const size = std::strlen(bytes);
    if (size > kLongestName) {
        return false;
    }
    auto const length = DecodeUtf8({bytes, size}, name->unicode);
    name->length = static_cast<UInt16>(length.value_or(0));
    return length.has_value();
}

OSErr ChildPath(
    FSRef const& parent, UniCharCount nameLength, UniChar const* name, std::string* path) {
    // More units are more bytes, whatever they are.
    if (nameLength == 0 || nameLength > kLongestName) {
        return bdNamErr;
    }
    auto const child = EncodeUtf8({name, nameLength});
    if (!child || !IsUsable(*child)) {
        return bdNamErr;
    }
    bool const endsInSlash = !parent.path.empty() && parent.path.back() == '/';
    *path = parent.path + (endsInSlash ? "" : "/") + *child;
    return noErr;
}

} // namespace platform
