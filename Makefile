# The goals a person uses; CMake does the building.
#   make         the library and the programs, in build/default
#   make demo    the library at work against a simulated modem
#   make check   the tests of the release build
#   make check-all  all that a change must pass, what CI runs: STAGES="lint asan" runs a few
#   make check-long  more of the same: LENGTH=8 for longer texts, REPEAT=1000 for more runs
#   make soak    clients, server and modem under faults: MINUTES=1, SEED=n for the same run again
#   make fuzz    every fuzz target for FUZZ_SECONDS=60
#   make lint    static analysers over the library
#   make coverage  which lines and branches of the library the tests reach
#   make check-target  the tests on ARM with glibc, uClibc and musl, footprint, binary interface
#   make deb     Debian packages, installed, tried and removed
#   make docs    the reference of the headers, as HTML
#   make bench   times beside those of peers, stack marks and sizes
BUILD ?= build/default
PROFILE ?= standard
MINUTES ?= 1

.PHONY: all demo check check-all check-long soak fuzz lint coverage check-target deb docs bench format clean

all:
	scripts/setup.sh build
	cmake -S . -B $(BUILD) -DQALT_BUILD_TESTS=OFF >/dev/null
	cmake --build $(BUILD) -j $$(nproc) -- --no-print-directory

# Nobody measures a demonstration: without optimisation it is built in half the time.
demo:
	scripts/setup.sh build
	cmake -S . -B build/demo -DQALT_BUILD_TESTS=OFF -DCMAKE_BUILD_TYPE=Release \
	  -DCMAKE_CXX_FLAGS_RELEASE=-O0 >/dev/null
	cmake --build build/demo -j $$(nproc) --target qalt-atd phonebook_demo -- --no-print-directory
	scripts/demo.sh build/demo $(PROFILE)

check:
	scripts/setup.sh tests
	scripts/check.sh

check-all:
	scripts/check_all.sh $(STAGES)

check-long:
	scripts/setup.sh tests
	scripts/check_long.sh

soak:
	scripts/setup.sh build
	cmake -S . -B build/soak -DQALT_BUILD_SOAK=ON -DQALT_BUILD_TESTS=OFF >/dev/null
	cmake --build build/soak -j $$(nproc) --target soak -- --no-print-directory
	build/soak/soak/soak --minutes $(MINUTES) $(if $(SEED),--seed $(SEED))

fuzz:
	scripts/setup.sh fuzz
	scripts/fuzz.sh build/fuzz

lint:
	scripts/setup.sh lint
	scripts/lint.sh

coverage:
	scripts/setup.sh coverage
	scripts/coverage.sh

check-target:
	scripts/setup.sh target
	packaging/target/check_target.sh
	scripts/footprint.sh --check
	scripts/check_abi.sh

deb:
	scripts/setup.sh target
	scripts/deb.sh --check

docs:
	scripts/setup.sh target
	scripts/docs.sh

bench:
	scripts/setup.sh bench
	cmake -S . -B build/bench -DQALT_BUILD_BENCH=ON -DQALT_BUILD_TESTS=OFF >/dev/null
	cmake --build build/bench -j $$(nproc) -- --no-print-directory
	scripts/bench_phonebook.sh build/bench >build/bench/phonebook_rows
	scripts/bench.sh build/bench build/bench/phonebook_rows | tee build/bench/PERFORMANCE.md

format:
	scripts/setup.sh format
	scripts/format.sh

clean:
	rm -rf build
