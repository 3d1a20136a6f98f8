// Work without the interpreter's lock.
#pragma once

#include <Python.h>
#include <cxxabi.h>
#include <exception>
#include <optional>
#include <type_traits>
#include <utility>

namespace pdfsettings::python {

// Takes the interpreter's lock again. Never returns in a thread that is still running when the
// interpreter ends: Python would end the thread here, without the lock that its objects need.
void TakeInterpreter(PyThreadState* state);

// The result of work, which is done without the interpreter's lock. Throws what work throws.
// REQUIRES: the caller has the lock, and work uses no Python object.
template <class Work>
auto Released(Work work) {
    using Result = decltype(work());
    constexpr bool kHasResult = !std::is_void_v<Result>;
    std::optional<std::conditional_t<kHasResult, Result, bool>> result;
    std::exception_ptr failure;
    PyThreadState* const state = PyEval_SaveThread();
    try {
        if constexpr (kHasResult) {
            result.emplace(work());
        } else {
            work();
        }
    } catch (abi::__forced_unwind&) {
        throw;
    } catch (...) {
        failure = std::current_exception();
    }
    TakeInterpreter(state);
    if (failure) {
        std::rethrow_exception(failure);
    }
    if constexpr (kHasResult) {
        return std::move(*result);
    }
}

// What work may take locks for, of the library or of an object. A process made by fork() has no
// thread that would release them, so a fork waits until no thread is in such work.
class ForkGate {
public:
    ForkGate();
    ForkGate(ForkGate const&) = delete;
    ForkGate& operator=(ForkGate const&) = delete;
    ~ForkGate();

    // Makes every fork of this process wait so.
    static void AddToForks();
};

// As Released, for work that takes locks.
template <class Work>
auto Gated(Work work) {
    return Released([&] {
        ForkGate const gate;
        return work();
    });
}

} // namespace pdfsettings::python
