// The settings component in this process.
#pragma once

#include "pdfsettings/Export.h"

#include <filesystem>
#include <memory>

namespace pdfsettings {

namespace detail {
class RunningComponent;
}

// A handle on the component that runs in this process, which a process does once at a time. Nothing
// in this library asks for one: whatever needs the component (validation, lists) takes the one that
// runs, also one that a host runs on the runtime of this library, or starts the one at
// DefaultPath(), which then runs until the program ends. What a host started is never stopped here.
//
// Threads: this library may be used from any thread. Validations are made one after the other. A
// process that was made by fork() while another thread validated must not use the component: that
// thread's call never ends there.
class PDFSETTINGS_API Component {
public:
    // The one that runs, or the one at DefaultPath(), which is started. Throws Error when it cannot
    // be loaded or does not start.
    static Component Shared();

    // Loads the component from a file and starts it on the runtime; a path without a slash is
    // looked for as the system's loader does. It stops when all handles are gone, may then be
    // started again, and stays loaded. Throws Error when it cannot be loaded or does not start, and
    // with kInUse when the component runs already.
    static Component Start(std::filesystem::path const& library = DefaultPath());

    // The file libPDFSettings.so in the folder pdfsettings-2 beside the runtime's own library,
    // where it is installed, or else beside that library itself.
    static std::filesystem::path DefaultPath();

    // The component's version, as major * 65536 + minor * 256 + revision. Throws Error for one that
    // a host runs.
    long Version() const;

private:
    friend class RawAccess;

    PDFSETTINGS_LOCAL explicit Component(std::shared_ptr<detail::RunningComponent> running);

    std::shared_ptr<detail::RunningComponent> fRunning;
};

} // namespace pdfsettings
