// From the runtime's values and streams to plain ones, and back.
#pragma once

#include "host/detail/Bindings.h"
#include "host/detail/Ref.h"
#include "pdfsettings/Value.h"

#include <string>

namespace pdfsettings::detail {

inline constexpr char const* kStringType = "JoboptionsString";
inline constexpr char const* kHexStringType = "JoboptionsUnicodeString";

// A new dictionary with copies of all values. Throws Error when memory runs out, and for a NUL in a
// key, a word, the name of a binary type or a 16-bit text: the runtime ends all of these with one.
Ref<POSDict> BuildValues(Bindings const& tables, Dictionary const& values);

// Deep copies. They throw Error when memory runs out and for a value of an unknown kind.
Dictionary ReadValues(Bindings const& tables, POSDict* dict);
Array ReadValues(Bindings const& tables, POSArray* array);

// What stream holds from its position on. Throws Error with the stream's reason.
std::string ReadStream(Bindings const& tables, BIBPositionableStream* stream);

} // namespace pdfsettings::detail
