// Whether a document and the component make the same of a text.
#pragma once

#include "pdfsettings/Component.h"
#include "pdfsettings/Document.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/Settings.h"

#include <bit>
#include <cstdint>
#include <string>
#include <variant>

namespace support {

using pdfsettings::Dictionary;
using pdfsettings::Refusal;
using pdfsettings::Value;

// Settings in one line, where no two different ones look alike.
inline std::string Describe(Value const& value);

inline std::string Describe(Dictionary const& values) {
    std::string text;
    for (std::size_t place = 0; place < values.Size(); ++place) {
        text += "/" + values.KeyAt(place) + " " + Describe(values.ValueAt(place)) + ";";
    }
    return "<<" + text + ">>";
}

struct ValueDescriber {
    std::string operator()(pdfsettings::Word const& word) const { return "/" + word.text; }
    std::string operator()(double number) const {
        return std::to_string(std::bit_cast<std::uint64_t>(number));
    }
    std::string operator()(pdfsettings::String const& string) const {
        return "(" + string.bytes + ")";
    }
    std::string operator()(pdfsettings::HexString const& string) const {
        return "<" + string.text + ">";
    }
    std::string operator()(pdfsettings::Binary const& data) const {
        return data.type + "{" + data.bytes + "}";
    }
    std::string operator()(pdfsettings::Text16 const&) const { return "text"; }
    std::string operator()(Dictionary const& values) const { return Describe(values); }
    std::string operator()(pdfsettings::Array const& values) const {
        std::string text;
        for (std::size_t index = 0; index < values.Size(); ++index) {
            text += Describe(values[index]) + ",";
        }
        return "[" + text + "]";
    }
};

inline std::string Describe(Value const& value) {
    return std::visit(ValueDescriber(), value.Get());
}

inline char const* Name(Refusal refusal) {
    constexpr char const* kNames[] = {"read", "invalid file", "unknown value", "memory"};
    return kNames[static_cast<int>(refusal)];
}

// What the component makes of a text.
inline std::string Outcome(pdfsettings::Component const& component, std::string const& text) {
    try {
        return Describe(pdfsettings::Settings::FromText(component, text).Values());
    } catch (pdfsettings::Error const& error) {
        std::string const reason = error.what();
        bool const isInvalid = reason.find("file is invalid") != std::string::npos;
        bool const isUnknown = reason.find("is unknow type") != std::string::npos;
        return Name(
            isInvalid   ? Refusal::kInvalidFile
            : isUnknown ? Refusal::kUnknownValue
                        : Refusal::kMemory);
    }
}

// What a document makes of it, in the same words.
inline std::string Outcome(pdfsettings::Document const& document) {
    bool const isRefused = document.WhyRefused() != Refusal::kNone;
    return isRefused ? Name(document.WhyRefused()) : Describe(document.Values());
}

} // namespace support
