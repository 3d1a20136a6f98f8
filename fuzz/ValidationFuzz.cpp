// Any settings validated by any schema: up to the first empty line stands the schema, behind it the
// settings. A change is refused for what it brings, and for nothing that was there; a repair keeps
// readable what was.
#include "fuzz/Require.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/Repair.h"
#include "pdfsettings/Settings.h"

#include <cstdint>
#include <new>
#include <string>

namespace {

void TryRepair(std::string const& text, pdfsettings::Schema const& schema) {
    pdfsettings::Document const document(text);
    auto const repaired = pdfsettings::Repair(document, schema);
    bool const isUnchanged = repaired.document.Text() == text;
    fuzz::Require(repaired.repairs.empty() == isUnchanged, "a repair that is not reported");
    fuzz::Require(
        document.WhyRefused() != pdfsettings::Refusal::kNone ||
            repaired.document.WhyRefused() == pdfsettings::Refusal::kNone,
        "a repair that makes a text unreadable");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const input(reinterpret_cast<char const*>(data), size);
    std::size_t const end = input.find("\n\n");
    if (end == std::string::npos) {
        return 0;
    }
    try {
        auto const schema = pdfsettings::Schema::Parse(input.substr(0, end));
        TryRepair(input.substr(end + 2), schema);
        auto settings = pdfsettings::Settings::Parse(input.substr(end + 2), schema);
        auto const before = settings.Validate();
        auto edit = settings.Change();
        fuzz::Require(edit.Commit().empty(), "nothing is refused");
        for (auto const& [key, value] : settings.Values()) {
            auto same = settings.Change();
            same.Set(key, value);
            fuzz::Require(same.Commit().empty(), "the same value is refused: " + key);
        }
        fuzz::Require(settings.Validate().size() == before.size(), "other findings");
    } catch (pdfsettings::Error const&) {
        return 0;
    } catch (std::bad_alloc const&) {
        return 0;
    }
    return 0;
}
