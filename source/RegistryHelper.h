// What an administrator and a user laid down about settings, in property lists.
#pragma once

#include "api/UnicodeEncoding.h"
#include "bib/BIBClient.h"
#include "bib/POSCollections.h"
#include "platform/CFPropertyList.h"
#include "source/EncodingConverter.h"

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

// The property list is read when the object is made, and never written. One that is missing, cannot
// be read or has no dictionary at its root is no preferences at all, and a value of another type
// than expected is none.
//
//     PDFSettingsPath  string: the absolute path of the settings folder
//     ShowHide         dictionary: application name to a dictionary of file name (without
//                      extension) to "0", which hides the file, or another value; "0" under "/"
//                      turns hiding off for the application
//     PDFSettings      dictionary: application name to an array of file names (without extension),
//                      each followed by its display name
//
// Names of applications and files in keys are compared as Mac Roman text.
class MacRegistryHelper : public RegistryHelper {
public:
    // domain: kUserDomain or kLocalDomain of the file service, for its preferences folder.
    // fileName: the file in it, with a slash before it. prefixedKeys: the list has the keys
    // ArdeoPDFSettingsPath and ArdeoPDFSettings instead.
    MacRegistryHelper(int domain, char const* fileName, bool prefixedKeys);

    bool IsValid() const override { return fSettings.Get() != nullptr; }

    // Does nothing.
    void SetDirectory(UnicodeEncodingNS::Unicode16 const& directory) override;

    bool GetDirectory(UnicodeEncodingNS::Unicode16& directory) const override;
    void GenerateCloakSettings(BIB_T_NMT::CPOSDict const& table) const override;
    BIB_T_NMT::CPOSArray GenerateDisplayNames(char const* appName) const override;

    // The dictionary in that file; empty when there is none to be had.
    AutoCFRelease<CFDictionaryRef>
    GetSystemSettings(unsigned int domain, char const* fileName) const;

private:
    AutoCFRelease<CFDictionaryRef> fSettings;
    bool fPrefixedKeys;
};

} // namespace PDFSettingsImpl
