// The preferences of an administrator and of a user about settings, from property lists.
#pragma once

#include "api/UnicodeEncoding.h"
#include "bib/BIBClient.h"
#include "bib/POSCollections.h"
#include "platform/CFPropertyList.h"
#include "source/EncodingConverter.h"

namespace PDFSettingsImpl {

// The preferences of one domain. A preference that cannot be read because memory runs out counts as
// missing; making an object may throw CBIBError.
class RegistryHelper : public BIB_T_NMT::CBIBVirtualClientBase {
public:
    // The preferences of the user and of the machine's administrator, read now; a new object owned
    // by the caller.
    static RegistryHelper* CreateUserHelper();
    static RegistryHelper* CreateAdminHelper();

    // Whether the preferences exist and could be read.
    virtual bool IsValid() const = 0;

    // Stores the settings folder in writable preferences. Property lists are only read.
    virtual void SetDirectory(UnicodeEncodingNS::Unicode16 const& directory) = 0;

    // Stores the settings folder of the preferences in directory; returns false if they name none.
    virtual bool GetDirectory(UnicodeEncodingNS::Unicode16& directory) const = 0;

    // Applies the preferences to the cloak table (see SettingsDataStore).
    virtual void GenerateCloakSettings(BIB_T_NMT::CPOSDict const& table) const = 0;

    // The display names for an application, in the form of SettingsDataStore.
    virtual BIB_T_NMT::CPOSArray GenerateDisplayNames(char const* appName) const = 0;

    // Removes an application from the cloak table, and each file whose entry is then empty.
    // Whenever a file is removed, the iteration starts again and skips the first file, which may
    // thus keep its entry.
    static void RemoveAppFromSettings(BIB_T_NMT::CPOSDict const& table, char const* appName);
};

// Preferences in a property list, which is read when the object is made and never written. A list
// that is missing, cannot be read, or has no dictionary at its root counts as no preferences; a
// value of an unexpected type counts as missing.
//
//     PDFSettingsPath  string: the absolute path of the settings folder
//     ShowHide         dictionary: application name to a dictionary of file name (without
//                      extension) to "0", which hides the file, or another value; "0" under "/"
//                      turns hiding off for the application
//     PDFSettings      dictionary: application name to an array of file names (without extension),
//                      each followed by its display name
//
// Display names come from PDFSettings: the array of the application becomes pairs of two strings,
// up to the first element that is not a string. Hidden files come from ShowHide, which changes the
// default cloak table of SettingsDataStore. For each application, "0" under the master key "/"
// removes the application from the entries of all files, so no file is hidden from it, and its
// other keys are ignored. Otherwise each file gets 0 (hidden) or 1 (shown) under the application's
// name, which replaces the default; files that the application does not mention keep their entries.
// Names of applications and files in keys are compared as Mac Roman text. SettingsDataStore takes
// both from the administrator's list; from the user's list it takes only the folder.
class MacRegistryHelper : public RegistryHelper {
public:
    // domain: kUserDomain or kLocalDomain of the file service, which selects the preferences
    // folder. fileName: the file in that folder, with a leading slash. prefixedKeys: the list has
    // the keys ArdeoPDFSettingsPath and ArdeoPDFSettings instead of PDFSettingsPath and
    // PDFSettings.
    MacRegistryHelper(int domain, char const* fileName, bool prefixedKeys);

    bool IsValid() const override { return fSettings.Get() != nullptr; }

    // Does nothing.
    void SetDirectory(UnicodeEncodingNS::Unicode16 const& directory) override;

    bool GetDirectory(UnicodeEncodingNS::Unicode16& directory) const override;
    void GenerateCloakSettings(BIB_T_NMT::CPOSDict const& table) const override;
    BIB_T_NMT::CPOSArray GenerateDisplayNames(char const* appName) const override;

    // The dictionary in that file; empty if there is none.
    AutoCFRelease<CFDictionaryRef>
    GetSystemSettings(unsigned int domain, char const* fileName) const;

private:
    AutoCFRelease<CFDictionaryRef> fSettings;
    bool fPrefixedKeys;
};

} // namespace PDFSettingsImpl
