// What stands between the runtime's rows and its own exceptions.
#pragma once

#include <exception>
#include <new>
#include <stdexcept>

#include "runtime/objects/Errors.h"

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

// An exception of a caller's procedure that AtRow would take for one of the runtime's own.
struct CallerException {
    std::exception_ptr fException;
};

// What call, a call of a caller's procedure, gives. REQUIRES: runs within AtCallbackRow.
template <class Call>
auto CallCaller(Call call) -> decltype(call()) {
    try {
        return call();
    } catch (std::bad_alloc const&) {
        throw CallerException{std::current_exception()};
    } catch (std::length_error const&) {
        throw CallerException{std::current_exception()};
    }
}

// The same as AtRow; every exception passes that a procedure in CallCaller throws.
template <class Result, class Work>
Result AtCallbackRow(Result failure, Work work) {
    try {
        return AtRow<Result>(failure, work);
    } catch (CallerException const& thrown) {
        std::rethrow_exception(thrown.fException);
    }
}

// The status that work gives, or the memory error when memory runs out in it.
template <class Work>
BIBError* AtStatusRow(Work work) {
    return AtRow<BIBError*>(MemoryError(), work);
}

} // namespace bibrt
