// The system calls for files with injected failures: the linker leads the calls of static code
// through here (see --wrap in CMakeLists.txt).
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <utility>

struct statfs;

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
    void FailAt(int n, int error, bool andAllLater = false) {
        fNth = fCount + n;
        fFailsLater = andAllLater;
        fError = error;
    }

    // So do the next call of that name, and all calls of it. openat2 is "syscall"; "lease",
    // "exchange", "noreplace", "nameless" and "folder" are what fcntl, renameat2 and the two ways
    // to open do by a flag.
    void FailNext(std::string_view name, int error) { fFailing[name] = {error, false}; }
    void FailAlways(std::string_view name, int error) { fFailing[name] = {error, true}; }

    // All files lie on a file system of that kind (statfs).
    void SetFileSystem(long kind) { fFileSystem = kind; }

    // The caller gives files away as a program that is not root's does: to those groups only.
    void BeUserOf(std::set<gid_t> groups) { fGroups = std::move(groups); }

    // Calls action after each call, with the number of the call. Calls that action makes are not
    // counted. Not between a lease and its end: whoever opens the file then would wait for it.
    void AfterEach(std::function<void(int)> action) { fAction = std::move(action); }

    // How many calls there were, of all names or of one, and whether one failed.
    int Count() const { return fCount; }
    int Count(std::string const& name) { return fCounts[name]; }
    bool HasFailed() const { return fHasFailed; }

    // What the calls do: call, or fail if it is the turn of one of that name.
    template <class Call>
    static auto Pass(std::string_view name, Call call) -> decltype(call());
    static int Give(int file, uid_t user, gid_t group);
    static int OnFileSystem(int result, struct statfs* status);

private:
    struct Failure {
        int fError;
        bool fIsLasting;
    };

    int ErrorOf(std::string_view name); // 0 for none
    void Act();

    int fCount = 0;
    std::map<std::string, int> fCounts;
    int fNth = 0;
    bool fFailsLater = false;
    int fError = 0;
    std::map<std::string_view, Failure> fFailing;
    bool fHasFailed = false;
    long fFileSystem = 0;
    std::optional<std::set<gid_t>> fGroups;
    std::function<void(int)> fAction;
};

} // namespace support
