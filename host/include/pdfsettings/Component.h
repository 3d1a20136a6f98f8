// The settings component in this process.
#pragma once

#include "pdfsettings/Export.h"

#include <memory>
#include <string>

namespace pdfsettings {

namespace detail {
class RunningComponent;
}

// The component, loaded and started. Settings are made with one, see Settings. A process runs the
// component once at a time; it may be started again after it was stopped. It stops when this object
// and all Settings that were made with it are gone, and stays loaded. At the latest it stops when
// the program ends: objects that are destroyed after that throw Error when they are used.
//
// While it runs it has the runtime's error channel (BIBRuntimeSetErrorChannel), where reports
// become the texts of Error; afterwards the channel is the runtime's default.
//
// Threads: this object and all its Settings may be used from any thread. Calls into the component
// come one after the other, so a long one keeps the others waiting. No object may be moved or
// destroyed while another thread uses it. A process that was made by fork() while another thread
// was in a call must not use them: that thread's call never ends there.
class PDFSETTINGS_API Component {
public:
    // Loads the component from path and starts it on the runtime. Without a path it is the file
    // libPDFSettings.so in the folder pdfsettings-2 beside the runtime's own library, where it is
    // installed, or else beside the library itself; a path without a slash is looked for as
    // the system's loader does. Throws Error when it cannot be loaded or does not start, and when
    // the component runs already.
    explicit Component(std::string const& path = DefaultPath());
    ~Component();
    Component(Component const&) = delete;
    Component& operator=(Component const&) = delete;

    // Where the component is looked for without a path.
    static std::string DefaultPath();

    // The component's version, as major * 65536 + minor * 256 + revision.
    long Version() const;

private:
    friend class RawAccess;
    friend class Schema;
    friend class Settings;
    friend class SettingsList;

    std::shared_ptr<detail::RunningComponent> fRunning;
};

} // namespace pdfsettings
