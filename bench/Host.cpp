#include "bench/Host.h"

#include "api/BIBRuntime.h"

#include <optional>

namespace bench {

using pdfsettings::detail::Bindings;
using pdfsettings::detail::Share;

namespace {

// The tables are those of the component that runs.
struct Running {
    pdfsettings::Component component;
    Bindings tables{&BIBRuntimeLookup};
};

std::optional<Running>& Slot() {
    static std::optional<Running> running;
    return running;
}

Running& Shared() {
    if (!Slot()) {
        Slot().emplace();
    }
    return *Slot();
}

} // namespace

pdfsettings::Component const& SharedComponent() {
    return Shared().component;
}

void StopSharedComponent() {
    Slot().reset();
}

Bindings const& Tables() {
    return Shared().tables;
}

StreamRef NewStream(BIBSharedBuffer* buffer) {
    BIBPositionableStream* stream = nullptr;
    pdfsettings::detail::ThrowIfError(
        Tables(), Tables().streams.NewPositionableBufferStream(&stream, buffer));
    return Share(Tables(), stream);
}

SettingsRef ReadSettings(BIBSharedBuffer* buffer, char const* schema) {
    return Share(Tables(), Tables().settings.NewFromStream(NewStream(buffer).get(), schema));
}

} // namespace bench
