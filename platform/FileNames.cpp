#include "platform/FileNames.h"

#include "platform/Encodings.h"

#include <cstring>

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

OSErr EncodeName(UniCharCount nameLength, UniChar const* name, std::string* bytes) {
    // More units are more bytes, whatever they are.
    if (nameLength == 0 || nameLength > kLongestName) {
        return bdNamErr;
    }
    auto encoded = EncodeUtf8({name, nameLength});
    if (!encoded || !IsUsable(*encoded)) {
        return bdNamErr;
    }
    *bytes = std::move(*encoded);
    return noErr;
}

std::string ChildPath(FSRef const& parent, std::string const& name) {
    bool const endsInSlash = !parent.path.empty() && parent.path.back() == '/';
    return parent.path + (endsInSlash ? "" : "/") + name;
}

} // namespace platform
