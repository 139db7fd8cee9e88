#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <gk/base/matrix.h>
#include <gk/base/numeric.h>
#include <gk/base/vector.h>
#include <gk/base/xform.h>

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr long kLongMin = std::numeric_limits<long>::min();
constexpr long kLongMax = std::numeric_limits<long>::max();

// The first double at or above 2^63 (for a 64-bit long): -(double)LONG_MIN is exact.
constexpr double kLongEnd = -static_cast<double>(std::numeric_limits<long>::min());

}  // namespace

// ---- gwRealEq(double) ------------------------------------------------------------------------

TEST(RealEq, DifferenceExactlyAtEpsilonIsEqual) {
  EXPECT_TRUE(gwRealEq(1.0, 1.5, 0.5));
  EXPECT_TRUE(gwRealEq(1.5, 1.0, 0.5));
}

TEST(RealEq, DifferenceJustAboveEpsilonIsNotEqual) {
  EXPECT_FALSE(gwRealEq(1.0, 1.5, std::nextafter(0.5, 0.0)));
  EXPECT_FALSE(gwRealEq(-1.0, 1.0, 1.0));
}

TEST(RealEq, ZeroEpsilonMeansExactEquality) {
  EXPECT_TRUE(gwRealEq(0.1, 0.1, 0.0));
  EXPECT_FALSE(gwRealEq(0.1, std::nextafter(0.1, 1.0), 0.0));
  EXPECT_TRUE(gwRealEq(0.0, -0.0, 0.0));
}

TEST(RealEq, NegativeEpsilonStillAcceptsEqualValues) {
  EXPECT_TRUE(gwRealEq(3.0, 3.0, -1.0));
  EXPECT_FALSE(gwRealEq(3.0, 3.5, -1.0));
}

TEST(RealEq, EqualInfinitiesAreEqualEvenWithZeroEpsilon) {
  EXPECT_TRUE(gwRealEq(kInf, kInf, 0.0));
  EXPECT_TRUE(gwRealEq(-kInf, -kInf, 1e-9));
}

TEST(RealEq, OppositeInfinitiesAreNotEqual) {
  EXPECT_FALSE(gwRealEq(kInf, -kInf, 1e300));
}

TEST(RealEq, InfinityIsFarFromEveryFiniteValue) {
  EXPECT_FALSE(gwRealEq(kInf, std::numeric_limits<double>::max(), 1e308));
}

TEST(RealEq, NaNIsNeverEqualNotEvenToItself) {
  EXPECT_FALSE(gwRealEq(kNaN, kNaN, kInf));
  EXPECT_FALSE(gwRealEq(kNaN, 1.0, kInf));
  EXPECT_FALSE(gwRealEq(1.0, kNaN, kInf));
}

TEST(RealEq, NaNEpsilonAcceptsOnlyExactlyEqualValues) {
  EXPECT_TRUE(gwRealEq(1.0, 1.0, kNaN));
  EXPECT_FALSE(gwRealEq(1.0, 1.25, kNaN));
}

// ---- gwRealEq(vector) ------------------------------------------------------------------------

TEST(RealEqVector, EqualWhenBothCoordinatesAreWithinEpsilon) {
  EXPECT_TRUE(gwRealEq(gkVector<2>(1.0, 2.0), gkVector<2>(1.5, 1.5), 0.5));
}

TEST(RealEqVector, OneCoordinateOutsideEpsilonMakesThemDiffer) {
  EXPECT_FALSE(gwRealEq(gkVector<2>(1.0, 2.0), gkVector<2>(1.75, 2.0), 0.5));
  EXPECT_FALSE(gwRealEq(gkVector<2>(1.0, 2.0), gkVector<2>(1.0, 2.75), 0.5));
}

TEST(RealEqVector, EpsilonIsPerCoordinateNotOnTheEuclideanDistance) {
  // Each coordinate differs by exactly eps, so the Euclidean distance is eps * sqrt(2) > eps.
  EXPECT_TRUE(gwRealEq(gkVector<2>(0.0, 0.0), gkVector<2>(0.5, -0.5), 0.5));
}

TEST(RealEqVector, NaNCoordinateNeverCompareEqual) {
  EXPECT_FALSE(gwRealEq(gkVector<2>(kNaN, 0.0), gkVector<2>(kNaN, 0.0), kInf));
  EXPECT_FALSE(gwRealEq(gkVector<2>(0.0, kNaN), gkVector<2>(0.0, kNaN), kInf));
}

// ---- gwRealEq(xform) -------------------------------------------------------------------------

TEST(RealEqXform, IdenticalTransformsAreEqualWithZeroEpsilon) {
  const gkXform<2> x(gkMatrix<2>(1.0, 2.0, 3.0, 4.0), gkVector<2>(5.0, 6.0));
  EXPECT_TRUE(gwRealEq(x, x, 0.0));
}

TEST(RealEqXform, EachOfTheSixNumbersTakesPartInTheComparison) {
  const gkXform<2> base(gkMatrix<2>(1.0, 2.0, 3.0, 4.0), gkVector<2>(5.0, 6.0));
  const gkXform<2> changed[] = {
      gkXform<2>(gkMatrix<2>(1.25, 2.0, 3.0, 4.0), gkVector<2>(5.0, 6.0)),
      gkXform<2>(gkMatrix<2>(1.0, 2.25, 3.0, 4.0), gkVector<2>(5.0, 6.0)),
      gkXform<2>(gkMatrix<2>(1.0, 2.0, 3.25, 4.0), gkVector<2>(5.0, 6.0)),
      gkXform<2>(gkMatrix<2>(1.0, 2.0, 3.0, 4.25), gkVector<2>(5.0, 6.0)),
      gkXform<2>(gkMatrix<2>(1.0, 2.0, 3.0, 4.0), gkVector<2>(5.25, 6.0)),
      gkXform<2>(gkMatrix<2>(1.0, 2.0, 3.0, 4.0), gkVector<2>(5.0, 6.25)),
  };
  for (const gkXform<2>& c : changed) {
    EXPECT_FALSE(gwRealEq(base, c, 0.125));
    EXPECT_TRUE(gwRealEq(base, c, 0.25));
  }
}

// ---- gwIFloor --------------------------------------------------------------------------------

TEST(IFloor, IntegersMapToThemselves) {
  EXPECT_EQ(gwIFloor(0.0), 0L);
  EXPECT_EQ(gwIFloor(7.0), 7L);
  EXPECT_EQ(gwIFloor(-7.0), -7L);
}

TEST(IFloor, PositiveFractionsRoundDown) {
  EXPECT_EQ(gwIFloor(2.5), 2L);
  EXPECT_EQ(gwIFloor(2.9999999999999996), 2L);
  EXPECT_EQ(gwIFloor(0.1), 0L);
}

TEST(IFloor, NegativeFractionsRoundTowardMinusInfinity) {
  EXPECT_EQ(gwIFloor(-2.5), -3L);
  EXPECT_EQ(gwIFloor(-0.5), -1L);
  EXPECT_EQ(gwIFloor(-1e-300), -1L);
}

TEST(IFloor, NegativeZeroIsZero) {
  EXPECT_EQ(gwIFloor(-0.0), 0L);
}

TEST(IFloor, NaNGivesZero) {
  EXPECT_EQ(gwIFloor(kNaN), 0L);
  EXPECT_EQ(gwIFloor(-kNaN), 0L);
}

TEST(IFloor, InfinitiesSaturateToTheEndsOfLong) {
  EXPECT_EQ(gwIFloor(kInf), kLongMax);
  EXPECT_EQ(gwIFloor(-kInf), kLongMin);
}

TEST(IFloor, HugeValuesSaturateToTheEndsOfLong) {
  EXPECT_EQ(gwIFloor(1e300), kLongMax);
  EXPECT_EQ(gwIFloor(-1e300), kLongMin);
  EXPECT_EQ(gwIFloor(std::numeric_limits<double>::max()), kLongMax);
  EXPECT_EQ(gwIFloor(-std::numeric_limits<double>::max()), kLongMin);
}

TEST(IFloor, FirstValueAboveTheRangeOfLongSaturates) {
  EXPECT_EQ(gwIFloor(kLongEnd), kLongMax);
}

TEST(IFloor, LargestValueInsideTheRangeOfLongIsExact) {
  const double below = std::nextafter(kLongEnd, 0.0);
  EXPECT_EQ(gwIFloor(below), static_cast<long>(below));
}

TEST(IFloor, LowestLongIsExactAndValuesBelowItSaturate) {
  EXPECT_EQ(gwIFloor(-kLongEnd), kLongMin);
  EXPECT_EQ(gwIFloor(std::nextafter(-kLongEnd, -kInf)), kLongMin);
}

TEST(IFloor, LargeValuesWithAHalfFloorExactly) {
  // At 2^51 the spacing of doubles is 0.5, so these halves are exact inputs.
  const double big = static_cast<double>(1L << 51);
  EXPECT_EQ(gwIFloor(big + 0.5), 1L << 51);
  EXPECT_EQ(gwIFloor(-big - 0.5), -(1L << 51) - 1);
}
