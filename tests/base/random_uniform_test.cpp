#include <gk/base/random_uniform.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>

namespace {

/// The conversion the generator documents: the top 53 bits of one engine output, scaled to [0, 1).
double unitFromEngineOutput(std::uint64_t bits) {
  return static_cast<double>(bits >> 11) * 0x1.0p-53;
}

}  // namespace

TEST(RandomUniform, FirstValuesForSeedOneArePinned) {
  // Exact bit patterns: any platform or compiler that gives other values breaks eviction
  // determinism of the caches that use this generator.
  gkRandomUniform g(1);
  EXPECT_EQ(g.next(0.0, 1.0), 0x1.122deafddb434p-3);
  EXPECT_EQ(g.next(0.0, 1.0), 0x1.175c928118c7cp-3);
  EXPECT_EQ(g.next(0.0, 1.0), 0x1.ce0b479deb99p-2);
  EXPECT_EQ(g.next(0.0, 1.0), 0x1.5876015e4d7p-6);
  EXPECT_EQ(g.next(0.0, 1.0), 0x1.6751d5cbb3f18p-2);
}

TEST(RandomUniform, FirstValuesForSeedOneOverASymmetricRangeArePinned) {
  gkRandomUniform g(1);
  EXPECT_EQ(g.next(-10.0, 10.0), -0x1.d4a34d2156f6p+2);
  EXPECT_EQ(g.next(-10.0, 10.0), -0x1.d166246f50832p+2);
  EXPECT_EQ(g.next(-10.0, 10.0), -0x1.f38f33d4cc06p-1);
}

TEST(RandomUniform, UnitValuesAreTheTop53BitsOfThe64BitMersenneTwister) {
  // The engine's outputs for seed 1, as the standard defines mt19937_64.
  gkRandomUniform g(1);
  EXPECT_EQ(g.next(0.0, 1.0), unitFromEngineOutput(2469588189546311528ULL));
  EXPECT_EQ(g.next(0.0, 1.0), unitFromEngineOutput(2516265689700432462ULL));
  EXPECT_EQ(g.next(0.0, 1.0), unitFromEngineOutput(8323445853463659930ULL));
}

TEST(RandomUniform, TenThousandthValueForTheEnginesDefaultSeedMatchesTheStandardsCheckValue) {
  // The standard requires the 10000th output of a default-constructed mt19937_64 (seed 5489)
  // to be 9981545732273789042.
  gkRandomUniform g(5489);
  double v = 0.0;
  for (int i = 0; i < 10000; ++i) {
    v = g.next(0.0, 1.0);
  }
  EXPECT_EQ(v, unitFromEngineOutput(9981545732273789042ULL));
  EXPECT_EQ(v, 0x1.150b25eb02fdbp-1);
}

TEST(RandomUniform, SameSeedGivesTheSameSequence) {
  gkRandomUniform a(12345);
  gkRandomUniform b(12345);
  for (int i = 0; i < 1000; ++i) {
    const double lo = -static_cast<double>(i % 7);
    const double hi = static_cast<double>(i % 11) + 0.5;
    ASSERT_EQ(a.next(lo, hi), b.next(lo, hi)) << "draw " << i;
  }
}

TEST(RandomUniform, DifferentSeedsGiveDifferentSequences) {
  gkRandomUniform a(1);
  gkRandomUniform b(2);
  int equalDraws = 0;
  for (int i = 0; i < 100; ++i) {
    if (a.next(0.0, 1.0) == b.next(0.0, 1.0)) {
      ++equalDraws;
    }
  }
  EXPECT_EQ(equalDraws, 0);
}

TEST(RandomUniform, ValuesStayInTheHalfOpenRangeAndCoverIt) {
  gkRandomUniform g(7);
  const double lo = -2.5;
  const double hi = 7.0;
  double smallest = hi;
  double largest = lo;
  double sum = 0.0;
  constexpr int kDraws = 100000;
  for (int i = 0; i < kDraws; ++i) {
    const double v = g.next(lo, hi);
    ASSERT_GE(v, lo) << "draw " << i;
    ASSERT_LT(v, hi) << "draw " << i;
    smallest = std::fmin(smallest, v);
    largest = std::fmax(largest, v);
    sum += v;
  }
  // Uniform: both ends are approached and the mean is the midpoint.
  EXPECT_LT(smallest, lo + 0.001 * (hi - lo));
  EXPECT_GT(largest, hi - 0.001 * (hi - lo));
  EXPECT_NEAR(sum / kDraws, 0.5 * (lo + hi), 0.05);
}

TEST(RandomUniform, ValueNeverRoundsUpToTheUpperEndOfATinyRange) {
  // Over a one-ulp range, lo + u * (hi - lo) rounds to hi for every u >= 1/2, so about half the
  // draws would return hi without the guard.
  gkRandomUniform g(1);
  const double lo = 1.0;
  const double hi = std::nextafter(1.0, 2.0);
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(g.next(lo, hi), lo) << "draw " << i;
  }
}

TEST(RandomUniform, ValuesStayBelowTheUpperEndOfANarrowRangeAwayFromZero) {
  gkRandomUniform g(3);
  const double lo = 1.0e6;
  const double hi = lo + 4.0 * (std::nextafter(lo, 2.0e6) - lo);
  for (int i = 0; i < 10000; ++i) {
    const double v = g.next(lo, hi);
    ASSERT_GE(v, lo) << "draw " << i;
    ASSERT_LT(v, hi) << "draw " << i;
  }
}

TEST(RandomUniform, EmptyRangeReturnsLo) {
  gkRandomUniform g(1);
  EXPECT_EQ(g.next(3.5, 3.5), 3.5);
  EXPECT_EQ(g.next(5.0, -5.0), 5.0);
  EXPECT_EQ(g.next(-1.0, -2.0), -1.0);
  EXPECT_EQ(g.next(0.0, 0.0), 0.0);
}

TEST(RandomUniform, EmptyRangeStillAdvancesTheGenerator) {
  gkRandomUniform advanced(1);
  EXPECT_EQ(advanced.next(2.0, 2.0), 2.0);
  EXPECT_EQ(advanced.next(2.0, 1.0), 2.0);

  gkRandomUniform reference(1);
  reference.next(0.0, 1.0);
  reference.next(0.0, 1.0);
  EXPECT_EQ(advanced.next(0.0, 1.0), reference.next(0.0, 1.0));
  EXPECT_EQ(advanced.next(0.0, 1.0), 0x1.5876015e4d7p-6);  // the fourth value for seed 1
}
