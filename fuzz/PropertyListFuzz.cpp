// Any bytes as a property list in a file.
#include "platform/CFPropertyList.h"

#include <cstdint>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace {

// The bytes as the file service reads them.
CFDataRef ReadFile(std::string const& path) {
    CFStringRef const name =
        CFStringCreateWithCString(kCFAllocatorDefault, path.c_str(), kCFStringEncodingUTF8);
    CFURLRef const url =
        CFURLCreateWithFileSystemPath(kCFAllocatorDefault, name, kCFURLPOSIXPathStyle, 0);
    CFDataRef data = nullptr;
    CFURLCreateDataAndPropertiesFromResource(
        kCFAllocatorDefault, url, &data, nullptr, nullptr, nullptr);
    CFRelease(url);
    CFRelease(name);
    return data;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    int const file = memfd_create("list", MFD_CLOEXEC);
    bool const isWritten = write(file, bytes, size) == static_cast<ssize_t>(size);
    CFDataRef const data = isWritten ? ReadFile("/proc/self/fd/" + std::to_string(file)) : nullptr;
    close(file);
    if (data == nullptr) {
        return 0;
    }
    CFPropertyListRef const list = CFPropertyListCreateFromXMLData(
        kCFAllocatorDefault, data, kCFPropertyListImmutable, nullptr);
    if (list != nullptr) {
        CFRelease(list);
    }
    CFRelease(data);
    return 0;
}
