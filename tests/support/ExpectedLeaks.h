// Leaks that a test expects.
#pragma once

#ifdef __has_feature
#if __has_feature(address_sanitizer)
#define SUPPORT_LEAKS_ARE_FOUND
#endif
#endif
#ifdef __SANITIZE_ADDRESS__
#define SUPPORT_LEAKS_ARE_FOUND
#endif

#ifdef SUPPORT_LEAKS_ARE_FOUND
#include <sanitizer/lsan_interface.h>
#endif

namespace support {

// While one lives, the sanitizer forgives what is allocated and never freed.
class ExpectedLeaks {
public:
    ExpectedLeaks() { Find(/*areFound=*/false); }
    ~ExpectedLeaks() { Find(/*areFound=*/true); }
    ExpectedLeaks(ExpectedLeaks const&) = delete;
    ExpectedLeaks& operator=(ExpectedLeaks const&) = delete;

private:
    static void Find([[maybe_unused]] bool areFound) {
#ifdef SUPPORT_LEAKS_ARE_FOUND
        areFound ? __lsan_enable() : __lsan_disable();
#endif
    }
};

} // namespace support
