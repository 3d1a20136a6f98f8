// What stands between the runtime's rows and its own exceptions.
#pragma once

#include <new>
#include <stdexcept>

#include "runtime/Errors.h"

namespace bibrt {

// The result of work, or failure when memory runs out in it. An exception of a caller's procedure
// passes.
template <class Result, class Work>
Result AtRow(Result failure, Work work) {
    try {
        return work();
    } catch (std::bad_alloc const&) {
        return failure;
    } catch (std::length_error const&) {
        // A standard container was asked for more than its size type can count.
        return failure;
    }
}

// The status that work gives, or the memory error when memory runs out in it.
template <class Work>
BIBError* AtStatusRow(Work work) {
    return AtRow<BIBError*>(MemoryError(), work);
}

} // namespace bibrt
