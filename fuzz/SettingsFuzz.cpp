// What the component writes of a text, and reads again, it writes the same again. Infinities and a
// tail with a "/" behind no settings are written so that they are refused, and a key with a zero
// byte so that it is another one.
#include "fuzz/Require.h"
#include "pdfsettings/Component.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/Settings.h"

#include <cstdint>
#include <optional>
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
    fuzz::Require(written == again, "written: " + written + "\nand then: " + again);
    return 0;
}
