// Replays the clearance fuzzer's seed corpus (fuzz/corpus/clearance) and its reproducers
// (fuzz/regressions/clearance) through the fuzzer's own check, without libFuzzer: a file passes
// when the sweep keeps its promise on the walk it decodes to.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "base/detail/clearance_sweep.h"
#include "clearance_fuzz_target.h"
#include "replay_files.h"

namespace {

/// The seeds and the reproducers.
std::vector<std::string> inputFiles() {
  return gk::test::seedsAndReproducers(GKGEOM_FUZZ_CLEARANCE_CORPUS_DIR,
                                       GKGEOM_FUZZ_CLEARANCE_REGRESSIONS_DIR);
}

using gk::test::bytesOf;

}  // namespace

TEST(ClearanceFuzzReplay, EverySeedAndReproducerKeepsTheSweepsPromise) {
  const std::vector<std::string> files = inputFiles();
  ASSERT_GE(files.size(), 6u) << "the seed corpus is missing";
  for (const std::string& file : files) {
    const std::vector<std::uint8_t> bytes = bytesOf(file);
    EXPECT_TRUE(gkClearanceFuzzCheck(bytes.data(), bytes.size())) << file;
  }
}

TEST(ClearanceFuzzReplay, TheSeedsStartTheFuzzerOnBothAnswers) {
  // At least one seed walk the sweep shows clear and at least one it cannot.
  int clear = 0;
  int notShown = 0;
  for (const std::string& file : inputFiles()) {
    const std::vector<std::uint8_t> bytes = bytesOf(file);
    const gkClearanceFuzzInput input = gkClearanceFuzzDecode(bytes.data(), bytes.size());
    const bool shown = gk::detail::segmentsKeepClear(input.points, input.closed, 2e-6);
    clear += shown ? 1 : 0;
    notShown += shown ? 0 : 1;
  }
  EXPECT_GE(clear, 3);
  EXPECT_GE(notShown, 3);
}

TEST(ClearanceFuzzReplay, DecodesEachVertexMode) {
  // Closed; (64, 0)/64 = (1, 0); then the previous moved by (10, 0) * 1e-7; then a copy of
  // vertex 0; then a point a quarter along segment 0-1 moved 3e-7 off it.
  const std::vector<std::uint8_t> bytes{1,                //
                                        0, 64, 0, 0,  0,  // (1, 0)
                                        0, 0,  0, 64, 0,  // (0, 1)
                                        1, 10, 0, 0,  0,  // (1e-6, 1)
                                        3, 0,  0, 0,  0,  // vertex 0 again
                                        2, 0,  0, 64, 3};
  const gkClearanceFuzzInput input = gkClearanceFuzzDecode(bytes.data(), bytes.size());
  ASSERT_EQ(input.points.size(), 5u);
  EXPECT_TRUE(input.closed);
  EXPECT_EQ(input.points[0], gkVector<2>(1, 0));
  EXPECT_EQ(input.points[1], gkVector<2>(0, 1));
  EXPECT_EQ(input.points[2], gkVector<2>(0, 1) + gkVector<2>(10, 0) * 1e-7);
  EXPECT_EQ(input.points[3], gkVector<2>(1, 0));
  EXPECT_NEAR(input.points[4].x(), 1.0 - 0.25098039215686274, 1e-6);
}
