// From the runtime's streams to plain text.
#pragma once

#include "host/detail/Bindings.h"

#include <string>

namespace pdfsettings::detail {

// What stream holds from its position on. Throws Error with the stream's reason.
std::string ReadStream(Bindings const& tables, BIBPositionableStream* stream);

} // namespace pdfsettings::detail
