# Each target sets up what it needs; `make test` and `make demo` run on a machine that has nothing but make.
JOBS ?= $(shell nproc)

# What the benchmarks are written with, and the rivals.
BENCHMARK_PACKAGES = libbenchmark-dev libabsl-dev libboost1.81-dev libmimalloc-dev

.PHONY: demo test asan misuse tsan memcheck coverage mutation fuzz clang tidy format-check bench bench-growth \
        bench-programs instructions clean setup


demo: setup
	cmake --preset release
	cmake --build --preset release -j $(JOBS) --target omtree-crosstab omtree-report
	tools/demo.sh build/release/examples/omtree-crosstab build/release/examples/omtree-report build/demo

test:
	tools/setup.sh valgrind $(BENCHMARK_PACKAGES)
	cmake --preset release -DOMTREE_BUILD_BENCHMARKS=ON
	cmake --build --preset release -j $(JOBS)
	ctest --preset release -j $(JOBS)

asan: setup
	cmake --preset asan-ubsan
	cmake --build --preset asan-ubsan -j $(JOBS)
	ctest --preset asan-ubsan -j $(JOBS)

# Programs that misuse the library, each in the builds that catch it: tests/misuse/cases.cmake.
MISUSE_PRESETS = release debug asan-ubsan

misuse: setup $(MISUSE_PRESETS:%=misuse-in-%)

misuse-in-%: setup
	cmake --preset $*
	cmake --build --preset $* -j $(JOBS) --target misuse
	ctest --preset $* -j $(JOBS) -R '^misuse'

# Documents on threads of their own.
tsan: setup
	cmake --preset tsan
	cmake --build --preset tsan -j $(JOBS) --target threads_Documents_test
	build/tsan/tests/threads_Documents_test

# Some programs only: make memcheck PROGRAMS='regress_Documents_test'
PROGRAMS ?=

memcheck:
	tools/setup.sh valgrind
	cmake --preset release
	cmake --build --preset release -j $(JOBS)
	tools/memcheck.py build/release --jobs $(JOBS) $(PROGRAMS)

# What the tests reach: lines, branches, conditions. Every place that they do not: make coverage LIST=1
coverage:
	tools/setup.sh clang-19 llvm-19 libclang-rt-19-dev
	cmake --preset coverage
	cmake --build --preset coverage -j $(JOBS)
	tools/coverage.py build/coverage --jobs $(JOBS) $(if $(LIST),--list)

# What the tests notice of changes that break the library: make mutation SAMPLE=40 SEED=7
SAMPLE ?= 240
SEED ?= 1

mutation: setup
	tools/mutation.py --sample $(SAMPLE) --seed $(SEED) --jobs $(JOBS)

clang:
	tools/setup.sh clang $(BENCHMARK_PACKAGES)
	cmake --preset clang -DOMTREE_BUILD_BENCHMARKS=ON
	cmake --build --preset clang -j $(JOBS)

# The libraries alone: make tidy TIDY_TARGETS='omtree omcell platdep QUORIOCV'
TIDY_TARGETS ?= all

tidy:
	tools/setup.sh clang clang-tidy
	cmake --preset tidy
	cmake --build --preset tidy -j $(JOBS) --target $(TIDY_TARGETS)

format-check:
	tools/setup.sh git clang-format
	tools/format-check.sh

# Some rows only: make bench ROWS='hit-* walk-dense'. Fewer repetitions: make bench REPETITIONS=1
ROWS ?=
REPETITIONS ?= 5
GROWTH_REPETITIONS ?= 3

bench: bench-programs
	benchmarks/run.py build/bench/benchmarks --out build/bench --repetitions $(REPETITIONS) --rows $(foreach row,$(ROWS),'$(row)')

# Curves over the number of cells, as build/bench/growth.svg.
bench-growth: bench-programs
	benchmarks/growth.py build/bench/benchmarks --out build/bench --repetitions $(GROWTH_REPETITIONS)

bench-programs:
	tools/setup.sh $(BENCHMARK_PACKAGES)
	cmake --preset bench
	cmake --build --preset bench -j $(JOBS) --target omtree-bench omtree-bench-mimalloc

# Instruction counts against the committed ones; `make instructions UPDATE=1` commits to new ones.
instructions:
	tools/setup.sh valgrind $(BENCHMARK_PACKAGES)
	cmake --preset bench
	cmake --build --preset bench -j $(JOBS) --target omtree-instructions
	tools/instructions.py build/bench/benchmarks/omtree-instructions $(if $(UPDATE),--update)

# Each fuzzer for so many seconds, over its own folder below build/fuzz/corpus. Fails when anything is found.
# Some targets only: make fuzz TARGETS='CellStore Headings'
SECONDS = 60
TARGETS ?=

fuzz:
	tools/setup.sh clang
	cmake --preset fuzz
	cmake --build --preset fuzz -j $(JOBS)
	tools/fuzz.py build/fuzz/fuzz --corpus build/fuzz/corpus --seconds $(SECONDS) $(if $(TARGETS),--only $(TARGETS))

setup:
	tools/setup.sh

clean:
	rm -rf build
