#include "source/FileMgmt.h"

#include "source/FileMgmt_Mac.h"

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

} // namespace PDFSettingsImpl
