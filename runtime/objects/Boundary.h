// What stands between the runtime's rows and its own exceptions.
#pragma once

#include "runtime/objects/Errors.h"

#include <new>
#include <stdexcept>

namespace bibrt {

// The result of work, or failure when memory runs out in it. Other exceptions pass, and all of them
// while isInCaller tells that work is in a caller's procedure.
template <class Result, class Work>
Result AtRow(Result failure, Work work, bool const& isInCaller = false) {
    try {
        return work();
    } catch (std::bad_alloc const&) {
        if (isInCaller) {
            throw;
        }
    } catch (std::length_error const&) {
        // A standard container was asked for more than its size type can count.
        if (isInCaller) {
            throw;
        }
    }
    return failure;
}

// The status that work gives, or the memory error when memory runs out in it.
template <class Work>
BIBError* AtStatusRow(Work work) {
    return AtRow<BIBError*>(MemoryError(), work);
}

// The status of a row that gives something through result: null there to begin with, and work runs
// for good arguments only.
template <class T, class Work>
BIBError* AtResultRow(T** result, bool areArgumentsGood, Work work) {
    if (result) {
        *result = nullptr;
    }
    return result && areArgumentsGood ? AtStatusRow(work) : BadArgument();
}

} // namespace bibrt
