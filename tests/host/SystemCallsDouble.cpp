#include "tests/host/SystemCallsDouble.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <linux/openat2.h>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utility>

extern "C" int __real_fchown(int a, uid_t b, gid_t c);

namespace {

struct Plan {
    bool fIsActive = false;
    int fCalls = 0;
    std::map<std::string, int, std::less<>> fCounts;
    long fFileSystem = 0;
    int fFailing = 0;
    bool fFailsLater = false;
    int fError = 0;
    std::pair<std::string_view, int> fNext;
    std::map<std::string_view, int> fAlways;
    std::optional<std::set<gid_t>> fGroups;
    std::function<void(int)> fAction;
    bool fHasFailed = false;
};

Plan gPlan;

// The error that a call is to fail with, or 0.
int ErrorOf(std::string_view name) {
    bool const isNth = gPlan.fFailing > 0 && (gPlan.fFailsLater ? gPlan.fCalls >= gPlan.fFailing
                                                                : gPlan.fCalls == gPlan.fFailing);
    if (isNth) {
        return gPlan.fError;
    }
    if (name == gPlan.fNext.first) {
        return std::exchange(gPlan.fNext, {}).second;
    }
    auto const always = gPlan.fAlways.find(name);
    return always == gPlan.fAlways.end() ? 0 : always->second;
}

// One call of a name: what it gives, or -1 when it is its turn to fail.
template <class Call>
auto Pass(std::string_view name, Call call) -> decltype(call()) {
    if (!gPlan.fIsActive) {
        return call();
    }
    ++gPlan.fCalls;
    ++gPlan.fCounts[std::string(name)];
    decltype(call()) result = -1;
    if (int const error = ErrorOf(name); error != 0) {
        gPlan.fHasFailed = true;
        errno = error;
    } else {
        result = call();
    }
    if (gPlan.fAction && name != "lease") {
        int const error = errno;
        gPlan.fIsActive = false;
        gPlan.fAction(gPlan.fCalls);
        gPlan.fIsActive = true;
        errno = error;
    }
    return result;
}

// As fchown does for a program that is not root's.
int GiveAsUser(int file, uid_t user, gid_t group) {
    struct stat status {};
    bool const isOurs =
        fstat(file, &status) == 0 && (user == static_cast<uid_t>(-1) || user == status.st_uid);
    if (!isOurs || !gPlan.fGroups->contains(group)) {
        errno = EPERM;
        return -1;
    }
    return __real_fchown(file, status.st_uid, group);
}

int OnFileSystem(int result, struct statfs* status) {
    if (gPlan.fIsActive && gPlan.fFileSystem != 0) {
        status->f_type = gPlan.fFileSystem;
    }
    return result;
}

bool IsNameless(int flags) {
    return (flags & O_TMPFILE) == O_TMPFILE;
}

char const* NameOfOpening(int flags) {
    bool const isFolder = (flags & O_DIRECTORY) != 0 && (flags & O_PATH) == 0;
    return IsNameless(flags) ? "nameless" : isFolder ? "folder" : "openat";
}

char const* NameOfRenaming(unsigned flags) {
    return flags == RENAME_EXCHANGE    ? "exchange"
           : flags == RENAME_NOREPLACE ? "noreplace"
                                       : "renameat2";
}

} // namespace

// Visible to the sanitizers, whose own calls are led here too.
#pragma GCC visibility push(default)
extern "C" {

// A call that goes by a name and does some work; the parameters are in brackets.
#define SUPPORT_WRAP_AS(result, call, parameters, name, work) \
    result __real_##call parameters; \
    result __wrap_##call parameters { \
        return Pass(name, [&]() -> result { return work; }); \
    }
// One that does what it always does.
#define SUPPORT_WRAP(result, call, parameters, arguments) \
    SUPPORT_WRAP_AS(result, call, parameters, #call, __real_##call arguments)

// clang-format off
SUPPORT_WRAP(int, faccessat, (int a, char const* b, int c, int d), (a, b, c, d))
SUPPORT_WRAP(int, fchmod, (int a, mode_t b), (a, b))
SUPPORT_WRAP(ssize_t, fgetxattr, (int a, char const* b, void* c, size_t d), (a, b, c, d))
SUPPORT_WRAP(ssize_t, flistxattr, (int a, char* b, size_t c), (a, b, c))
SUPPORT_WRAP(int, flock, (int a, int b), (a, b))
SUPPORT_WRAP(int, fremovexattr, (int a, char const* b), (a, b))
SUPPORT_WRAP(int, fsetxattr, (int a, char const* b, void const* c, size_t d, int e), (a, b, c, d, e))
SUPPORT_WRAP(int, fstat, (int a, struct stat* b), (a, b))
SUPPORT_WRAP(int, fstatat, (int a, char const* b, struct stat* c, int d), (a, b, c, d))
SUPPORT_WRAP(int, fsync, (int a), (a))
SUPPORT_WRAP(ssize_t, getrandom, (void* a, size_t b, unsigned c), (a, b, c))
SUPPORT_WRAP(int, linkat, (int a, char const* b, int c, char const* d, int e), (a, b, c, d, e))
SUPPORT_WRAP(int, open, (char const* a, int b, mode_t c), (a, b, c))
SUPPORT_WRAP(ssize_t, pread, (int a, void* b, size_t c, off_t d), (a, b, c, d))
SUPPORT_WRAP(ssize_t, read, (int a, void* b, size_t c), (a, b, c))
SUPPORT_WRAP(ssize_t, readlinkat, (int a, char const* b, char* c, size_t d), (a, b, c, d))
SUPPORT_WRAP(int, unlinkat, (int a, char const* b, int c), (a, b, c))
SUPPORT_WRAP(ssize_t, write, (int a, void const* b, size_t c), (a, b, c))

SUPPORT_WRAP_AS(int, fcntl, (int a, int b, long c), b == F_SETLEASE ? "lease" : "fcntl", __real_fcntl(a, b, c))
SUPPORT_WRAP_AS(int, fchown, (int a, uid_t b, gid_t c), "fchown",
    gPlan.fGroups ? GiveAsUser(a, b, c) : __real_fchown(a, b, c))
SUPPORT_WRAP_AS(int, fstatfs, (int a, struct statfs* b), "fstatfs", OnFileSystem(__real_fstatfs(a, b), b))
SUPPORT_WRAP_AS(int, openat, (int a, char const* b, int c, mode_t d), NameOfOpening(c), __real_openat(a, b, c, d))
SUPPORT_WRAP_AS(int, renameat2, (int a, char const* b, int c, char const* d, unsigned e), NameOfRenaming(e),
    __real_renameat2(a, b, c, d, e))
// openat2, which the library has no function for.
SUPPORT_WRAP_AS(long, syscall, (long a, long b, char const* c, open_how const* d, long e),
    a == SYS_openat2 && IsNameless(static_cast<int>(d->flags)) ? "nameless" : "syscall", __real_syscall(a, b, c, d, e))
// clang-format on

int __real_close(int file);
int __wrap_close(int file) {
    int const closed = __real_close(file);
    return Pass("close", [&] { return closed; });
}

} // extern "C"
#pragma GCC visibility pop

namespace support {

SystemCallsDouble::SystemCallsDouble() {
    gPlan = {};
    gPlan.fIsActive = true;
}

SystemCallsDouble::~SystemCallsDouble() {
    gPlan = {};
}

void SystemCallsDouble::BeUserOf(std::set<gid_t> groups) {
    gPlan.fGroups = std::move(groups);
}

void SystemCallsDouble::FailAt(int n, int error, bool andAllLater) {
    gPlan.fFailing = gPlan.fCalls + n;
    gPlan.fFailsLater = andAllLater;
    gPlan.fError = error;
}

void SystemCallsDouble::FailNext(std::string_view name, int error) {
    gPlan.fNext = {name, error};
}

void SystemCallsDouble::FailAlways(std::string_view name, int error) {
    gPlan.fAlways[name] = error;
}

void SystemCallsDouble::SetFileSystem(long kind) {
    gPlan.fFileSystem = kind;
}

void SystemCallsDouble::AfterEach(std::function<void(int)> action) {
    gPlan.fAction = std::move(action);
}

int SystemCallsDouble::Count() const {
    return gPlan.fCalls;
}

int SystemCallsDouble::Count(std::string_view name) const {
    auto const found = gPlan.fCounts.find(name);
    return found == gPlan.fCounts.end() ? 0 : found->second;
}

bool SystemCallsDouble::HasFailed() const {
    return gPlan.fHasFailed;
}

} // namespace support
