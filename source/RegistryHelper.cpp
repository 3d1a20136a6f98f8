#include "source/RegistryHelper.h"

#include "api/SettingsPlaces.h"
#include "bib/POSDictIterator.h"
#include "platform/FileManager.h"
#include "source/MacRegistryHelper.h"

using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSDictIterator;

namespace PDFSettingsImpl {

RegistryHelper* RegistryHelper::CreateUserHelper() {
    return new MacRegistryHelper(
        kUserDomain, SettingsPlaces::kUserPreferences, /*prefixedKeys=*/false);
}

RegistryHelper* RegistryHelper::CreateAdminHelper() {
    return new MacRegistryHelper(
        kLocalDomain, SettingsPlaces::kAdminPreferences, /*prefixedKeys=*/false);
}

void RegistryHelper::RemoveAppFromSettings(CPOSDict const& table, char const* appName) {
    CPOSDictIterator const cursor(table);
    for (cursor.Begin(); !cursor.IsDone(); cursor.Next()) {
        CPOSDict const entry = table.GetDict(cursor.CurKey(), /*quiet=*/true);
        if (!entry.IsValid() || !entry.HasKey(appName)) {
            continue;
        }
        entry.Remove(appName);
        if (entry.IsEmpty()) {
            table.Remove(cursor.CurKey());
            // The step that follows passes over the first key: hosts know the table so.
            cursor.Begin();
        }
    }
}

} // namespace PDFSettingsImpl
