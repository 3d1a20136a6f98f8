// Any settings judged by any schema: up to the first empty line stands the schema, behind it the
// settings. Settings that are valid can be set to themselves.
#include "fuzz/Require.h"
#include "pdfsettings/Component.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/Settings.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static pdfsettings::Component const component;
    std::string const input(reinterpret_cast<char const*>(data), size);
    std::size_t const end = input.find("\n\n");
    if (end == std::string::npos) {
        return 0;
    }
    try {
        auto settings =
            pdfsettings::Settings::FromText(component, input.substr(end + 2), input.substr(0, end));
        bool const isValid = settings.Validate().empty();
        bool const isSet = settings.Set(settings.Values()).empty();
        fuzz::Require(isValid == isSet, "what is judged and what is set differ");
    } catch (pdfsettings::Error const&) {
        return 0;
    }
    return 0;
}
