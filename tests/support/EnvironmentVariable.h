// An environment variable with another value for a while.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace support {

class EnvironmentVariable {
public:
    // Null for no value.
    EnvironmentVariable(char const* name, char const* value) : fName(name) {
        char const* const before = std::getenv(name);
        fBefore = before != nullptr ? std::optional<std::string>(before) : std::nullopt;
        Set(value);
    }
    ~EnvironmentVariable() { Set(fBefore ? fBefore->c_str() : nullptr); }
    EnvironmentVariable(EnvironmentVariable const&) = delete;
    EnvironmentVariable& operator=(EnvironmentVariable const&) = delete;

    void Set(char const* value) const {
        value != nullptr ? setenv(fName, value, 1) : unsetenv(fName);
    }

private:
    char const* fName;
    std::optional<std::string> fBefore;
};

} // namespace support
