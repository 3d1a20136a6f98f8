// A stack for recursion that is deeper than the caller's allows.
#pragma once

#include <functional>

namespace pdfsettings::detail {

// Runs work on a thread whose stack holds more than any that the component is likely to run on,
// and waits for its end. Throws what work throws. False, and nothing was run, when the system has
// no such thread to give.
bool RunOnDeepStack(std::function<void()> const& work);

} // namespace pdfsettings::detail
