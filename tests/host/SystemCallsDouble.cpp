#include "tests/host/SystemCallsDouble.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct Plan {
    bool fIsActive = false;
    int fFailing = 0;
    int fKilling = 0;
    std::string_view fFailingName;
    int fError = 0;
    bool fRefusesNameless = false;
    bool fHasFailed = false;
};

Plan gPlan;

bool IsToFail(std::string_view name) {
    bool const isNext = name == gPlan.fFailingName;
    if (isNext) {
        gPlan.fFailingName = {};
    }
    bool const isNth = gPlan.fFailing > 0 && --gPlan.fFailing == 0;
    return isNext || isNth;
}

// One call of a name: what it gives, or -1 when it is its turn to fail.
template <class Call>
int Pass(std::string_view name, Call call) {
    if (!gPlan.fIsActive) {
        return static_cast<int>(call());
    }
    if (IsToFail(name)) {
        gPlan.fHasFailed = true;
        errno = gPlan.fError;
        return -1;
    }
    auto const result = call();
    if (gPlan.fKilling > 0 && --gPlan.fKilling == 0) {
        raise(SIGKILL);
    }
    return static_cast<int>(result);
}

} // namespace

// Visible to the sanitizers, whose own calls are led here too.
#pragma GCC visibility push(default)
extern "C" {

decltype(close) __real_close;
decltype(fchmod) __real_fchmod;
decltype(fchown) __real_fchown;
decltype(fsync) __real_fsync;
decltype(linkat) __real_linkat;
decltype(open) __real_open;
decltype(rename) __real_rename;
decltype(stat) __real_stat;
decltype(unlink) __real_unlink;
decltype(write) __real_write;

int __wrap_close(int file) {
    int const closed = __real_close(file);
    return Pass("close", [&] { return closed; });
}

int __wrap_fchmod(int file, mode_t mode) {
    return Pass("fchmod", [&] { return __real_fchmod(file, mode); });
}

int __wrap_fchown(int file, uid_t owner, gid_t group) {
    return Pass("fchown", [&] { return __real_fchown(file, owner, group); });
}

int __wrap_fsync(int file) {
    return Pass("fsync", [&] { return __real_fsync(file); });
}

int __wrap_linkat(int oldFolder, char const* oldPath, int newFolder, char const* path, int flags) {
    return Pass(
        "linkat", [&] { return __real_linkat(oldFolder, oldPath, newFolder, path, flags); });
}

int __wrap_open(char const* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    mode_t const mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return Pass("open", [&] {
        if (gPlan.fIsActive && gPlan.fRefusesNameless && (flags & O_TMPFILE) == O_TMPFILE) {
            errno = EOPNOTSUPP;
            return -1;
        }
        return __real_open(path, flags, mode);
    });
}

int __wrap_rename(char const* from, char const* to) {
    return Pass("rename", [&] { return __real_rename(from, to); });
}

int __wrap_stat(char const* path, struct stat* status) {
    return Pass("stat", [&] { return __real_stat(path, status); });
}

int __wrap_unlink(char const* path) {
    return Pass("unlink", [&] { return __real_unlink(path); });
}

ssize_t __wrap_write(int file, void const* bytes, std::size_t size) {
    return Pass("write", [&] { return __real_write(file, bytes, size); });
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

void SystemCallsDouble::FailAt(int n, int error) {
    gPlan.fFailing = n;
    gPlan.fError = error;
}

void SystemCallsDouble::FailNext(std::string_view name, int error) {
    gPlan.fFailingName = name;
    gPlan.fError = error;
}

void SystemCallsDouble::KillAfter(int n) {
    gPlan.fKilling = n;
}

void SystemCallsDouble::RefuseNamelessFiles() {
    gPlan.fRefusesNameless = true;
}

bool SystemCallsDouble::HasFailed() const {
    return gPlan.fHasFailed;
}

} // namespace support
