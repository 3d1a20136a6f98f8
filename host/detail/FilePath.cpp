#include "host/detail/FilePath.h"

#include "host/save/SystemCalls.h"
#include "pdfsettings/Error.h"
#include "platform/CFString.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utf8.h>

namespace pdfsettings::detail {

namespace {

std::u16string ToUtf16(std::string const& path) {
    std::u16string units;
    try {
        utf8::utf8to16(path.begin(), path.end(), std::back_inserter(units));
    } catch (utf8::exception const&) {
        throw Error("the path is no UTF-8");
    }
    return units;
}

std::optional<std::string> Convert(char const* text, CFStringEncoding from, CFStringEncoding to) {
    CFRef<CFStringRef> const string(CFStringCreateWithCString(kCFAllocatorDefault, text, from));
    return string ? platform::BytesOf(string.get(), to) : std::nullopt;
}

} // namespace

BufferRef MakePath(Bindings const& tables, std::string const& path) {
    std::u16string const units = ToUtf16(WholeText(path));
    std::size_t const size = units.size() * sizeof(char16_t);
    return MakeBuffer(tables, {reinterpret_cast<char const*>(units.data()), size});
}

std::string WhyUnwritable(std::string const& path) {
    try {
        struct stat status {};
        bool const isThere = stat(path.c_str(), &status) == 0;
        if (!isThere && (path.empty() || errno != ENOENT)) {
            ThrowSystemError(errno);
        }
        if (isThere) {
            RequireRegular(status);
        }
        if (isThere && (status.st_mode & S_IWUSR) == 0) {
            return "read-only";
        }
        ThrowIfNegative(faccessat(AT_FDCWD, FolderPart(path).c_str(), W_OK, AT_EACCESS));
        return "it cannot be written";
    } catch (Error const& error) {
        return error.what();
    }
}

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

std::optional<std::string> ToComponent(std::string const& application) {
    return Convert(WholeText(application), kCFStringEncodingUTF8, kCFStringEncodingMacRoman);
}

std::string FromComponent(std::string const& application) {
    return Convert(application.c_str(), kCFStringEncodingMacRoman, kCFStringEncodingUTF8)
        .value_or("");
}

} // namespace pdfsettings::detail
