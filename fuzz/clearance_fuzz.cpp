// libFuzzer entry point for the clearance sweep; the body is shared with the replay tests
// (tests/fuzz_replay), which run the corpus and the regressions without libFuzzer.
#include <cstddef>
#include <cstdint>

#include "clearance_fuzz_target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (!gkClearanceFuzzCheck(data, size)) {
    __builtin_trap();  // a true answer with two segments within reach, or a bad pair
  }
  return 0;
}
