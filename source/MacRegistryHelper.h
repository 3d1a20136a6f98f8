// Preferences in a property list.
#pragma once

#include "platform/CFCollections.h"
#include "source/AutoCFRelease.h"
#include "source/RegistryHelper.h"

namespace PDFSettingsImpl {

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
