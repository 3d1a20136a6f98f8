// Collects what is reported to the runtime's error channel.
#pragma once

#include "api/BIBRuntime.h"

#include <string>
#include <vector>

namespace support {

// At most one lives at a time.
class ErrorLog {
public:
    ErrorLog() { BIBRuntimeSetErrorChannel(&Take, this); }
    ~ErrorLog() { BIBRuntimeSetErrorChannel(nullptr, nullptr); }
    ErrorLog(ErrorLog const&) = delete;
    ErrorLog& operator=(ErrorLog const&) = delete;

    std::vector<std::string> fMessages;

private:
    static void Take(char const* message, void* log) {
        static_cast<ErrorLog*>(log)->fMessages.emplace_back(message);
    }
};

} // namespace support
