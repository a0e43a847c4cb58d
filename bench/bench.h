// What the benchmark programs share: each registers what it measures, and main.cpp runs it.
#ifndef BENCH_BENCH_H
#define BENCH_BENCH_H

#include <benchmark/benchmark.h>
#include <string>

// Registers a benchmark under the name by which the report finds it; `run` takes the state.
template <typename Run>
benchmark::internal::Benchmark* add(const std::string& case_name, const char* contender, Run run) {
    return benchmark::RegisterBenchmark((case_name + "/" + contender).c_str(), run);
}

// The same for an action that is repeated.
template <typename Work>
void add_loop(const std::string& case_name, const char* contender, Work work) {
    add(case_name, contender, [=](benchmark::State& state) {
        for (auto _ : state)
            work();
    });
}

// The size of a case, in words that end its name.
struct Size {
    const char* name;
    size_t bytes;
};

// Ends the program when a contender's result differs from the others'.
void require(bool condition, const std::string& otherwise);

// Defined by each program.
void add_all();

#endif
