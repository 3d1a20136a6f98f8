// The system's errors as result codes. Private to the platform layer.
#pragma once

#include "platform/FileManager.h"

namespace platform {

// The code for an errno value.
OSErr CodeOf(int error) noexcept;

// noErr for a result that is not negative, else the code for errno.
OSErr CodeOfResult(long result) noexcept;

} // namespace platform
