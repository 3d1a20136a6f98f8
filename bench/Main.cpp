// The benchmarks' main function. With --second_thread the process has a second thread, which does
// nothing: as programs on the desktop have, and then every count that is shared costs more.
#include <algorithm>
#include <benchmark/benchmark.h>
#include <future>
#include <optional>
#include <string_view>
#include <thread>

namespace {

// A thread that waits until this goes.
class SecondThread {
public:
    SecondThread() : fThread([ends = fEnd.get_future()] { ends.wait(); }) {}
    ~SecondThread() {
        fEnd.set_value();
        fThread.join();
    }
    SecondThread(SecondThread const&) = delete;
    SecondThread& operator=(SecondThread const&) = delete;

private:
    std::promise<void> fEnd;
    std::thread fThread;
};

// Takes the flag out of the arguments; whether it was there.
bool TakeFlag(int& argc, char** argv, std::string_view flag) {
    char** const end = std::remove(argv + 1, argv + argc, flag);
    bool const isThere = end != argv + argc;
    argc = static_cast<int>(end - argv);
    return isThere;
}

} // namespace

int main(int argc, char** argv) {
    std::optional<SecondThread> second;
    if (TakeFlag(argc, argv, "--second_thread")) {
        second.emplace();
        benchmark::AddCustomContext("threads", "2");
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
