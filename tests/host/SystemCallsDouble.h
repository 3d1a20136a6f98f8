// The system's calls for files with faults on demand: the linker leads the calls of static code
// through here (see --wrap in CMakeLists.txt).
#pragma once

#include <string_view>

namespace support {

// While one lives, the calls are counted. At most one lives at a time.
class SystemCallsDouble {
public:
    SystemCallsDouble();
    ~SystemCallsDouble();
    SystemCallsDouble(SystemCallsDouble const&) = delete;
    SystemCallsDouble& operator=(SystemCallsDouble const&) = delete;

    // The nth call from now on, counted from 1, fails with an errno value and does nothing. Closing
    // closes all the same, as the system's does.
    void FailAt(int n, int error);

    // So does the next call of that name.
    void FailNext(std::string_view name, int error);

    // The process is killed after the nth call from now on.
    void KillAfter(int n);

    // There are no files without names here.
    void RefuseNamelessFiles();

    // Whether the failure was reached.
    bool HasFailed() const;
};

} // namespace support
