#include "tools/joboptions/commands/Input.h"

#include "pdfsettings/Document.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/SafeSave.h"
#include "tools/joboptions/text/Findings.h"
#include "tools/joboptions/text/Utf8.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fmt/format.h>
#include <system_error>

namespace joboptions {

namespace {

// The limit of files, for an endless input too.
constexpr std::size_t kLargestInput = std::size_t{256} << 20;

std::string ReadStandardInput() {
    std::string bytes;
    char buffer[65536];
    std::size_t count = 0;
    while ((count = std::fread(buffer, 1, sizeof buffer, stdin)) > 0) {
        bytes.append(buffer, count);
        if (bytes.size() > kLargestInput) {
            Fail(Status::kBadInput, "-", "larger than 256 MiB");
        }
    }
    if (std::ferror(stdin) != 0) {
        Fail(Status::kBadInput, "-", std::generic_category().message(errno));
    }
    return bytes;
}

} // namespace

std::string ReadBytes(std::string const& file) {
    if (file == "-") {
        return ReadStandardInput();
    }
    try {
        return pdfsettings::ReadFile(file);
    } catch (pdfsettings::Error const& error) {
        Fail(Status::kBadInput, file, VisibleText(error.what()));
    }
}

pdfsettings::Settings ParseSettings(
    pdfsettings::Component const& component,
    std::string const& file,
    std::string const& text,
    std::string const& schema) {
    try {
        return pdfsettings::Settings::FromText(component, text, schema);
    } catch (pdfsettings::Error const& error) {
        // What is wrong with text at its place, else the component's own words.
        std::string const refusal = RefusalText(file, pdfsettings::Document(text));
        if (!refusal.empty()) {
            throw Failure(Status::kBadInput, refusal);
        }
        Fail(Status::kBadInput, file, VisibleText(error.what()));
    }
}

std::string InputName(std::string const& file) {
    if (file.empty()) {
        return "\"\"";
    }
    return file == "-" ? "standard input" : VisibleText(file);
}

void Fail(Status status, std::string const& file, std::string const& reason) {
    throw Failure(status, fmt::format("{}: {}", InputName(file), reason));
}

void RequireOneStandardInput(std::vector<std::string> const& files) {
    if (std::ranges::count(files, "-") > 1) {
        throw Failure(Status::kWrongCall, "standard input can be named only once");
    }
}

pdfsettings::Dictionary ReadSettings(std::string const& file) {
    pdfsettings::Component const component;
    return ParseSettings(component, file, ReadBytes(file)).Values();
}

} // namespace joboptions
