// The runtime's errors. Reference counts are thread safe; an error never changes.
#pragma once

#include "api/BIBErrorInterface.h"
#include "runtime/objects/Atoms.h"
#include "runtime/objects/Counting.h"

#include <atomic>

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

} // namespace bibrt
