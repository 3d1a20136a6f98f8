// Goes down to the registered tables for what the C++ API has no words for: here, one value of the
// live settings, without a copy of all others.
#include <api/BIBStringInterface.h>
#include <api/POSCollectionInterfaces.h>
#include <api/POSScalarInterfaces.h>
#include <iostream>
#include <pdfsettings/Error.h>
#include <pdfsettings/Settings.h>
#include <pdfsettings/raw/RawAccess.h>

using pdfsettings::Error;
using pdfsettings::RawAccess;
using pdfsettings::Settings;

namespace {

// A procedure of one of the tables. The headers in api/ state its interface, its name and its type.
template <class Proc>
Proc Find(RawAccess const& raw, char const* table, char const* name, char const* procType) {
    return reinterpret_cast<Proc>(raw.Lookup()(table, name, procType));
}

} // namespace

int main() {
    try {
        Settings const settings = Settings::Parse("<< /Optimize true >> setalembicorparams");

        RawAccess raw;
        auto const live = Find<PDFSettingsGetSettingsProc>(
            raw, "PDFSettingsInterface", "GetSettings", "PDFSettingsGetSettingsProc");
        auto const get = Find<POSDictGetProc>(raw, "POSDictInterface", "Get", "POSDictGetProc");
        auto const atom = Find<BIBNewStringAtomProc>(
            raw, "BIBStringInterface", "NewStringAtom", "BIBNewStringAtomProc");
        auto const forget = Find<BIBDeleteStringAtomProc>(
            raw, "BIBStringInterface", "DeleteStringAtom", "BIBDeleteStringAtomProc");
        auto const text =
            Find<POSStringGetProc>(raw, "POSStringInterface", "Get", "POSStringGetProc");

        BIBStringAtom* const key = atom("Optimize");
        POSObject* const value = get(live(raw.Object(settings)), key);
        std::cout << "Optimize is " << text(reinterpret_cast<POSString*>(value)) << "\n";
        forget(key);
    } catch (Error const& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
