#include "bench/Host.h"

#include "api/BIBRuntime.h"

#include <cstring>
#include <optional>

namespace bench {

using pdfsettings::detail::Bindings;
using pdfsettings::detail::Share;

namespace {

// The tables are those of the component that runs.
struct Running {
    pdfsettings::Component component = pdfsettings::Component::Start();
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

pdfsettings::detail::BufferRef MakeBuffer(std::string_view bytes) {
    pdfsettings::detail::BufferRef buffer(
        Tables().buffers.NewBuffer(bytes.size(), nullptr, nullptr, nullptr, nullptr),
        Tables().buffers.Release);
    std::memcpy(Tables().buffers.GetBuffer(buffer.get()), bytes.data(), bytes.size());
    return buffer;
}

pdfsettings::detail::BufferRef MakePath(std::string const& path) {
    std::u16string const units(path.begin(), path.end());
    return MakeBuffer(
        {reinterpret_cast<char const*>(units.data()), units.size() * sizeof(char16_t)});
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
