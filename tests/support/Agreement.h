// Whether a document and the component make the same of a text.
#pragma once

#include "host/detail/ComponentSettings.h"
#include "pdfsettings/Document.h"
#include "pdfsettings/Error.h"

#include <bit>
#include <cstdint>
#include <new>
#include <string>

namespace support {

using pdfsettings::Dictionary;
using pdfsettings::Kind;
using pdfsettings::Refusal;
using pdfsettings::Value;

// Settings in one line, where no two different ones look alike.
inline std::string Describe(Value const& value);

inline std::string Describe(Dictionary const& values) {
    std::string text;
    for (auto const& [key, value] : values) {
        text += "/" + key + " " + Describe(value) + ";";
    }
    return "<<" + text + ">>";
}

inline std::string Describe(Value const& value) {
    std::string text;
    switch (value.What()) {
    case Kind::kNumber:
        return std::to_string(std::bit_cast<std::uint64_t>(value.As<double>()));
    case Kind::kDictionary:
        return Describe(value.As<Dictionary>());
    case Kind::kArray:
        for (Value const& element : value.As<pdfsettings::Array>()) {
            text += Describe(element) + ",";
        }
        return "[" + text + "]";
    default:
        return std::to_string(static_cast<int>(value.What())) + "(" + std::string(value.Bytes()) +
               ")";
    }
}

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
        return Describe(values) + tail;
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
    return isRefused ? Name(document.WhyRefused()) : Describe(document.Values()) + document.Tail();
}

} // namespace support
