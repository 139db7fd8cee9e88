# Thin wrapper over the CMake presets. The README's two commands are `make demo` and `make test`.
.PHONY: all deps demo test asan release tsan valgrind fuzz format clean

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

# The archive and geometry fuzzers (clang, libFuzzer), each for FUZZ_SECONDS on its seed
# corpus; see fuzz/README.md.
FUZZ_SECONDS ?= 60
fuzz:
	@scripts/install-deps.sh fuzz
	fuzz/run.sh $(FUZZ_SECONDS)

format:
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean:
	rm -rf build
