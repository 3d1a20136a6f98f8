// The data store over the preferences of the administrator.
#pragma once

#include <memory>

#include "source/RegistryHelper.h"
#include "source/SettingsDataStore.h"

namespace PDFSettingsImpl {

class SettingsDataStoreImpl : public SettingsDataStore {
public:
    // helper may be null: then the default cloak table counts, and there are no display names.
    SettingsDataStoreImpl(
        UnicodeEncodingNS::Unicode16 const& adminDirectory,
        UnicodeEncodingNS::Unicode16 const& userDirectory,
        std::unique_ptr<RegistryHelper> helper);

    UnicodeEncodingNS::Unicode16 GetAdminSettingsDirectory() const override;
    UnicodeEncodingNS::Unicode16 GetUserSettingsDirectory() const override;
    BIB_T_NMT::CPOSDict GenerateCloakSettings() const override;
    BIB_T_NMT::CPOSArray GenerateDisplayNames(char const* appName) const override;

    // The cloak table before an administrator changes it.
    static BIB_T_NMT::CPOSDict CreateDefaultCloakSettings();

private:
    UnicodeEncodingNS::Unicode16 fAdminDirectory;
    UnicodeEncodingNS::Unicode16 fUserDirectory;
    std::unique_ptr<RegistryHelper> fRegistryHelper;
};

} // namespace PDFSettingsImpl
