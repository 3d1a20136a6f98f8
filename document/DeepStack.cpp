#include "document/DeepStack.h"

#include <exception>
#include <pthread.h>

namespace pdfsettings::detail {

namespace {

// Address space: of memory, as much as the work goes down. The address sanitizer knows no larger
// stacks than 64 MiB.
constexpr std::size_t kSize = std::size_t{60} << 20;

struct Task {
    std::function<void()> const& fWork;
    std::exception_ptr fError;
};

void* Run(void* argument) noexcept {
    auto& task = *static_cast<Task*>(argument);
    try {
        task.fWork();
    } catch (...) {
        task.fError = std::current_exception();
    }
    return nullptr;
}

} // namespace

bool RunOnDeepStack(std::function<void()> const& work) {
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) {
        return false;
    }
    Task task{work, nullptr};
    pthread_t thread{};
    bool const isRunning = pthread_attr_setstacksize(&attributes, kSize) == 0 &&
                           pthread_create(&thread, &attributes, &Run, &task) == 0;
    pthread_attr_destroy(&attributes);
    if (isRunning) {
        pthread_join(thread, nullptr);
    }
    if (task.fError) {
        std::rethrow_exception(task.fError);
    }
    return isRunning;
}

} // namespace pdfsettings::detail
