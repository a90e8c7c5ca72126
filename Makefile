# The goals a person uses; CMake does the building.
#   make         the library and the programs, in build/default
#   make demo    the library at work against a simulated modem
#   make check   format, tests, the tests under the sanitizers: what CI runs
#   make bench   the figures of docs and README
BUILD ?= build/default
PROFILE ?= standard

.PHONY: all demo check bench format clean

all:
	scripts/setup.sh build
	cmake -S . -B $(BUILD) -DQALT_BUILD_TESTS=OFF >/dev/null
	cmake --build $(BUILD) -j $$(nproc) -- --no-print-directory

demo:
	scripts/setup.sh build
	cmake -S . -B $(BUILD) -DQALT_BUILD_TESTS=OFF >/dev/null
	cmake --build $(BUILD) -j $$(nproc) --target qalt-atd phonebook_demo -- --no-print-directory
	scripts/demo.sh $(BUILD) $(PROFILE)

check:
	scripts/setup.sh check
	scripts/check.sh

bench:
	scripts/setup.sh bench
	cmake -S . -B build/bench -DQALT_BUILD_BENCH=ON -DQALT_BUILD_TESTS=OFF >/dev/null
	cmake --build build/bench -j $$(nproc) -- --no-print-directory
	scripts/bench.sh build/bench

format:
	git ls-files '*.c' '*.cpp' '*.h' '*.hpp' | xargs clang-format-14 -i

clean:
	rm -rf build
