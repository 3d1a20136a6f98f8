#include "runtime/objects/Diagnostics.h"

#include "runtime/objects/Container.h"
#include "runtime/objects/Errors.h"
#include "runtime/objects/FailurePoint.h"
#include "runtime/objects/SharedBuffers.h"

namespace bibrt {

LiveCounts CountLive() noexcept {
    return {
        .fContainers = BIBContainer::CountLive(),
        .fBlocks = CountLiveBlocks(),
        .fAtoms = CountLiveAtoms(),
        .fErrors = BIBError::CountLive(),
        .fSharedBuffers = BIBSharedBuffer::CountLive()};
}

#ifdef PDFSETTINGS_FAILURE_HOOKS

constinit FailurePoint gAllocationPoint;
constinit FailurePoint gStreamPoint;

unsigned long CountAllocations() noexcept {
    return gAllocationPoint.Count();
}

unsigned long CountStreamOperations() noexcept {
    return gStreamPoint.Count();
}

void FailAllocation(unsigned long n, bool andAllLater) noexcept {
    gAllocationPoint.Arm(n, andAllLater);
}

void FailStreamOperation(unsigned long n, bool andAllLater) noexcept {
    gStreamPoint.Arm(n, andAllLater);
}

void ResetFailures() noexcept {
    gAllocationPoint.Disarm();
    gStreamPoint.Disarm();
}

#endif

} // namespace bibrt
