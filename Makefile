# Thin wrapper over the CMake presets. The README's two commands are `make demo` and `make test`.
.PHONY: all deps demo test asan release fuzz format clean

all: test

deps:
	@scripts/install-deps.sh

build/dev/CMakeCache.txt: | deps
	cmake --preset dev

demo: deps build/dev/CMakeCache.txt
	cmake --build --preset dev --target gkgeom_demo
	./build/dev/examples/gkgeom_demo

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

# The archive fuzzer (clang, libFuzzer) for FUZZ_SECONDS on the seed corpus; see fuzz/README.md.
FUZZ_SECONDS ?= 60
fuzz:
	@scripts/install-deps.sh fuzz
	fuzz/run.sh $(FUZZ_SECONDS)

format:
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean:
	rm -rf build
