#include "source/FileMgmt.h"

#include "bib/BIBMemory.h"
#include "bib/POSScalars.h"
#include "format/Tokens.h"
#include "platform/Encodings.h"
#include "source/EncodingConverter.h"
#include "source/FileMgmtUtil.h"
#include "source/PDFSettingsError.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>

using BIB_T_NMT::CBIBStringAtom;
using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSBinData;
using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSNumber;
using BIB_T_NMT::CPOSObject;
using BIB_T_NMT::CPOSUnicodeString;
using UnicodeEncodingNS::CreateCPOSUnicodeString;
using UnicodeEncodingNS::CreateUnicode16;

namespace PDFSettingsImpl {

namespace {

constexpr UInt16 kOwnerMayWrite = 0x80;

// The last dot may be in the name of a folder. Only the start of the extension is compared, so a
// longer extension is accepted.
bool HasExtension(std::string_view path) noexcept {
    std::size_t const dot = path.rfind('.');
    return dot != std::string_view::npos && path.substr(dot).starts_with(format::kExtension);
}

// The name to show: without the extension if it is exactly that of settings files. REQUIRES: the
// name is longer than the extension.
std::span<unsigned short const> ShownName(HFSUniStr255 const& name) {
    std::span<unsigned short const> const units(name.unicode, name.length);
    auto const extension = units.last(kExtensionLength);
    bool const isExact = std::equal(extension.begin(), extension.end(), unicode_joboptions);
    return isExact ? units.first(units.size() - kExtensionLength) : units;
}

bool IsReadOnly(FSCatalogInfo const& catalogInfo) noexcept {
    if ((catalogInfo.nodeFlags & kFSNodeLockedMask) != 0) {
        return true;
    }
    FSPermissionInfo permissions{};
    std::memcpy(&permissions, catalogInfo.permissions, sizeof permissions);
    return (permissions.mode & kOwnerMayWrite) == 0;
}

CPOSBinData MakeDate(UTCDateTime const& date) {
    return CPOSBinData(
        "Apple_UTCDateTime", reinterpret_cast<unsigned char const*>(&date), sizeof date);
}

// A path that is not UTF-8 has an empty text.
bool IsEmpty(UnicodeEncodingNS::Unicode16 const& text) {
    return text.GetString(UnicodeEncodingNS::kByteOrderNative, /*terminate=*/false, /*mark=*/false)
               .GetNumElements() == 0;
}

// A record without one of its values would be wrong, so a failed Put is an error.
void Put(CPOSDict const& info, CBIBStringAtom const& key, CPOSObject const& value) {
    info.Put(key, value);
    if (!info.HasKey(key)) {
        BIB_T_NMT::CBIBMemory::ThrowMemError();
    }
}

} // namespace

bool MakeSettingsFileInfo(
    SettingsFileInfoKeys const& keys,
    char const* path,
    HFSUniStr255 const& name,
    FSCatalogInfo const& catalogInfo,
    CPOSDict* info) {
    // A name that consists of the extension alone has no name to show.
    if (!HasExtension(path) || name.length == kExtensionLength) {
        return false;
    }
    auto const fullPath = CreateUnicode16(UnicodeEncodingNS::Unicode8(path));
    if (IsEmpty(fullPath)) {
        return false;
    }
    if (name.length > kExtensionLength) {
        Put(*info, keys.fSettingsName, UnicodeEncodingNS::ExactString(ShownName(name)));
    }
    Put(*info, keys.fFullFilePath, CreateCPOSUnicodeString(fullPath));
    Put(*info, keys.fReadOnly, CPOSNumber(IsReadOnly(catalogInfo) ? 1 : 0));
    Put(*info, keys.fModDate, MakeDate(catalogInfo.contentModDate));
    return true;
}

namespace {

constexpr unsigned short kDirSeparatorW = 0x002F;

CPOSUnicodeString TextIn(CPOSDict const& info, CBIBStringAtom const& key) {
    return info.GetUnicodeString(key, /*quiet=*/false);
}

std::string BytesOf(CPOSUnicodeString const& text) {
    unsigned short const* const units = text.Get();
    return {
        reinterpret_cast<char const*>(units), CPOSUnicodeString::GetLength(units) * sizeof *units};
}

// The display name of a file, from the first pair with its name; an invalid handle if there is
// none.
CPOSObject DisplayName(CPOSArray const& pairs, CPOSUnicodeString const& name) {
    auto const count = static_cast<unsigned int>(pairs.Count());
    for (unsigned int i = 0; i < count; ++i) {
        CPOSArray const pair(pairs[i], /*quiet=*/false);
        if (name == pair[0U]) {
            return pair[1U];
        }
    }
    return {};
}

// The key of a file in the cloak table: its name in UTF-8 without the last 11 units, the length of
// the extension, whatever they are. Empty if an unpaired surrogate remains; nullopt for a shorter
// name.
std::optional<std::string> CloakKey(CPOSUnicodeString const& path) {
    std::span<unsigned short const> const text(path.Get(), path.GetLength());
    auto const separator = std::find(text.rbegin(), text.rend(), kDirSeparatorW);
    ThrowIfFalse(separator != text.rend(), "FileMgmt::AppendCloakSettings invalid path");
    auto const name = text.last(static_cast<std::size_t>(separator - text.rbegin()));
    if (name.size() < kExtensionLength) {
        return std::nullopt;
    }
    return platform::EncodeUtf8(name.first(name.size() - kExtensionLength)).value_or("");
}

} // namespace

FileListBuilder::FileListBuilder(
    ForWhichDirectory which, CPOSArray const& displayNames, CPOSDict const& cloakSettings)
    : fWhichDirectory(which),
      fDisplayNames(displayNames),
      fCloakSettings(cloakSettings) {}

void FileListBuilder::AppendFileToList(CPOSDict& info) const {
    ConvertToDisplayName(info);
    if (SettingAlreadyExists(info)) {
        return;
    }
    AddCloakingInfo(info);
    if (fWhichDirectory == kAdminSettingsDirectory) {
        info.Put(fKeys.fReadOnly, CPOSNumber(1));
    }
    Append(info);
}

void FileListBuilder::ConvertToDisplayName(CPOSDict& info) const {
    try {
        CPOSObject const displayName =
            DisplayName(fDisplayNames, TextIn(info, fKeys.fSettingsName));
        if (displayName.IsValid()) {
            // Made before the name changes, so that a failure does not change only one of the two.
            CPOSNumber const readOnly(1);
            info.Put(fKeys.fSettingsName, displayName);
            info.Put(fKeys.fReadOnly, readOnly);
        }
    } catch (...) {
        // The record keeps its name.
    }
}

std::string FileListBuilder::NameIn(CPOSDict const& info) const {
    return BytesOf(TextIn(info, fKeys.fSettingsName));
}

bool FileListBuilder::SettingAlreadyExists(CPOSDict const& info) const {
    if (!fNames.empty()) {
        return fNames.contains(NameIn(info));
    }
    // Here the list is empty or has one entry without a name. Only the first entry can lack a name:
    // every later record without one, and every record that is compared with such an entry, throws.
    return fFileList.Count() != 0 &&
           SettingFileInfoHasSameName(CPOSDict(fFileList[0U], /*quiet=*/false), info);
}

bool FileListBuilder::SettingFileInfoHasSameName(CPOSDict const& a, CPOSDict const& b) {
    CBIBStringAtom const settingsName(kSettingsName);
    return BytesOf(TextIn(a, settingsName)) == BytesOf(TextIn(b, settingsName));
}

// The result of Append is not reliable, so the count decides whether the record was added. The name
// of a record that was not added must not exclude a later file.
void FileListBuilder::Append(CPOSDict const& info) const {
    unsigned long const count = fFileList.Count();
    fFileList.Append(info);
    CPOSUnicodeString const name(info.Get(fKeys.fSettingsName, /*quiet=*/true), /*quiet=*/true);
    if (name.IsValid() && fFileList.Count() != count) {
        fNames.insert(BytesOf(name));
    }
}

void FileListBuilder::AddCloakingInfo(CPOSDict& info) const {
    try {
        auto const key = CloakKey(TextIn(info, fKeys.fFullFilePath));
        if (key && fCloakSettings.HasKey(key->c_str())) {
            info.Put(fKeys.fShowHide, fCloakSettings.Get(key->c_str(), /*quiet=*/false));
        }
    } catch (...) {
        // The record has no entry then.
    }
}

CPOSArray
FileMgmtBase::GetFilesInWorkingDirectory(unsigned long maxLevels, char const* appName) const {
    CPOSDict const cloakSettings = fDataStore->GenerateCloakSettings();
    CPOSArray const displayNames = fDataStore->GenerateDisplayNames(appName);
    FileListBuilder builder(kAdminSettingsDirectory, displayNames, cloakSettings);
    GetFilesInDirectory(fDataStore->GetAdminSettingsDirectory(), maxLevels, builder);
    builder.SetForWhichDirectory(kUserSettingsDirectory);
    GetFilesInDirectory(fDataStore->GetUserSettingsDirectory(), maxLevels, builder);
    return builder.GetFileList();
}

IFileMgmt* FileMgmt::Construct(SettingsDataStore const* store) {
    return new FileMgmt_Mac(store);
}

namespace {

constexpr UInt32 kPathSize = 2048; // in bytes, including the terminator

constexpr FSCatalogInfoBitmap kWantedInfo =
    kFSCatInfoNodeFlags | kFSCatInfoContentMod | kFSCatInfoPermissions;

void AppendItem(
    FSRef const& ref,
    HFSUniStr255 const& name,
    FSCatalogInfo const& catalogInfo,
    FileListBuilder const& builder) {
    UInt8 path[kPathSize];
    if (FSRefMakePath(&ref, path, kPathSize) != noErr) {
        return;
    }
    BIB_T_NMT::CPOSDict info;
    auto const* const text = reinterpret_cast<char const*>(path);
    if (MakeSettingsFileInfo(builder.Keys(), text, name, catalogInfo, &info)) {
        builder.AppendFileToList(info);
    }
}

} // namespace

Boolean CallbackIterProc(
    Boolean /*containerChanged*/,
    ItemCount /*level*/,
    FSCatalogInfo const* info,
    FSRef const* ref,
    FSSpec const* /*spec*/,
    HFSUniStr255 const* name,
    void* userData) noexcept {
    try {
        AppendItem(*ref, *name, *info, *static_cast<FileListBuilder const*>(userData));
    } catch (...) {
        // The item is left out of the list.
    }
    return 0;
}

void FileMgmt_Mac::GetFilesInDirectory(
    UnicodeEncodingNS::Unicode16 const& directory,
    unsigned long maxLevels,
    FileListBuilder& builder) const {
    try {
        FSRef folder;
        if (UnicodeEncodingNS::MakeRef(directory, &folder) == noErr) {
            FSIterateContainer(
                &folder,
                maxLevels,
                kWantedInfo,
                /*wantSpec=*/0,
                /*wantName=*/1,
                &CallbackIterProc,
                &builder);
        }
    } catch (...) {
        // The list keeps the items found so far.
    }
}

} // namespace PDFSettingsImpl
