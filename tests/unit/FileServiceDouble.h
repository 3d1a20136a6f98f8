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

    // Makes the n-th call from now fail, where 1 is the next one; it does not reach the service.
    void FailCall(unsigned long n) {
        fCalls.clear();
        fFailing = n;
    }

    // The operations that were called since, in order.
    std::vector<std::string> fCalls;

    // Notes a call. True when it is to fail.
    static bool Note(char const* operation) {
        if (fCurrent == nullptr) {
            return false;
        }
        fCurrent->fCalls.emplace_back(operation);
        return fCurrent->fCalls.size() == fCurrent->fFailing;
    }

private:
    unsigned long fFailing = 0;

    static inline FileServiceDouble* fCurrent = nullptr;
};

} // namespace support
