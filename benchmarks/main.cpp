// One program for every side of every workload; see Harness.h. Ends with status 1 when no benchmark matched the filter
// or one of them did not do what it should.

#include "benchmarks/Harness.h"

int main(int argumentCount, char** arguments) {
    om_bench::TakeOptions(argumentCount, arguments);
    benchmark::Initialize(&argumentCount, arguments);
    if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments)) {
        return 1;
    }
    std::size_t const matched = benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return matched == 0 || om_bench::HasFailed() ? 1 : 0;
}
