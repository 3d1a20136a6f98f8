// The system's calls on files, whose failures are errors with the system's reason.
#pragma once

#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace pdfsettings::detail {

// Throws Error with the system's text for an errno value.
[[noreturn]] void ThrowSystemError(int error);

// Throws what errno says when a call's result is negative.
void ThrowIfNegative(long result);

// Whether errno says that the system, or this file system, does not have a call or an option of it.
bool IsUnsupported(int error) noexcept;

// Owns a file descriptor, or none when the number is negative.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : fNumber(number) {}
    Descriptor(Descriptor&& other) noexcept;
    Descriptor& operator=(Descriptor&& other) noexcept;
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;
    ~Descriptor();

    bool IsOpen() const noexcept { return fNumber >= 0; }
    int Number() const noexcept { return fNumber; }

private:
    int fNumber = -1;
};

// The descriptor of that number. Throws what errno says when it is negative.
Descriptor Opened(int number);

// What path says of the folder that it leads into: all up to its last slash, or ".".
std::string FolderPart(std::string const& path);

// Opens the item of that name in folder itself, never what a link of that name leads to. name has
// no slash. Not open, with the reason in errno, when that fails.
Descriptor OpenIn(Descriptor const& folder, std::string const& name, int flags, mode_t mode = 0);

// What is known of an open file. Throws Error.
struct stat StatusOf(Descriptor const& file);

// The same of the item of that name in folder itself; false, with the reason in errno, on failure.
bool Examine(Descriptor const& folder, std::string const& name, struct stat* status);

// Whether both are one file.
bool IsSameFile(struct stat const& a, struct stat const& b) noexcept;

// Throws Error for what is no regular file.
void RequireRegular(struct stat const& status);

// All bytes of an open file from its beginning, and those of a stream from its place on. Throw
// Error, also for too many.
std::string ReadAll(Descriptor const& file);
std::string ReadStream(Descriptor const& stream);

// Writes all bytes, whatever interrupts it.
void WriteAll(Descriptor const& file, std::string_view bytes);

} // namespace pdfsettings::detail
