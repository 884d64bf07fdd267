#include "benchmarks/Harness.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <stdexcept>

namespace om_bench {

namespace {

constexpr std::size_t SmallCount = 20'000;

std::size_t given = 0;
bool failed = false;

} // namespace

void TakeOptions(int& argumentCount, char** arguments) {
    char** const end = arguments + argumentCount;
    char** const kept = std::remove_if(arguments + 1, end, [](char const* argument) {
        bool const ours = std::strncmp(argument, "--n=", 4) == 0;
        if (ours) {
            given = std::strtoull(argument + 4, nullptr, 10);
        }
        return ours;
    });
    argumentCount = static_cast<int>(kept - arguments);
}

std::size_t Count(std::size_t usual) { return given != 0 ? given : usual; }

bool IsSmall(std::size_t count) { return count <= SmallCount; }

void Fail(benchmark::State& state, std::string const& what) {
    failed = true;
    state.SkipWithError(what.c_str());
}

void ExpectEqual(benchmark::State& state, std::string const& what, std::size_t found, std::size_t expected) {
    if (found != expected) {
        Fail(state, what + ": " + std::to_string(found) + ", expected " + std::to_string(expected));
    }
}

bool HasFailed() { return failed; }

void TrimHeap() { malloc_trim(0); }

std::size_t HeapInUse() {
    struct mallinfo2 const books = mallinfo2();
    return books.uordblks + books.hblkhd;
}

void Register(std::string const& workload, std::string const& side, Body body) {
    benchmark::RegisterBenchmark((workload + "/" + side).c_str(),
                                 [body](benchmark::State& state) {
                                     for ([[maybe_unused]] auto const& iteration : state) {
                                         // Whatever a benchmark throws is a wrong result of that side, and the other
                                         // sides still stand.
                                         try {
                                             body(state);
                                         } catch (std::exception const& error) {
                                             Fail(state, error.what());
                                         }
                                     }
                                 })
        ->Iterations(1)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace om_bench
