// The runtime's errors, and what stands between its rows and its own exceptions. Reference counts
// are thread safe; an error never changes.
#pragma once

#include "api/BIBErrorInterface.h"
#include "runtime/objects/Atoms.h"
#include "runtime/objects/Memory.h"

#include <atomic>
#include <new>
#include <stdexcept>

// A counted error. Core errors live as long as the process and are not counted.
struct BIBError : bibrt::Counted<BIBError> {
    BIBError(bibrt::AtomRef message, bibrt::AtomRef component, long id) noexcept
        : fMessage(std::move(message)),
          fComponent(std::move(component)),
          fID(id) {}
    BIBError(BIBError const&) = delete;
    BIBError& operator=(BIBError const&) = delete;
    ~BIBError();

    // The runtime keeps it from now on.
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

// An error of the runtime's own, component "BIB", with a reference for the caller; the memory error
// when memory runs out. Never null.
BIBError* Failure(char const* message) noexcept;

// The core error for memory that ran out; it needs no memory.
BIBError* MemoryError() noexcept;

// What a row says to arguments that it cannot work with.
BIBError* BadArgument() noexcept;

// Gives a reference up. Accepts null.
void ReleaseError(BIBError* error) noexcept;

// Makes the core errors. Throws std::bad_alloc; may be called again then.
void StartErrors();

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
