// The component as the benchmarks use it: started once, and its procedures called through their
// tables, as a host does that has a runtime of its own.
#pragma once

#include "host/detail/Bindings.h"
#include "pdfsettings/Component.h"

#include <string>
#include <string_view>

namespace bench {

// The component, started by the first call until the program ends or StopSharedComponent().
pdfsettings::Component const& SharedComponent();

// Stops it, so that a benchmark may start it itself.
void StopSharedComponent();

// The tables of the component and of the runtime.
pdfsettings::detail::Bindings const& Tables();

using StreamRef = pdfsettings::detail::Ref<BIBPositionableStream>;
using SettingsRef = pdfsettings::detail::Ref<PDFSettings>;

// A buffer with a copy of bytes.
pdfsettings::detail::BufferRef MakeBuffer(std::string_view bytes);

// A path as the component takes it. REQUIRES: path is ASCII.
pdfsettings::detail::BufferRef MakePath(std::string const& path);

// A stream that reads a buffer.
StreamRef NewStream(BIBSharedBuffer* buffer);

// Settings read from a buffer.
SettingsRef ReadSettings(BIBSharedBuffer* buffer, char const* schema);

} // namespace bench
