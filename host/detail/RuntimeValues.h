// From the runtime's values and streams to plain ones, and back.
#pragma once

#include "host/detail/Bindings.h"
#include "pdfsettings/Value.h"

#include <functional>
#include <string>

namespace pdfsettings::detail {

// A new dictionary with copies of all values. Throws Error when memory runs out, and for a NUL in a
// key, a word, the name of a binary type or a 16-bit text: the runtime ends all of these with one.
Ref<POSDict> BuildValues(Bindings const& tables, Dictionary const& values);

// A deep copy. Throws Error when memory runs out and for a value of an unknown kind.
Dictionary ReadValues(Bindings const& tables, POSDict* dict);

// Calls visit with a copy of each dictionary in array, one at a time; other elements are passed
// over. Throws the same.
void ReadRecords(
    Bindings const& tables, POSArray* array, std::function<void(Dictionary const&)> const& visit);

// value if there is one of that kind, else null.
template <class Kind>
Kind const* As(Value const* value) {
    return value == nullptr ? nullptr : value->If<Kind>();
}

// The value under key if it is of that kind, else an empty one.
template <class Kind>
Kind FieldOf(Dictionary const& record, char const* key) {
    auto const* const field = As<Kind>(record.Get(key));
    return field == nullptr ? Kind() : *field;
}

// What stream holds from its position on. Throws Error with the stream's reason.
std::string ReadStream(Bindings const& tables, BIBPositionableStream* stream);

} // namespace pdfsettings::detail
