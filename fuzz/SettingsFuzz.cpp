// What the component writes of a text, and reads again, it writes the same again, but for a number
// that becomes whole by its rounding: its text loses the point then. Infinities and a tail with a
// "/" behind no settings are written so that they are refused, and a key with a zero byte so that
// it is another one.
#include "fuzz/Require.h"
#include "host/detail/ComponentSettings.h"
#include "pdfsettings/Error.h"

#include <cstdint>
#include <new>
#include <optional>
#include <regex>
#include <string>

namespace {

// What the component writes of a text; nothing for one that it refuses.
std::optional<std::string> Written(std::string const& text) {
    pdfsettings::detail::Turn const turn;
    try {
        return pdfsettings::detail::ComponentSettings(turn, text).Text();
    } catch (pdfsettings::Error const&) {
        return std::nullopt;
    } catch (std::bad_alloc const&) {
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
    std::string const text(reinterpret_cast<char const*>(data), size);
    auto const written = Written(text);
    if (!written || text.find('\0') != std::string::npos) {
        return 0;
    }
    auto const again = Written(*written);
    if (!again) {
        return 0;
    }
    bool const isSame = written == again || WithoutPoints(*written) == WithoutPoints(*again);
    fuzz::Require(isSame, "written: " + *written + "\nand then: " + *again);
    return 0;
}
