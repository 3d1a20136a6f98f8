// The system's calls for files with injected failures, for the test program and all that it loads.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/types.h>
#include <type_traits>
#include <utility>

namespace support {

// While one lives, the calls are counted. At most one lives at a time.
class SystemCallsDouble {
public:
    SystemCallsDouble();
    ~SystemCallsDouble();
    SystemCallsDouble(SystemCallsDouble const&) = delete;
    SystemCallsDouble& operator=(SystemCallsDouble const&) = delete;

    // The nth call from now on, counted from 1, fails with an errno value and does nothing, and so
    // do all later ones if wanted; 0 takes the order back. A file is closed, and a folder read,
    // anyway.
    void FailAt(int n, int error, bool andAllLater = false) {
        fNth = n == 0 ? 0 : fCount + n;
        fFailsLater = andAllLater;
        fError = error;
    }

    // So do the next call of that name, and all calls of it. openat2 is "syscall"; "lease",
    // "exchange", "noreplace", "nameless" and "folder" are what fcntl, renameat2 and the ways to
    // open do by a flag.
    void FailNext(std::string_view name, int error) { fFailing[name] = {error, false}; }
    void FailAlways(std::string_view name, int error) { fFailing[name] = {error, true}; }

    // Calls action after each call, with the number of the call. Calls that action makes are not
    // counted. Not between a lease and its end: whoever opens the file then would wait for it.
    void AfterEach(std::function<void(int)> action) { fAction = std::move(action); }

    // How many calls there were, of all names or of one, and whether one failed.
    int Count() const { return fCount; }
    int Count(std::string const& name) { return fCounts[name]; }
    bool HasFailed() const { return fHasFailed; }

    // What the system says and does, where it is to be something else.
    std::uint32_t fFileSystem = 0;     // of which kind all are (statfs)
    bool fHasRaisedRights = false;     // whether this is a set-user-ID program
    std::string fHome;                 // of every user, in the password database
    std::size_t fMostMoved = SIZE_MAX; // bytes that one call reads or writes
    std::set<gid_t> fGroups;           // that a program which is not root's may give files to

    // What a call does: its work, or fail if it is its turn.
    template <class Result, class Work>
    static Result Pass(std::string_view name, std::type_identity_t<Result> failure, Work work);

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
    std::function<void(int)> fAction;
};

// While one lives, no file may grow beyond a size in bytes, as where the disk is full.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t size) {
        getrlimit(RLIMIT_FSIZE, &fBefore);
        rlimit const limit{size, fBefore.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &fBefore); }
    FileSizeLimit(FileSizeLimit const&) = delete;
    FileSizeLimit& operator=(FileSizeLimit const&) = delete;

private:
    rlimit fBefore{};
};

} // namespace support
