// Any bytes as a schema, in the object notation.
#include "pdfsettings/Component.h"
#include "pdfsettings/Schema.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static pdfsettings::Component const component;
    try {
        std::string text(reinterpret_cast<char const*>(data), size);
        auto const schema = pdfsettings::Schema::FromText(component, std::move(text));
        static_cast<void>(schema.Settings());
    } catch (pdfsettings::Error const&) {
        return 0;
    }
    return 0;
}
