// The system's calls for files, which fail on demand for the test program and all that it loads.
#pragma once

#include <string>
#include <sys/resource.h>

namespace support {

// The calls so far.
unsigned long CountSystemCalls();

// Makes the n-th call from now on fail, alone or with all later ones; 0 takes the order back. A
// file is closed, and a folder read, anyway.
void FailSystemCall(unsigned long n, bool andAllLater);

// Stops the process, as by SIGSTOP, right before it writes next.
void StopBeforeWriting();

// From now on every second call that reads or writes is interrupted by a signal, and the others
// move two bytes at most; or all is as usual again.
void HinderTransfers(bool areHindered);

// Lets the program look as if it ran with raised rights (a set-user-ID program), or not.
void SetRaisedRights(bool areRaised);

// The home that the password database gives for every user; that of the system where it is empty.
void SetHomeInDatabase(std::string home);

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
