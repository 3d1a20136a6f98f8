#include "host/detail/ApplicationName.h"

#include "host/detail/CFRef.h"
#include "host/detail/Ref.h"
#include "platform/CFString.h"

namespace pdfsettings::detail {

namespace {

std::optional<std::string> Convert(char const* text, CFStringEncoding from, CFStringEncoding to) {
    CFRef<CFStringRef> const string(CFStringCreateWithCString(kCFAllocatorDefault, text, from));
    return string ? platform::BytesOf(string.get(), to) : std::nullopt;
}

} // namespace

std::optional<std::string> ToComponent(std::string const& application) {
    return Convert(WholeText(application), kCFStringEncodingUTF8, kCFStringEncodingMacRoman);
}

std::string FromComponent(std::string const& application) {
    return Convert(application.c_str(), kCFStringEncodingMacRoman, kCFStringEncodingUTF8)
        .value_or("");
}

} // namespace pdfsettings::detail
