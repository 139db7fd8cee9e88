// libFuzzer entry point for the geometry; the body is shared with the replay tests
// (tests/fuzz_replay), which run the corpus and the regressions without libFuzzer.
#include <cstddef>
#include <cstdint>

#include "geometry_fuzz_target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return gkGeometryFuzzOne(data, size);
}
