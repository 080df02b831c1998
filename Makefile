# The few commands of this repository. Each installs first what it needs and lacks (Debian 12).
.PHONY: help demo test test-long bench bench-check bench-record fuzz fuzz-quick mutate coverage reference format install

PREFIX ?= /usr/local
SECONDS ?= 600
COUNT ?= 200

help:
	@echo "make demo       build, ask the command line about example machines, write one as GLB, put one on a path"
	@echo "make test       build with warnings as errors and run every test"
	@echo "make test-long  the same, with twenty times as many cases in each property, and big files (5 GB of memory)"
	@echo "make bench      run the benchmarks, write benchmarks/results.md; some minutes on a quiet machine"
	@echo "make bench-check   compare instruction counts with the record; bench-record makes a new one"
	@echo "make fuzz       run each fuzz target for SECONDS (600), as many at a time as cores"
	@echo "make fuzz-quick  the same, optimised and without sanitizers: many more executions"
	@echo "make mutate     change the core in COUNT (200) places, one at a time, and count what the tests notice"
	@echo "make coverage   line coverage of adapter/, geometry/, kinematics/ and platform/"
	@echo "make reference  the Doxygen reference"
	@echo "make format     format all sources"
	@echo "make install    build, then install below PREFIX ($(PREFIX))"

demo:
	scripts/install-deps build
	cmake --workflow --preset release
	scripts/demo

test:
	scripts/install-deps build test
	cmake --workflow --preset check

test-long:
	scripts/install-deps build test
	RC_PARAMS="max_success=2000" cmake --workflow --preset long

bench:
	scripts/install-deps build bench
	cmake --workflow --preset bench
	scripts/bench

bench-check:
	scripts/install-deps build bench
	cmake --workflow --preset bench
	scripts/bench-check

bench-record:
	scripts/install-deps build bench
	cmake --workflow --preset bench
	scripts/bench-check --record

fuzz:
	scripts/install-deps build test clang
	cmake --preset fuzz
	cmake --build --preset fuzz
	scripts/fuzz $(SECONDS)

fuzz-quick:
	scripts/install-deps build test clang
	cmake --preset fuzz-quick
	cmake --build --preset fuzz-quick
	scripts/fuzz --quick $(SECONDS)

mutate:
	scripts/install-deps build test
	scripts/mutate $(COUNT)

coverage:
	scripts/install-deps build test coverage
	scripts/coverage

reference:
	scripts/install-deps docs
	scripts/reference

format:
	scripts/install-deps clang
	scripts/format

install:
	scripts/install-deps build
	cmake --workflow --preset release
	cmake --install build/release --prefix $(PREFIX)
