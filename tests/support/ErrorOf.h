// What a piece of work throws.
#pragma once

#include "pdfsettings/Error.h"

#include <optional>
#include <string>

namespace support {

// Nothing when it goes through.
template <class Work>
std::optional<pdfsettings::Error> ErrorOf(Work work) {
    try {
        work();
        return std::nullopt;
    } catch (pdfsettings::Error const& error) {
        return error;
    }
}

template <class Work>
std::optional<pdfsettings::Fault> CodeOf(Work work) {
    auto const error = ErrorOf(work);
    return error ? std::optional(error->Code()) : std::nullopt;
}

// Empty when it goes through.
template <class Work>
std::string MessageOf(Work work) {
    auto const error = ErrorOf(work);
    return error ? error->Message() : "";
}

} // namespace support
