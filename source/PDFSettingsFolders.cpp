// What the class answers without an object.
#include <memory>

#include "source/FileMgmt.h"
#include "source/PDFSettingsError.h"
#include "source/PDFSettingsObject.h"

namespace PDFSettingsImpl {

UnicodeEncodingNS::Unicode16 PDFSettingsObject::GetDefaultPDFSettingsDirectory() {
    std::unique_ptr<SettingsDataStore> const store(SettingsDataStore::Create());
    ThrowIfFalse(
        store != nullptr,
        "PDFSettingsObject::GetDefaultPDFSettingsDirectory: Failed to get data store");
    return store->GetUserSettingsDirectory();
}

BIB_T_NMT::CPOSArray PDFSettingsObject::GetListofPDFSettings(char const* appName) {
    constexpr unsigned long kOwnItemsOnly = 1;
    std::unique_ptr<SettingsDataStore> const store(SettingsDataStore::Create());
    ThrowIfFalse(
        store != nullptr, "PDFSettingsObject::GetListofPDFSettings: Failed to get data store");
    FileMgmt const files(store.get());
    return files.GetFilesInWorkingDirectory(kOwnItemsOnly, appName);
}

} // namespace PDFSettingsImpl
