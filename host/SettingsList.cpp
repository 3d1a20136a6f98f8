#include "pdfsettings/SettingsList.h"

#include "document/MakeSequence.h"
#include "format/Tokens.h"
#include "host/detail/AdminPreferences.h"
#include "host/detail/FilePath.h"
#include "host/detail/PropertyList.h"
#include "host/detail/RunningComponent.h"
#include "host/detail/RuntimeValues.h"
#include "pdfsettings/Error.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <map>
#include <set>
#include <sys/stat.h>
#include <system_error>
#include <unordered_map>
#include <utf8.h>
#include <utility>
#include <vector>

namespace pdfsettings {

struct detail::ListedData {
    std::string fName;
    std::string fFileName;
    std::filesystem::path fPath;
    Origin fOrigin = Origin::kUser;
    bool fIsReadOnly = false;
    bool fIsHidden = false;
    std::chrono::sys_seconds fModified;
    std::vector<Visibility> fApplications;
    std::vector<std::string> fReasons;
    std::vector<std::filesystem::path> fShadowed;
};

namespace {

using detail::AdminPreferences;
using detail::FieldReader;
using detail::ListedData;
using detail::Reported;
using detail::Turn;

constexpr char16_t kByteOrderMark = 0xFEFF;

std::string ToUtf8(std::u16string_view units) {
    if (!units.empty() && units.front() == kByteOrderMark) {
        units.remove_prefix(1);
    }
    std::string text;
    try {
        utf8::utf16to8(units.begin(), units.end(), std::back_inserter(text));
    } catch (utf8::exception const&) {
        throw Error(Fault::kComponent, "a name of settings is not UTF-16");
    }
    return text;
}

// From 1904-01-01 to 1970-01-01: 66 years with 17 leap days.
constexpr std::int64_t kSecondsToUnixEpoch = (66LL * 365 + 17) * 24 * 60 * 60;

// The date in the format of the file service: seconds since 1904 in 16 high and 32 low bits.
// Earlier times have the highest values.
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

// The name of a file that has no display name.
std::string OwnName(std::string const& fileName) {
    bool const hasExtension =
        fileName.size() > format::kExtension.size() && fileName.ends_with(format::kExtension);
    return hasExtension ? fileName.substr(0, fileName.size() - format::kExtension.size())
                        : fileName;
}

// Whether the owner may write a file, and whether it is locked for all users.
struct Rights {
    bool fMayOwnerWrite = true;
    bool fIsLocked = false;
};

Rights RightsOf(std::filesystem::path const& path) {
    struct statx status {};
    if (statx(AT_FDCWD, path.c_str(), 0, STATX_MODE, &status) != 0) {
        return {};
    }
    return {(status.stx_mode & S_IWUSR) != 0, (status.stx_attributes & STATX_ATTR_IMMUTABLE) != 0};
}

std::vector<std::string> ReasonsFor(ListedData const& settings) {
    std::vector<std::string> reasons;
    if (!settings.fIsReadOnly) {
        return reasons;
    }
    Rights const rights = RightsOf(settings.fPath);
    bool const isAdmins = settings.fOrigin == Origin::kAdministrator;
    if (isAdmins) {
        reasons.emplace_back("it is in the administrator's folder");
    }
    // The display name may be equal to the file name. It is given as the reason if there is no
    // other.
    bool const hasOther = isAdmins || !rights.fMayOwnerWrite || rights.fIsLocked;
    if (settings.fName != OwnName(settings.fFileName) || !hasOther) {
        reasons.emplace_back("it is shown under a display name");
    }
    if (!rights.fMayOwnerWrite) {
        reasons.emplace_back("its owner may not write it");
    }
    if (rights.fIsLocked) {
        reasons.emplace_back("it is locked");
    }
    return reasons;
}

// The paths in a folder that may be listed. File names that are not UTF-8 never are.
std::vector<std::filesystem::path> SettingsIn(std::filesystem::path const& folder) {
    std::vector<std::filesystem::path> paths;
    std::error_code error;
    std::filesystem::directory_iterator file(folder, error);
    for (; !error && file != std::filesystem::directory_iterator(); file.increment(error)) {
        std::string const name = file->path().filename().string();
        std::size_t const dot = std::min(name.rfind('.'), name.size());
        if (name.substr(dot).starts_with(format::kExtension) &&
            utf8::is_valid(name.begin(), name.end())) {
            paths.push_back(file->path().lexically_normal());
        }
    }
    std::ranges::sort(paths);
    return paths;
}

} // namespace

// Makes a list from the component's records.
class detail::ListReader {
public:
    ListReader(Turn const& turn, ListOptions const& options)
        : fOptions(options),
          fName(*turn, "SettingsName"),
          fPath(*turn, "FullFilePath"),
          fReadOnly(*turn, "ReadOnly"),
          fModified(*turn, "ModDate"),
          fApplications(*turn, "ShowHide") {}

    void Read(POSDict* record) {
        auto data = std::make_shared<ListedData>();
        data->fName = ToUtf8(fName.Text16(record));
        data->fPath = ToUtf8(fPath.Text16(record));
        data->fFileName = data->fPath.filename().string();
        data->fIsReadOnly = fReadOnly.Number(record) != 0;
        data->fModified = TimeOf(fModified.Bytes(record));
        for (auto const& [application, shown] : fApplications.Numbers(record)) {
            std::string name = detail::FromComponent(application);
            data->fIsHidden = data->fIsHidden || (shown == 0 && name == fOptions.application);
            data->fApplications.push_back({std::move(name), shown != 0});
        }
        std::ranges::sort(data->fApplications, {}, &Visibility::application);
        data->fOrigin = OriginOf(data->fPath.parent_path());
        if (fOptions.withHidden || !data->fIsHidden || fOptions.application.empty()) {
            fListed.push_back(std::move(data));
        }
    }

    std::vector<ListedSettings> Finish() {
        std::ranges::sort(
            fListed, {}, [](auto const& data) -> auto const& { return data->fName; });
        if (fOptions.withDetails) {
            AddDetails();
        }
        std::vector<ListedSettings> list;
        for (auto& data : fListed) {
            list.push_back(ListedSettings(std::move(data)));
        }
        return list;
    }

private:
    // The files of one folder are consecutive, so the last folder is cached.
    Origin OriginOf(std::filesystem::path const& folder) {
        if (fLastFolder != folder) {
            std::error_code error;
            bool const isAdmins =
                std::filesystem::equivalent(folder, fPreferences.SettingsFolder(), error);
            fLastOrigin = isAdmins ? Origin::kAdministrator : Origin::kUser;
            fLastFolder = folder;
        }
        return fLastOrigin;
    }

    // Adds the reasons, and the files of both folders that have a listed name and are not listed.
    void AddDetails() {
        std::unordered_map<std::string, ListedData*> byName;
        std::set<std::filesystem::path> known;
        for (auto const& data : fListed) {
            data->fReasons = ReasonsFor(*data);
            byName.emplace(data->fName, data.get());
            known.insert(data->fPath.lexically_normal());
        }
        auto paths = SettingsIn(fPreferences.SettingsFolder());
        std::ranges::move(SettingsIn(UserFolder()), std::back_inserter(paths));
        auto const names = fOptions.application.empty()
                               ? std::map<std::string, std::string>()
                               : fPreferences.DisplayNames(fOptions.application);
        for (auto& path : paths) {
            std::string const own = OwnName(path.filename().string());
            auto const shown = names.find(own);
            auto const found = byName.find(shown == names.end() ? own : shown->second);
            if (found != byName.end() && known.insert(path).second) {
                found->second->fShadowed.push_back(std::move(path));
            }
        }
    }

    ListOptions const& fOptions;
    AdminPreferences const fPreferences = AdminPreferences::Read();
    FieldReader fName;
    FieldReader fPath;
    FieldReader fReadOnly;
    FieldReader fModified;
    FieldReader fApplications;
    std::vector<std::shared_ptr<ListedData>> fListed;
    std::optional<std::filesystem::path> fLastFolder;
    Origin fLastOrigin = Origin::kUser;
};

ListedSettings::ListedSettings(std::shared_ptr<detail::ListedData const> data) noexcept
    : fData(std::move(data)) {}

std::string const& ListedSettings::Name() const noexcept {
    return fData->fName;
}

std::string const& ListedSettings::FileName() const noexcept {
    return fData->fFileName;
}

std::filesystem::path const& ListedSettings::Path() const noexcept {
    return fData->fPath;
}

Origin ListedSettings::From() const noexcept {
    return fData->fOrigin;
}

bool ListedSettings::IsReadOnly() const noexcept {
    return fData->fIsReadOnly;
}

std::chrono::sys_seconds ListedSettings::Modified() const noexcept {
    return fData->fModified;
}

bool ListedSettings::IsHidden() const noexcept {
    return fData->fIsHidden;
}

std::span<Visibility const> ListedSettings::Applications() const noexcept {
    return fData->fApplications;
}

std::span<std::string const> ListedSettings::ReadOnlyReasons() const noexcept {
    return fData->fReasons;
}

std::span<std::filesystem::path const> ListedSettings::Shadowed() const noexcept {
    return fData->fShadowed;
}

Sequence<ListedSettings> List(ListOptions const& options) {
    Turn turn(detail::RunningComponent::Shared(), Turn::Use::kList);
    auto const application =
        options.application.empty() ? std::nullopt : detail::ToComponent(options.application);
    auto const read = turn->statics.GetListofPDFSettings;
    char const* const name = application ? application->c_str() : nullptr;
    auto const list = detail::Share(*turn, Reported("GetListofPDFSettings", read, name));
    turn.NoteList();
    detail::ListReader reader(turn, options);
    detail::ForEachDict(*turn, list.get(), [&](POSDict* record) { reader.Read(record); });
    return detail::MakeSequence::From(reader.Finish());
}

std::filesystem::path UserFolder() {
    Turn const turn;
    auto const find = turn->statics.GetDefaultPDFSettingsDirectory;
    detail::BufferRef const buffer(
        Reported("GetDefaultPDFSettingsDirectory", find), turn->buffers.Release);
    auto const* const units = static_cast<char16_t const*>(turn->buffers.GetBuffer(buffer.get()));
    std::size_t const size = turn->buffers.GetSize(buffer.get()) / sizeof(char16_t);
    std::u16string_view const text(units, size);
    return detail::FolderPath(ToUtf8(text.substr(0, text.find(u'\0'))));
}

std::filesystem::path AdministratorFolder() {
    return AdminPreferences::Read().SettingsFolder();
}

std::filesystem::path AdministratorPreferences() {
    return detail::AdminPreferencesFile();
}

std::filesystem::path UnusablePreferences() {
    auto const preferences = AdminPreferences::Read();
    return preferences.IsUnusable() ? preferences.File() : std::string();
}

} // namespace pdfsettings
