#include "tests/host/SystemCallsDouble.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

extern "C" int __real_fchown(int a, uid_t b, gid_t c);

namespace support {

namespace {

SystemCallsDouble* gDouble = nullptr; // the one that lives; null while its action runs

} // namespace

SystemCallsDouble::SystemCallsDouble() {
    gDouble = this;
}

SystemCallsDouble::~SystemCallsDouble() {
    gDouble = nullptr;
}

int SystemCallsDouble::ErrorOf(std::string_view name) {
    if (fNth > 0 && (fFailsLater ? fCount >= fNth : fCount == fNth)) {
        return fError;
    }
    auto const failing = fFailing.find(name);
    if (failing == fFailing.end()) {
        return 0;
    }
    Failure const failure = failing->second;
    if (!failure.fIsLasting) {
        fFailing.erase(failing);
    }
    return failure.fError;
}

void SystemCallsDouble::Act() {
    if (fAction) {
        int const error = errno;
        gDouble = nullptr;
        fAction(fCount);
        gDouble = this;
        errno = error;
    }
}

template <class Call>
auto SystemCallsDouble::Pass(std::string_view name, Call call) -> decltype(call()) {
    if (gDouble == nullptr) {
        return call();
    }
    ++gDouble->fCount;
    ++gDouble->fCounts[std::string(name)];
    decltype(call()) result = -1;
    if (int const error = gDouble->ErrorOf(name); error != 0) {
        gDouble->fHasFailed = true;
        errno = error;
    } else {
        result = call();
    }
    if (name != "lease") {
        gDouble->Act();
    }
    return result;
}

// As fchown does for a program that is not root's.
int SystemCallsDouble::Give(int file, uid_t user, gid_t group) {
    struct stat status {};
    if (gDouble == nullptr || !gDouble->fGroups) {
        return __real_fchown(file, user, group);
    }
    bool const isOurs =
        fstat(file, &status) == 0 && (user == static_cast<uid_t>(-1) || user == status.st_uid);
    if (!isOurs || !gDouble->fGroups->contains(group)) {
        errno = EPERM;
        return -1;
    }
    return __real_fchown(file, status.st_uid, group);
}

int SystemCallsDouble::OnFileSystem(int result, struct statfs* status) {
    if (gDouble != nullptr && gDouble->fFileSystem != 0) {
        status->f_type = gDouble->fFileSystem;
    }
    return result;
}

} // namespace support

namespace {

using support::SystemCallsDouble;

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
        return SystemCallsDouble::Pass(name, [&]() -> result { return work; }); \
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
    SystemCallsDouble::Give(a, b, c))
SUPPORT_WRAP_AS(int, fstatfs, (int a, struct statfs* b), "fstatfs",
    SystemCallsDouble::OnFileSystem(__real_fstatfs(a, b), b))
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
    return SystemCallsDouble::Pass("close", [&] { return closed; });
}

} // extern "C"
#pragma GCC visibility pop
