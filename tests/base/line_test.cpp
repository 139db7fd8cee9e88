#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include <gk/base/line.h>
#include <gk/base/tolerances.h>
#include <gk/base/vector.h>

namespace {

using V = gkVector<2>;

// Scales from sub-pixel to far beyond any image.
constexpr double kScales[] = {1e-3, 1e-2, 0.1, 1.0, 10.0, 100.0, 1e3, 1e4, 1e5, 1e6};

// Extents whose squares underflow (below about 1e-154) or overflow (above about 1e154). Powers
// of two, so that the expected answers below are exact.
const double kExtremeScales[] = {std::ldexp(1.0, -600), std::ldexp(1.0, -540), std::ldexp(1.0, 540),
                                 std::ldexp(1.0, 1000)};

bool isFinite(const V& v) {
  return std::isfinite(v.x()) && std::isfinite(v.y());
}

}  // namespace

// ---- construction ----------------------------------------------------------------------------

TEST(Line, KeepsTheFirstPointAndTheDirectionToTheSecond) {
  const gkLine l(V(1.0, 2.0), V(4.0, -2.0));
  EXPECT_EQ(l.point(), V(1.0, 2.0));
  EXPECT_EQ(l.direction(), V(3.0, -4.0));
  EXPECT_FALSE(l.isDegenerate());
}

TEST(Line, DefaultLineIsTheDegenerateLineAtTheOrigin) {
  const gkLine l;
  EXPECT_TRUE(l.isDegenerate());
  EXPECT_EQ(l.point(), V());
  EXPECT_EQ(l.direction(), V());
}

TEST(Line, LineThroughTwoEqualPointsIsDegenerate) {
  EXPECT_TRUE(gkLine(V(0.1, 0.7), V(0.1, 0.7)).isDegenerate());
  EXPECT_FALSE(gkLine(V(0.1, 0.7), V(0.1, std::nextafter(0.7, 1.0))).isDegenerate());
}

// ---- isParallel ------------------------------------------------------------------------------

TEST(LineParallel, ALineIsParallelToItselfAndToItsReverse) {
  const gkLine l(V(1.0, 2.0), V(4.0, 7.0));
  EXPECT_TRUE(l.isParallel(l));
  EXPECT_TRUE(l.isParallel(gkLine(V(4.0, 7.0), V(1.0, 2.0))));
}

TEST(LineParallel, DistinctLinesWithTheSameDirectionAreParallel) {
  const gkLine a(V(0.0, 0.0), V(3.0, 1.0));
  const gkLine b(V(0.0, 5.0), V(-6.0, 3.0));
  EXPECT_TRUE(a.isParallel(b));
  EXPECT_TRUE(b.isParallel(a));
}

TEST(LineParallel, PerpendicularAndObliqueLinesAreNotParallel) {
  const gkLine x(V(0.0, 0.0), V(1.0, 0.0));
  EXPECT_FALSE(x.isParallel(gkLine(V(0.0, 0.0), V(0.0, 1.0))));
  EXPECT_FALSE(x.isParallel(gkLine(V(5.0, 5.0), V(6.0, 6.0))));
}

TEST(LineParallel, CollinearUpToRoundingSegmentsAreParallelAtEveryScale) {
  for (double s : kScales) {
    const V a(0.1 * s, 0.3 * s);
    const V d(0.7 * s, 0.2 * s);
    // Four points on one line, each rounded on its own.
    const gkLine l1(a, a + d);
    const gkLine l2(a + d * 3.7, a - d * 2.3);
    const gkLine l3(a + d * 1e-3, a + d * 0.1);
    ASSERT_FALSE(l1.isDegenerate());
    EXPECT_TRUE(l1.isParallel(l2)) << s;
    EXPECT_TRUE(l2.isParallel(l1)) << s;
    EXPECT_TRUE(l1.isParallel(l3)) << s;
    EXPECT_TRUE(l3.isParallel(l2)) << s;
  }
}

TEST(LineParallel, ClearlyCrossingLinesAreNotParallelAtAnyScale) {
  for (double s : kScales) {
    const V a(0.1 * s, 0.3 * s);
    const gkLine l1(a, a + V(0.7 * s, 0.2 * s));
    const gkLine l2(a, a + V(0.2 * s, 0.7 * s));
    EXPECT_FALSE(l1.isParallel(l2)) << s;
    EXPECT_FALSE(l2.isParallel(l1)) << s;
  }
}

TEST(LineParallel, TheSineThresholdIsTheSameAtEveryScale) {
  // Against the x axis, a direction (1, q) has sine q / sqrt(1 + q^2).
  for (double s : kScales) {
    const gkLine axis(V(0.0, 0.0), V(s, 0.0));
    const gkLine within(V(0.0, 0.0), V(s, s * (gkTolParallelSine / 2.0)));
    const gkLine beyond(V(0.0, 0.0), V(s, s * (gkTolParallelSine * 2.0)));
    EXPECT_TRUE(axis.isParallel(within)) << s;
    EXPECT_FALSE(axis.isParallel(beyond)) << s;
  }
}

TEST(LineParallel, SmallAngleBetweenLinesBeyondTheToleranceIsNotParallel) {
  // 1e-6 rad is far above the tolerance, whatever the lengths of the directions.
  for (double s : kScales) {
    const gkLine l1(V(0.0, 0.0), V(s, 0.0));
    const gkLine l2(V(0.0, 0.0), V(1e3 * s * std::cos(1e-6), 1e3 * s * std::sin(1e-6)));
    EXPECT_FALSE(l1.isParallel(l2)) << s;
  }
}

TEST(LineParallel, AnswerDoesNotDependOnScaleEvenForExtremeExtents) {
  // Squares of these extents underflow or overflow; the answer must not change with them.
  for (double s : kExtremeScales) {
    const gkLine axis(V(0.0, 0.0), V(s, 0.0));
    EXPECT_FALSE(axis.isParallel(gkLine(V(0.0, 0.0), V(0.0, s)))) << s;
    EXPECT_FALSE(axis.isParallel(gkLine(V(0.0, 0.0), V(s, s * 1e-5)))) << s;
    EXPECT_TRUE(axis.isParallel(gkLine(V(0.0, s), V(-s, s)))) << s;
  }
}

TEST(LineParallel, ADegenerateLineIsParallelToEveryLine) {
  const gkLine point(V(2.0, 3.0), V(2.0, 3.0));
  const gkLine lines[] = {gkLine(V(0.0, 0.0), V(1.0, 0.0)), gkLine(V(0.0, 0.0), V(0.0, 1.0)),
                          gkLine(V(-5.0, 1.0), V(3.0, 9.0)), gkLine(), point};
  for (const gkLine& l : lines) {
    EXPECT_TRUE(point.isParallel(l));
    EXPECT_TRUE(l.isParallel(point));
  }
}

// ---- intersect -------------------------------------------------------------------------------

TEST(LineIntersect, CrossingDiagonalsMeetInTheMiddle) {
  const gkLine a(V(0.0, 0.0), V(2.0, 2.0));
  const gkLine b(V(0.0, 2.0), V(2.0, 0.0));
  EXPECT_EQ(a.intersect(b), V(1.0, 1.0));
  EXPECT_EQ(b.intersect(a), V(1.0, 1.0));
}

TEST(LineIntersect, AxisParallelLinesMeetAtTheirCommonCoordinates) {
  const gkLine horizontal(V(-4.0, 1.5), V(12.0, 1.5));
  const gkLine vertical(V(3.25, 100.0), V(3.25, 99.0));
  EXPECT_EQ(horizontal.intersect(vertical), V(3.25, 1.5));
  EXPECT_EQ(vertical.intersect(horizontal), V(3.25, 1.5));
}

TEST(LineIntersect, CrossingPointMayLieOutsideBothDefiningSegments) {
  const gkLine a(V(0.0, 0.0), V(1.0, 0.0));
  const gkLine b(V(8.0, 1.0), V(8.0, 2.0));
  EXPECT_EQ(a.intersect(b), V(8.0, 0.0));
}

TEST(LineIntersect, CrossingPointLiesOnBothLines) {
  std::mt19937_64 rng(5);
  std::uniform_real_distribution<double> coord(-100.0, 100.0);
  for (int i = 0; i < 1000; ++i) {
    const gkLine a(V(coord(rng), coord(rng)), V(coord(rng), coord(rng)));
    const gkLine b(V(coord(rng), coord(rng)), V(coord(rng), coord(rng)));
    const double sine = std::fabs(a.direction().unit().cross(b.direction().unit()));
    if (sine < 0.1) {
      continue;  // keep the crossing well conditioned
    }
    const V x = a.intersect(b);
    EXPECT_LT(a.distToPoint(x), 1e-9);
    EXPECT_LT(b.distToPoint(x), 1e-9);
  }
}

TEST(LineIntersect, ParallelLinesGiveThisLinesPoint) {
  const gkLine a(V(1.0, 1.0), V(3.0, 2.0));
  const gkLine b(V(0.0, 5.0), V(4.0, 7.0));
  EXPECT_EQ(a.intersect(b), V(1.0, 1.0));
  EXPECT_EQ(b.intersect(a), V(0.0, 5.0));
  EXPECT_EQ(a.intersect(a), V(1.0, 1.0));
}

TEST(LineIntersect, DegenerateLineGivesItsPoint) {
  const gkLine point(V(2.0, 3.0), V(2.0, 3.0));
  EXPECT_EQ(point.intersect(gkLine(V(0.0, 0.0), V(1.0, 0.0))), V(2.0, 3.0));
  EXPECT_EQ(point.intersect(point), V(2.0, 3.0));
  EXPECT_EQ(gkLine().intersect(gkLine(V(5.0, 5.0), V(6.0, 7.0))), V(0.0, 0.0));
}

TEST(LineIntersect, ALineMeetingADegenerateLineGivesItsOwnPoint) {
  // A point is parallel to every line, and parallel lines give this line's point.
  const gkLine l(V(-1.0, 4.0), V(1.0, 4.0));
  EXPECT_EQ(l.intersect(gkLine(V(2.0, 3.0), V(2.0, 3.0))), V(-1.0, 4.0));
}

TEST(LineIntersect, CrossingAtExtremeScalesIsFound) {
  for (double s : kExtremeScales) {
    const gkLine horizontal(V(0.0, 0.0), V(s, 0.0));
    const gkLine vertical(V(s, -s), V(s, s));
    EXPECT_EQ(horizontal.intersect(vertical), V(s, 0.0)) << s;
  }
}

// ---- proj ------------------------------------------------------------------------------------

TEST(LineProj, FootOfThePerpendicularOnAnAxisParallelLine) {
  const gkLine l(V(0.0, 1.0), V(4.0, 1.0));
  EXPECT_EQ(l.proj(V(3.0, 5.0)), V(3.0, 1.0));
  EXPECT_EQ(l.proj(V(-7.5, -2.0)), V(-7.5, 1.0));
}

TEST(LineProj, FootOfThePerpendicularOnADiagonal) {
  const gkLine l(V(0.0, 0.0), V(1.0, 1.0));
  EXPECT_EQ(l.proj(V(2.0, 0.0)), V(1.0, 1.0));
  EXPECT_EQ(l.proj(V(-3.0, 1.0)), V(-1.0, -1.0));
}

TEST(LineProj, PointOnTheLineProjectsToItself) {
  const gkLine l(V(1.0, 2.0), V(3.0, 6.0));
  EXPECT_EQ(l.proj(V(2.0, 4.0)), V(2.0, 4.0));
  EXPECT_EQ(l.proj(V(1.0, 2.0)), V(1.0, 2.0));
}

TEST(LineProj, FootIsPerpendicularToTheLine) {
  const gkLine l(V(0.3, -1.2), V(2.9, 4.4));
  const V pt(-3.7, 8.1);
  const V foot = l.proj(pt);
  EXPECT_NEAR((pt - foot).dot(l.direction()), 0.0, 1e-12);
  EXPECT_NEAR(l.distToPoint(foot), 0.0, 1e-12);
}

TEST(LineProj, DegenerateLineProjectsEverythingToItsPoint) {
  const gkLine point(V(2.0, 3.0), V(2.0, 3.0));
  EXPECT_EQ(point.proj(V(10.0, -4.0)), V(2.0, 3.0));
  EXPECT_EQ(point.proj(V(2.0, 3.0)), V(2.0, 3.0));
  EXPECT_EQ(gkLine().proj(V(1.0, 1.0)), V(0.0, 0.0));
}

TEST(LineProj, ProjectionAtExtremeScalesIsFinite) {
  for (double s : kExtremeScales) {
    const gkLine l(V(0.0, 0.0), V(s, 0.0));
    const V foot = l.proj(V(0.5 * s, s));
    EXPECT_EQ(foot, V(0.5 * s, 0.0)) << s;
  }
}

// ---- distToPoint -----------------------------------------------------------------------------

TEST(LineDist, DistanceToAnAxisParallelLineIsExact) {
  const gkLine l(V(0.0, 1.0), V(5.0, 1.0));
  EXPECT_EQ(l.distToPoint(V(2.0, 4.0)), 3.0);
  EXPECT_EQ(l.distToPoint(V(100.0, -1.5)), 2.5);
}

TEST(LineDist, DistanceDoesNotDependOnTheDirectionOrTheDefiningPoints) {
  const gkLine a(V(0.0, 0.0), V(3.0, 4.0));
  const gkLine reversed(V(3.0, 4.0), V(0.0, 0.0));
  const gkLine longer(V(-3.0, -4.0), V(6.0, 8.0));
  // (4, -3) is 5 away from the line through the origin along (3, 4).
  EXPECT_EQ(a.distToPoint(V(4.0, -3.0)), 5.0);
  EXPECT_EQ(reversed.distToPoint(V(4.0, -3.0)), 5.0);
  EXPECT_EQ(longer.distToPoint(V(4.0, -3.0)), 5.0);
}

TEST(LineDist, DistanceIsMeasuredToTheInfiniteLine) {
  const gkLine l(V(0.0, 0.0), V(1.0, 0.0));
  EXPECT_EQ(l.distToPoint(V(1000.0, 2.0)), 2.0);
  EXPECT_EQ(l.distToPoint(V(-1000.0, -2.0)), 2.0);
}

TEST(LineDist, PointOnTheLineIsAtDistanceZero) {
  const gkLine l(V(1.0, 2.0), V(3.0, 6.0));
  EXPECT_EQ(l.distToPoint(V(5.0, 10.0)), 0.0);
}

TEST(LineDist, DegenerateLineMeasuresToItsPoint) {
  const gkLine point(V(1.0, 1.0), V(1.0, 1.0));
  EXPECT_EQ(point.distToPoint(V(4.0, 5.0)), 5.0);
  EXPECT_EQ(point.distToPoint(V(1.0, 1.0)), 0.0);
  EXPECT_EQ(gkLine().distToPoint(V(-3.0, 4.0)), 5.0);
}

TEST(LineDist, DistanceAtExtremeScalesIsFinite) {
  for (double s : kExtremeScales) {
    const gkLine l(V(0.0, 0.0), V(s, 0.0));
    EXPECT_EQ(l.distToPoint(V(0.5 * s, s)), s) << s;
  }
}

TEST(LineDegenerate, NoOperationOnADegenerateLineGivesANaN) {
  const gkLine point(V(0.5, -0.25), V(0.5, -0.25));
  const gkLine other(V(0.0, 0.0), V(1.0, 3.0));
  EXPECT_TRUE(std::isfinite(point.distToPoint(V(7.0, 7.0))));
  EXPECT_TRUE(isFinite(point.proj(V(7.0, 7.0))));
  EXPECT_TRUE(isFinite(point.intersect(other)));
  EXPECT_TRUE(isFinite(other.intersect(point)));
}

// ---- scaling of the direction ------------------------------------------------------------------

namespace {

/// The plain scaling the line's queries rely on: the direction divided by 2^e, e being frexp's
/// exponent of its larger coordinate, through the library calls.
V plainScaled(const V& d) {
  const double m = std::max(std::fabs(d.x()), std::fabs(d.y()));
  if (m == 0.0 || !std::isfinite(m)) {
    return d;
  }
  int e = 0;
  std::frexp(m, &e);
  return V(std::ldexp(d.x(), -e), std::ldexp(d.y(), -e));
}

bool sameBits(double a, double b) {
  return a == b ? std::signbit(a) == std::signbit(b) : std::isnan(a) && std::isnan(b);
}

}  // namespace

TEST(LineScaling, QueriesMatchThePlainPowerOfTwoScalingBitForBitOverTheWholeExponentRange) {
  // Directions whose larger coordinate takes every binary exponent from the subnormals to the
  // largest doubles, with a smaller coordinate from equal down to far below it (so that its
  // scaled value may be subnormal): foot of the perpendicular, distance and crossing must come
  // out as they do with the direction scaled by frexp and ldexp.
  std::mt19937_64 rng(41);
  std::uniform_real_distribution<double> mantissa(0.5, 1.0);
  std::uniform_int_distribution<int> drop(0, 1100);
  for (int exponent = -1074; exponent <= 1024; ++exponent) {
    for (int k = 0; k < 4; ++k) {
      const double big = std::ldexp(mantissa(rng), exponent);
      const double small = std::ldexp(mantissa(rng), exponent - drop(rng));
      const V d = k % 2 == 0 ? V(big, -small) : V(small, -big);
      const V p(std::ldexp(mantissa(rng), exponent), -std::ldexp(mantissa(rng), exponent));
      const V q = p * 0.5;
      const gkLine line(V(0.0, 0.0), d);
      const V s = plainScaled(d);
      // The queries' formulas, written out with the plainly scaled direction (the line's
      // point is the origin).
      const double t = q.dot(s) / s.dot(s);
      const V foot = V(0.0, 0.0) + s * t;
      const V proj = line.proj(q);
      ASSERT_TRUE(sameBits(proj.x(), foot.x()) && sameBits(proj.y(), foot.y()))
          << "exponent " << exponent << " k " << k;
      ASSERT_TRUE(sameBits(line.distToPoint(q), std::fabs(s.cross(q - V(0.0, 0.0))) / s.len()))
          << "exponent " << exponent << " k " << k;
      const gkLine other(p, p + V(-d.y(), d.x()));
      const V e = plainScaled(other.direction());
      if (!line.isParallel(other)) {
        const double u = (other.point() - V(0.0, 0.0)).cross(e) / s.cross(e);
        const V crossing = V(0.0, 0.0) + s * u;
        const V found = line.intersect(other);
        ASSERT_TRUE(sameBits(found.x(), crossing.x()) && sameBits(found.y(), crossing.y()))
            << "exponent " << exponent << " k " << k;
      }
    }
  }
}

TEST(LineScaling, ParallelTestMatchesThePlainSineTestAroundTheThreshold) {
  // Pairs of directions at angles from far below to far above the tolerance's sine, a hair
  // either side of it included, at lengths over the whole double range: the quick rejection of
  // clearly crossing pairs must never change an answer of the plain test.
  std::mt19937_64 rng(42);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  int parallel = 0;
  for (int k = 0; k < 200000; ++k) {
    const double turn = u(rng) * 6.283185307179586;
    const double factors[] = {0.0, 0.5, 1.0 - 1e-9, 1.0, 1.0 + 1e-9, 2.0, 1e3};
    const double angle = gkTolParallelSine * factors[k % 7] * (k % 2 == 0 ? 1.0 : -1.0);
    const double l1 = std::ldexp(0.5 + u(rng), static_cast<int>(u(rng) * 400) - 200);
    const double l2 = std::ldexp(0.5 + u(rng), static_cast<int>(u(rng) * 400) - 200);
    const V d1(l1 * std::cos(turn), l1 * std::sin(turn));
    const V d2(l2 * std::cos(turn + angle), l2 * std::sin(turn + angle));
    const V s1 = plainScaled(d1);
    const V s2 = plainScaled(d2);
    const bool plain = std::fabs(s1.cross(s2)) <= gkTolParallelSine * s1.len() * s2.len();
    ASSERT_EQ(gkLine(V(0.0, 0.0), d1).isParallel(gkLine(V(0.0, 0.0), d2)), plain) << k;
    parallel += plain ? 1 : 0;
  }
  // Both answers occur often.
  EXPECT_GT(parallel, 40000);
  EXPECT_LT(parallel, 160000);
}
