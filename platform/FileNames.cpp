#include "platform/FileNames.h"

#include <cstring>
#include <iterator>

#include <utf8.h>

#include "platform/Utf8.h"

namespace platform {

namespace {

constexpr std::size_t kLongestName = 255; // in bytes

// The name in UTF-8; empty for one that cannot be one.
std::string EncodeName(UniChar const* begin, UniChar const* end) {
    std::string name;
    try {
        utf8::utf16to8(begin, end, std::back_inserter(name));
    } catch (utf8::exception const&) {
        return {};
    }
    bool const isUsable = name.size() <= kLongestName && name.find('\0') == std::string::npos &&
                          name.find('/') == std::string::npos;
    return isUsable ? name : std::string();
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
    std::string const child = EncodeName(name, name + nameLength);
    if (child.empty()) {
        return bdNamErr;
    }
    bool const endsInSlash = !parent.path.empty() && parent.path.back() == '/';
    *path = parent.path + (endsInSlash ? "" : "/") + child;
    return noErr;
}

} // namespace platform
