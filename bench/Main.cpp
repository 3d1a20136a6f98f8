// The benchmarks' main function. The process has a second thread, which does nothing: programs on
// the desktop have one, and then every count that is shared costs more.
#include <benchmark/benchmark.h>
#include <future>
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

} // namespace

int main(int argc, char** argv) {
    SecondThread const second;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
