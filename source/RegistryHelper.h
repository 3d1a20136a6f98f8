// What an administrator and a user laid down about settings.
#pragma once

#include "api/UnicodeEncoding.h"
#include "bib/BIBClientBase.h"
#include "bib/POSArray.h"
#include "bib/POSDict.h"

namespace PDFSettingsImpl {

// The preferences of one domain. What cannot be read of them for want of memory counts as missing;
// making one may throw CBIBError.
class RegistryHelper : public BIB_T_NMT::CBIBVirtualClientBase {
public:
    // The preferences of the user and of the machine's administrator, read now; a new object for
    // the caller.
    static RegistryHelper* CreateUserHelper();
    static RegistryHelper* CreateAdminHelper();

    // Whether there are preferences that could be read.
    virtual bool IsValid() const = 0;

    // Notes the settings folder in preferences that can be written. Property lists are only read.
    virtual void SetDirectory(UnicodeEncodingNS::Unicode16 const& directory) = 0;

    // The settings folder that the preferences name into directory; false when they name none.
    virtual bool GetDirectory(UnicodeEncodingNS::Unicode16& directory) const = 0;

    // Changes the cloak table (see SettingsDataStore) by the preferences.
    virtual void GenerateCloakSettings(BIB_T_NMT::CPOSDict const& table) const = 0;

    // The display names for an application, as SettingsDataStore gives them.
    virtual BIB_T_NMT::CPOSArray GenerateDisplayNames(char const* appName) const = 0;

    // Takes an application out of the cloak table, and files that nobody is named for any more.
    // Each file that goes makes the walk begin anew and pass over the first of the files, which may
    // thus keep its entry.
    static void RemoveAppFromSettings(BIB_T_NMT::CPOSDict const& table, char const* appName);
};

} // namespace PDFSettingsImpl
