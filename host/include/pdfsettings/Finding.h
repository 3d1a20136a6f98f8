// What a judgement of settings finds.
#pragma once

#include <string>

namespace pdfsettings {

// One fault of settings.
struct Finding {
    std::string key;     // the path of the setting: "ColorImageDict/QFactor", "OtherNamespaces/2"
    std::string message; // what was expected and what was found

    bool operator==(Finding const&) const = default;
};

} // namespace pdfsettings
