// Any bytes as a schema, in the object notation.
#include "fuzz/Require.h"
#include "pdfsettings/Schema.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const text(reinterpret_cast<char const*>(data), size);
    bool isSound = true;
    try {
        pdfsettings::Schema::Parse(text);
    } catch (pdfsettings::Error const&) {
        isSound = false;
    }
    fuzz::Require(isSound == pdfsettings::Schema::Problems(text).empty(), "problems are missing");
    return 0;
}
