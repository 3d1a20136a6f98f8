#include "tests/support/SystemFaults.h"

#include "runtime/objects/FailurePoint.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace support {

namespace {

bibrt::FailurePoint gFaults;
std::atomic<bool> gStopsBeforeWriting = false;
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

void SetHomeInDatabase(std::string home) {
    gHome = std::move(home);
}

} // namespace support

using support::Fails;
using support::gHome;
using support::Next;

// The program exports these, so that they replace the system calls for every library.
#pragma GCC visibility push(default)
extern "C" {

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the system's are reserved
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

ssize_t read(int file, void* buffer, size_t size) {
    return Fails() ? -1 : Next(&read, "read")(file, buffer, size);
}

ssize_t write(int file, void const* buffer, size_t size) {
    if (support::gStopsBeforeWriting.exchange(false)) {
        raise(SIGSTOP);
    }
    return Fails() ? -1 : Next(&write, "write")(file, buffer, size);
}

off_t lseek(int file, off_t offset, int origin) noexcept {
    return Fails() ? -1 : Next(&lseek, "lseek")(file, offset, origin);
}

int fstat(int file, struct stat* status) noexcept {
    return Fails() ? -1 : Next(&fstat, "fstat")(file, status);
}

int fstatat(int folder, char const* path, struct stat* status, int flags) noexcept {
    return Fails() ? -1 : Next(&fstatat, "fstatat")(folder, path, status, flags);
}

int statx(
    int folder, char const* path, int flags, unsigned int wanted, struct statx* status) noexcept {
    return Fails() ? -1 : Next(&statx, "statx")(folder, path, flags, wanted, status);
}

int mkdir(char const* path, mode_t mode) noexcept {
    return Fails() ? -1 : Next(&mkdir, "mkdir")(path, mode);
}

int unlink(char const* path) noexcept {
    return Fails() ? -1 : Next(&unlink, "unlink")(path);
}

int unlinkat(int folder, char const* path, int flags) noexcept {
    return Fails() ? -1 : Next(&unlinkat, "unlinkat")(folder, path, flags);
}

char* getcwd(char* buffer, size_t size) noexcept {
    return Fails() ? nullptr : Next(&getcwd, "getcwd")(buffer, size);
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
