# Thin front of the CMake presets. `make run` and `make test` need a Debian 12 machine with git and
# make; everything else they install or build.

MAKEFLAGS += --no-print-directory
JOBS ?= $(shell nproc)
SCRIPT ?= examples/tour.js
ARGS ?=
FUZZ_SECONDS ?= 60
MUTANTS ?= 300
SEED ?= 1

.PHONY: help run test build setup windows windows-tests definitions bench bench-avx2 count fuzz coverage mutate flags lint lint-sources clean

help:
	@echo "make run [SCRIPT=path] [ARGS=\"...\"]  run a script on the native host (default: the tour)"
	@echo "make test                            check the sources; every test, plain and under sanitizers"
	@echo "make build                           build/native/bin/mirolta-host, build/native/lib/libMirolta.so"
	@echo "make windows                         build/windows-x64/Mirolta.dll, build/windows-x86/Mirolta.dll"
	@echo "make bench [FILTER=pattern]          measure against other libraries, write docs/benchmarks.md"
	@echo "make bench-avx2 [FILTER=pattern]     the same without wider vectors than AVX2"
	@echo "make count                           instructions of the portable kernels"
	@echo "make fuzz [FUZZ_SECONDS=n]           run every fuzzer"
	@echo "make coverage [FILES=1]              lines and branches of the module that the tests run"
	@echo "make mutate [MUTANTS=n] [SEED=n] [FILTER=path] [RETRY=1]"
	@echo "                                     try small changes of the sources on the tests"
	@echo "make lint [PATHS=\"path...\"]          the sources, by two compilers' warnings and two analysers"
	@echo "make flags [ROWS=\"...\"]              the tests by other flags, clang, a 32-bit processor"
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
	@status=0; $(MAKE) lint-sources || status=1; \
	  scripts/run-tests.sh native asan-ubsan tsan || status=1; exit $$status

# A run of all rows writes docs/benchmarks.md; FILTER, a regular expression on row names, only prints.
# bench-avx2 does the same without what processors have beyond AVX2, for OpenSSL too.
bench: REPORT = benchmarks
bench-avx2: REPORT = benchmarks-avx2
bench-avx2: export OPENSSL_ia32cap = :~0x600c0230000
bench bench-avx2: setup
	@scripts/setup.sh packages-bench.txt
	@cmake --preset $@ $(if $(wildcard build/$@/CMakeCache.txt),>/dev/null,)
	@cmake --build build/$@ --target mirolta-bench -j$(JOBS)
	@build/$@/bin/mirolta-bench build/$@/results.json '$(FILTER)'
	@python3 bench/table.py build/$@/results.json $(if $(FILTER),,docs/$(REPORT).md)

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

# Counts are of one run of all tests: those of earlier runs are removed first.
coverage: build-coverage
	@find build/coverage -name '*.gcda' -delete
	@ctest --test-dir build/coverage -j$(JOBS) --output-on-failure --no-tests=error >build/coverage/tests.log || \
	  { tail -50 build/coverage/tests.log; exit 1; }
	@python3 scripts/coverage.py build/coverage $(if $(FILES),--files)

# Goes on where an interrupted run was; RETRY=1 only tries those again that no test has found.
mutate: setup
	@scripts/setup.sh packages-mutate.txt
	@python3 scripts/mutate.py build/mutate --mutants $(MUTANTS) --seed $(SEED) \
	  --filter '$(FILTER)' $(if $(RETRY),--retry)

# ROWS names rows of the table in scripts/flags.sh.
flags: build
	@scripts/setup.sh packages-flags.txt
	@FLAGS_JOBS=$(JOBS) scripts/flags.sh $(ROWS)

# The ordinary build is the first compiler's part. Results are remembered in build/lint by content.
lint: build-native lint-sources

lint-sources: setup
	@scripts/setup.sh packages-bench.txt packages-lint.txt
	@cmake --preset lint >/dev/null
	@python3 scripts/lint.py build/lint $(PATHS)

clean:
	rm -rf build
