// Where settings lie, which are hidden from which application, and under which names they are
// shown.
#pragma once

#include "api/UnicodeEncoding.h"
#include "bib/BIBClient.h"
#include "bib/POSCollections.h"
#include "source/RegistryHelper.h"

#include <memory>
#include <utility>

namespace PDFSettingsImpl {

// Answers by the preferences as they were when it was made. For one thread. Every operation may
// throw CBIBError.
class SettingsDataStore : public BIB_T_NMT::CBIBVirtualClientBase {
public:
    // A new store for the caller, on preferences that are read now. The user's settings folder is
    // made where it is missing.
    static SettingsDataStore* Create();

    // The two folders, which need not exist; empty where the system has none.
    virtual UnicodeEncodingNS::Unicode16 GetAdminSettingsDirectory() const = 0;
    virtual UnicodeEncodingNS::Unicode16 GetUserSettingsDirectory() const = 0;

    // A new cloak table: the file's name without its extension (never a display name), to a
    // dictionary of application name to a number, where 0 hides the file from the application and 1
    // shows it. Names outside ASCII stand there in Mac Roman.
    virtual BIB_T_NMT::CPOSDict GenerateCloakSettings() const = 0;

    // The display names that appName (in Mac Roman; null for none) shows: an array of arrays of two
    // 16-bit strings, the file's name without its extension and the name to show.
    virtual BIB_T_NMT::CPOSArray GenerateDisplayNames(char const* appName) const = 0;
};

class SettingsDataStoreImpl : public SettingsDataStore {
public:
    // helper may be null: then the default cloak table counts, and there are no display names.
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

    // The cloak table before an administrator changes it.
    static BIB_T_NMT::CPOSDict CreateDefaultCloakSettings();

private:
    UnicodeEncodingNS::Unicode16 fAdminDirectory;
    UnicodeEncodingNS::Unicode16 fUserDirectory;
    std::unique_ptr<RegistryHelper> fRegistryHelper;
};

} // namespace PDFSettingsImpl
