#include "host/detail/FilePath.h"

#include "format/Tokens.h"
#include "platform/CFString.h"

#include <filesystem>
#include <system_error>

namespace pdfsettings::detail {

namespace {

std::optional<std::string> Convert(char const* text, CFStringEncoding from, CFStringEncoding to) {
    CFRef<CFStringRef> const string(CFStringCreateWithCString(kCFAllocatorDefault, text, from));
    return string ? platform::BytesOf(string.get(), to) : std::nullopt;
}

} // namespace

std::string FolderPath(std::string const& folder) {
    std::error_code error;
    std::string path = folder.empty() ? folder : std::filesystem::absolute(folder, error).string();
    if (error) {
        path = folder;
    }
    while (path.size() > 1 && path.ends_with('/')) {
        path.pop_back();
    }
    return path;
}

bool IsSettingsFileName(std::string_view name) noexcept {
    std::size_t const dot = name.rfind('.');
    return dot != 0 && dot != std::string_view::npos &&
           name.substr(dot).starts_with(format::kExtension);
}

std::optional<std::string> ToComponent(std::string const& application) {
    return Convert(application.c_str(), kCFStringEncodingUTF8, kCFStringEncodingMacRoman);
}

std::string FromComponent(std::string const& application) {
    return Convert(application.c_str(), kCFStringEncodingMacRoman, kCFStringEncodingUTF8)
        .value_or("");
}

} // namespace pdfsettings::detail
