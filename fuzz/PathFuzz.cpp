// Any bytes as the path of a settings file, given to the component as a host gives it. It only
// opens: nothing is written.
#include "fuzz/Require.h"
#include "tests/support/Component.h"
#include "tests/support/HostTables.h"

#include <cstdint>
#include <cstring>

namespace {

class Host {
public:
    Host() {
        fuzz::Require(
            fComponent.Initialize(&BIBRuntimeLookup) == 1, "the component does not start");
        BIBRuntimeSetErrorChannel([](char const*, void*) {}, nullptr);
        fNewFromFile = reinterpret_cast<PDFSettingsNewFromFileProc>(
            BIBRuntimeLookup("PDFSettingsInterface", "NewFromFile", "PDFSettingsNewFromFileProc"));
    }
    ~Host() { fComponent.Terminate(); }
    Host(Host const&) = delete;
    Host& operator=(Host const&) = delete;

    void Open(std::uint8_t const* path, unsigned long size) const {
        BIBSharedBuffer* const buffer =
            fBuffers.NewBuffer(size, nullptr, nullptr, nullptr, nullptr);
        if (size != 0) {
            std::memcpy(fBuffers.GetBuffer(buffer), path, size);
        }
        auto* const settings = reinterpret_cast<BIBContainer*>(fNewFromFile(buffer, ""));
        fTables.fContainer.AddRef(settings);
        fTables.fContainer.Release(settings);
        fBuffers.Release(buffer);
    }

private:
    support::Component fComponent;
    support::HostTables fTables;
    _t_BIBSharedBuffInterface fBuffers =
        support::LoadTable<_t_BIBSharedBuffInterface>(&BIBRuntimeLookup);
    PDFSettingsNewFromFileProc fNewFromFile = nullptr;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static Host const host;
    host.Open(data, size);
    return 0;
}
