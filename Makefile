# Thin front of the CMake presets. `make run` and `make test` need a Debian 12 machine with git and
# make; everything else they install or build.

MAKEFLAGS += --no-print-directory
JOBS ?= $(shell nproc)
SCRIPT ?= examples/tour.js
ARGS ?=
FUZZ_SECONDS ?= 60

.PHONY: help run test build setup windows windows-tests definitions bench count fuzz clean

help:
	@echo "make run [SCRIPT=path] [ARGS=\"...\"]  run a script on the native host (default: the tour)"
	@echo "make test                            build and run every test, plain and under sanitizers"
	@echo "make build                           build/native/bin/mirolta-host, build/native/lib/libMirolta.so"
	@echo "make windows                         build/windows-x64/Mirolta.dll, build/windows-x86/Mirolta.dll"
	@echo "make bench [FILTER=pattern]          measure against other libraries, write docs/benchmarks.md"
	@echo "make count                           instructions of the portable kernels"
	@echo "make fuzz [FUZZ_SECONDS=n]           run every fuzzer"
	@echo "make clean                           remove build/"

setup:
	@scripts/setup.sh

# build-PRESET configures and builds one preset.
build-%: setup
	@cmake --preset $* $(if $(wildcard build/$*/CMakeCache.txt),>/dev/null,)
	@cmake --build build/$* -j$(JOBS)

# What scripts need, without the tests.
build: setup
	@cmake --preset native $(if $(wildcard build/native/CMakeCache.txt),>/dev/null,)
	@cmake --build build/native --target mirolta mirolta-host -j$(JOBS)

run: build
	@build/native/bin/mirolta-host $(SCRIPT) $(ARGS)

# A program of the native build writes the definitions that the Windows module is made of.
definitions: setup
	@scripts/setup.sh packages-windows.txt
	@cmake --preset native $(if $(wildcard build/native/CMakeCache.txt),>/dev/null,)
	@cmake --build build/native --target mirolta-definitions -j$(JOBS)

build-windows-x64 build-windows-x86: definitions

windows: build-windows-x64 build-windows-x86

windows-tests: windows
	@cmake --build build/windows-x64 --target windows-tests -j$(JOBS)

test: build-native windows-tests build-asan-ubsan build-tsan
	@scripts/run-tests.sh native asan-ubsan tsan

# A run of all rows writes docs/benchmarks.md; FILTER, a regular expression on row names, only prints.
bench: setup
	@scripts/setup.sh packages-bench.txt
	@cmake --preset bench $(if $(wildcard build/bench/CMakeCache.txt),>/dev/null,)
	@cmake --build build/bench --target mirolta-bench -j$(JOBS)
	@build/bench/bin/mirolta-bench build/bench/results.json '$(FILTER)'
	@python3 bench/table.py build/bench/results.json $(if $(FILTER),,docs/benchmarks.md)

# Instructions a byte of the portable kernels.
count: setup
	@scripts/setup.sh packages-bench.txt
	@cmake --preset count $(if $(wildcard build/count/CMakeCache.txt),>/dev/null,)
	@cmake --build build/count --target mirolta-count -j$(JOBS)
	@python3 bench/count.py build/count/bin/mirolta-count

# Inputs that break a harness are kept in fuzz/corpus, where make test runs them again.
fuzz: setup
	@scripts/setup.sh packages-fuzz.txt
	@cmake --preset fuzz $(if $(wildcard build/fuzz/CMakeCache.txt),>/dev/null,)
	@cmake --build build/fuzz --target fuzz -j$(JOBS)
	@scripts/fuzz.sh build/fuzz $(FUZZ_SECONDS)

clean:
	rm -rf build
