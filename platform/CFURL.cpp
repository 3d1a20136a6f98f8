#include "platform/CFURL.h"

#include "platform/CFObject.h"
#include "platform/FileManager.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

// Preferences files have a few kilobytes.
constexpr SInt64 kLargestFile = SInt64{64} << 20;

using URLObject = platform::ValueObject<platform::kURLType, std::string>;
using DataObject = platform::ValueObject<platform::kDataType, std::vector<UInt8>>;

// The bytes of a path; empty if the string is not a usable path.
std::string PathIn(CFStringRef string) {
    std::string path = platform::BytesOf(string, kCFStringEncodingMacRoman).value_or("");
    return path.find('\0') == std::string::npos ? path : std::string();
}

// The data of a file, closed by the destructor.
class OpenFork {
public:
    OpenFork() = default;
    OpenFork(OpenFork const&) = delete;
    OpenFork& operator=(OpenFork const&) = delete;
    ~OpenFork() {
        if (fNumber >= 0) {
            FSCloseFork(fNumber);
        }
    }
    OSErr Open(std::string const& path) {
        FSRef const ref{path};
        return FSOpenFork(&ref, 0, nullptr, fsRdPerm, &fNumber);
    }
    OSErr ReadAll(std::vector<UInt8>* bytes) const {
        SInt64 size = 0;
        OSErr const error = FSGetForkSize(fNumber, &size);
        if (error != noErr || size > kLargestFile) {
            return error != noErr ? error : ioErr;
        }
        bytes->resize(static_cast<std::size_t>(size));
        return FSReadFork(fNumber, fsFromStart, 0, bytes->size(), bytes->data(), nullptr);
    }

private:
    FSIORefNum fNumber = -1;
};

// Throws std::bad_alloc.
OSErr ReadFile(std::string const& path, CFDataRef* data) {
    OpenFork fork;
    std::vector<UInt8> bytes;
    OSErr error = fork.Open(path);
    if (error == noErr) {
        error = fork.ReadAll(&bytes);
    }
    if (error == noErr) {
        *data = platform::AsRef<CFDataRef>(new DataObject(std::move(bytes)));
    }
    return error;
}

} // namespace

CFURLRef CFURLCreateWithFileSystemPath(
    CFAllocatorRef /*allocator*/,
    CFStringRef filePath,
    CFURLPathStyle pathStyle,
    Boolean /*isDirectory*/) noexcept {
    try {
        std::string path = PathIn(filePath);
        bool const isUsable = !path.empty() && pathStyle == kCFURLPOSIXPathStyle;
        return isUsable ? platform::AsRef<CFURLRef>(new URLObject(std::move(path))) : nullptr;
    } catch (std::exception const&) {
        return nullptr;
    }
}

Boolean CFURLCreateDataAndPropertiesFromResource(
    CFAllocatorRef /*allocator*/,
    CFURLRef url,
    CFDataRef* resourceData,
    void* properties,
    void* desiredProperties,
    SInt32* errorCode) noexcept {
    OSErr error = paramErr;
    if (properties == nullptr && desiredProperties == nullptr) {
        try {
            error = ReadFile(platform::ObjectOf<URLObject>(url).fValue, resourceData);
        } catch (std::exception const&) {
            error = ioErr;
        }
    }
    if (errorCode != nullptr) {
        *errorCode = error;
    }
    return error == noErr ? 1 : 0;
}

CFIndex CFDataGetLength(CFDataRef data) noexcept {
    return static_cast<CFIndex>(platform::ObjectOf<DataObject>(data).fValue.size());
}

UInt8 const* CFDataGetBytePtr(CFDataRef data) noexcept {
    return platform::ObjectOf<DataObject>(data).fValue.data();
}
