#include "tools/joboptions/Input.h"

#include "pdfsettings/Document.h"
#include "pdfsettings/Error.h"
#include "tools/joboptions/Diagnostics.h"
#include "tools/joboptions/Failure.h"
#include "tools/joboptions/Utf8.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <system_error>
#include <unistd.h>

namespace joboptions {

namespace {

// Settings take kilobytes. The limit keeps an endless input from filling the memory.
constexpr std::size_t kLargestInput = std::size_t{256} << 20;

// A descriptor that is closed on every way out, unless it is standard input.
class Descriptor {
public:
    explicit Descriptor(std::string const& file)
        : fNumber(file == "-" ? STDIN_FILENO : open(file.c_str(), O_RDONLY | O_CLOEXEC)) {}
    ~Descriptor() {
        if (fNumber > STDIN_FILENO) {
            close(fNumber);
        }
    }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    bool IsOpen() const { return fNumber >= 0; }

    // Reads up to size bytes; how many, 0 at the end, negative with errno on failure.
    ssize_t Read(char* buffer, std::size_t size) const {
        ssize_t count = 0;
        do {
            count = read(fNumber, buffer, size);
        } while (count < 0 && errno == EINTR);
        return count;
    }

private:
    int fNumber;
};

[[noreturn]] void ThrowBadInput(std::string const& file, std::string const& reason) {
    throw Failure(Status::kBadInput, fmt::format("{}: {}", InputName(file), reason));
}

[[noreturn]] void ThrowSystemError(std::string const& file, int error) {
    ThrowBadInput(file, std::generic_category().message(error));
}

// What can be read once and is no file to be bound to.
bool IsStream(std::string const& file) {
    std::error_code error;
    auto const type = std::filesystem::status(file, error).type();
    return file == "-" || type == std::filesystem::file_type::fifo ||
           type == std::filesystem::file_type::character;
}

// What is wrong with text at its place, else the component's own words.
std::string
ReasonFor(std::string const& file, std::string const& text, pdfsettings::Error const& error) {
    std::string const refusal = RefusalText(file, pdfsettings::Document(text));
    return refusal.empty() ? fmt::format("{}: {}", InputName(file), error.what()) : refusal;
}

} // namespace

std::string ReadBytes(std::string const& file) {
    Descriptor const descriptor(file);
    if (!descriptor.IsOpen()) {
        ThrowSystemError(file, errno);
    }
    std::string bytes;
    char buffer[65536];
    ssize_t count = 0;
    while ((count = descriptor.Read(buffer, sizeof buffer)) > 0) {
        bytes.append(buffer, static_cast<std::size_t>(count));
        if (bytes.size() > kLargestInput) {
            ThrowBadInput(file, "larger than 256 MiB");
        }
    }
    if (count < 0) {
        ThrowSystemError(file, errno);
    }
    return bytes;
}

pdfsettings::Settings ParseSettings(
    pdfsettings::Component const& component,
    std::string const& file,
    std::string const& text,
    std::string const& schema) {
    try {
        return pdfsettings::Settings::FromText(component, text, schema);
    } catch (pdfsettings::Error const& error) {
        throw Failure(Status::kBadInput, ReasonFor(file, text, error));
    }
}

std::string InputName(std::string const& file) {
    if (file.empty()) {
        return "\"\"";
    }
    return file == "-" ? "standard input" : VisibleText(file);
}

void RequireOneStandardInput(std::vector<std::string> const& files) {
    if (std::ranges::count(files, "-") > 1) {
        throw Failure(Status::kWrongCall, "standard input can be named only once");
    }
}

pdfsettings::Settings OpenSettings(
    pdfsettings::Component const& component, std::string const& file, std::string const& schema) {
    if (IsStream(file)) {
        return ParseSettings(component, file, ReadBytes(file), schema);
    }
    try {
        return pdfsettings::Settings::FromFile(component, file, schema);
    } catch (pdfsettings::Error const& error) {
        throw Failure(Status::kBadInput, ReasonFor(file, ReadBytes(file), error));
    }
}

SettingsWithText OpenWithText(
    pdfsettings::Component const& component, std::string const& file, std::string const& schema) {
    if (IsStream(file)) {
        std::string text = ReadBytes(file);
        return {ParseSettings(component, file, text, schema), std::move(text)};
    }
    pdfsettings::Settings settings = OpenSettings(component, file, schema);
    return {std::move(settings), ReadBytes(file)};
}

pdfsettings::Dictionary ReadSettings(std::string const& file) {
    pdfsettings::Component const component;
    return OpenSettings(component, file).Values();
}

} // namespace joboptions
