// One program for every side of every workload; see Harness.h. Ends with status 1 when no benchmark matched the filter
// or one of them did not do what it should.

#include "benchmarks/Harness.h"

#include <algorithm>
#include <sys/resource.h>

namespace {

/// A side that takes far more memory than any of them needs ends with bad_alloc, and not with the machine. The address
/// sanitizer reserves more than that for itself, so its builds go without.
[[maybe_unused]] constexpr rlim_t AddressSpace = rlim_t{12} << 30;

void LimitMemory() {
#ifndef __SANITIZE_ADDRESS__
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = std::min(limit.rlim_max, AddressSpace);
    setrlimit(RLIMIT_AS, &limit);
#endif
}

} // namespace

int main(int argumentCount, char** arguments) {
    LimitMemory();
    om_bench::TakeOptions(argumentCount, arguments);
    benchmark::Initialize(&argumentCount, arguments);
    if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments)) {
        return 1;
    }
    std::size_t const matched = benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return matched == 0 || om_bench::HasFailed() ? 1 : 0;
}
