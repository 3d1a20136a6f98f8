// Any bytes as the path of a settings file, given to the component as a host gives it. It only
// opens: nothing is written.
#include "api/BIBRuntime.h"
#include "conformance/Tables.h"
#include "fuzz/Require.h"
#include "tests/support/Component.h"

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
        fContainers.AddRef(settings);
        fContainers.Release(settings);
        fBuffers.Release(buffer);
    }

private:
    support::Component fComponent;
    _t_BIBContainerInterface fContainers =
        conformance::LoadTable<_t_BIBContainerInterface>(&BIBRuntimeLookup);
    _t_BIBSharedBuffInterface fBuffers =
        conformance::LoadTable<_t_BIBSharedBuffInterface>(&BIBRuntimeLookup);
    PDFSettingsNewFromFileProc fNewFromFile = nullptr;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static Host const host;
    host.Open(data, size);
    return 0;
}
