#include "source/SettingsDataStore.h"

#include "source/FileMgmtUtil.h"

using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSObject;
using UnicodeEncodingNS::Unicode16;

namespace PDFSettingsImpl {

namespace {

constexpr char kDefaultCloakSettings[] =
    "< "
    "(PDFA DRAFT) < Webrix 0 Vectrapaint 0 Pagemint 0 Rasterlab 0 > "
    "(Standard) < Webrix 0 Vectrapaint 0 Pagemint 0 Rasterlab 0 > "
    "(Rich Content PDF) < Vectrapaint 0 > "
    "(Press Quality) < Webrix 0 > "
    "(PDFX1a 2001) < Webrix 0 > "
    "(PDFX1a 2001 JPN) < Webrix 0 > "
    "(PDFX1a 2003) < Webrix 0 > "
    "(PDFX1a 2003 JPN) < Webrix 0 > "
    "(PDFX3 2002) < Webrix 0 > "
    "(PDFX3 2002 JPN) < Webrix 0 > "
    "(PDFX3 2003) < Webrix 0 > "
    "(PDFX3 2003 JPN) < Webrix 0 > "
    "(Oversized Pages) < Webrix 0 Vectrapaint 0 Pagemint 0 Rasterlab 0 > "
    "(PDFA1b 2005 CMYK) < Webrix 0 Vectrapaint 0 Pagemint 0 Rasterlab 0 > "
    "(PDFA1b 2005 RGB) < Webrix 0 Vectrapaint 0 Pagemint 0 Rasterlab 0 > "
    "(PDFX4 2007) < Webrix 0 > "
    "(PDFX4 2007 JPN) < Webrix 0 > "
    ">";

// The folder that the user's preferences name, else the standard one; created if possible.
Unicode16 SettleUserDirectory() {
    Unicode16 directory;
    std::unique_ptr<RegistryHelper> const helper(RegistryHelper::CreateUserHelper());
    if (!helper->GetDirectory(directory)) {
        directory = FileMgmtUtil::GuessDirectoryLocation(FileMgmtUtil::kUserDirectory);
        helper->SetDirectory(directory);
    }
    FileMgmtUtil::CreateFolderIfMissing(directory);
    return directory;
}

Unicode16 SettleAdminDirectory(RegistryHelper const& helper) {
    Unicode16 directory;
    if (!helper.IsValid() || !helper.GetDirectory(directory)) {
        directory = FileMgmtUtil::GuessDirectoryLocation(FileMgmtUtil::kAdminDirectory);
    }
    return directory;
}

} // namespace

SettingsDataStore* SettingsDataStore::Create() {
    Unicode16 const userDirectory = SettleUserDirectory();
    std::unique_ptr<RegistryHelper> helper(RegistryHelper::CreateAdminHelper());
    Unicode16 const adminDirectory = SettleAdminDirectory(*helper);
    return new SettingsDataStoreImpl(adminDirectory, userDirectory, std::move(helper));
}

CPOSDict SettingsDataStoreImpl::GenerateCloakSettings() const {
    CPOSDict table = CreateDefaultCloakSettings();
    if (fRegistryHelper) {
        fRegistryHelper->GenerateCloakSettings(table);
    }
    return table;
}

CPOSArray SettingsDataStoreImpl::GenerateDisplayNames(char const* appName) const {
    return fRegistryHelper ? fRegistryHelper->GenerateDisplayNames(appName) : CPOSArray();
}

CPOSDict SettingsDataStoreImpl::CreateDefaultCloakSettings() {
    CPOSObject const table =
        CPOSObject::CreateFromText(kDefaultCloakSettings, nullptr, /*quiet=*/true);
    return CPOSDict(table, /*quiet=*/false);
}

} // namespace PDFSettingsImpl
