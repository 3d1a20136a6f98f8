// What tests and tools may ask of the runtime: what is alive, how much was done, and failures on
// demand. Any thread may call these. The counts of things that other threads are making or
// destroying meanwhile are those of some moment.
#pragma once

#include "api/BIBRuntime.h"

namespace bibrt {

// What callers made and nobody has given up yet. What the runtime keeps for itself is not among it:
// registered rows, the texts of released atoms, the core errors and the names of the built-in
// types.
struct LiveCounts {
    unsigned long fContainers;
    unsigned long fBlocks; // of the allocator, whoever asked for them
    unsigned long fAtoms;
    unsigned long fErrors;
    unsigned long fSharedBuffers;

    friend bool operator==(LiveCounts const&, LiveCounts const&) = default;
};

// The things that are alive now.
BIBRT_EXPORT LiveCounts CountLive() noexcept;

// All that follows exists in builds with PDFSETTINGS_FAILURE_HOOKS only.

// The allocations and the stream operations that were attempted so far, failed ones among them.
BIBRT_EXPORT unsigned long CountAllocations() noexcept;
BIBRT_EXPORT unsigned long CountStreamOperations() noexcept;

// Makes the n-th attempt from now fail, where 1 is the next one, or it and every later one. A new
// order replaces the one before.
BIBRT_EXPORT void FailAllocation(unsigned long n, bool andAllLater) noexcept;
BIBRT_EXPORT void FailStreamOperation(unsigned long n, bool andAllLater) noexcept;

// Takes both orders back.
BIBRT_EXPORT void ResetFailures() noexcept;

} // namespace bibrt
