#include "runtime/Diagnostics.h"

#include "runtime/Atoms.h"
#include "runtime/Container.h"
#include "runtime/Errors.h"
#include "runtime/Memory.h"
#include "runtime/SharedBuffers.h"
#include "runtime/Streams.h"

namespace bibrt {

LiveCounts CountLive() noexcept {
    return {
        .fContainers = CountLiveContainers(),
        .fBlocks = CountLiveBlocks(),
        .fAtoms = CountLiveAtoms(),
        .fErrors = CountLiveErrors(),
        .fSharedBuffers = CountLiveBuffers()};
}

unsigned long CountAllocations() noexcept {
    return AllocationPoint().Count();
}

unsigned long CountStreamOperations() noexcept {
    return StreamPoint().Count();
}

void FailAllocation(unsigned long n, bool andAllLater) noexcept {
    AllocationPoint().Arm(n, andAllLater);
}

void FailStreamOperation(unsigned long n, bool andAllLater) noexcept {
    StreamPoint().Arm(n, andAllLater);
}

void ResetFailures() noexcept {
    AllocationPoint().Disarm();
    StreamPoint().Disarm();
}

} // namespace bibrt
