// Replays the geometry fuzzer's seed corpus (fuzz/corpus/geometry) and its reproducers
// (fuzz/regressions/geometry) through the fuzzer's own body, without libFuzzer: one test per
// file. A file passes when only gkException ends an operation and nothing crashes; under the
// asan preset a memory error or a leak fails it too.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "geometry_fuzz_seeds.h"
#include "geometry_fuzz_target.h"
#include "replay_files.h"

namespace {

using gk::test::bytesOf;
using gk::test::filesIn;
using gk::test::testName;

namespace fs = std::filesystem;

bool sameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

bool samePoints(const gkGeometryFuzzScene::Points& a, const gkGeometryFuzzScene::Points& b) {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](const gkVector<2>& p, const gkVector<2>& q) {
           return sameBits(p.x(), q.x()) && sameBits(p.y(), q.y());
         });
}

bool sameShape(const gkGeometryFuzzScene::Shape& a, const gkGeometryFuzzScene::Shape& b) {
  return samePoints(a.outline, b.outline) && a.holes.size() == b.holes.size() &&
         std::equal(a.holes.begin(), a.holes.end(), b.holes.begin(), sameShape);
}

class GeometryFuzzCorpus : public ::testing::TestWithParam<std::string> {};
class GeometryFuzzRegression : public ::testing::TestWithParam<std::string> {};

TEST_P(GeometryFuzzCorpus, RunsEveryOperationWithOnlyLibraryErrors) {
  const std::vector<std::uint8_t> bytes = bytesOf(GetParam());
  EXPECT_EQ(gkGeometryFuzzOne(bytes.data(), bytes.size()), 0);
}

TEST_P(GeometryFuzzRegression, RunsEveryOperationWithOnlyLibraryErrors) {
  const std::vector<std::uint8_t> bytes = bytesOf(GetParam());
  EXPECT_EQ(gkGeometryFuzzOne(bytes.data(), bytes.size()), 0);
}

INSTANTIATE_TEST_SUITE_P(Files, GeometryFuzzCorpus,
                         ::testing::ValuesIn(filesIn(GKGEOM_FUZZ_GEOMETRY_CORPUS_DIR)), testName);
INSTANTIATE_TEST_SUITE_P(Files, GeometryFuzzRegression,
                         ::testing::ValuesIn(filesIn(GKGEOM_FUZZ_GEOMETRY_REGRESSIONS_DIR)),
                         testName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(GeometryFuzzRegression);

TEST(GeometryFuzzReplay, EverySeedFileIsItsSceneEncoded) {
  const auto seeds = gk::fuzz::geometrySeeds();
  EXPECT_EQ(filesIn(GKGEOM_FUZZ_GEOMETRY_CORPUS_DIR).size(), seeds.size());
  for (const auto& [name, scene] : seeds) {
    const std::string path = std::string(GKGEOM_FUZZ_GEOMETRY_CORPUS_DIR) + "/" + name;
    EXPECT_EQ(bytesOf(path), gkGeometryFuzzEncode(scene))
        << path << " is stale: rebuild the target gkgeom_geometry_fuzz_seeds (fuzz preset)";
  }
}

TEST(GeometryFuzzReplay, DecodingAnEncodedSceneGivesItBackBitForBit) {
  for (const auto& [name, scene] : gk::fuzz::geometrySeeds()) {
    const std::vector<std::uint8_t> bytes = gkGeometryFuzzEncode(scene);
    const gkGeometryFuzzScene back = gkGeometryFuzzDecode(bytes.data(), bytes.size());
    EXPECT_TRUE(samePoints(back.contour, scene.contour)) << name;
    EXPECT_TRUE(samePoints(back.other, scene.other)) << name;
    EXPECT_TRUE(sameShape(back.region, scene.region)) << name;
    ASSERT_EQ(back.setMembers.size(), scene.setMembers.size()) << name;
    for (std::size_t m = 0; m < scene.setMembers.size(); ++m) {
      EXPECT_TRUE(sameShape(back.setMembers[m], scene.setMembers[m])) << name;
    }
    EXPECT_EQ(back.contourClosed, scene.contourClosed) << name;
    EXPECT_EQ(back.otherClosed, scene.otherClosed) << name;
    EXPECT_EQ(back.regionMode, scene.regionMode) << name;
    EXPECT_EQ(back.setMode, scene.setMode) << name;
    EXPECT_EQ(back.cacheBound, scene.cacheBound) << name;
    EXPECT_EQ(back.fitRounds, scene.fitRounds) << name;
    EXPECT_TRUE(samePoints({back.point, back.segmentStart, back.segmentEnd},
                           {scene.point, scene.segmentStart, scene.segmentEnd}))
        << name;
    for (int i = 0; i < 6; ++i) {
      EXPECT_TRUE(sameBits(back.xform[i], scene.xform[i])) << name << " xform " << i;
    }
    EXPECT_TRUE(sameBits(back.angle, scene.angle)) << name;
    EXPECT_TRUE(sameBits(back.tolerance, scene.tolerance)) << name;
    EXPECT_TRUE(sameBits(back.fitLimit, scene.fitLimit)) << name;
  }
}

TEST(GeometryFuzzReplay, AnyByteStringDecodesWithinTheCaps) {
  const std::vector<std::uint8_t> everyByte = [] {
    std::vector<std::uint8_t> bytes;
    for (int round = 0; round < 8; ++round) {
      for (int b = 0; b < 256; ++b) {
        bytes.push_back(static_cast<std::uint8_t>(b * 7 + round));
      }
    }
    return bytes;
  }();
  const gkGeometryFuzzScene s = gkGeometryFuzzDecode(everyByte.data(), everyByte.size());
  EXPECT_LE(s.contour.size(), kGeometryFuzzMaxVertices);
  EXPECT_LE(s.region.holes.size(), kGeometryFuzzMaxHoles);
  EXPECT_LE(s.setMembers.size(), kGeometryFuzzMaxMembers);
  EXPECT_LE(s.fitRounds, kGeometryFuzzMaxFitRounds);
  EXPECT_EQ(gkGeometryFuzzOne(everyByte.data(), everyByte.size()), 0);
}

TEST(GeometryFuzzReplay, AnEmptyInputIsHarmless) {
  EXPECT_EQ(gkGeometryFuzzOne(nullptr, 0), 0);
  const gkGeometryFuzzScene s = gkGeometryFuzzDecode(nullptr, 0);
  EXPECT_TRUE(s.contour.empty());
  EXPECT_TRUE(s.region.outline.empty());
}

}  // namespace
