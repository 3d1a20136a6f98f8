// One set of PDF conversion settings.
#pragma once

#include "host/Value.h"

#include <memory>
#include <string>
#include <string_view>

namespace pdfsettings {

class Component;

// Settings that the component holds. They keep the component running for as long as they live. A
// moved-from object may only be destroyed or assigned to.
//
// Threads: see Component.
class Settings {
public:
    // Settings from job options text. text may hold any bytes; schema is in the object notation and
    // not looked at before the first validation. Throws Error with the reported reason when the
    // text is refused.
    static Settings
    FromText(Component const& component, std::string_view text, std::string const& schema = {});

    // Settings with copies of values; schema as above. Throws Error when memory runs out, and for a
    // NUL in a key, a word, the name of a binary type or a 16-bit text. A Binary that bears the
    // component's type name of a string or a hexadecimal string is one from then on.
    static Settings FromValues(
        Component const& component, Dictionary const& values, std::string const& schema = {});

    Settings(Settings&&) noexcept;
    Settings& operator=(Settings&&) noexcept;
    Settings(Settings const&) = delete;
    Settings& operator=(Settings const&) = delete;
    ~Settings();

    // A copy of all settings in their order. Throws Error when memory runs out.
    Dictionary Values() const;

private:
    struct State;

    explicit Settings(std::unique_ptr<State> state);

    std::unique_ptr<State> fState;
};

} // namespace pdfsettings
