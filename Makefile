# Thin front of the CMake presets. The commands need git and make; they install or build everything else,
# where they can.

MAKEFLAGS += --no-print-directory
JOBS ?= $(shell nproc)
SCRIPT ?= examples/tour.js
ARGS ?=
FUZZ_SECONDS ?= 60
LOAD_CALLS ?= 100000000
MUTANTS ?= 300
SEED ?= 1

.PHONY: help run check test build windows windows-tests windows-arm64 definitions \
  handheld handheld-definitions handheld-packages handheld-test \
  docs package package-arm package-test bench bench-avx2 bench-sse2 bench-x86 bench-x86-packages \
  bench-windows arm-bench arm-bench-packages \
  count size constant-time prove faults memory memory-libraries memcheck fuzz load coverage mutate flags \
  arm arm-check lint lint-sources fresh clean
# One build at a time: each uses JOBS processors, and only one can install packages.
.NOTPARALLEL:
# Not removed as intermediate files.
.PRECIOUS: build/%/build.ninja

# Approximate times for two processors: of a first call, and of one after a change of one file.
define HELP
make check                        builds without optimisation, runs the quick tests       6 min   1 min
make run [SCRIPT=path] [ARGS=...] runs a script on the native host (default: the tour)    2 min  10 s
make build                        build/native: mirolta-host, libMirolta.so               2 min  10 s
make test                         lint; every test, plain, by Wine, under sanitizers     40 min  10 min
make lint [PATHS="path..."]       the sources, by compilers and analysers                15 min   1 min
make windows                      build/windows-x64, -x86: Mirolta.dll                    4 min  10 s
make windows-arm64                build/windows-arm64/Mirolta.dll, and its checks          5 min  10 s
make handheld                     build/handheld/Mirolta.dll for Windows CE; checks it      5 min  10 s
make handheld-test                that DLL on ARM Linux, emulated: all its classes         6 min   1 min
make package                      build/package: .deb, .tar.gz, .zip, .msi, SHA256SUMS     8 min   5 min
make package-arm                  .deb packages for armel, armhf, arm64                    6 min   6 min
make package-test                 installs, upgrades, removes, builds them again          5 min   5 min
make bench [FILTER=pattern]       speed beside other libraries, docs/benchmarks          30 min  25 min
     [PEERS=trixie]               beside those libraries of Debian 13 too             60 min  50 min
make bench-avx2 [FILTER=pattern]  the same without wider vectors than AVX2               30 min  25 min
make bench-sse2 [FILTER=pattern]  digests and ciphers with SSE2 only                      5 min   3 min
make bench-windows [FILTER=text]  the Windows builds under Wine beside the native one     8 min   1 min
make bench-x86 [FILTER=pattern]   the same for 32-bit programs, on three kinds of x86   30 min  25 min
make arm-bench [FILTER=text]      instructions on ARM beside other libraries             10 min   3 min
make docs                         build/docs: pages with a search, manual pages           1 min  20 s
make count                        instructions of the portable kernels                    1 min   1 min
make size                         bytes of the module, its stack and heap on 32-bit ARM   15 min   3 min
make constant-time                branches and addresses that depend on secrets          2 min  20 s
make memory                       unit tests by MemorySanitizer                         30 min   1 min
make memcheck                     the examples and scripts by valgrind's memcheck       10 min   8 min
make fuzz [FUZZ_SECONDS=60]       each of 21 fuzzers for that long                       25 min  15 min
     [COUNT=1]                    the same without sanitizers: more executions         40 min  15 min
make load [LOAD_CALLS=100000000]  that many calls from 8 threads in constant memory       3 min   1 min
make coverage [FILES=1]           lines and branches of the module that the tests run    15 min   8 min
make mutate [MUTANTS=300] [SEED=1] [FILTER=path] [RETRY=1]
                                  the tests on small changes of the sources               hours
make flags [ROWS="..."]           the tests by other flags, clang, a 32-bit processor    50 min  20 min
make prove                        loops, queues, readers on all short inputs; bounds      20 min   15 min
make faults [SCENARIOS="..."]     the host while each call of the system fails in turn     4 min    3 min
make arm-check                    engines and objects by an emulated ARMv5TE              20 min   3 min
make arm                          all tests by emulated ARMv5TE, ARMv7, 64-bit ARM       hours   1 hour
make fresh                        run and test on a new Debian 13 and a new Debian 12    80 min  80 min
make clean                        removes build/
endef
export HELP
help:
	@echo "$$HELP"

# setup-COMMAND installs the packages that the command needs: those of packages.txt and of its own lists.
# It runs before anything is built, so that everything missing is reported at once.
lists-check = packages-test.txt
lists-test = packages-test.txt packages-windows.txt packages-bench.txt packages-lint.txt
lists-windows = packages-windows.txt
lists-windows-arm64 = packages-windows-arm64.txt
lists-handheld = packages-handheld.txt
lists-handheld-test = packages-handheld.txt packages-arm.txt packages-test.txt
lists-package = packages-package.txt packages-windows.txt packages-docs.txt
lists-package-test = $(lists-package)
lists-bench = packages-bench.txt
lists-bench-windows = packages-bench.txt packages-windows.txt
lists-bench-x86 = packages-bench.txt packages-bench-x86.txt
lists-arm-bench = packages-arm.txt
lists-docs = packages-docs.txt
lists-size = packages-size.txt packages-handheld.txt
lists-constant-time = packages-test.txt
lists-memory = packages-test.txt packages-memory.txt
lists-memcheck = packages-test.txt
lists-fuzz = packages-fuzz.txt
lists-load = packages-test.txt
lists-coverage = packages-test.txt
lists-mutate = packages-test.txt packages-mutate.txt packages-windows.txt
lists-flags = packages-test.txt packages-flags.txt
lists-prove = packages-test.txt
lists-faults = packages-test.txt
lists-package-arm = packages-package.txt packages-arm.txt
lists-arm = packages-test.txt packages-arm.txt
lists-arm-check = $(lists-arm)
lists-lint = packages-bench.txt packages-lint.txt
lists-fresh = packages-fresh.txt

setup-%:
	@scripts/setup.sh packages.txt $(lists-$*)

build/setup/changed: | setup-build
	@test -e $@ || { mkdir -p $(@D) && : >$@; }

# A build folder is configured once, and again when there are packages that were missing then; afterwards its
# build detects changes itself. A folder of another generator is configured anew.
build/%/build.ninja: CMakePresets.json build/setup/changed | setup-build
	@cmake --preset $* $(if $(wildcard $@),>/dev/null,$(if $(wildcard build/$*/CMakeCache.txt),--fresh))
	@touch $@

# $(call build,PRESET,TARGETS): prints nothing if there is nothing to do.
build = @cmake --build build/$(1) $(if $(2),--target $(2)) -- -n 2>/dev/null | grep -q '^ninja: no work to do' || \
  cmake --build build/$(1) -j$(JOBS) $(if $(2),--target $(2))

# build-PRESET builds all of one preset.
build-%: build/%/build.ninja
	$(call build,$*)

# What running scripts needs, without the tests.
build: build/native/build.ninja
	$(call build,native,mirolta mirolta-host)

run: build
	@build/native/bin/mirolta-host $(SCRIPT) $(ARGS)

# A program of the native build writes the definitions of the Windows module.
definitions: setup-windows build/native/build.ninja
	$(call build,native,mirolta-definitions)

build/windows-x64/build.ninja build/windows-x86/build.ninja: | definitions
build-windows-x64 build-windows-x86: definitions

windows: build-windows-x64 build-windows-x86

windows-tests: windows
	$(call build,windows-x64,windows-tests)

# The module for Windows CE on ARM, and the checks of what its loader takes.
build/handheld/build.ninja: | setup-handheld handheld-definitions
handheld-definitions: build/native/build.ninja
	$(call build,native,mirolta-definitions)

handheld: setup-handheld handheld-definitions build-handheld
	@ctest --preset handheld

# The module loaded on ARMv7 Linux, emulated, and compared with the native one.
build/handheld-test/build.ninja: | setup-handheld-test handheld handheld-packages
handheld-packages:
	@scripts/arm-packages.sh armhf
handheld-test: setup-handheld-test handheld build build/handheld-test/build.ninja
	$(call build,handheld-test,handheld-tests)
	@ctest --preset handheld-test -j$(JOBS)

# The module for Windows on 64-bit ARM, and the checks of what it imports, exports and contains.
build/windows-arm64/build.ninja: | setup-windows-arm64 handheld-definitions
windows-arm64: setup-windows-arm64 handheld-definitions build-windows-arm64
	@ctest --preset windows-arm64

# Each part writes its files into build/package; the list of their digests comes last.
package: setup-package windows
	@rm -rf build/package
	@JOBS=$(JOBS) packaging/linux.sh build/package build/package-work
	@packaging/windows.sh build/package
	@packaging/python.sh build/package
	@packaging/sums.sh build/package

package-arm: setup-package-arm
	@for architecture in armel armhf arm64; do JOBS=$(JOBS) packaging/linux.sh --cross $$architecture \
	  build/package build/package-work-arm || exit 1; done

# Of the packages that `make package` has built. Installing them needs root.
package-test: setup-package-test build windows
	$(call build,windows-x64,registry_listing)
	$(call build,windows-x86,registry_listing)
	@tests/packages/side_by_side.sh build/package-test/logs \
	  "tests/packages/linux_test.sh build/package build/package-test" \
	  "tests/packages/windows_test.sh build/package build/package-test" \
	  "ctest --preset package"

# The test preset names the tests that are too slow, or hold for an optimised build only.
check: setup-check build-check
	@ctest --preset check -j$(JOBS) --progress

test: setup-test build-native windows-tests build-asan-ubsan build-tsan
	@status=0; $(MAKE) lint-sources || status=1; \
	  scripts/run-tests.sh native asan-ubsan tsan || status=1; exit $$status

docs: setup-docs
	@python3 -B scripts/docs.py build/docs

# A run of all rows writes the processor's page below docs/benchmarks; with FILTER, a regular expression of
# row names, it only prints. bench-avx2 disables what processors have beyond AVX2, for OpenSSL too.
bench-avx2: export OPENSSL_ia32cap = :~0x600c0230000
build/bench/build.ninja build/bench-avx2/build.ninja build/count/build.ninja: | setup-bench
# The peers of another release of Debian are unpacked into the build, and measured after the machine's own.
build/bench-$(PEERS)/build.ninja: | peers-$(PEERS)
peers-%: setup-bench
	@scripts/target-packages.sh --release $* amd64 build/packages/peers-$* \
	  libssl-dev nettle-dev libgcrypt20-dev libgmp-dev libbotan-3-dev
bench-runs = $@ $(addprefix bench-,$(PEERS))
bench: $(patsubst %,build/bench-%/build.ninja,$(PEERS))
bench bench-avx2: %: build/%/build.ninja
	@for run in $(bench-runs); do cmake --build build/$$run -j$(JOBS) --target mirolta-bench mirolta-host && \
	  python3 -B bench/measure.py $$([ $$run = $@ ] || echo --without-scripts) build/$$run '$(FILTER)' || exit 1; done
	@python3 bench/table.py $(if $(FILTER),,--pages docs/benchmarks) $(bench-runs:%=build/%/results.json)
	@$(if $(FILTER),,python3 -B bench/plots.py build/$@/results.json build/$@/plots)

# Digests and ciphers with SSE2 only, for the peers too; nettle takes any text for a list of what it may use.
bench-sse2: export MIROLTA_TEST_FEATURES = 0x2000
bench-sse2: export OPENSSL_ia32cap = ~0x1218120200000000:0
bench-sse2: export NETTLE_FAT_OVERRIDE = vendor:other
bench-sse2: build/bench/build.ninja
	$(call build,bench,mirolta-bench)
	@build/bench/bin/mirolta-bench build/bench/results-sse2.json \
	  '$(or $(FILTER),^(kernel|engine)/(MD5|SHA|HMAC|AES|DES|Triple))' >/dev/null
	@python3 -B bench/table.py $(if $(FILTER),,--pages docs/benchmarks) build/bench/results-sse2.json

# The Windows builds beside the native one; with WINE32=FOLDER also the 32-bit one, by a 32-bit Wine there.
bench-windows: export WINEPREFIX = $(CURDIR)/build/wine
bench-windows: export WINEDEBUG = -all
bench-windows: export WINEDLLOVERRIDES = mscoree=;mshtml=
bench-windows: setup-bench-windows definitions build/bench/build.ninja build/windows-x64/build.ninja \
    $(if $(WINE32),build/windows-x86/build.ninja)
	$(call build,bench,mirolta-speed)
	$(call build,windows-x64,mirolta-speed)
	$(if $(WINE32),$(call build,windows-x86,mirolta-speed))
	@env -u DISPLAY python3 -B bench/windows/compare.py $(if $(FILTER),--filter '$(FILTER)',--pages docs/benchmarks) \
	  build/bench/bin/mirolta-speed x64=build/windows-x64/bin/mirolta-speed.exe \
	  $(if $(WINE32),x86='bench/windows/wine32.sh build/windows-x86 $(WINE32)')

# 32-bit programs beside 32-bit peers, which are unpacked into the build: with all that the processor has, as
# on one without wider vectors than AVX2's, and as on one with SSE2 only.
bench-x86-packages: setup-bench-x86
	@scripts/target-packages.sh i386 build/packages/bench-i386 \
	  libssl-dev nettle-dev libgcrypt20-dev libgmp-dev libbotan-2-dev libbenchmark-dev
build/bench-x86/build.ninja: | bench-x86-packages
bench-x86: build/bench-x86/build.ninja
	$(call build,bench-x86,mirolta-bench)
	@bench/x86.sh build/bench-x86 '$(FILTER)'

# Instructions under QEMU, beside the peers of Debian's packages for the same processor. A run of all
# rows writes docs/benchmarks-arm.md; with FILTER, a part of row names, it only prints.
arm-bench-packages: setup-arm-bench
	@for architecture in armel armhf arm64; do \
	  scripts/target-packages.sh $$architecture build/packages/bench-$$architecture \
	    libssl-dev nettle-dev libgcrypt20-dev libgmp-dev || exit 1; done

arm-benches = build/arm-bench/build.ninja build/armhf-bench/build.ninja build/arm64-bench/build.ninja
$(arm-benches): | arm-bench-packages
arm-bench: $(arm-benches)
	$(call build,arm-bench,mirolta-arm-count)
	$(call build,armhf-bench,mirolta-arm-count)
	$(call build,arm64-bench,mirolta-arm-count)
	@python3 -B bench/arm/count.py --pattern '$(FILTER)' $(if $(FILTER),,--report docs/benchmarks-arm.md) \
	  armel build/arm-bench armhf build/armhf-bench arm64 build/arm64-bench

# Instructions per byte of the portable kernels.
count: setup-bench build/count/build.ninja
	$(call build,count,mirolta-count)
	@python3 bench/count.py build/count/bin/mirolta-count

# What the module takes of a small device, compared with scripts/budget/budgets.txt (docs/budgets.md).
build/size/build.ninja: | setup-size
size: setup-size build/size/build.ninja handheld
	$(call build,size,mirolta heap_use stack_use)
	@scripts/budgets.sh build/size build/handheld

# By memcheck, with secrets undefined (docs/trust.md); then a statistic of times, which is only printed.
constant-time: setup-constant-time build/native/build.ninja
	$(call build,native,secret_flow secret_words secret_half_words time_statistic)
	@python3 -B tests/constant_time/constant_time_test.py valgrind build/native/tests
	@build/native/tests/time_statistic

# Reads of memory that nothing has written (docs/trust.md): in the unit tests, with libraries that are
# instrumented too, and in the examples and scripts.
memory-libraries: setup-memory
	@JOBS=$(JOBS) scripts/memory-libraries.sh build/memory-libraries
build/memory/build.ninja: | memory-libraries
memory: setup-memory build/memory/build.ninja
	$(call build,memory,memory-tests)
	@ctest --preset memory -j$(JOBS) --progress

memcheck: setup-memcheck build/native/build.ninja
	$(call build,native,mirolta mirolta-host fake_module planted_fault)
	@python3 -B tests/memory/memcheck.py build/native --jobs $(JOBS)

# Inputs that fail are kept in fuzz/corpus, from which make test runs them again. The printed table has all
# executions since the last make clean.
build/fuzz/build.ninja build/fuzz-count/build.ninja: | setup-fuzz
fuzz-builds = build/fuzz/build.ninja $(if $(COUNT),build/fuzz-count/build.ninja)
fuzz: $(fuzz-builds)
	$(call build,fuzz,fuzz)
	$(if $(COUNT),$(call build,fuzz-count,fuzz))
	@FUZZ_COUNT=$(if $(COUNT),build/fuzz-count) FUZZ_JOBS=$(JOBS) scripts/fuzz.sh build/fuzz $(FUZZ_SECONDS)

# Its short form is a test.
load: setup-load build/native/build.ninja
	$(call build,native,member_load)
	@build/native/tests/member_load $(LOAD_CALLS)
	@build/native/tests/member_load 1000000 leak

# The counts are those of one run of all tests; earlier ones are removed first.
coverage: setup-coverage build-coverage
	@find build/coverage -name '*.gcda' -delete
	@ctest --preset coverage -j$(JOBS) >build/coverage/tests.log || \
	  { tail -50 build/coverage/tests.log; exit 1; }
	@python3 scripts/coverage.py build/coverage $(if $(FILES),--files)

# Continues an interrupted run; RETRY=1 only tries the survivors again.
mutate: setup-mutate
	@python3 scripts/mutate.py build/mutate --mutants $(MUTANTS) --seed $(SEED) \
	  --filter '$(FILTER)' $(if $(RETRY),--retry)

# ROWS names rows of the table in scripts/flags.sh.
flags: setup-flags build
	@FLAGS_JOBS=$(JOBS) scripts/flags.sh $(ROWS)

# The libraries of the other processors are unpacked into the build, the machine's own are not changed.
build/arm/build.ninja build/armhf/build.ninja build/arm64/build.ninja: build/%/build.ninja: | arm-packages-%
arm-packages-%: setup-arm
	@scripts/arm-packages.sh $*

# Unaligned access ends a program (tests/arm/alignment_plugin.c).
arm-check: setup-arm-check build/arm/build.ninja
	$(call build,arm,arm-check)
	@ctest --preset arm-check -j$(JOBS) --progress

# Natively, the examples print the same.
arm: setup-arm build build-arm build-armhf build-arm64
	@scripts/run-tests.sh arm arm-check armhf arm64

# Bounded proofs, whole; the tests have their short form.
prove: setup-prove build/native/build.ninja
	$(call build,native,prove)
	@for program in limb_loops byte_queue call_rewriter array_borrowing registry_reader; do build/native/tests/$$program --full || exit 1; done
	@python3 tests/prove/bounds.py build/native/tests/constants build/native/tests/constants_portable

# Each fault of each call of the system; the tests have the short form.
faults: setup-faults build/native/build.ninja
	$(call build,native,faults)
	@python3 -B tests/faults/fault_test.py --full --jobs $(JOBS) build/native examples $(SCENARIOS)

# The ordinary build is the first compiler's part. Clean results are cached in build/lint by content.
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
