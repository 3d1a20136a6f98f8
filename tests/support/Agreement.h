// Whether a document and the component make the same of a text.
#pragma once

#include "host/detail/ComponentSettings.h"
#include "pdfsettings/Document.h"
#include "pdfsettings/Error.h"

#include <new>
#include <string>

namespace support {

using pdfsettings::Refusal;
using pdfsettings::Value;

inline char const* Name(Refusal refusal) {
    constexpr char const* kNames[] = {"read", "invalid file", "unknown value", "memory"};
    return kNames[static_cast<int>(refusal)];
}

// What the component makes of a text.
inline std::string Outcome(std::string const& text) {
    try {
        pdfsettings::detail::Turn const turn;
        pdfsettings::detail::ComponentSettings settings(turn, text);
        auto const [values, tail] = settings.Values();
        return Value(values).Text() + tail;
    } catch (std::bad_alloc const&) {
        return Name(Refusal::kMemory);
    } catch (pdfsettings::Error const& error) {
        bool const isInvalid = error.Message().find("file is invalid") != std::string::npos;
        return Name(isInvalid ? Refusal::kInvalidFile : Refusal::kUnknownValue);
    }
}

// What a document makes of it, in the same words.
inline std::string Outcome(pdfsettings::Document const& document) {
    bool const isRefused = document.WhyRefused() != Refusal::kNone;
    return isRefused ? Name(document.WhyRefused())
                     : Value(document.Values()).Text() + document.Tail();
}

} // namespace support
