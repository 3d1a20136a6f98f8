// The settings component in this process.
#pragma once

#include "pdfsettings/Export.h"

#include <filesystem>
#include <memory>

namespace pdfsettings {

namespace detail {
class RunningComponent;
}

// A handle to the component that runs in this process; a process can run only one at a time. No
// function of this library requires a handle: those that use the component (validation, lists) use
// the one that is running, even if a host runs it on this library's runtime, or else start the one
// at DefaultPath(), which then runs until the program ends. This library never stops a component
// that a host started.
//
// Threads: this library may be used from any thread. Validations run one after another. A process
// created by fork() while another thread validates must not use the component: it would wait for
// ever for that thread.
class PDFSETTINGS_API Component {
public:
    // The component that is running, or else the one at DefaultPath(), which is started. Throws
    // Error if it cannot be loaded or does not start.
    static Component Shared();

    // Loads the component from a file and starts it on the runtime. A path without a slash is
    // searched for by the system's loader. The component stops when its last handle is destroyed;
    // it may then be started again, and stays loaded. Throws Error if it cannot be loaded or does
    // not start, and with kInUse if a component is running.
    static Component Start(std::filesystem::path const& library = DefaultPath());

    // The path of libPDFSettings.so: in the folder pdfsettings-2 beside the runtime's library,
    // where it is installed, or else beside that library.
    static std::filesystem::path DefaultPath();

    // The component's version, as major * 65536 + minor * 256 + revision. Throws Error for a
    // component that a host runs.
    long Version() const;

private:
    friend class RawAccess;

    PDFSETTINGS_LOCAL explicit Component(std::shared_ptr<detail::RunningComponent> running);

    std::shared_ptr<detail::RunningComponent> fRunning;
};

} // namespace pdfsettings
