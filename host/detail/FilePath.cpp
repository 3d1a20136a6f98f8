#include "host/detail/FilePath.h"

#include "host/detail/CFRef.h"
#include "host/detail/Ref.h"
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

std::string FolderOf(std::string const& path) {
    std::size_t const slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

std::string SystemMessage(int error) {
    return std::generic_category().message(error);
}

// What is at path that is no file; empty for a file and for nothing.
std::string OtherKind(std::string const& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode)) {
        return {};
    }
    return S_ISDIR(status.st_mode) ? SystemMessage(EISDIR) : "not a regular file";
}

bool IsReadOnly(std::string const& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && (status.st_mode & S_IWUSR) == 0;
}

} // namespace

BufferRef MakePath(Bindings const& tables, std::string const& path) {
    std::u16string const units = ToUtf16(WholeText(path));
    std::size_t const size = units.size() * sizeof(char16_t);
    return MakeBuffer(tables, {reinterpret_cast<char const*>(units.data()), size});
}

std::string WhyUnwritable(std::string const& path) {
    std::string kind = OtherKind(path);
    if (!kind.empty()) {
        return kind;
    }
    if (IsReadOnly(path)) {
        return "read-only";
    }
    struct stat status {};
    if (path.empty()) {
        return SystemMessage(ENOENT);
    }
    bool const isRefusedName = stat(path.c_str(), &status) != 0 && errno != ENOENT;
    if (isRefusedName || faccessat(AT_FDCWD, FolderOf(path).c_str(), W_OK, AT_EACCESS) != 0) {
        return SystemMessage(errno);
    }
    return "it cannot be written";
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
