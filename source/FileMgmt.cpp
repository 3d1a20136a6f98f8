#include "source/FileMgmt.h"

#include "source/FileListBuilder.h"
#include "source/FileMgmtUtil.h"

using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSDict;

namespace PDFSettingsImpl {

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

FileMgmt::FileMgmt(SettingsDataStore const* store) : fImplementation(Construct(store)) {}

CPOSArray FileMgmt::GetFilesInWorkingDirectory(unsigned long maxLevels, char const* appName) const {
    return fImplementation->GetFilesInWorkingDirectory(maxLevels, appName);
}

IFileMgmt* FileMgmt::Construct(SettingsDataStore const* store) {
    return new FileMgmt_Mac(store);
}

namespace {

constexpr UInt32 kPathSize = 2048; // in bytes, its terminator included

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
        // The list goes on without the item.
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
        // What was listed so far counts.
    }
}

} // namespace PDFSettingsImpl
