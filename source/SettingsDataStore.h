// The settings folders, the hidden files of each application, and the display names.
#pragma once

#include "api/UnicodeEncoding.h"
#include "bib/BIBClient.h"
#include "bib/POSCollections.h"
#include "source/RegistryHelper.h"

#include <memory>
#include <utility>

namespace PDFSettingsImpl {

// Uses the preferences as they were when the store was made. Use it on one thread. Every operation
// may throw CBIBError.
class SettingsDataStore : public BIB_T_NMT::CBIBVirtualClientBase {
public:
    // A new store owned by the caller, with the current preferences. The user's settings folder is
    // created if it is missing.
    static SettingsDataStore* Create();

    // The two folders, which need not exist; empty if the system has none.
    virtual UnicodeEncodingNS::Unicode16 GetAdminSettingsDirectory() const = 0;
    virtual UnicodeEncodingNS::Unicode16 GetUserSettingsDirectory() const = 0;

    // A new cloak table: the file's name without its extension (never a display name) to a
    // dictionary of application name to number; 0 hides the file from the application and 1 shows
    // it. Non-ASCII names are in Mac Roman.
    virtual BIB_T_NMT::CPOSDict GenerateCloakSettings() const = 0;

    // The display names that appName shows (in Mac Roman; null for no application): an array of
    // arrays of two 16-bit strings, the file's name without its extension and the name to show.
    virtual BIB_T_NMT::CPOSArray GenerateDisplayNames(char const* appName) const = 0;
};

class SettingsDataStoreImpl : public SettingsDataStore {
public:
    // helper may be null: then the default cloak table is used, and there are no display names.
    SettingsDataStoreImpl(
        UnicodeEncodingNS::Unicode16 const& adminDirectory,
        UnicodeEncodingNS::Unicode16 const& userDirectory,
        std::unique_ptr<RegistryHelper> helper)
        : fAdminDirectory(adminDirectory),
          fUserDirectory(userDirectory),
          fRegistryHelper(std::move(helper)) {}

    UnicodeEncodingNS::Unicode16 GetAdminSettingsDirectory() const override {
        return fAdminDirectory;
    }
    UnicodeEncodingNS::Unicode16 GetUserSettingsDirectory() const override {
        return fUserDirectory;
    }
    BIB_T_NMT::CPOSDict GenerateCloakSettings() const override;
    BIB_T_NMT::CPOSArray GenerateDisplayNames(char const* appName) const override;

    // The cloak table before the administrator's preferences are applied.
    static BIB_T_NMT::CPOSDict CreateDefaultCloakSettings();

private:
    UnicodeEncodingNS::Unicode16 fAdminDirectory;
    UnicodeEncodingNS::Unicode16 fUserDirectory;
    std::unique_ptr<RegistryHelper> fRegistryHelper;
};

} // namespace PDFSettingsImpl
