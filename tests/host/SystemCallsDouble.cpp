#include "tests/host/SystemCallsDouble.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/openat2.h>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utility>

extern "C" int __real_fstat(int file, struct stat* status);

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
    std::function<void(int)> fAction;
    bool fHasFailed = false;
};

Plan gPlan;

// Who owns files, in memory that processes made later share.
class Owners {
public:
    Owners()
        : fEntries(static_cast<Entry*>(mmap(
              nullptr,
              kMost * sizeof(Entry),
              PROT_READ | PROT_WRITE,
              MAP_SHARED | MAP_ANONYMOUS,
              -1,
              0))) {}
    ~Owners() { munmap(fEntries, kMost * sizeof(Entry)); }
    Owners(Owners const&) = delete;
    Owners& operator=(Owners const&) = delete;

    // What fchown does and gives.
    int Give(int file, uid_t user, gid_t group) {
        struct stat status {};
        if (__real_fstat(file, &status) != 0) {
            return -1;
        }
        Pretend(&status);
        uid_t const owner = user == static_cast<uid_t>(-1) ? status.st_uid : user;
        if (fGroups && (owner != status.st_uid || !fGroups->contains(group))) {
            errno = EPERM;
            return -1;
        }
        Set(status, {owner, group});
        return 0;
    }

    void SetGroups(std::optional<std::set<gid_t>> const& groups) { fGroups = groups; }

    void Set(struct stat const& file, support::Owner owner) {
        Entry* entry = Find(file);
        if (entry == nullptr) {
            entry = Find({});
        }
        ASSERT_NE(entry, nullptr);
        *entry = {file.st_dev, file.st_ino, owner};
    }

    // A file that is gone, whose number another one gets.
    void Forget(struct stat const& file) {
        if (Entry* const entry = Find(file)) {
            *entry = {};
        }
    }

    void Pretend(struct stat* file) const {
        if (Entry const* const entry = Find(*file)) {
            file->st_uid = entry->fOwner.fUser;
            file->st_gid = entry->fOwner.fGroup;
        }
    }

private:
    struct Entry {
        dev_t fDevice;
        ino_t fFile;
        support::Owner fOwner;
    };

    static constexpr std::size_t kMost = 64;

    Entry* Find(struct stat const& file) const {
        Entry* const end = fEntries + kMost;
        Entry* const found = std::find_if(fEntries, end, [&](Entry const& entry) {
            return entry.fDevice == file.st_dev && entry.fFile == file.st_ino;
        });
        return found == end ? nullptr : found;
    }

    std::optional<std::set<gid_t>> fGroups;
    Entry* fEntries;
};

std::optional<Owners> gOwners;

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

// The result of a call that gave a status.
int Pretended(int result, struct stat* status) {
    if (result == 0 && gOwners) {
        gOwners->Pretend(status);
    }
    return result;
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
SUPPORT_WRAP(int, fsync, (int a), (a))
SUPPORT_WRAP(ssize_t, getrandom, (void* a, size_t b, unsigned c), (a, b, c))
SUPPORT_WRAP(int, linkat, (int a, char const* b, int c, char const* d, int e), (a, b, c, d, e))
SUPPORT_WRAP(int, open, (char const* a, int b, mode_t c), (a, b, c))
SUPPORT_WRAP(ssize_t, pread, (int a, void* b, size_t c, off_t d), (a, b, c, d))
SUPPORT_WRAP(ssize_t, read, (int a, void* b, size_t c), (a, b, c))
SUPPORT_WRAP(ssize_t, readlinkat, (int a, char const* b, char* c, size_t d), (a, b, c, d))
SUPPORT_WRAP(ssize_t, write, (int a, void const* b, size_t c), (a, b, c))

SUPPORT_WRAP_AS(int, fcntl, (int a, int b, long c), b == F_SETLEASE ? "lease" : "fcntl", __real_fcntl(a, b, c))
SUPPORT_WRAP_AS(int, fchown, (int a, uid_t b, gid_t c), "fchown",
    gOwners ? gOwners->Give(a, b, c) : __real_fchown(a, b, c))
SUPPORT_WRAP_AS(int, fstat, (int a, struct stat* b), "fstat", Pretended(__real_fstat(a, b), b))
SUPPORT_WRAP_AS(int, fstatat, (int a, char const* b, struct stat* c, int d), "fstatat",
    Pretended(__real_fstatat(a, b, c, d), c))
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

int __real_unlinkat(int folder, char const* path, int flags);
int __wrap_unlinkat(int folder, char const* path, int flags) {
    return Pass("unlinkat", [&] {
        struct stat status {};
        bool const isLast = gOwners &&
                            __real_fstatat(folder, path, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
                            status.st_nlink == 1;
        int const result = __real_unlinkat(folder, path, flags);
        if (isLast && result == 0) {
            gOwners->Forget(status);
        }
        return result;
    });
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
    gOwners.reset();
}

void SystemCallsDouble::PretendOwners(std::optional<std::set<gid_t>> const& groups) {
    gOwners.emplace();
    gOwners->SetGroups(groups);
}

void SystemCallsDouble::SetOwner(std::string const& path, Owner owner) {
    struct stat status {};
    ASSERT_EQ(__real_fstatat(AT_FDCWD, path.c_str(), &status, AT_SYMLINK_NOFOLLOW), 0) << path;
    gOwners->Set(status, owner);
}

Owner SystemCallsDouble::OwnerOf(std::string const& path) {
    struct stat status {};
    EXPECT_EQ(__real_fstatat(AT_FDCWD, path.c_str(), &status, AT_SYMLINK_NOFOLLOW), 0) << path;
    if (gOwners) {
        gOwners->Pretend(&status);
    }
    return {status.st_uid, status.st_gid};
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
