# Thin front of the CMake presets. `make run` and `make test` need a machine with git and make;
# everything else they install, where they can, or build.

MAKEFLAGS += --no-print-directory
JOBS ?= $(shell nproc)
SCRIPT ?= examples/tour.js
ARGS ?=
FUZZ_SECONDS ?= 60
MUTANTS ?= 300
SEED ?= 1

.PHONY: help run test build windows windows-tests definitions bench bench-avx2 count fuzz coverage mutate flags lint lint-sources fresh clean
# One build at a time: each uses JOBS processors, and only one can install packages.
.NOTPARALLEL:
# They are not made again only because nothing else asks for them.
.PRECIOUS: build/%/build.ninja

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
	@echo "make fresh                           make run and make test on a new Debian 13 and a new Debian 12"
	@echo "make clean                           remove build/"

# setup-COMMAND sees that the packages are there that the command needs: those of packages.txt and of
# its own lists. Before anything is built, so that all that is missing is told at once.
lists-test = packages-test.txt packages-windows.txt packages-bench.txt packages-lint.txt
lists-windows = packages-windows.txt
lists-bench = packages-bench.txt
lists-fuzz = packages-fuzz.txt
lists-coverage = packages-test.txt
lists-mutate = packages-test.txt packages-mutate.txt packages-windows.txt
lists-flags = packages-test.txt packages-flags.txt
lists-lint = packages-bench.txt packages-lint.txt
lists-fresh = packages-fresh.txt

setup-%:
	@scripts/setup.sh packages.txt $(lists-$*)

# A build folder is configured once; after that its build sees for itself what has changed. One that
# another generator made is made anew.
build/%/build.ninja: CMakePresets.json | setup-build
	@cmake --preset $* $(if $(wildcard $@),>/dev/null,$(if $(wildcard build/$*/CMakeCache.txt),--fresh))
	@touch $@

# $(call build,PRESET,TARGETS): says nothing if nothing is to be done.
build = @cmake --build build/$(1) $(if $(2),--target $(2)) -- -n 2>/dev/null | grep -q '^ninja: no work to do' || \
  cmake --build build/$(1) -j$(JOBS) $(if $(2),--target $(2))

# build-PRESET builds all of one preset.
build-%: build/%/build.ninja
	$(call build,$*)

# What scripts need, without the tests.
build: build/native/build.ninja
	$(call build,native,mirolta mirolta-host)

run: build
	@build/native/bin/mirolta-host $(SCRIPT) $(ARGS)

# A program of the native build writes the definitions that the Windows module is made of.
definitions: setup-windows build/native/build.ninja
	$(call build,native,mirolta-definitions)

build/windows-x64/build.ninja build/windows-x86/build.ninja: | definitions
build-windows-x64 build-windows-x86: definitions

windows: build-windows-x64 build-windows-x86

windows-tests: windows
	$(call build,windows-x64,windows-tests)

test: setup-test build-native windows-tests build-asan-ubsan build-tsan
	@status=0; $(MAKE) lint-sources || status=1; \
	  scripts/run-tests.sh native asan-ubsan tsan || status=1; exit $$status

# A run of all rows writes docs/benchmarks.md; FILTER, a regular expression on row names, only prints.
# bench-avx2 does the same without what processors have beyond AVX2, for OpenSSL too.
bench: REPORT = benchmarks
bench-avx2: REPORT = benchmarks-avx2
bench-avx2: export OPENSSL_ia32cap = :~0x600c0230000
build/bench/build.ninja build/bench-avx2/build.ninja build/count/build.ninja: | setup-bench
bench bench-avx2: %: build/%/build.ninja
	$(call build,$@,mirolta-bench)
	@build/$@/bin/mirolta-bench build/$@/results.json '$(FILTER)'
	@python3 bench/table.py build/$@/results.json $(if $(FILTER),,docs/$(REPORT).md)

# Instructions a byte of the portable kernels.
count: setup-bench build/count/build.ninja
	$(call build,count,mirolta-count)
	@python3 bench/count.py build/count/bin/mirolta-count

# Inputs that break a harness are kept in fuzz/corpus, where make test runs them again.
build/fuzz/build.ninja: | setup-fuzz
fuzz: build/fuzz/build.ninja
	$(call build,fuzz,fuzz)
	@scripts/fuzz.sh build/fuzz $(FUZZ_SECONDS)

# Counts are of one run of all tests: those of earlier runs are removed first.
coverage: setup-coverage build-coverage
	@find build/coverage -name '*.gcda' -delete
	@ctest --test-dir build/coverage -j$(JOBS) --output-on-failure --no-tests=error >build/coverage/tests.log || \
	  { tail -50 build/coverage/tests.log; exit 1; }
	@python3 scripts/coverage.py build/coverage $(if $(FILES),--files)

# Goes on where an interrupted run was; RETRY=1 only tries those again that no test has found.
mutate: setup-mutate
	@python3 scripts/mutate.py build/mutate --mutants $(MUTANTS) --seed $(SEED) \
	  --filter '$(FILTER)' $(if $(RETRY),--retry)

# ROWS names rows of the table in scripts/flags.sh.
flags: setup-flags build
	@FLAGS_JOBS=$(JOBS) scripts/flags.sh $(ROWS)

# The ordinary build is the first compiler's part. Results are remembered in build/lint by content.
lint: setup-lint build-native lint-sources

lint-sources: setup-lint
	@cmake --preset lint $(if $(wildcard build/lint/build.ninja),,$(if $(wildcard build/lint/CMakeCache.txt),--fresh)) >/dev/null
	@python3 scripts/lint.py build/lint $(PATHS)

# The committed sources, on systems with nothing but git and make (build/fresh).
fresh: setup-fresh
	@scripts/fresh.sh 13
	@scripts/fresh.sh 12

clean:
	rm -rf build
