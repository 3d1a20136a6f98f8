// Diagnostics for tests and tools: counts of live objects and of operations, and injected failures.
// Thread safe; while other threads create or destroy objects, a count is a snapshot.
#pragma once

#include "api/BIBRuntime.h"

namespace bibrt {

// The objects that callers made and have not released. Objects of the runtime itself do not count:
// registered rows, atoms that are released, core errors and the names of built-in types.
struct LiveCounts {
    unsigned long fContainers;
    unsigned long fBlocks; // of the runtime's allocator, for callers or for itself
    unsigned long fAtoms;
    unsigned long fErrors;
    unsigned long fSharedBuffers;

    friend bool operator==(LiveCounts const&, LiveCounts const&) = default;
};

// The current counts.
BIBRT_EXPORT LiveCounts CountLive() noexcept;

// The functions below are defined only in builds with PDFSETTINGS_FAILURE_HOOKS.

// The attempts so far, including failed ones.
BIBRT_EXPORT unsigned long CountAllocations() noexcept;
BIBRT_EXPORT unsigned long CountStreamOperations() noexcept;

// Make the n-th attempt from now fail, where 1 is the next one, or this and every later one. A new
// call replaces the former one.
BIBRT_EXPORT void FailAllocation(unsigned long n, bool andAllLater) noexcept;
BIBRT_EXPORT void FailStreamOperation(unsigned long n, bool andAllLater) noexcept;

// Cancels both.
BIBRT_EXPORT void ResetFailures() noexcept;

} // namespace bibrt
