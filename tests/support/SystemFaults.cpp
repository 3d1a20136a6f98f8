#include "tests/support/SystemFaults.h"

#include "runtime/objects/FailurePoint.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

namespace support {

namespace {

bibrt::FailurePoint gFaults;
std::atomic<bool> gStopsBeforeWriting = false;
bool gHindersTransfers = false;
bool gHasRaisedRights = false;
std::string gHome; // in the password database

// The call that this one wraps.
template <class Proc>
Proc* Next(Proc* /*call*/, char const* name) {
    return reinterpret_cast<Proc*>(dlsym(RTLD_NEXT, name));
}

bool Fails() {
    bool const fails = gFaults.Attempt();
    if (fails) {
        errno = EIO;
    }
    return fails;
}

template <class Transfer, class Bytes>
ssize_t Move(Transfer transfer, int file, Bytes* bytes, size_t size) {
    constexpr size_t kMost = 2;
    static unsigned long calls = 0;
    if (!gHindersTransfers) {
        return transfer(file, bytes, size);
    }
    if (++calls % 2 == 1) {
        errno = EINTR;
        return -1;
    }
    return transfer(file, bytes, std::min(size, kMost));
}

} // namespace

unsigned long CountSystemCalls() {
    return gFaults.Count();
}

void FailSystemCall(unsigned long n, bool andAllLater) {
    n == 0 ? gFaults.Disarm() : gFaults.Arm(n, andAllLater);
}

void StopBeforeWriting() {
    gStopsBeforeWriting = true;
}

void HinderTransfers(bool areHindered) {
    gHindersTransfers = areHindered;
}

void SetRaisedRights(bool areRaised) {
    gHasRaisedRights = areRaised;
}

void SetHomeInDatabase(std::string home) {
    gHome = std::move(home);
}

} // namespace support

using support::Fails;
using support::gHome;
using support::Next;

// Replaces a call with the parameters ..., which gives failure where it fails and passes on what is
// in brackets elsewhere.
#define SUPPORT_REPLACE(result, call, failure, arguments, ...) \
    result call(__VA_ARGS__) noexcept { \
        return Fails() ? failure : Next(&call, #call) arguments; \
    }

// The program exports these, so that they replace the system calls for every library.
#pragma GCC visibility push(default)
extern "C" {

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the system's are reserved
// clang-format off
SUPPORT_REPLACE(off_t, lseek, -1, (file, offset, origin), int file, off_t offset, int origin)
SUPPORT_REPLACE(int, fstat, -1, (file, status), int file, struct stat* status)
SUPPORT_REPLACE(int, fstatat, -1, (folder, path, status, flags),
    int folder, char const* path, struct stat* status, int flags)
SUPPORT_REPLACE(int, statx, -1, (folder, path, flags, wanted, status),
    int folder, char const* path, int flags, unsigned int wanted, struct statx* status)
SUPPORT_REPLACE(int, mkdir, -1, (path, mode), char const* path, mode_t mode)
SUPPORT_REPLACE(int, unlink, -1, (path), char const* path)
SUPPORT_REPLACE(int, unlinkat, -1, (folder, path, flags), int folder, char const* path, int flags)
SUPPORT_REPLACE(char*, getcwd, nullptr, (buffer, size), char* buffer, size_t size)
// clang-format on

int open(char const* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    mode_t const mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return Fails() ? -1 : Next(&open, "open")(path, flags, mode);
}

int openat(int folder, char const* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    mode_t const mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return Fails() ? -1 : Next(&openat, "openat")(folder, path, flags, mode);
}

int close(int file) {
    int const result = Next(&close, "close")(file);
    return Fails() ? -1 : result;
}

ssize_t read(int file, void* bytes, size_t size) {
    return Fails() ? -1 : support::Move(Next(&read, "read"), file, bytes, size);
}

ssize_t write(int file, void const* bytes, size_t size) {
    if (support::gStopsBeforeWriting.exchange(false)) {
        raise(SIGSTOP);
    }
    return Fails() ? -1 : support::Move(Next(&write, "write"), file, bytes, size);
}

unsigned long getauxval(unsigned long type) noexcept {
    return type == AT_SECURE && support::gHasRaisedRights ? 1 : Next(&getauxval, "getauxval")(type);
}

int getpwuid_r(uid_t user, passwd* entry, char* buffer, size_t size, passwd** result) {
    if (Fails()) {
        *result = nullptr;
        return errno;
    }
    if (gHome.empty()) {
        return Next(&getpwuid_r, "getpwuid_r")(user, entry, buffer, size, result);
    }
    entry->pw_dir = gHome.data();
    *result = entry;
    return 0;
}

DIR* opendir(char const* path) {
    return Fails() ? nullptr : Next(&opendir, "opendir")(path);
}

dirent* readdir(DIR* folder) {
    dirent* const entry = Next(&readdir, "readdir")(folder);
    return Fails() ? nullptr : entry;
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
}
#pragma GCC visibility pop
