// The system's calls on files, whose failures are errors with the system's reason.
#pragma once

#include <string_view>

namespace pdfsettings::detail {

// Throws Error with the system's text for an errno value.
[[noreturn]] void ThrowSystemError(int error);

// Throws what errno says when a call's result is negative.
void ThrowIfNegative(long result);

// Owns a file descriptor, or none when the number is negative.
class Descriptor {
public:
    explicit Descriptor(int number) : fNumber(number) {}
    ~Descriptor();
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    bool IsOpen() const noexcept { return fNumber >= 0; }
    int Number() const noexcept { return fNumber; }

private:
    int fNumber;
};

// Writes all bytes, whatever interrupts it.
void WriteAll(Descriptor const& file, std::string_view bytes);

} // namespace pdfsettings::detail
