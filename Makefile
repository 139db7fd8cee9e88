# Thin wrapper over the CMake presets. The README's two commands are `make demo` and `make test`.
.PHONY: all deps demo test asan release tsan valgrind fuzz bench bench-doc format clean

all: test

deps:
	@scripts/install-deps.sh

build/dev/CMakeCache.txt: | deps
	cmake --preset dev

# The command-line tool's demo: measures and draws the bundled example shapes.
demo: deps build/dev/CMakeCache.txt
	cmake --build --preset dev --target gkgeom_tool
	./build/dev/tools/gkgeom/gkgeom demo --out build/demo

test: deps build/dev/CMakeCache.txt
	cmake --build --preset dev
	ctest --preset dev

asan: deps
	cmake --preset asan
	cmake --build --preset asan
	ctest --preset asan

release: deps
	cmake --preset release
	cmake --build --preset release
	ctest --preset release

# The thread test (tests/reliability/threads_test.cpp) alone under ThreadSanitizer (gcc); any
# report fails it.
tsan: deps
	cmake --preset tsan
	cmake --build --preset tsan
	ctest --preset tsan

# Every test executable of the release build under Valgrind memcheck (about a minute); any
# report fails it. See scripts/valgrind-tests.sh.
valgrind: deps
	@scripts/install-deps.sh valgrind
	cmake --preset release
	cmake --build --preset release
	scripts/valgrind-tests.sh build/release

# The archive, geometry, clearance and hull fuzzers (clang, libFuzzer), each for FUZZ_SECONDS on
# its seed corpus; see fuzz/README.md.
FUZZ_SECONDS ?= 60
fuzz:
	@scripts/install-deps.sh fuzz
	fuzz/run.sh $(FUZZ_SECONDS)

# The benchmarks against peer libraries (OpenCV, GEOS, Clipper, Boost.Geometry), Release build in
# build/bench: times to results.json, heap per vertex to memory.json, then the tables on stdout
# (about five minutes on two cores). bench-doc writes them to docs/performance.md.
BENCH_DIR := build/bench
BENCH_JSON := $(BENCH_DIR)/results.json $(BENCH_DIR)/memory.json
# The commit measured, "-dirty" when src/ or include/ has local changes; recorded in the output.
BENCH_COMMIT = $(shell git rev-parse --short HEAD 2>/dev/null)$(shell git status --porcelain -- src include 2>/dev/null | grep -q . && echo -dirty)
bench:
	@scripts/install-deps.sh bench
	cmake --preset bench
	cmake --build --preset bench
	$(BENCH_DIR)/bench/gkgeom_bench --benchmark_out=$(BENCH_DIR)/results.json --benchmark_out_format=json \
	  --benchmark_context=gkgeom_commit=$(BENCH_COMMIT)
	$(BENCH_DIR)/bench/gkgeom_bench_memory --benchmark_out=$(BENCH_DIR)/memory.json --benchmark_out_format=json
	python3 scripts/bench-report.py $(BENCH_JSON)

bench-doc:
	@test -f $(BENCH_DIR)/results.json -a -f $(BENCH_DIR)/memory.json || $(MAKE) bench
	python3 scripts/bench-report.py $(BENCH_JSON) --doc docs/performance.md > /dev/null

format:
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean:
	rm -rf build
