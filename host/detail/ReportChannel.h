// Catches what the component reports, so that it can become the text of an exception.
#pragma once

#include <string>

namespace pdfsettings::detail {

// Directs the runtime's reports to this module for as long as it lives; afterwards they go where
// they go by default. One at a time.
class ReportChannel {
public:
    ReportChannel() noexcept;
    ~ReportChannel();
    ReportChannel(ReportChannel const&) = delete;
    ReportChannel& operator=(ReportChannel const&) = delete;
};

// Forgets what was reported on this thread, before a call whose report is asked for.
void ForgetReport() noexcept;

// Throws Error with the last report on this thread, or with fallback when there is none.
[[noreturn]] void ThrowReport(std::string const& fallback);

// Runs a call of the component that gives null on failure. Throws Error with what it reported.
template <class Call>
auto ReportedCall(char const* operation, Call call) -> decltype(call()) {
    ForgetReport();
    auto* const result = call();
    if (result == nullptr) {
        ThrowReport(std::string(operation) + " failed without a reason");
    }
    return result;
}

} // namespace pdfsettings::detail
