// What is read from JSON is written so that it is read as the same again, and nothing hides in it.
#include "fuzz/Require.h"
#include "tools/joboptions/commands/Output.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/Utf8.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const text(reinterpret_cast<char const*>(data), size);
    joboptions::SettingsOfJson settings;
    try {
        settings = joboptions::ReadJsonDocument("settings", text, "input");
    } catch (joboptions::Failure const&) {
        return 0;
    }
    std::string const written =
        joboptions::JsonDocument("settings", settings.fValues, settings.fTail, "input");
    std::string lines = written;
    std::erase(lines, '\n');
    fuzz::Require(joboptions::VisibleText(lines) == lines, "hides something: " + written);
    auto const again = joboptions::ReadJsonDocument("settings", written, "input");
    std::string const rewritten =
        joboptions::JsonDocument("settings", again.fValues, again.fTail, "input");
    fuzz::Require(written == rewritten, "written: " + written + "\nand then: " + rewritten);
    return 0;
}
