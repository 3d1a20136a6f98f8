// How many objects of a class are alive.
#pragma once

#include <atomic>

namespace bibrt {

// The base of a class whose objects are counted. Thread safe.
template <class T>
class Counted {
public:
    static unsigned long CountLive() noexcept { return fLive; }

    Counted() noexcept { ++fLive; }
    Counted(Counted const&) = delete;
    Counted& operator=(Counted const&) = delete;
    ~Counted() { --fLive; }

protected:
    // For an object that the runtime keeps.
    static void LeaveOut() noexcept { --fLive; }

private:
    static inline std::atomic<unsigned long> fLive = 0;
};

} // namespace bibrt
