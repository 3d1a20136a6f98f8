// Where allocations and stream operations are counted and made to fail, in builds with
// PDFSETTINGS_FAILURE_HOOKS. In others nothing fails on demand and nothing is left of this.
#pragma once

#ifdef PDFSETTINGS_FAILURE_HOOKS
#include "runtime/objects/FailurePoint.h"
#endif

namespace bibrt {

#ifdef PDFSETTINGS_FAILURE_HOOKS
extern FailurePoint gAllocationPoint;
extern FailurePoint gStreamPoint;
#else
struct NeverFails {
    static constexpr bool Attempt() noexcept { return false; }
};
inline constexpr NeverFails gAllocationPoint;
inline constexpr NeverFails gStreamPoint;
#endif

} // namespace bibrt
