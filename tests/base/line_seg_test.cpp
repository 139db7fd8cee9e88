#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include <gk/base/line.h>
#include <gk/base/line_seg.h>
#include <gk/base/vector.h>

namespace {

using V = gkVector<2>;
const double kNaN = std::numeric_limits<double>::quiet_NaN();

}  // namespace

TEST(LineSeg, DefaultIsTheZeroLengthSegmentAtTheOrigin) {
  const gkLineSeg s;
  EXPECT_EQ(s.p1(), V());
  EXPECT_EQ(s.p2(), V());
  EXPECT_EQ(s.length(), 0.0);
}

TEST(LineSeg, KeepsItsEndsAndMeasuresItsLength) {
  const gkLineSeg s(V(1.0, 1.0), V(4.0, 5.0));
  EXPECT_EQ(s.p1(), V(1.0, 1.0));
  EXPECT_EQ(s.p2(), V(4.0, 5.0));
  EXPECT_EQ(s.length(), 5.0);
}

TEST(LineSeg, LineRunsFromTheFirstEndToTheSecond) {
  const gkLine l = gkLineSeg(V(1.0, 1.0), V(4.0, 5.0)).line();
  EXPECT_EQ(l.point(), V(1.0, 1.0));
  EXPECT_EQ(l.direction(), V(3.0, 4.0));
}

TEST(LineSeg, EqualityComparesBothEndsInOrder) {
  const gkLineSeg s(V(1.0, 2.0), V(3.0, 4.0));
  EXPECT_EQ(s, gkLineSeg(V(1.0, 2.0), V(3.0, 4.0)));
  EXPECT_NE(s, gkLineSeg(V(3.0, 4.0), V(1.0, 2.0)));
  EXPECT_NE(s, gkLineSeg(V(1.0, 2.0), V(3.0, 4.5)));
}

TEST(LineSeg, DistanceFromAnInteriorFootIsThePerpendicularDistance) {
  const gkLineSeg s(V(0.0, 0.0), V(8.0, 0.0));
  EXPECT_EQ(s.distToPoint(V(4.0, 3.0)), 3.0);
  EXPECT_EQ(s.distToPoint(V(2.0, -1.5)), 1.5);
}

TEST(LineSeg, DistanceFromAnInteriorFootOnASlantedSegment) {
  // The foot of (2, 6) on the segment from (0, 0) to (8, 4) is (4, 2), at distance sqrt(20).
  const gkLineSeg s(V(0.0, 0.0), V(8.0, 4.0));
  EXPECT_EQ(s.distToPoint(V(2.0, 6.0)), std::sqrt(20.0));
}

TEST(LineSeg, PointOnTheSegmentIsAtDistanceZero) {
  const gkLineSeg s(V(-2.0, 1.0), V(6.0, 5.0));
  EXPECT_EQ(s.distToPoint(V(2.0, 3.0)), 0.0);
  EXPECT_EQ(s.distToPoint(V(-2.0, 1.0)), 0.0);
  EXPECT_EQ(s.distToPoint(V(6.0, 5.0)), 0.0);
}

TEST(LineSeg, DistanceBeyondAnEndIsExactlyTheDistanceToThatEnd) {
  const gkLineSeg s(V(0.1, 0.2), V(3.7, 1.9));
  const V beforeP1(-5.3, -0.7);
  const V beyondP2(9.1, 4.3);
  EXPECT_EQ(s.distToPoint(beforeP1), beforeP1.distance(s.p1()));
  EXPECT_EQ(s.distToPoint(beyondP2), beyondP2.distance(s.p2()));
}

TEST(LineSeg, FootOnAnEndMeasuresToThatEnd) {
  // Perpendicular through each end of a segment with exact direction (2, 1).
  const gkLineSeg s(V(0.25, 0.125), V(2.25, 1.125));
  EXPECT_EQ(s.distToPoint(V(-0.25, 1.125)), V(-0.25, 1.125).distance(s.p1()));
  EXPECT_EQ(s.distToPoint(V(3.25, -0.875)), V(3.25, -0.875).distance(s.p2()));
}

TEST(LineSeg, EachEndIsExactlyAtDistanceZero) {
  // p1 + (p2 - p1) need not round back to p2; measuring to the end itself is exact anyway.
  std::mt19937_64 rng(17);
  std::uniform_real_distribution<double> coord(-10.0, 10.0);
  int roundTripMisses = 0;
  for (int i = 0; i < 5000; ++i) {
    const V p1(coord(rng), coord(rng));
    const V p2(coord(rng), coord(rng));
    const gkLineSeg s(p1, p2);
    ASSERT_EQ(s.distToPoint(p1), 0.0);
    ASSERT_EQ(s.distToPoint(p2), 0.0);
    if (p1 + (p2 - p1) != p2) {
      ++roundTripMisses;
    }
  }
  // Inputs where a projected end would be off by rounding were part of the check.
  EXPECT_GT(roundTripMisses, 0);
}

TEST(LineSeg, DistanceBeyondAnEndIsExactForRandomSegments) {
  std::mt19937_64 rng(3);
  std::uniform_real_distribution<double> coord(-50.0, 50.0);
  std::uniform_real_distribution<double> along(1.0, 5.0);
  std::uniform_real_distribution<double> across(-5.0, 5.0);
  for (int i = 0; i < 5000; ++i) {
    const V p1(coord(rng), coord(rng));
    const V p2(coord(rng), coord(rng));
    const gkLineSeg s(p1, p2);
    const V d = p2 - p1;
    const V n(-d.y(), d.x());
    const V before = p1 - d * along(rng) + n * across(rng);
    const V after = p2 + d * along(rng) + n * across(rng);
    ASSERT_EQ(s.distToPoint(before), before.distance(p1));
    ASSERT_EQ(s.distToPoint(after), after.distance(p2));
  }
}

TEST(LineSeg, DistanceDoesNotDependOnTheOrderOfTheEnds) {
  const gkLineSeg s(V(1.0, 1.0), V(9.0, 3.0));
  const gkLineSeg r(V(9.0, 3.0), V(1.0, 1.0));
  for (const V& p : {V(0.0, 0.0), V(5.0, 7.0), V(12.0, -1.0), V(-3.0, 2.0)}) {
    EXPECT_DOUBLE_EQ(s.distToPoint(p), r.distToPoint(p));
  }
  EXPECT_EQ(s.distToPoint(V(-2.0, -3.0)), r.distToPoint(V(-2.0, -3.0)));
}

TEST(LineSeg, ZeroLengthSegmentMeasuresToItsPoint) {
  const gkLineSeg s(V(1.0, 1.0), V(1.0, 1.0));
  EXPECT_EQ(s.distToPoint(V(4.0, 5.0)), 5.0);
  EXPECT_EQ(s.distToPoint(V(1.0, 1.0)), 0.0);
  const V q(0.3, -7.1);
  EXPECT_EQ(s.distToPoint(q), q.distance(V(1.0, 1.0)));
  EXPECT_EQ(gkLineSeg().distToPoint(V(-3.0, 4.0)), 5.0);
}

TEST(LineSeg, NaNQueryPointGivesNaNWithoutCrashing) {
  const gkLineSeg s(V(0.0, 0.0), V(4.0, 0.0));
  EXPECT_TRUE(std::isnan(s.distToPoint(V(kNaN, 1.0))));
  EXPECT_TRUE(std::isnan(s.distToPoint(V(1.0, kNaN))));
  EXPECT_TRUE(std::isnan(gkLineSeg().distToPoint(V(kNaN, kNaN))));
}

TEST(LineSeg, NaNFirstEndGivesNaNWithoutCrashing) {
  const gkLineSeg s(V(kNaN, 0.0), V(4.0, 0.0));
  EXPECT_TRUE(std::isnan(s.distToPoint(V(1.0, 1.0))));
  const gkLineSeg both(V(kNaN, kNaN), V(kNaN, kNaN));
  EXPECT_TRUE(std::isnan(both.distToPoint(V(1.0, 1.0))));
}
