#include "runtime/objects/Diagnostics.h"

#include "runtime/objects/Atoms.h"
#include "runtime/objects/Container.h"
#include "runtime/objects/Errors.h"
#include "runtime/objects/Memory.h"
#include "runtime/objects/SharedBuffers.h"
#include "runtime/streams/Streams.h"

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
