#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include <gk/base/vector.h>

#include "base/detail/orientation.h"

namespace {

using V = gkVector<2>;
using gk::detail::exactOrientation;
using gk::detail::orientation;
using gk::detail::orientationByExpansion;
using gk::detail::orientationByIntegers;

/// The plain rounded sign, which the tests show to be wrong near a line.
int roundedSign(const V& o, const V& a, const V& b) {
  const double d = (a - o).cross(b - o);
  return d > 0.0 ? 1 : d < 0.0 ? -1 : 0;
}

V scaled(const V& v, double s) {
  return V(v.x() * s, v.y() * s);
}

}  // namespace

TEST(Orientation, LeftTurnRightTurnAndStraightOn) {
  EXPECT_EQ(orientation(V(0, 0), V(1, 0), V(1, 1)), 1);
  EXPECT_EQ(orientation(V(0, 0), V(1, 1), V(1, 0)), -1);
  EXPECT_EQ(orientation(V(0, 0), V(1, 1), V(3, 3)), 0);
  EXPECT_EQ(orientation(V(2, 2), V(2, 2), V(5, -1)), 0);
}

TEST(Orientation, OneUnitInTheLastPlaceOffALineIsSeenWhereRoundingSeesNothing) {
  // (0.5, 0.5), (12, 12) and (24, 24) are on y = x. Moving the first point by one unit in x
  // puts (12, 12) 12 * 2^-53 to one side; the rounded cross product is exactly zero.
  const V o(std::nextafter(0.5, 1.0), 0.5);
  EXPECT_EQ(roundedSign(o, V(12, 12), V(24, 24)), 0);
  EXPECT_EQ(orientation(o, V(12, 12), V(24, 24)), -1);
  const V p(0.5, std::nextafter(0.5, 1.0));
  EXPECT_EQ(orientation(p, V(12, 12), V(24, 24)), 1);
}

TEST(Orientation, MatchesTheIntegerSumOnAGridOfPointsAroundALineWhereRoundingErrs) {
  // The classic picture of rounded orientation: o runs over a 256 x 256 grid of neighbouring
  // doubles next to the line through (12, 12) and (24, 24). The rounded sign is wrong (not
  // just zero) for some of them; the filtered sign never is.
  int roundedWrong = 0;
  double x = 0.5;
  for (int i = 0; i < 256; ++i, x = std::nextafter(x, 1.0)) {
    double y = 0.5;
    for (int j = 0; j < 256; ++j, y = std::nextafter(y, 1.0)) {
      const V o(x, y);
      const int exact = orientationByIntegers(o, V(12, 12), V(24, 24));
      ASSERT_EQ(orientation(o, V(12, 12), V(24, 24)), exact) << i << ", " << j;
      ASSERT_EQ(orientationByExpansion(o, V(12, 12), V(24, 24)), exact) << i << ", " << j;
      roundedWrong += roundedSign(o, V(12, 12), V(24, 24)) == -exact && exact != 0;
    }
  }
  EXPECT_GT(roundedWrong, 0);
}

TEST(Orientation, ExpansionAndIntegerSumsAgreeOnRandomAndNearlyStraightTriples) {
  std::mt19937_64 rng(7);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  std::uniform_int_distribution<int> exponent(-470, 470);
  std::uniform_int_distribution<int> nudge(-3, 3);
  for (int round = 0; round < 200000; ++round) {
    const double s = std::ldexp(1.0, exponent(rng));
    const V o(u(rng) * s, u(rng) * s);
    const V a(u(rng) * s, u(rng) * s);
    V b(u(rng) * s, u(rng) * s);
    if (round % 2 == 0) {
      // On the line through o and a, rounded, then nudged by a few units.
      const double t = u(rng) * 4.0;
      b = o + (a - o) * t;
      for (int k = nudge(rng); k != 0; k += k > 0 ? -1 : 1) {
        b = V(std::nextafter(b.x(), k > 0 ? 1e300 : -1e300), b.y());
      }
    }
    const int byIntegers = orientationByIntegers(o, a, b);
    ASSERT_EQ(orientationByExpansion(o, a, b), byIntegers) << round;
    ASSERT_EQ(orientation(o, a, b), byIntegers) << round;
    // Turning the triple round keeps the sign; swapping two reverses it.
    ASSERT_EQ(orientation(a, b, o), byIntegers) << round;
    ASSERT_EQ(orientation(a, o, b), -byIntegers) << round;
  }
}

TEST(Orientation, HugeAndSubnormalCoordinatesKeepTheSignOfTheSameTripleAtUnitScale) {
  // Every product overflows at 2^1000 and underflows at 2^-1060; scaling by a power of two
  // keeps each coordinate exact and the sign unchanged.
  std::mt19937_64 rng(11);
  std::uniform_int_distribution<int> coord(-5000, 5000);
  for (int round = 0; round < 20000; ++round) {
    const V o(coord(rng), coord(rng));
    const V a(coord(rng), coord(rng));
    // Every fourth triple straight on.
    const V b = round % 4 == 0 ? o + (a - o) * static_cast<double>(coord(rng) % 7)
                               : V(coord(rng), coord(rng));
    const int unit = roundedSign(o, a, b);  // exact for integers this small
    for (const double s : {0x1p1000, 0x1p-1060, 0x1p-480, 0x1p480}) {
      ASSERT_EQ(orientation(scaled(o, s), scaled(a, s), scaled(b, s)), unit) << round << " " << s;
      ASSERT_EQ(exactOrientation(scaled(o, s), scaled(a, s), scaled(b, s)), unit);
    }
  }
}

TEST(Orientation, TriplesMixingTheLargestAndTheSmallestMagnitudes) {
  const double tiny = 0x1p-1074;
  const double big = 0x1p1023;
  // Right-angled corners whose cross products are tiny * tiny and big * big.
  EXPECT_EQ(orientation(V(0, 0), V(tiny, 0), V(0, tiny)), 1);
  EXPECT_EQ(orientation(V(0, 0), V(0, tiny), V(tiny, 0)), -1);
  EXPECT_EQ(orientation(V(0, 0), V(big, 0), V(0, big)), 1);
  EXPECT_EQ(orientation(V(-big, -big), V(big, big), V(0, 0)), 0);
  // A tiny step off a huge line: (big, big) - (0, 0) - (tiny, 0) turns right.
  EXPECT_EQ(orientation(V(big, big), V(0, 0), V(tiny, 0)), 1);
  EXPECT_EQ(orientation(V(big, big), V(0, 0), V(0, tiny)), -1);
  // The products' sum needs every bit from 2^-2148 to 2^2046.
  EXPECT_EQ(orientation(V(0, 0), V(big, tiny), V(big, tiny)), 0);
  EXPECT_EQ(orientation(V(tiny, 0), V(big, tiny), V(-big, 0)), 1);
}
