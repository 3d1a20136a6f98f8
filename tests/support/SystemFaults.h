// The system's calls for files, which fail on demand for the test program and all that it loads.
#pragma once

#include <string>

namespace support {

// The calls so far.
unsigned long CountSystemCalls();

// Makes the n-th call from now on fail, alone or with all later ones; 0 takes the order back. A
// file is closed, and a folder read, anyway.
void FailSystemCall(unsigned long n, bool andAllLater);

// Stops the process, as by SIGSTOP, right before it writes next.
void StopBeforeWriting();

// The home that the password database gives for every user; that of the system where it is empty.
void SetHomeInDatabase(std::string home);

} // namespace support
