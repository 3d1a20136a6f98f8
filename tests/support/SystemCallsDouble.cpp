#include "tests/support/SystemCallsDouble.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <pwd.h>
#include <sys/auxv.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

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

template <class Result, class Work>
Result
SystemCallsDouble::Pass(std::string_view name, std::type_identity_t<Result> failure, Work work) {
    if (gDouble == nullptr) {
        return work();
    }
    ++gDouble->fCount;
    ++gDouble->fCounts[std::string(name)];
    Result result = failure;
    if (int const error = gDouble->ErrorOf(name); error != 0) {
        gDouble->fHasFailed = true;
        errno = error;
    } else {
        result = work();
    }
    if (name != "lease") {
        gDouble->Act();
    }
    return result;
}

namespace {

// As fchown does for a program that is not root's.
template <class Call>
int Give(Call real, int file, uid_t user, gid_t group) {
    struct stat status {};
    if (gDouble == nullptr || gDouble->fGroups.empty()) {
        return real(file, user, group);
    }
    bool const isOurs =
        fstat(file, &status) == 0 && (user == static_cast<uid_t>(-1) || user == status.st_uid);
    if (!isOurs || !gDouble->fGroups.contains(group)) {
        errno = EPERM;
        return -1;
    }
    return real(file, status.st_uid, group);
}

std::size_t Movable(std::size_t size) {
    return gDouble == nullptr ? size : std::min(size, gDouble->fMostMoved);
}

bool IsNameless(std::uint64_t flags) {
    return (flags & O_TMPFILE) == O_TMPFILE;
}

char const* NameOfOpening(int flags) {
    bool const isFolder = (flags & O_DIRECTORY) != 0 && (flags & O_PATH) == 0;
    return IsNameless(static_cast<unsigned>(flags)) ? "nameless" : isFolder ? "folder" : "openat";
}

char const* NameOfRenaming(unsigned flags) {
    return flags == RENAME_EXCHANGE    ? "exchange"
           : flags == RENAME_NOREPLACE ? "noreplace"
                                       : "renameat2";
}

// The call of the C library. Machines with 32 bits have those with sizes or dates of 64 under names
// of their own.
void* RealCall(std::string_view name) {
    std::pair<std::string_view, char const*> const kOf32Bits[] = {
        {"fcntl", "__fcntl_time64"},
        {"fstat", "__fstat64_time64"},
        {"fstatat", "__fstatat64_time64"},
        {"fstatfs", "fstatfs64"},
        {"lseek", "lseek64"},
        {"open", "open64"},
        {"openat", "openat64"},
        {"pread", "pread64"},
        {"readdir", "readdir64"},
    };
    auto const* const found =
        std::ranges::find(kOf32Bits, name, &std::pair<std::string_view, char const*>::first);
    bool const isOther = sizeof(void*) == 4 && found != std::end(kOf32Bits);
    return dlsym(RTLD_NEXT, isOther ? found->second : name.data());
}

} // namespace

} // namespace support

using support::gDouble;
using support::SystemCallsDouble;

// The call that one here replaces. An atomic in place of a guarded static: the guard of some
// libraries makes one of these calls itself.
#define SUPPORT_REAL(call) \
    [] { \
        static std::atomic<void*> real = nullptr; \
        real = real == nullptr ? support::RealCall(#call) : real.load(); \
        return reinterpret_cast<decltype(&(call))>(real.load()); \
    }()

// Replaces a call with the parameters ..., which goes by a name and gives failure where it fails;
// what is in brackets is passed on.
#define SUPPORT_REPLACE_AS(result, call, name, failure, arguments, ...) \
    result call(__VA_ARGS__) noexcept(noexcept(call arguments)) { \
        return SystemCallsDouble::Pass<result>( \
            name, failure, [&] { return SUPPORT_REAL(call) arguments; }); \
    }
#define SUPPORT_REPLACE(result, call, arguments, ...) \
    SUPPORT_REPLACE_AS(result, call, #call, -1, arguments, __VA_ARGS__)

// The program exports these, so that they replace the system calls for every library.
#pragma GCC visibility push(default)
extern "C" {

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the system's are reserved
// clang-format off
SUPPORT_REPLACE(int, faccessat, (a, b, c, d), int a, char const* b, int c, int d)
SUPPORT_REPLACE(int, fchmod, (a, b), int a, mode_t b)
SUPPORT_REPLACE(ssize_t, fgetxattr, (a, b, c, d), int a, char const* b, void* c, size_t d)
SUPPORT_REPLACE(ssize_t, flistxattr, (a, b, c), int a, char* b, size_t c)
SUPPORT_REPLACE(int, flock, (a, b), int a, int b)
SUPPORT_REPLACE(int, fremovexattr, (a, b), int a, char const* b)
SUPPORT_REPLACE(int, fsetxattr, (a, b, c, d, e), int a, char const* b, void const* c, size_t d, int e)
SUPPORT_REPLACE(int, fstat, (a, b), int a, struct stat* b)
SUPPORT_REPLACE(int, fstatat, (a, b, c, d), int a, char const* b, struct stat* c, int d)
SUPPORT_REPLACE(int, fsync, (a), int a)
SUPPORT_REPLACE(ssize_t, getrandom, (a, b, c), void* a, size_t b, unsigned c)
SUPPORT_REPLACE(int, linkat, (a, b, c, d, e), int a, char const* b, int c, char const* d, int e)
SUPPORT_REPLACE(off_t, lseek, (a, b, c), int a, off_t b, int c)
SUPPORT_REPLACE(int, mkdir, (a, b), char const* a, mode_t b)
SUPPORT_REPLACE(ssize_t, pread, (a, b, c, d), int a, void* b, size_t c, off_t d)
SUPPORT_REPLACE(ssize_t, read, (a, b, support::Movable(c)), int a, void* b, size_t c)
SUPPORT_REPLACE(ssize_t, readlinkat, (a, b, c, d), int a, char const* b, char* c, size_t d)
SUPPORT_REPLACE(int, statx, (a, b, c, d, e), int a, char const* b, int c, unsigned d, struct statx* e)
SUPPORT_REPLACE(int, unlink, (a), char const* a)
SUPPORT_REPLACE(int, unlinkat, (a, b, c), int a, char const* b, int c)
SUPPORT_REPLACE(ssize_t, write, (a, b, support::Movable(c)), int a, void const* b, size_t c)
SUPPORT_REPLACE_AS(char*, getcwd, "getcwd", nullptr, (a, b), char* a, size_t b)
SUPPORT_REPLACE_AS(DIR*, opendir, "opendir", nullptr, (a), char const* a)
SUPPORT_REPLACE_AS(int, renameat2, support::NameOfRenaming(e), -1, (a, b, c, d, e),
    int a, char const* b, int c, char const* d, unsigned e)
// clang-format on

int fchown(int file, uid_t user, gid_t group) noexcept {
    return SystemCallsDouble::Pass<int>(
        "fchown", -1, [=] { return support::Give(SUPPORT_REAL(fchown), file, user, group); });
}

int fstatfs(int file, struct statfs* status) noexcept {
    int const result = SystemCallsDouble::Pass<int>(
        "fstatfs", -1, [=] { return SUPPORT_REAL(fstatfs)(file, status); });
    if (gDouble != nullptr && gDouble->fFileSystem != 0) {
        status->f_type = static_cast<decltype(status->f_type)>(gDouble->fFileSystem);
    }
    return result;
}

int open(char const* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    mode_t const mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return SystemCallsDouble::Pass<int>(
        "open", -1, [=] { return SUPPORT_REAL(open)(path, flags, mode); });
}

int openat(int folder, char const* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    mode_t const mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return SystemCallsDouble::Pass<int>(support::NameOfOpening(flags), -1, [=] {
        return SUPPORT_REAL(openat)(folder, path, flags, mode);
    });
}

int fcntl(int file, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    long const argument = va_arg(arguments, long);
    va_end(arguments);
    return SystemCallsDouble::Pass<int>(command == F_SETLEASE ? "lease" : "fcntl", -1, [=] {
        return SUPPORT_REAL(fcntl)(file, command, argument);
    });
}

// Of these, openat2 is for files. The library has no function for it. As the library's own, it
// takes six arguments whether they were given or not, which is not for a sanitizer to see.
[[gnu::no_sanitize_address]] long syscall(long number, ...) noexcept {
    va_list list;
    va_start(list, number);
    void* a[6];
    for (void*& argument : a) {
        argument = va_arg(list, void*);
    }
    va_end(list);
    auto const call = [&] {
        return SUPPORT_REAL(syscall)(number, a[0], a[1], a[2], a[3], a[4], a[5]);
    };
    if (number != SYS_openat2) {
        return call();
    }
    auto const flags = static_cast<open_how const*>(a[2])->flags;
    return SystemCallsDouble::Pass<long>(
        support::IsNameless(flags) ? "nameless" : "syscall", -1, call);
}

int close(int file) {
    int const result = SUPPORT_REAL(close)(file);
    return SystemCallsDouble::Pass<int>("close", -1, [=] { return result; });
}

dirent* readdir(DIR* folder) {
    dirent* const entry = SUPPORT_REAL(readdir)(folder);
    return SystemCallsDouble::Pass<dirent*>("readdir", nullptr, [=] { return entry; });
}

unsigned long getauxval(unsigned long type) noexcept {
    bool const isRaised = gDouble != nullptr && gDouble->fHasRaisedRights;
    return type == AT_SECURE && isRaised ? 1 : SUPPORT_REAL(getauxval)(type);
}

int getpwuid_r(uid_t user, passwd* entry, char* buffer, size_t size, passwd** result) {
    *result = nullptr;
    int const error = SystemCallsDouble::Pass<int>("getpwuid_r", EIO, [=] {
        return SUPPORT_REAL(getpwuid_r)(user, entry, buffer, size, result);
    });
    if (gDouble != nullptr && !gDouble->fHome.empty() && error == 0) {
        entry->pw_dir = gDouble->fHome.data();
        *result = entry;
    }
    return error;
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

} // extern "C"
#pragma GCC visibility pop
