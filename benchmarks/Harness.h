#ifndef OMTREE_BENCHMARKS_HARNESS_H
#define OMTREE_BENCHMARKS_HARNESS_H

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <string>

/// What every benchmark of this folder shares.
///
/// A benchmark is one side of one workload, named `workload/side`, and runs once in a process: the state of the heap
/// decides too much to let two share one. `run.py` starts the processes, alternates the sides and takes the medians.
///
/// A workload has phases, each with a clock of its own, whose results are the counters of the benchmark: nanoseconds an
/// operation, or bytes a cell. Whatever is prepared for both sides alike stands outside the clocks. Each side checks
/// what it did against the inputs and calls `Fail` when it is wrong.
namespace om_bench {

/// Takes `--n=COUNT` out of the arguments; it overrides the size that the workloads have by default.
void TakeOptions(int& argumentCount, char** arguments);

/// Number of cells, calls, blocks or parts to run: the one given on the command line, else `usual`.
std::size_t Count(std::size_t usual);

/// Whether the run is small enough to check results that cost more than the measured work itself.
bool IsSmall(std::size_t count);

/// Ends the benchmark with an error; the program's exit status becomes 1.
void Fail(benchmark::State& state, std::string const& what);
/// Fails unless the two are equal.
void ExpectEqual(benchmark::State& state, std::string const& what, std::size_t found, std::size_t expected);
bool HasFailed();

/// Gives what the heap does not need back to the system, so that the next phase starts cold.
void TrimHeap();

/// Bytes that the process's allocator has handed out and not got back, by its own books: its word before each block and
/// the rounding are in, free memory that it keeps is not.
std::size_t HeapInUse();

using Body = void (*)(benchmark::State& state);
/// Registers a side of a workload; one iteration, timed by its phases.
void Register(std::string const& workload, std::string const& side, Body body);

/// Clocks of one run.
class Phases {
public:
    explicit Phases(benchmark::State& state) : _state(state) {}

    /// Runs `work` under the clock. The counter `name` is its time in nanoseconds divided by `operations`.
    template <typename Work>
    void Time(char const* name, std::size_t operations, Work&& work) {
        auto const start = std::chrono::steady_clock::now();
        work();
        std::chrono::duration<double> const seconds = std::chrono::steady_clock::now() - start;
        Record(name, seconds.count() * 1e9 / static_cast<double>(operations));
        _seconds += seconds.count();
        _total += seconds.count() * 1e9 / static_cast<double>(operations);
    }

    void Record(char const* name, double value) { _state.counters[name] = value; }

    /// Hands the sum over: the counter `total`, and the time that Google Benchmark prints.
    void Finish() {
        Record("total", _total);
        _state.SetIterationTime(_seconds);
    }

private:
    benchmark::State& _state;
    double _seconds = 0;
    double _total = 0;
};

} // namespace om_bench

#endif
