#include "platform/CFString.h"

#include "platform/CFObject.h"
#include "platform/Encodings.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utf8.h>
#include <utility>

namespace {

using platform::StringObject;

std::u16string_view TextOf(CFStringRef string) noexcept {
    return string == nullptr ? std::u16string_view()
                             : platform::ObjectOf<StringObject>(string).fValue;
}

bool IsLead(char16_t unit) noexcept {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool IsTrail(char16_t unit) noexcept {
    return unit >= 0xDC00 && unit < 0xE000;
}

// Whether every surrogate is part of a pair.
bool IsPaired(std::u16string_view text) noexcept {
    for (std::size_t i = 0; i < text.size(); ++i) {
        bool const isPair = IsLead(text[i]) && i + 1 < text.size() && IsTrail(text[i + 1]);
        if (!isPair && (IsLead(text[i]) || IsTrail(text[i]))) {
            return false;
        }
        i += isPair ? 1 : 0;
    }
    return true;
}

// Text with an unpaired surrogate is rejected as a whole: without that unit it would be other text,
// and as a path another file.
std::optional<std::u16string> FromUnits(UInt8 const* bytes, std::size_t numBytes) {
    std::u16string text(numBytes / sizeof(char16_t), u'\0');
    if (!text.empty()) {
        std::memcpy(text.data(), bytes, text.size() * sizeof(char16_t));
    }
    if (!IsPaired(text)) {
        return std::nullopt;
    }
    return text;
}

std::optional<std::u16string> FromUTF8(UInt8 const* bytes, std::size_t numBytes) {
    std::u16string text(numBytes, u'\0');
    auto const length =
        platform::DecodeUtf8({reinterpret_cast<char const*>(bytes), numBytes}, text.data());
    if (!length) {
        return std::nullopt;
    }
    text.resize(*length);
    return text;
}

std::u16string FromMacRoman(UInt8 const* bytes, std::size_t numBytes) {
    std::u16string text(numBytes, u'\0');
    std::transform(bytes, bytes + numBytes, text.begin(), platform::FromMacRoman);
    return text;
}

std::optional<std::u16string>
Decode(UInt8 const* bytes, std::size_t numBytes, CFStringEncoding encoding) {
    switch (encoding) {
    case kCFStringEncodingUnicode:
        return FromUnits(bytes, numBytes);
    case kCFStringEncodingUTF8:
        return FromUTF8(bytes, numBytes);
    case kCFStringEncodingMacRoman:
        return FromMacRoman(bytes, numBytes);
    default:
        return std::nullopt;
    }
}

// One encoded character of a string.
struct Encoded {
    std::size_t fUnits; // UTF-16 units; 0 if the encoding cannot represent it
    std::size_t fSize;  // in bytes
    UInt8 fBytes[4];
};

Encoded EncodeUTF8(std::u16string_view text) {
    if (text[0] < 0x80) {
        return {1, 1, {static_cast<UInt8>(text[0])}};
    }
    Encoded result = {1, 0, {}};
    char32_t codePoint = text[0];
    if (IsLead(text[0]) && text.size() > 1 && IsTrail(text[1])) {
        codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (text[1] - char32_t{0xDC00});
        result.fUnits = 2;
    } else if (IsLead(text[0]) || IsTrail(text[0])) {
        return {0, 0, {}};
    }
    UInt8 const* const end = utf8::unchecked::append(codePoint, result.fBytes);
    result.fSize = static_cast<std::size_t>(end - result.fBytes);
    return result;
}

Encoded EncodeMacRoman(std::u16string_view text) {
    auto const byte = platform::ToMacRoman(text[0]);
    return byte ? Encoded{1, 1, {*byte}} : Encoded{0, 0, {}};
}

// How much of a string has been encoded.
struct Progress {
    std::size_t fUnits = 0; // of the string
    std::size_t fSize = 0;  // in bytes
};

// Encodes text up to the first character that EncodeFirst rejects or that does not fit in buffer.
// Only measures if buffer is null.
template <Encoded (*EncodeFirst)(std::u16string_view)>
Progress EncodeEach(std::u16string_view text, UInt8* buffer, std::size_t size) noexcept {
    Progress progress;
    while (progress.fUnits < text.size()) {
        Encoded const next = EncodeFirst(text.substr(progress.fUnits));
        bool const fits = buffer == nullptr || progress.fSize + next.fSize <= size;
        if (next.fUnits == 0 || !fits) {
            break;
        }
        if (buffer != nullptr) {
            std::memcpy(buffer + progress.fSize, next.fBytes, next.fSize);
        }
        progress.fUnits += next.fUnits;
        progress.fSize += next.fSize;
    }
    return progress;
}

// As EncodeEach, but copies the UTF-16 units.
Progress CopyUnits(std::u16string_view text, UInt8* buffer, std::size_t size) noexcept {
    if (buffer != nullptr) {
        text = text.substr(0, size / sizeof(char16_t));
    }
    Progress const progress = {text.size(), text.size() * sizeof(char16_t)};
    if (buffer != nullptr && !text.empty()) {
        std::memcpy(buffer, text.data(), progress.fSize);
    }
    return progress;
}

Progress Encode(
    std::u16string_view text, CFStringEncoding encoding, UInt8* buffer, std::size_t size) noexcept {
    switch (encoding) {
    case kCFStringEncodingUnicode:
        return CopyUnits(text, buffer, size);
    case kCFStringEncodingUTF8:
        return EncodeEach<&EncodeUTF8>(text, buffer, size);
    case kCFStringEncodingMacRoman:
        return EncodeEach<&EncodeMacRoman>(text, buffer, size);
    default:
        return {};
    }
}

// The part of text in range, limited to the text.
std::u16string_view Slice(std::u16string_view text, CFRange range) noexcept {
    auto const start = std::clamp<CFIndex>(range.location, 0, static_cast<CFIndex>(text.size()));
    auto const length = std::max<CFIndex>(range.length, 0);
    text.remove_prefix(static_cast<std::size_t>(start));
    text.remove_suffix(text.size() - std::min(text.size(), static_cast<std::size_t>(length)));
    return text;
}

} // namespace

CFStringRef CFStringCreateWithBytes(
    CFAllocatorRef /*allocator*/,
    UInt8 const* bytes,
    CFIndex numBytes,
    CFStringEncoding encoding,
    Boolean /*isExternalRepresentation*/) noexcept {
    try {
        auto text = Decode(bytes, static_cast<std::size_t>(numBytes), encoding);
        return text ? platform::AsRef<CFStringRef>(new StringObject(std::move(*text))) : nullptr;
    } catch (std::exception const&) {
        return nullptr;
    }
}

CFIndex CFStringGetLength(CFStringRef string) noexcept {
    return static_cast<CFIndex>(TextOf(string).size());
}

CFIndex CFStringGetBytes(
    CFStringRef string,
    CFRange range,
    CFStringEncoding encoding,
    UInt8 /*lossByte*/,
    Boolean /*isExternalRepresentation*/,
    UInt8* buffer,
    CFIndex maxBufLen,
    CFIndex* usedBufLen) noexcept {
    Progress const progress =
        Encode(Slice(TextOf(string), range), encoding, buffer, static_cast<std::size_t>(maxBufLen));
    if (usedBufLen != nullptr) {
        *usedBufLen = static_cast<CFIndex>(progress.fSize);
    }
    return static_cast<CFIndex>(progress.fUnits);
}

CFStringRef CFStringCreateWithCString(
    CFAllocatorRef allocator, char const* cStr, CFStringEncoding encoding) noexcept {
    auto const* const bytes = reinterpret_cast<UInt8 const*>(cStr);
    auto const size = static_cast<CFIndex>(std::strlen(cStr));
    return CFStringCreateWithBytes(allocator, bytes, size, encoding, 0);
}

CFTypeID CFStringGetTypeID() noexcept {
    return platform::kStringType;
}

void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer) noexcept {
    std::u16string_view const units = Slice(TextOf(string), range);
    std::copy(units.begin(), units.end(), buffer);
}

Boolean CFStringGetCString(
    CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding) noexcept {
    if (bufferSize <= 0) {
        return 0;
    }
    CFIndex const length = CFStringGetLength(string);
    CFIndex size = 0;
    auto* const bytes = reinterpret_cast<UInt8*>(buffer);
    CFIndex const converted = CFStringGetBytes(
        string, CFRangeMake(0, length), encoding, 0, 0, bytes, bufferSize - 1, &size);
    if (converted != length) {
        return 0;
    }
    buffer[size] = '\0';
    return 1;
}

namespace platform {

std::optional<std::string> BytesOf(CFStringRef string, CFStringEncoding encoding) {
    CFRange const all = CFRangeMake(0, CFStringGetLength(string));
    CFIndex size = 0;
    if (CFStringGetBytes(string, all, encoding, 0, 0, nullptr, 0, &size) != all.length) {
        return std::nullopt;
    }
    std::string bytes(static_cast<std::size_t>(size), '\0');
    auto* const buffer = reinterpret_cast<UInt8*>(bytes.data());
    CFStringGetBytes(string, all, encoding, 0, 0, buffer, size, &size);
    return bytes;
}

StringObject* NewString(std::string_view utf8) {
    auto text = FromUTF8(reinterpret_cast<UInt8 const*>(utf8.data()), utf8.size());
    return text ? new StringObject(std::move(*text)) : nullptr;
}

} // namespace platform
