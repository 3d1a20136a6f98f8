#include "tests/unit/TransferDouble.h"

#include <algorithm>
#include <cerrno>
#include <sys/auxv.h>
#include <unistd.h>

namespace {

constexpr std::size_t kMost = 2;

bool gIsActive = false;
unsigned long gCalls = 0;
bool gHasRaisedRights = false;

template <class Transfer, class Bytes>
ssize_t Move(Transfer transfer, int file, Bytes* bytes, std::size_t size) {
    if (!gIsActive) {
        return transfer(file, bytes, size);
    }
    if (++gCalls % 2 == 1) {
        errno = EINTR;
        return -1;
    }
    return transfer(file, bytes, std::min(size, kMost));
}

} // namespace

extern "C" {

decltype(read) __real_read;
decltype(write) __real_write;
decltype(getauxval) __real_getauxval;

unsigned long __wrap_getauxval(unsigned long type) {
    return type == AT_SECURE && gHasRaisedRights ? 1 : __real_getauxval(type);
}

ssize_t __wrap_read(int file, void* bytes, std::size_t size) {
    return Move(&__real_read, file, bytes, size);
}

ssize_t __wrap_write(int file, void const* bytes, std::size_t size) {
    return Move(&__real_write, file, bytes, size);
}

} // extern "C"

namespace support {

TransferDouble::TransferDouble() {
    gIsActive = true;
}

TransferDouble::~TransferDouble() {
    gIsActive = false;
}

void SetRaisedRights(bool areRaised) {
    gHasRaisedRights = areRaised;
}

} // namespace support
