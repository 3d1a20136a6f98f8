// What the component writes of a text, and reads again, it writes the same again, but for a number
// that becomes whole by its rounding: its text loses the point then. Infinities and a tail with a
// "/" behind no settings are written so that they are refused, and a key with a zero byte so that
// it is another one.
#include "fuzz/Require.h"
#include "pdfsettings/Component.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/Settings.h"

#include <cstdint>
#include <optional>
#include <regex>
#include <string>

namespace {

using pdfsettings::Settings;

std::optional<Settings> Read(pdfsettings::Component const& component, std::string const& text) {
    try {
        return Settings::FromText(component, text);
    } catch (pdfsettings::Error const&) {
        return std::nullopt;
    }
}

// A text in which numbers that are whole now stand without a point.
std::string WithoutPoints(std::string const& text) {
    static std::regex const kPoint("\\.00000(?=\r)");
    static std::regex const kMinus(" -0(?=\r)");
    return std::regex_replace(std::regex_replace(text, kPoint, ""), kMinus, " 0");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static pdfsettings::Component const component;
    std::string const text(reinterpret_cast<char const*>(data), size);
    auto const first = Read(component, text);
    if (!first || text.find('\0') != std::string::npos) {
        return 0;
    }
    std::string const written = first->Text();
    auto const second = Read(component, written);
    if (!second) {
        return 0;
    }
    std::string const again = second->Text();
    bool const isSame = written == again || WithoutPoints(written) == WithoutPoints(again);
    fuzz::Require(isSame, "written: " + written + "\nand then: " + again);
    return 0;
}
