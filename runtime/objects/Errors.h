// The runtime's errors, and the conversion of its own exceptions to results of rows. Reference
// counts are thread safe; errors are immutable.
#pragma once

#include "api/BIBErrorInterface.h"
#include "runtime/objects/Atoms.h"
#include "runtime/objects/Memory.h"

#include <atomic>
#include <new>
#include <stdexcept>

// A reference-counted error. Core errors live until the process ends and are not counted.
struct BIBError : bibrt::Counted<BIBError> {
    BIBError(bibrt::AtomRef message, bibrt::AtomRef component, long id) noexcept
        : fMessage(std::move(message)),
          fComponent(std::move(component)),
          fID(id) {}
    BIBError(BIBError const&) = delete;
    BIBError& operator=(BIBError const&) = delete;
    ~BIBError();

    // From now on the error is owned by the runtime, and not counted.
    void MakeImmortal() noexcept {
        fIsImmortal = true;
        LeaveOut();
    }

    std::atomic<long> fRefs = 1;
    bibrt::AtomRef fMessage;
    bibrt::AtomRef fComponent;
    long fID;
    void* fInfo = nullptr;
    void (*fInfoFreeProc)(void*) = nullptr;
    bool fIsImmortal = false;
};

namespace bibrt {

// A new error of the component "BIB", with a reference for the caller; the memory error if memory
// runs out. Never null.
BIBError* Failure(char const* message) noexcept;

// The core error for running out of memory. Allocates nothing.
BIBError* MemoryError() noexcept;

// The error for invalid arguments of a row, with a reference for the caller.
BIBError* BadArgument() noexcept;

// Releases a reference. Null is ignored.
void ReleaseError(BIBError* error) noexcept;

// Makes the core errors. Throws std::bad_alloc, and may be called again after that.
void StartErrors();

// Returns the result of work, or failure if work runs out of memory. Other exceptions propagate;
// all of them do while isInCaller is true, that is, while work runs a caller's procedure.
template <class Result, class Work>
Result AtRow(Result failure, Work work, bool const& isInCaller = false) {
    try {
        return work();
    } catch (std::bad_alloc const&) {
        if (isInCaller) {
            throw;
        }
    } catch (std::length_error const&) {
        // A standard container reached its maximum size.
        if (isInCaller) {
            throw;
        }
    }
    return failure;
}

// Returns the status of work, or the memory error if work runs out of memory.
template <class Work>
BIBError* AtStatusRow(Work work) {
    return AtRow<BIBError*>(MemoryError(), work);
}

// The status of a row that returns an object through result. Sets *result to null first, and runs
// work only for valid arguments.
template <class T, class Work>
BIBError* AtResultRow(T** result, bool areArgumentsGood, Work work) {
    if (result) {
        *result = nullptr;
    }
    return result && areArgumentsGood ? AtStatusRow(work) : BadArgument();
}

} // namespace bibrt
