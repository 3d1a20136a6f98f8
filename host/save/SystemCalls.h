// System calls on files. Their failures are errors with the system's reason.
#pragma once

#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace pdfsettings::detail {

// Throws Error with the system's message for an errno value.
[[noreturn]] void ThrowSystemError(int error);

// Throws Error for errno if the result of a call is negative.
void ThrowIfNegative(long result);

// Whether an errno value means that the system or file system does not support a call or an option.
bool IsUnsupported(int error) noexcept;

// Owns a file descriptor; none if the number is negative.
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

// Owns a new descriptor. Throws Error for errno if number is negative.
Descriptor Opened(int number);

// The folder part of path: up to its last slash, or ".".
std::string FolderPart(std::string const& path);

// Opens an item in folder by its name, which has no slash. Does not follow a link of that name. On
// failure the result is not open, and errno has the reason.
Descriptor OpenIn(Descriptor const& folder, std::string const& name, int flags, mode_t mode = 0);

// The status of an open file. Throws Error.
struct stat StatusOf(Descriptor const& file);

// The status of an item in folder; does not follow a link. On failure returns false, and errno has
// the reason.
bool Examine(Descriptor const& folder, std::string const& name, struct stat* status);

// Whether both are the same file.
bool IsSameFile(struct stat const& a, struct stat const& b) noexcept;

// Throws Error for a file that is not regular.
void RequireRegular(struct stat const& status);

// All bytes of a file from its beginning, and those of a stream from its current position. Throw
// Error, also for too many bytes.
std::string ReadAll(Descriptor const& file);
std::string ReadStream(Descriptor const& stream);

// Writes all bytes. Continues after partial writes and interruptions. Throws Error.
void WriteAll(Descriptor const& file, std::string_view bytes);

} // namespace pdfsettings::detail
