# Each target sets up what it needs; `make test` and `make demo` run on a machine that has nothing but make.
JOBS ?= $(shell nproc)

.PHONY: demo test asan clang tidy format-check clean setup

demo: setup
	cmake --preset release
	cmake --build --preset release -j $(JOBS) --target omtree-crosstab omtree-report
	tools/demo.sh build/release/examples/omtree-crosstab build/release/examples/omtree-report build/demo

test: setup
	cmake --preset release
	cmake --build --preset release -j $(JOBS)
	ctest --preset release -j $(JOBS)

asan: setup
	cmake --preset asan-ubsan
	cmake --build --preset asan-ubsan -j $(JOBS)
	ctest --preset asan-ubsan -j $(JOBS)

clang:
	tools/setup.sh clang
	cmake --preset clang
	cmake --build --preset clang -j $(JOBS)

tidy:
	tools/setup.sh clang clang-tidy
	cmake --preset tidy
	cmake --build --preset tidy -j $(JOBS)

format-check:
	tools/setup.sh git clang-format
	tools/format-check.sh

setup:
	tools/setup.sh

clean:
	rm -rf build
