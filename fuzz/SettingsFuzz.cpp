// What the component writes of a text it must read again, and then it writes the same.
#include "fuzz/Require.h"
#include "host/Component.h"
#include "host/Error.h"
#include "host/Settings.h"

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
    auto const first = Read(component, std::string(reinterpret_cast<char const*>(data), size));
    if (!first) {
        return 0;
    }
    std::string const written = first->Text();
    auto const second = Read(component, written);
    fuzz::Require(second.has_value(), "not read again: " + written);
    std::string const again = second->Text();
    fuzz::Require(written == again, "written: " + written + "\nand then: " + again);
    return 0;
}
