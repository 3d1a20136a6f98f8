#include "python/source/Interpreter.h"

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

// Fails in the thread that is about to fork, or just has, where other calls of Python run too. It
// is alone then.
ForkGate::ForkGate() : fIsHeld(pthread_rwlock_rdlock(&gGate) == 0) {}

ForkGate::~ForkGate() {
    if (fIsHeld) {
        pthread_rwlock_unlock(&gGate);
    }
}

void ForkGate::BeforeFork() {
    Released([] { pthread_rwlock_wrlock(&gGate); });
}

void ForkGate::AfterForkInParent() {
    pthread_rwlock_unlock(&gGate);
}

// The lock's owner is the thread of the parent; no other thread exists here.
void ForkGate::OpenInChildren() {
    pthread_atfork(nullptr, nullptr, [] { gGate = kUnlocked; });
}

} // namespace pdfsettings::python
