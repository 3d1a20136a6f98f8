#include "pdfsettings/SettingsList.h"

#include "host/detail/FilePath.h"
#include "host/detail/RunningComponent.h"
#include "host/detail/RuntimeValues.h"
#include "pdfsettings/Component.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/Value.h"

#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utf8.h>

namespace pdfsettings {

namespace {

using detail::Bindings;
using detail::FieldOf;
using detail::Reported;

constexpr char16_t kMark = 0xFEFF;

std::string ToUtf8(std::u16string_view units) {
    if (!units.empty() && units.front() == kMark) {
        units.remove_prefix(1);
    }
    std::string text;
    try {
        utf8::utf16to8(units.begin(), units.end(), std::back_inserter(text));
    } catch (utf8::exception const&) {
        throw Error("a name of settings is no UTF-16");
    }
    return text;
}

// From 1904-01-01 to 1970-01-01: 66 years with 17 leap days.
constexpr std::int64_t kSecondsToUnixEpoch = (66LL * 365 + 17) * 24 * 60 * 60;

// The date as the file service stores it: 16 high and 32 low bits of seconds since 1904, where
// times before lie at the top.
std::chrono::sys_seconds TimeOf(std::string_view date) {
    std::uint16_t high = 0;
    std::uint32_t low = 0;
    if (date.size() < sizeof high + sizeof low) {
        return {};
    }
    std::memcpy(&high, date.data(), sizeof high);
    std::memcpy(&low, date.data() + sizeof high, sizeof low);
    std::int64_t const before1904 = (high & 0x8000) != 0 ? std::int64_t{1} << 48 : 0;
    std::int64_t const seconds = (std::int64_t{high} << 32) + low - before1904;
    return std::chrono::sys_seconds(std::chrono::seconds(seconds - kSecondsToUnixEpoch));
}

std::map<std::string, bool> ApplicationsOf(Dictionary const& entry) {
    std::map<std::string, bool> applications;
    for (std::size_t place = 0; place < entry.Size(); ++place) {
        if (auto const* const number = entry.ValueAt(place).If<double>()) {
            applications[detail::FromComponent(entry.KeyAt(place))] = *number != 0;
        }
    }
    return applications;
}

ListedSettings ReadRecord(Dictionary const& record) {
    return {
        ToUtf8(FieldOf<Text16>(record, "SettingsName")),
        ToUtf8(FieldOf<Text16>(record, "FullFilePath")),
        FieldOf<double>(record, "ReadOnly") != 0,
        TimeOf(FieldOf<Binary>(record, "ModDate").bytes),
        ApplicationsOf(FieldOf<Dictionary>(record, "ShowHide"))};
}

} // namespace

bool ListedSettings::IsHiddenFrom(std::string const& application) const {
    auto const found = isShownIn.find(application);
    return found != isShownIn.end() && !found->second;
}

std::vector<ListedSettings>
SettingsList::Read(Component const& component, std::optional<std::string> const& application) {
    detail::Turn const turn(*component.fRunning);
    auto const appName = application ? detail::ToComponent(*application) : std::nullopt;
    auto const read = turn->statics.GetListofPDFSettings;
    char const* const name = appName ? appName->c_str() : nullptr;
    auto const list = detail::Share(*turn, Reported("GetListofPDFSettings", read, name));
    std::vector<ListedSettings> settings;
    detail::ReadRecords(*turn, list.get(), [&](Dictionary const& record) {
        settings.push_back(ReadRecord(record));
    });
    return settings;
}

std::string SettingsList::UserFolder(Component const& component) {
    detail::Turn const turn(*component.fRunning);
    auto const find = turn->statics.GetDefaultPDFSettingsDirectory;
    detail::BufferRef const buffer(
        Reported("GetDefaultPDFSettingsDirectory", find), turn->buffers.Release);
    auto const* const units = static_cast<char16_t const*>(turn->buffers.GetBuffer(buffer.get()));
    std::size_t const size = turn->buffers.GetSize(buffer.get()) / sizeof(char16_t);
    std::u16string_view const text(units, size);
    return detail::FolderPath(ToUtf8(text.substr(0, text.find(u'\0'))));
}

} // namespace pdfsettings
