// The file service of the platform layer with failures on demand: the linker leads every call of
// the operations below through here (see --wrap in CMakeLists.txt).
#pragma once

#include <string>
#include <vector>

namespace support {

// At most one lives at a time. Without one all calls go through.
class FileServiceDouble {
public:
    FileServiceDouble() { fCurrent = this; }
    ~FileServiceDouble() { fCurrent = nullptr; }
    FileServiceDouble(FileServiceDouble const&) = delete;
    FileServiceDouble& operator=(FileServiceDouble const&) = delete;

    // Makes the n-th call from now fail with that code, where 1 is the next one. It does not reach
    // the service, unless it is to do its work first.
    void FailCall(unsigned long n, short code = -36, bool reachesService = false) {
        fCalls.clear();
        fFailing = n;
        fCode = code;
        fReachesService = reachesService;
    }

    // The operations that were called since, in order.
    std::vector<std::string> fCalls;

    // Notes a call. The code that it is to fail with, or 0; whether it is to reach the service.
    static short Note(char const* operation, bool* reachesService) {
        *reachesService = true;
        if (fCurrent == nullptr) {
            return 0;
        }
        fCurrent->fCalls.emplace_back(operation);
        if (fCurrent->fCalls.size() != fCurrent->fFailing) {
            return 0;
        }
        *reachesService = fCurrent->fReachesService;
        return fCurrent->fCode;
    }

private:
    unsigned long fFailing = 0;
    short fCode = 0;
    bool fReachesService = false;

    static inline FileServiceDouble* fCurrent = nullptr;
};

} // namespace support
