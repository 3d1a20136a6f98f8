#include "host/detail/ReportChannel.h"

#include "api/BIBRuntime.h"
#include "pdfsettings/Error.h"

#include <exception>
#include <utility>

namespace pdfsettings::detail {

namespace {

// Of the thread, since the component reports on the thread of the call.
thread_local std::string gReport;

// A report that finds no memory is lost; the call's fallback text stands in for it.
void KeepReport(char const* message, void* /*client*/) noexcept {
    try {
        gReport = message;
    } catch (std::exception const&) {
        gReport.clear();
    }
}

} // namespace

ReportChannel::ReportChannel() noexcept {
    BIBRuntimeSetErrorChannel(&KeepReport, nullptr);
}

ReportChannel::~ReportChannel() {
    BIBRuntimeSetErrorChannel(nullptr, nullptr);
}

void ForgetReport() noexcept {
    gReport.clear();
}

void ThrowReport(std::string const& fallback) {
    std::string const report = std::exchange(gReport, {});
    throw Error(report.empty() ? fallback : report);
}

} // namespace pdfsettings::detail
