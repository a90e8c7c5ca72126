# The goals a person uses; CMake does the building.
#   make         the library and the programs, in build/default
#   make install  DESTDIR=, PREFIX=/usr/local
#   make demo    the library at work against a simulated modem
#   make check   the tests of the release build
#   make check-all  all that a change must pass, what CI runs: STAGES="lint asan" runs a few
#   make check-distributions  the README's commands on minimal systems of Debian 12, 13 and unstable
#   make check-anywhere  the tests again: other processor, one core, other user, locales, odd path
#   make check-long  more of the same: LENGTH=8 for longer texts, REPEAT=1000 for more runs
#   make soak    clients, server and modem under faults: MINUTES=1, SEED=n for the same run again
#   make simulate  a world of clients, server and modems in simulated time: SEED=n for one run again,
#                  SECONDS=60 for further ones
#   make fuzz    every fuzz target for FUZZ_SECONDS=60
#   make lint    static analysers
#   make coverage  which lines and branches of the library the tests reach
#   make check-target  the tests on ARM with glibc, uClibc and musl, footprint, binary interface
#   make footprint  writes docs/FOOTPRINT.md: sizes and stacks on each target
#   make deb     Debian packages, installed, tried and removed
#   make docs    the reference of the headers, as HTML
#   make bench   times beside those of peers, stack marks and sizes
BUILD ?= build/default
PREFIX ?= /usr/local
PROFILE ?= standard
MINUTES ?= 1
MAKEFLAGS += --no-print-directory
unexport CDPATH

.PHONY: all install demo check check-all check-distributions check-anywhere check-long soak simulate fuzz lint coverage check-target footprint deb docs bench format clean

all:
	@scripts/setup.sh --only-check build
	@cmake --preset default -B "$(BUILD)" -DCMAKE_INSTALL_PREFIX="$(PREFIX)" >/dev/null
	cmake --build "$(BUILD)" -j $$(nproc)

install: all
	cmake --install "$(BUILD)"

# Nobody measures a demonstration: without optimisation it is built in half the time.
demo:
	scripts/setup.sh build
	cmake --preset demo >/dev/null
	cmake --build --preset demo -j $$(nproc)
	scripts/demo.sh build/demo '$(PROFILE)'

check:
	scripts/setup.sh tests
	scripts/check.sh

check-all:
	scripts/check_all.sh $(STAGES)

check-distributions:
	scripts/setup.sh distributions
	scripts/check_distributions.sh $(RELEASES)

check-anywhere: check
	scripts/check_anywhere.sh processor one-core user container locales path

check-long:
	scripts/setup.sh tests
	scripts/check_long.sh

soak:
	scripts/setup.sh build
	cmake --preset soak >/dev/null
	cmake --build --preset soak -j $$(nproc)
	build/soak/tests/soak/soak --minutes $(MINUTES) $(if $(SEED),--seed $(SEED))

simulate:
	scripts/setup.sh build
	cmake --preset soak >/dev/null
	cmake --build --preset soak -j $$(nproc) --target simulate
	build/soak/tests/simulation/simulate --transcript build/soak/simulation.transcript \
	  $(if $(SEED),--seed $(SEED) --count 1,$(if $(SECONDS),--seconds $(SECONDS)))

fuzz:
	scripts/setup.sh fuzz
	scripts/fuzz.sh

lint:
	scripts/setup.sh lint
	scripts/lint.sh

coverage:
	scripts/setup.sh coverage
	scripts/coverage.sh

check-target:
	scripts/setup.sh target abi
	packaging/target/check_target.sh
	scripts/footprint.sh --check
	scripts/check_abi.sh

footprint:
	scripts/setup.sh target
	scripts/footprint.sh

deb:
	scripts/setup.sh deb
	scripts/deb.sh --check

docs:
	scripts/setup.sh docs
	scripts/docs.sh

bench:
	scripts/setup.sh bench
	cmake --preset bench >/dev/null
	cmake --build --preset bench -j $$(nproc)
	scripts/bench_phonebook.sh build/bench >build/bench/phonebook_rows
	build/bench/bench/late_answers >build/bench/late_rows
	build/bench/bench/server_waits build/bench/server/qalt-atd >build/bench/server_rows
	scripts/bench.sh build/bench build/bench/phonebook_rows build/bench/late_rows \
	  build/bench/server_rows >build/bench/PERFORMANCE.md
	cat build/bench/PERFORMANCE.md

format:
	scripts/setup.sh format
	scripts/format.sh

clean:
	rm -rf build
