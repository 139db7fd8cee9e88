// libFuzzer entry point for the archive loader; the body is shared with the replay tests
// (tests/fuzz_replay), which run the corpus and the regressions without libFuzzer.
#include <cstddef>
#include <cstdint>

#include "archive_fuzz_target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return gkArchiveFuzzOne(data, size);
}
