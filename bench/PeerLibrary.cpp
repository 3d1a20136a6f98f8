// A library of a hundred procedures, as small as they can be.

#define BENCH_PROC(number) \
    __attribute__((visibility("default"))) int Procedure##number() { \
        return number; \
    }
#define BENCH_TEN_PROCS(tens) \
    BENCH_PROC(tens##0) \
    BENCH_PROC(tens##1) \
    BENCH_PROC(tens##2) \
    BENCH_PROC(tens##3) \
    BENCH_PROC(tens##4) \
    BENCH_PROC(tens##5) \
    BENCH_PROC(tens##6) \
    BENCH_PROC(tens##7) \
    BENCH_PROC(tens##8) \
    BENCH_PROC(tens##9)

extern "C" {
BENCH_TEN_PROCS(1)
BENCH_TEN_PROCS(2)
BENCH_TEN_PROCS(3)
BENCH_TEN_PROCS(4)
BENCH_TEN_PROCS(5)
BENCH_TEN_PROCS(6)
BENCH_TEN_PROCS(7)
BENCH_TEN_PROCS(8)
BENCH_TEN_PROCS(9)
BENCH_TEN_PROCS(10)
}
