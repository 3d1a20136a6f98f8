#include "python/source/Interpreter.h"

#include <new>
#include <pthread.h>
#include <unistd.h>

namespace pdfsettings::python {

namespace {

// A fork must not wait for ever while other threads come and go.
pthread_rwlock_t const kUnlocked = PTHREAD_RWLOCK_WRITER_NONRECURSIVE_INITIALIZER_NP;
pthread_rwlock_t gGate = kUnlocked;

} // namespace

void TakeInterpreter(PyThreadState* state) {
    try {
        PyEval_RestoreThread(state);
    } catch (...) { // the end of the thread; nothing else is thrown
        for (;;) {
            pause();
        }
    }
}

ForkGate::ForkGate() {
    pthread_rwlock_rdlock(&gGate);
}

ForkGate::~ForkGate() {
    pthread_rwlock_unlock(&gGate);
}

// A fork may hold the interpreter's lock: work behind the gate does not need it to finish. In the
// new process the owner of the gate is a thread of the old one.
void ForkGate::AddToForks() {
    int const error = pthread_atfork(
        [] { pthread_rwlock_wrlock(&gGate); },
        [] { pthread_rwlock_unlock(&gGate); },
        [] { gGate = kUnlocked; });
    if (error != 0) {
        throw std::bad_alloc();
    }
}

} // namespace pdfsettings::python
