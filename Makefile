# Thin front of the CMake presets. `make run` and `make test` need a Debian 12 machine with git and
# make; everything else they install or build.

JOBS ?= $(shell nproc)
SCRIPT ?= examples/tour.js
ARGS ?=

.PHONY: help run test build setup windows bench lint clean

help:
	@echo "make run [SCRIPT=path] [ARGS=\"...\"]  run a script on the native host (default: the tour)"
	@echo "make test                            build and run every test, plain and under sanitizers"
	@echo "make build                           build/native/bin/mirolta-host, build/native/lib/libMirolta.so"
	@echo "make clean                           remove build/"

setup:
	@scripts/setup.sh

# build-PRESET configures and builds one preset.
build-%: setup
	@cmake --preset $* $(if $(wildcard build/$*/CMakeCache.txt),>/dev/null,)
	@cmake --build build/$* -j$(JOBS)

build: build-native

run: build-native
	@build/native/bin/mirolta-host $(SCRIPT) $(ARGS)

test: build-native build-asan-ubsan build-tsan
	@scripts/run-tests.sh native asan-ubsan tsan

clean:
	rm -rf build
