// The system calls for files with injected failures: the linker leads the calls of static code
// through here (see --wrap in CMakeLists.txt).
#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace support {

// While one lives, the calls are counted. At most one lives at a time.
class SystemCallsDouble {
public:
    SystemCallsDouble();
    ~SystemCallsDouble();
    SystemCallsDouble(SystemCallsDouble const&) = delete;
    SystemCallsDouble& operator=(SystemCallsDouble const&) = delete;

    // The nth call from now on, counted from 1, fails with an errno value and does nothing, and so
    // do all later ones if wanted. A failed close closes anyway, as in the system.
    void FailAt(int n, int error, bool andAllLater = false);

    // So do the next call of that name, and all calls of it. openat2 is "syscall"; "lease",
    // "exchange", "noreplace", "nameless" and "folder" are what fcntl, renameat2 and the two ways
    // to open do by a flag.
    void FailNext(std::string_view name, int error);
    void FailAlways(std::string_view name, int error);

    // All files lie on a file system of that kind (statfs).
    void SetFileSystem(long kind);

    // The caller gives files away as a program that is not root's does: to those groups only.
    void BeUserOf(std::set<gid_t> groups);

    // Calls action after each call, with the number of the call. Calls that action makes are not
    // counted. Not between a lease and its end: whoever opens the file then would wait for it.
    void AfterEach(std::function<void(int)> action);

    // How many calls there were, of all names or of one, and whether one failed.
    int Count() const;
    int Count(std::string_view name) const;
    bool HasFailed() const;
};

} // namespace support
