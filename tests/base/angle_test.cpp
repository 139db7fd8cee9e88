#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <vector>

#include <gk/base/angle.h>

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kTwoPi = 2.0 * kPi;
constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();
// One 256th of a turn in degrees; exact in binary.
constexpr double kStepDeg = 360.0 / 256.0;

}  // namespace

// ---- conversions ----------------------------------------------------------------------------

TEST(Angle, DefaultAnglesAreZero) {
  EXPECT_EQ(gkRadian().toDouble(), 0.0);
  EXPECT_EQ(gkDegree().toDouble(), 0.0);
  EXPECT_EQ(gkAngle8().value(), 0);
}

TEST(Angle, RadianKeepsItsValueAsGiven) {
  EXPECT_EQ(gkRadian(-123.25).toDouble(), -123.25);
  EXPECT_EQ(gkRadian(7.0).toDouble(), 7.0);
}

TEST(Angle, RadianArithmeticDoesNotWrap) {
  const gkRadian a(6.0);
  const gkRadian b(1.5);
  EXPECT_EQ((a + b).toDouble(), 7.5);
  EXPECT_EQ((b - a).toDouble(), -4.5);
  EXPECT_EQ((-a).toDouble(), -6.0);
  EXPECT_EQ((a * 3.0).toDouble(), 18.0);
  EXPECT_EQ((a / 4.0).toDouble(), 1.5);
}

TEST(Angle, DegreesConvertToRadians) {
  EXPECT_EQ(gkRadian(gkDegree(0.0)).toDouble(), 0.0);
  EXPECT_DOUBLE_EQ(gkRadian(gkDegree(180.0)).toDouble(), kPi);
  EXPECT_DOUBLE_EQ(gkRadian(gkDegree(90.0)).toDouble(), kPi / 2.0);
  EXPECT_DOUBLE_EQ(gkRadian(gkDegree(-45.0)).toDouble(), -kPi / 4.0);
  EXPECT_DOUBLE_EQ(gkRadian(gkDegree(720.0)).toDouble(), 2.0 * kTwoPi);
}

TEST(Angle, RadiansConvertToDegrees) {
  EXPECT_EQ(gkDegree(gkRadian(0.0)).toDouble(), 0.0);
  EXPECT_DOUBLE_EQ(gkDegree(gkRadian(kPi)).toDouble(), 180.0);
  EXPECT_DOUBLE_EQ(gkDegree(gkRadian(-kPi / 2.0)).toDouble(), -90.0);
  EXPECT_DOUBLE_EQ(gkDegree(gkRadian(1.0)).toDouble(), 57.295779513082323);
}

TEST(Angle, DegreeRadianRoundTripIsCloseToTheStart) {
  for (double d = -720.0; d <= 720.0; d += 7.5) {
    EXPECT_DOUBLE_EQ(gkDegree(gkRadian(gkDegree(d))).toDouble(), d) << d;
  }
}

TEST(Angle, Angle8ConvertsToExactDegrees) {
  for (int k = 0; k < 256; ++k) {
    EXPECT_EQ(gkDegree(gkAngle8(static_cast<unsigned char>(k))).toDouble(), k * kStepDeg) << k;
  }
}

TEST(Angle, Angle8ConvertsToRadians) {
  EXPECT_EQ(gkRadian(gkAngle8(0)).toDouble(), 0.0);
  EXPECT_EQ(gkRadian(gkAngle8(64)).toDouble(), kPi / 2.0);
  EXPECT_EQ(gkRadian(gkAngle8(128)).toDouble(), kPi);
  EXPECT_EQ(gkRadian(gkAngle8(192)).toDouble(), 3.0 * kPi / 2.0);
  EXPECT_DOUBLE_EQ(gkRadian(gkAngle8(1)).toDouble(), kTwoPi / 256.0);
  EXPECT_DOUBLE_EQ(gkRadian(gkAngle8(255)).toDouble(), 255.0 * kTwoPi / 256.0);
}

TEST(Angle, DegreeAdditionAndComparison) {
  EXPECT_EQ(gkDegree(30.0) + gkDegree(15.5), gkDegree(45.5));
  EXPECT_NE(gkDegree(30.0), gkDegree(390.0));
}

// ---- norm ------------------------------------------------------------------------------------

TEST(AngleNorm, ValuesAlreadyInRangeAreUnchanged) {
  EXPECT_EQ(gkRadian(0.0).norm().toDouble(), 0.0);
  EXPECT_EQ(gkRadian(1.0).norm().toDouble(), 1.0);
  EXPECT_EQ(gkRadian(kPi).norm().toDouble(), kPi);
  const double justBelow = std::nextafter(kTwoPi, 0.0);
  EXPECT_EQ(gkRadian(justBelow).norm().toDouble(), justBelow);
}

TEST(AngleNorm, NegativeAnglesGainOneTurn) {
  EXPECT_EQ(gkRadian(-1.0).norm().toDouble(), kTwoPi - 1.0);
  EXPECT_EQ(gkRadian(-kPi / 2.0).norm().toDouble(), kTwoPi - kPi / 2.0);
}

TEST(AngleNorm, AnglesBelowMinusOneTurnWrapRepeatedly) {
  // -7 + 2pi is exact (the operands are within a factor of two), so only the final add rounds.
  EXPECT_EQ(gkRadian(-7.0).norm().toDouble(), (-7.0 + kTwoPi) + kTwoPi);
}

TEST(AngleNorm, AnglesAboveOneTurnLoseWholeTurns) {
  // (2pi + 1) - 2pi is exact, and so is fmod: the result is that difference, bit for bit.
  EXPECT_EQ(gkRadian(kTwoPi + 1.0).norm().toDouble(), (kTwoPi + 1.0) - kTwoPi);
}

TEST(AngleNorm, ExactMultiplesOfATurnGiveZero) {
  for (double turns : {1.0, 2.0, 4.0, 1024.0, -1.0, -2.0, -1024.0}) {
    EXPECT_EQ(gkRadian(turns * kTwoPi).norm().toDouble(), 0.0) << turns;
  }
}

TEST(AngleNorm, RoundedMultiplesOfATurnStayInRangeNearZero) {
  for (int turns = -50; turns <= 50; ++turns) {
    const double r = gkRadian(turns * kTwoPi).norm().toDouble();
    ASSERT_GE(r, 0.0) << turns;
    ASSERT_LT(r, kTwoPi) << turns;
    // The direction is still "no turn": within rounding of 0 or of a full turn.
    EXPECT_LT(std::min(r, kTwoPi - r), 1e-13) << turns;
  }
}

TEST(AngleNorm, TinyNegativeAnglesGiveZeroNotAFullTurn) {
  for (double v : {-1e-300, -std::numeric_limits<double>::denorm_min(), -1e-17, -4e-16}) {
    EXPECT_EQ(gkRadian(v).norm().toDouble(), 0.0) << v;
  }
}

TEST(AngleNorm, SmallNegativeAngleThatDoesNotRoundUpStaysJustBelowAFullTurn) {
  // 2pi - 1e-15 is nearest to the double one below 2pi.
  EXPECT_EQ(gkRadian(-1e-15).norm().toDouble(), std::nextafter(kTwoPi, 0.0));
}

TEST(AngleNorm, NegativeZeroIsZero) {
  EXPECT_EQ(gkRadian(-0.0).norm().toDouble(), 0.0);
}

TEST(AngleNorm, NaNAndInfinitiesGiveNaN) {
  EXPECT_TRUE(std::isnan(gkRadian(kNaN).norm().toDouble()));
  EXPECT_TRUE(std::isnan(gkRadian(kInf).norm().toDouble()));
  EXPECT_TRUE(std::isnan(gkRadian(-kInf).norm().toDouble()));
}

TEST(AngleNorm, RandomAnglesOfEveryMagnitudeLandInTheHalfOpenRange) {
  std::mt19937_64 rng(20240611);
  std::uniform_real_distribution<double> mantissa(-1.0, 1.0);
  std::uniform_int_distribution<int> exponent(-320, 300);
  for (int i = 0; i < 20000; ++i) {
    const double v = std::ldexp(mantissa(rng), exponent(rng));
    const double r = gkRadian(v).norm().toDouble();
    ASSERT_GE(r, 0.0) << v;
    ASSERT_LT(r, kTwoPi) << v;
    if (v >= 0.0 && v < kTwoPi) {
      ASSERT_EQ(r, v);
    }
  }
}

TEST(AngleNorm, NormIsIdempotent) {
  for (double v : {-100.0, -3.0, -1e-15, 0.5, 6.5, 1e6}) {
    const gkRadian once = gkRadian(v).norm();
    EXPECT_EQ(once.norm(), once) << v;
  }
}

// ---- ordering --------------------------------------------------------------------------------

TEST(AngleOrder, OrdersByRawValueNotByDirection) {
  EXPECT_TRUE(gkRadian(0.0) < gkRadian(kTwoPi));
  EXPECT_FALSE(gkRadian(kTwoPi) < gkRadian(0.0));
  EXPECT_TRUE(gkRadian(-1.0) < gkRadian(0.5));
  EXPECT_NE(gkRadian(0.0), gkRadian(kTwoPi));
}

TEST(AngleOrder, IsIrreflexive) {
  for (double v : {-kInf, -1.0, 0.0, 1.0, kInf, kNaN}) {
    EXPECT_FALSE(gkRadian(v) < gkRadian(v)) << v;
  }
}

TEST(AngleOrder, ZeroAndNegativeZeroAreEquivalent) {
  EXPECT_FALSE(gkRadian(0.0) < gkRadian(-0.0));
  EXPECT_FALSE(gkRadian(-0.0) < gkRadian(0.0));
}

TEST(AngleOrder, NaNComesAfterEveryNumberIncludingInfinity) {
  for (double v : {-kInf, -1e300, 0.0, 1e300, kInf}) {
    EXPECT_TRUE(gkRadian(v) < gkRadian(kNaN)) << v;
    EXPECT_FALSE(gkRadian(kNaN) < gkRadian(v)) << v;
  }
}

TEST(AngleOrder, NaNsAreEquivalentToOneAnother) {
  const double otherNaN = -std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(gkRadian(kNaN) < gkRadian(otherNaN));
  EXPECT_FALSE(gkRadian(otherNaN) < gkRadian(kNaN));
}

TEST(AngleOrder, SortingPutsNaNsLast) {
  std::vector<gkRadian> v = {gkRadian(kNaN), gkRadian(3.0),  gkRadian(-kInf), gkRadian(kNaN),
                             gkRadian(-2.0), gkRadian(kInf), gkRadian(0.0),   gkRadian(kNaN)};
  std::sort(v.begin(), v.end());
  const double expected[] = {-kInf, -2.0, 0.0, 3.0, kInf};
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(v[i].toDouble(), expected[i]) << i;
  }
  for (std::size_t i = 5; i < v.size(); ++i) {
    EXPECT_TRUE(std::isnan(v[i].toDouble())) << i;
  }
}

TEST(AngleOrder, NaNKeysShareOneSlotInAnOrderedMap) {
  std::map<gkRadian, int> m;
  m[gkRadian(kNaN)] = 1;
  m[gkRadian(1.0)] = 2;
  m[gkRadian(-std::numeric_limits<double>::quiet_NaN())] = 3;
  m[gkRadian(-1.0)] = 4;
  ASSERT_EQ(m.size(), 3u);
  EXPECT_EQ(m.begin()->first.toDouble(), -1.0);
  EXPECT_TRUE(std::isnan(m.rbegin()->first.toDouble()));
  EXPECT_EQ(m.rbegin()->second, 3);
  EXPECT_EQ(m.count(gkRadian(kNaN)), 1u);
}

TEST(AngleOrder, RandomValuesWithNaNsFormAStrictWeakOrder) {
  std::mt19937_64 rng(7);
  std::uniform_int_distribution<int> pick(0, 9);
  std::vector<double> values;
  for (int i = 0; i < 60; ++i) {
    const int k = pick(rng);
    values.push_back(k == 0 ? kNaN : k == 1 ? kInf : k == 2 ? -kInf : static_cast<double>(k - 6));
  }
  const auto less = [](double a, double b) { return gkRadian(a) < gkRadian(b); };
  const auto equiv = [&](double a, double b) { return !less(a, b) && !less(b, a); };
  for (double a : values) {
    for (double b : values) {
      ASSERT_FALSE(less(a, b) && less(b, a));
      for (double c : values) {
        if (less(a, b) && less(b, c)) {
          ASSERT_TRUE(less(a, c));
        }
        if (equiv(a, b) && equiv(b, c)) {
          ASSERT_TRUE(equiv(a, c));
        }
      }
    }
  }
}

// ---- gkAngle8 --------------------------------------------------------------------------------

TEST(Angle8, StoresTheGivenStep) {
  EXPECT_EQ(gkAngle8(200).value(), 200);
  EXPECT_EQ(static_cast<unsigned char>(gkAngle8(17)), 17);
}

TEST(Angle8, ExactStepsInDegreesConvertExactly) {
  for (int k = 0; k < 256; ++k) {
    EXPECT_EQ(gkAngle8(gkDegree(k * kStepDeg)).value(), k) << k;
  }
}

TEST(Angle8, EveryStepSurvivesARoundTripThroughRadiansAndDegrees) {
  for (int k = 0; k < 256; ++k) {
    const gkAngle8 a(static_cast<unsigned char>(k));
    EXPECT_EQ(gkAngle8(gkRadian(a)), a) << k;
    EXPECT_EQ(gkAngle8(gkDegree(a)), a) << k;
  }
}

TEST(Angle8, RadiansConvertToTheNearestStep) {
  EXPECT_EQ(gkAngle8(gkRadian(kPi)).value(), 128);
  EXPECT_EQ(gkAngle8(gkRadian(kPi / 2.0)).value(), 64);
  EXPECT_EQ(gkAngle8(gkRadian(-kPi / 2.0)).value(), 192);
}

TEST(Angle8, RoundsToTheNearestStep) {
  EXPECT_EQ(gkAngle8(gkDegree(10.3 * kStepDeg)).value(), 10);
  EXPECT_EQ(gkAngle8(gkDegree(10.7 * kStepDeg)).value(), 11);
  EXPECT_EQ(gkAngle8(gkDegree(-10.3 * kStepDeg)).value(), 246);
  EXPECT_EQ(gkAngle8(gkDegree(-10.7 * kStepDeg)).value(), 245);
}

TEST(Angle8, HalfStepsRoundAwayFromZero) {
  // 2.5 steps: away from zero gives 3 (round-half-even would give 2).
  EXPECT_EQ(gkAngle8(gkDegree(2.5 * kStepDeg)).value(), 3);
  EXPECT_EQ(gkAngle8(gkDegree(0.5 * kStepDeg)).value(), 1);
  // -2.5 steps -> -3 -> 253; -0.5 steps -> -1 -> 255.
  EXPECT_EQ(gkAngle8(gkDegree(-2.5 * kStepDeg)).value(), 253);
  EXPECT_EQ(gkAngle8(gkDegree(-0.5 * kStepDeg)).value(), 255);
}

TEST(Angle8, HalfStepBelowAFullTurnRoundsUpToZero) {
  EXPECT_EQ(gkAngle8(gkDegree(255.5 * kStepDeg)).value(), 0);
  EXPECT_EQ(gkAngle8(gkDegree(-255.5 * kStepDeg)).value(), 0);
}

TEST(Angle8, WholeTurnsWrap) {
  EXPECT_EQ(gkAngle8(gkDegree(360.0)).value(), 0);
  EXPECT_EQ(gkAngle8(gkDegree(-360.0)).value(), 0);
  EXPECT_EQ(gkAngle8(gkDegree(720.0 + kStepDeg)).value(), 1);
  EXPECT_EQ(gkAngle8(gkDegree(-kStepDeg)).value(), 255);
  EXPECT_EQ(gkAngle8(gkDegree(-3600.0 - 2.0 * kStepDeg)).value(), 254);
  EXPECT_EQ(gkAngle8(gkDegree(1e6 * 360.0 + 5.0 * kStepDeg)).value(), 5);
}

TEST(Angle8, HugeAnglesWrapWithoutOverflow) {
  // At these magnitudes every double is a multiple of 256 steps.
  EXPECT_EQ(gkAngle8(gkDegree(1e300)).value(), 0);
  EXPECT_EQ(gkAngle8(gkDegree(-1e300)).value(), 0);
}

TEST(Angle8, NaNAndInfinitiesGiveZero) {
  EXPECT_EQ(gkAngle8(gkDegree(kNaN)).value(), 0);
  EXPECT_EQ(gkAngle8(gkDegree(kInf)).value(), 0);
  EXPECT_EQ(gkAngle8(gkDegree(-kInf)).value(), 0);
  EXPECT_EQ(gkAngle8(gkRadian(kNaN)).value(), 0);
  EXPECT_EQ(gkAngle8(gkRadian(kInf)).value(), 0);
}

TEST(Angle8, FiniteRadiansWhoseDegreeValueOverflowsGiveZero) {
  // max() radians is finite, but in degrees it is beyond every double.
  EXPECT_EQ(gkAngle8(gkRadian(std::numeric_limits<double>::max())).value(), 0);
  EXPECT_EQ(gkAngle8(gkRadian(-std::numeric_limits<double>::max())).value(), 0);
}

TEST(Angle8, SubtractionWrapsModulo256) {
  EXPECT_EQ((gkAngle8(3) - gkAngle8(5)).value(), 254);
  EXPECT_EQ((gkAngle8(5) - gkAngle8(3)).value(), 2);
  EXPECT_EQ((gkAngle8(0) - gkAngle8(255)).value(), 1);
}

TEST(Angle8, NegationWrapsModulo256) {
  EXPECT_EQ((-gkAngle8(0)).value(), 0);
  EXPECT_EQ((-gkAngle8(1)).value(), 255);
  EXPECT_EQ((-gkAngle8(128)).value(), 128);
  EXPECT_EQ((-gkAngle8(200)).value(), 56);
}

TEST(Angle8, EqualityComparesTheStoredStep) {
  EXPECT_EQ(gkAngle8(9), gkAngle8(9));
  EXPECT_NE(gkAngle8(9), gkAngle8(10));
  EXPECT_EQ(gkAngle8(gkDegree(360.0 + kStepDeg)), gkAngle8(1));
}

TEST(AngleNorm, MinusOneTurnGivesPositiveZero) {
  const double r = gkRadian(-2.0 * 3.14159265358979323846).norm().toDouble();
  EXPECT_EQ(r, 0.0);
  EXPECT_FALSE(std::signbit(r));
}
