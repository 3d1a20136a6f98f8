// The component as a host loads it.
#pragma once

#include "api/PDFSettings.h"

#include <dlfcn.h>

namespace support {

// Loads the component from PDFSETTINGS_COMPONENT, the path of the built library, and unloads it.
class Component {
public:
    Component() : fHandle(dlopen(PDFSETTINGS_COMPONENT, RTLD_NOW | RTLD_LOCAL)) {}
    ~Component() {
        if (fHandle != nullptr) {
            dlclose(fHandle);
        }
    }
    Component(Component const&) = delete;
    Component& operator=(Component const&) = delete;

    bool IsLoaded() const { return fHandle != nullptr; }
    long GetVersion() const { return Find<long (*)()>("PDFSettingsGetVersion")(); }
    int Initialize(BIBLookupProc lookup) const {
        return Find<int (*)(BIBLookupProc)>("PDFSettingsInitialize")(lookup);
    }
    void Terminate() const { Find<void (*)()>("PDFSettingsTerminate")(); }

private:
    template <class Proc>
    Proc Find(char const* name) const {
        return reinterpret_cast<Proc>(dlsym(fHandle, name));
    }

    void* fHandle;
};

} // namespace support
