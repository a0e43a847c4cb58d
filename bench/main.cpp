#include "bench.h"

#include <cstdio>
#include <cstdlib>

void require(bool condition, const std::string& otherwise) {
    if (condition)
        return;
    std::fprintf(stderr, "%s\n", otherwise.c_str());
    std::exit(1);
}

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    add_all();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
