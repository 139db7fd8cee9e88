// libFuzzer entry point for the convex hull against the plain chain; the body is shared with the
// replay tests (tests/fuzz_replay), which run the corpus and the regressions without libFuzzer.
#include <cstddef>
#include <cstdint>

#include "hull_fuzz_target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (!gkHullFuzzCheck(data, size)) {
    __builtin_trap();  // the hull differs from the plain monotone chain's
  }
  return 0;
}
