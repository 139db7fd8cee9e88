// Replays the hull fuzzer's seed corpus (fuzz/corpus/hull) and its reproducers
// (fuzz/regressions/hull) through the fuzzer's own check, without libFuzzer: a file passes when
// gwConvexHull gives the plain monotone chain's hull of the points it decodes to.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "hull_fuzz_target.h"
#include "replay_files.h"

namespace {

using V = gkVector<2>;

/// The seeds and the reproducers.
std::vector<std::string> inputFiles() {
  return gk::test::seedsAndReproducers(GKGEOM_FUZZ_HULL_CORPUS_DIR,
                                       GKGEOM_FUZZ_HULL_REGRESSIONS_DIR);
}

using gk::test::bytesOf;

std::size_t finiteCount(const std::vector<V>& points) {
  std::size_t count = 0;
  for (const V& p : points) {
    count += std::isfinite(p.x()) && std::isfinite(p.y()) ? 1 : 0;
  }
  return count;
}

std::vector<V> decode(const std::vector<std::uint8_t>& bytes) {
  return gkHullFuzzDecode(bytes.data(), bytes.size());
}

}  // namespace

TEST(HullFuzzReplay, EverySeedAndReproducerGivesThePlainHull) {
  const std::vector<std::string> files = inputFiles();
  ASSERT_GE(files.size(), 6u) << "the seed corpus is missing";
  for (const std::string& file : files) {
    const std::vector<std::uint8_t> bytes = bytesOf(file);
    EXPECT_TRUE(gkHullFuzzCheck(bytes.data(), bytes.size())) << file;
  }
}

TEST(HullFuzzReplay, TheSeedsReachTheSampleFilter) {
  // The filter runs from 128 points on; a seed that never gets there fuzzes only the chain.
  int large = 0;
  for (const std::string& file : inputFiles()) {
    large += finiteCount(decode(bytesOf(file))) > 128 ? 1 : 0;
  }
  EXPECT_GE(large, 1);
}

TEST(HullFuzzReplay, DecodesEachPointMode) {
  const std::vector<std::uint8_t> bytes{
      0,  64,  0, 0x80, 0xFF, 0,  0,  // lattice (1, -2)
      1,  127, 0, 2,    0,    0,  0,  // ring: 6 points, radius 2, around (1, -2)
      2,  0,   0, 1,    0,    0,  0,  // copy: points 0 and 1 again
      11, 0,   0, 1,    0,    64, 3,  // near-collinear: 2 points on 0 -> 1, 3e-9 off
      4,  0,   0, 0x35, 0,    0,  0,  // special: (NaN, 3 * 5e-324)
      5,  64,  0, 0xC0, 0xFF, 3,  0,  // frame: origin (1e9, -1e9), scale 8
      0,  32,  0, 0xC0, 0xFF, 0,  0,  // lattice (1e9 + 4, -1e9 - 8)
      6,  63,  0, 3,    0,    4,  0,  // cloud: 7 points in the box of half-size 8, steps of 2
      1,  2,   3};                    // a partial record: ignored
  const std::vector<V> v = decode(bytes);
  ASSERT_EQ(v.size(), 20u);
  EXPECT_EQ(v[0], V(1.0, -2.0));
  EXPECT_EQ(v[1], V(3.0, -2.0));  // the ring starts at angle 0
  for (int i = 0; i < 6; ++i) {
    const double angle = 2.0 * 3.141592653589793 * i / 6.0;
    EXPECT_NEAR(v[1 + i].x(), 1.0 + 2.0 * std::cos(angle), 1e-15) << i;
    EXPECT_NEAR(v[1 + i].y(), -2.0 + 2.0 * std::sin(angle), 1e-15) << i;
  }
  EXPECT_EQ(v[7], v[0]);
  EXPECT_EQ(v[8], v[1]);
  // A quarter along from (1, -2) to (3, -2), and 161/256 along, 3e-9 to the left.
  EXPECT_EQ(v[9], V(1.5, -2.0 + 3e-9));
  EXPECT_EQ(v[10], V(1.0 + 2.0 * (161.0 / 256.0), -2.0 + 3e-9));
  EXPECT_TRUE(std::isnan(v[11].x()));
  EXPECT_EQ(v[11].y(), 3 * 5e-324);
  EXPECT_EQ(v[12], V(1e9 + 4.0, -1e9 - 8.0));
  for (std::size_t i = 13; i < 20; ++i) {
    const double dx = (v[i].x() - v[12].x()) / 2.0;
    const double dy = (v[i].y() - v[12].y()) / 2.0;
    EXPECT_EQ(dx, std::round(dx)) << i;
    EXPECT_EQ(dy, std::round(dy)) << i;
    EXPECT_LE(std::fabs(dx), 4.0) << i;
    EXPECT_LE(std::fabs(dy), 4.0) << i;
  }

  // Reordered: turned left by one, then reversed.
  std::vector<std::uint8_t> reordered = bytes;
  reordered.resize(bytes.size() - 3);
  reordered.insert(reordered.end(), {7, 1, 0, 1, 0, 0, 0});
  const std::vector<V> w = decode(reordered);
  ASSERT_EQ(w.size(), 20u);
  EXPECT_EQ(w[0], v[0]);
  EXPECT_EQ(w[1], v[19]);
  EXPECT_EQ(w[19], v[1]);
}

TEST(HullFuzzReplay, DecodesSpecialCoordinates) {
  // special(w): the kind in the low four bits, e = w >> 4.
  const std::vector<std::uint8_t> bytes{4, 0x0D, 0, 0x09, 0x80, 0, 0,   // (DBL_MAX, 2^480)
                                        4, 0x01, 0, 0x04, 0,    0, 0,   // (inf, -0)
                                        4, 0x8F, 0, 0x0B, 0x80, 0, 0};  // (8 / 64, 2^-480)
  const std::vector<V> v = decode(bytes);
  ASSERT_EQ(v.size(), 3u);
  EXPECT_EQ(v[0], V(DBL_MAX, 0x1p480));
  EXPECT_EQ(v[1].x(), HUGE_VAL);
  EXPECT_EQ(v[1].y(), 0.0);
  EXPECT_TRUE(std::signbit(v[1].y()));
  EXPECT_EQ(v[2], V(0.125, 0x1p-480));
}

TEST(HullFuzzReplay, OneRingRecordPassesTheFilterThresholdAndJitterStaysInItsUnits) {
  // h = 1: an odd count, 2 + 2 * 255 + 1 = 513 points on the circle of radius 1 around (0, 0).
  const std::vector<V> ring = decode({9, 63, 0, 0xFF, 0, 0, 0});
  ASSERT_EQ(ring.size(), 513u);
  // The same with up to 5 units in the last place of jitter, then with up to 5 units of 1e-7.
  const std::vector<V> ulps = decode({9, 63, 0, 0xFF, 0, 0, 0x0B});
  const std::vector<V> tenths = decode({9, 63, 0, 0xFF, 0, 0, 0x0A});
  ASSERT_EQ(ulps.size(), 513u);
  ASSERT_EQ(tenths.size(), 513u);
  int moved = 0;
  for (std::size_t i = 0; i < ring.size(); ++i) {
    for (int axis = 0; axis < 2; ++axis) {
      const double base = axis == 0 ? ring[i].x() : ring[i].y();
      const double byUlps = axis == 0 ? ulps[i].x() : ulps[i].y();
      const double byTenths = axis == 0 ? tenths[i].x() : tenths[i].y();
      double low = base;
      double high = base;
      for (int k = 0; k < 5; ++k) {
        low = std::nextafter(low, -HUGE_VAL);
        high = std::nextafter(high, HUGE_VAL);
      }
      EXPECT_GE(byUlps, low) << i;
      EXPECT_LE(byUlps, high) << i;
      const double steps = (byTenths - base) / 1e-7;
      EXPECT_NEAR(steps, std::round(steps), 1e-6) << i;
      EXPECT_LE(std::fabs(steps), 5.0 + 1e-6) << i;
      moved += byUlps != base ? 1 : 0;
    }
  }
  EXPECT_GT(moved, 500);
}

TEST(HullFuzzReplay, DecodingStopsAt4000Points) {
  std::vector<std::uint8_t> bytes;
  for (int record = 0; record < 10; ++record) {
    bytes.insert(bytes.end(), {9, 63, 0, 0xFF, 0, 0, 0});
  }
  EXPECT_EQ(decode(bytes).size(), 4000u);
}
