#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include <gk/base/vector.h>

#include "base/detail/farthest_pair.h"

using gk::detail::FarthestPair;
using gk::detail::firstFarthestPair;
using gk::detail::firstFarthestPairPlain;
using Points = std::vector<gkVector<2>>;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kTwoPi = 6.283185307179586;

void expectSame(const Points& v, const char* what) {
  const FarthestPair fast = firstFarthestPair(v);
  const FarthestPair plain = firstFarthestPairPlain(v);
  ASSERT_EQ(fast.found, plain.found) << what;
  ASSERT_EQ(fast.i, plain.i) << what;
  ASSERT_EQ(fast.j, plain.j) << what;
  ASSERT_TRUE(fast.distance == plain.distance ||
              (std::isnan(fast.distance) && std::isnan(plain.distance)))
      << what;
}

}  // namespace

TEST(FarthestPair, TreeSearchFindsThePlainLoopsPairOnRandomClouds) {
  std::mt19937_64 rng(1);
  std::uniform_real_distribution<double> u(-100, 100);
  for (int trial = 0; trial < 300; ++trial) {
    Points v(64 + rng() % 400);
    for (auto& p : v) {
      p = gkVector<2>(u(rng), u(rng));
    }
    expectSame(v, "cloud");
  }
}

TEST(FarthestPair, TiesOnARegularPolygonGoToTheFirstPairInRowOrder) {
  // A regular polygon has n/2 diametral pairs whose computed lengths differ in the last bits
  // or not at all: the exact tie rule decides.
  for (const std::size_t n : {64u, 100u, 256u, 1000u, 4096u}) {
    Points v;
    for (std::size_t k = 0; k < n; ++k) {
      const double a = kTwoPi * static_cast<double>(k) / static_cast<double>(n);
      v.emplace_back(50 * std::cos(a), 50 * std::sin(a));
    }
    expectSame(v, "regular polygon");
  }
}

TEST(FarthestPair, IntegerGridsWithRepeatsAndExactTiesAgree) {
  std::mt19937_64 rng(2);
  for (int trial = 0; trial < 300; ++trial) {
    const int grid = 2 + static_cast<int>(rng() % 6);
    Points v(64 + rng() % 200);
    for (auto& p : v) {
      p = gkVector<2>(static_cast<double>(rng() % grid), static_cast<double>(rng() % grid));
    }
    expectSame(v, "grid");
  }
}

TEST(FarthestPair, SpikyStarsAndSmoothBlobsAgree) {
  std::mt19937_64 rng(3);
  std::uniform_real_distribution<double> u(0, 1);
  for (const std::size_t n : {64u, 1024u, 4096u}) {
    Points star;
    Points blob;
    for (std::size_t k = 0; k < n; ++k) {
      const double a = kTwoPi * static_cast<double>(k) / static_cast<double>(n);
      const double r = 100 * (1 + 0.3 * u(rng));
      star.emplace_back(r * std::cos(a), r * std::sin(a));
      const double s = 100 * (1 + 0.2 * std::sin(3 * a) + 0.1 * std::cos(7 * a)) + 0.01 * u(rng);
      blob.emplace_back(s * std::cos(a), s * std::sin(a));
    }
    expectSame(star, "star");
    expectSame(blob, "blob");
  }
}

TEST(FarthestPair, NaNVerticesNeverWinAndInfiniteOnesWinAtTheFirstInfiniteDistance) {
  std::mt19937_64 rng(4);
  std::uniform_real_distribution<double> u(-10, 10);
  for (int trial = 0; trial < 200; ++trial) {
    Points v(64 + rng() % 100);
    for (auto& p : v) {
      p = gkVector<2>(u(rng), u(rng));
    }
    const double specials[] = {kNaN, kInf, -kInf, 1e200, 1e-300};
    for (int k = 0; k < 3; ++k) {
      auto& p = v[rng() % v.size()];
      p = rng() % 2 ? gkVector<2>(specials[rng() % 5], p.y())
                    : gkVector<2>(p.x(), specials[rng() % 5]);
    }
    expectSame(v, "specials");
  }
}

TEST(FarthestPair, AllEqualOrTinySetsAgreeWithTheLoop) {
  expectSame(Points(100, gkVector<2>(3, 4)), "equal");
  Points tiny;
  for (int k = 0; k < 100; ++k) {
    tiny.emplace_back(1e-300 * k, 0);
  }
  expectSame(tiny, "tiny");
  Points allNaN(80, gkVector<2>(kNaN, 0));
  expectSame(allNaN, "all NaN");
  const FarthestPair none = firstFarthestPair(allNaN);
  EXPECT_FALSE(none.found);
}

TEST(FarthestPair, SmallSetsAskEachUnorderedPairOnceAndAgreeWithTheLoop) {
  // Below the tree's threshold each unordered pair is measured once; the first pair in row
  // order must still win every tie, and NaN, infinite and signed-zero coordinates behave as in
  // the loop over every ordered pair.
  std::mt19937_64 rng(4);
  std::uniform_real_distribution<double> u(-100, 100);
  const double specials[] = {kNaN, kInf, -kInf, 0.0, -0.0, 1e300, 5e-324};
  for (int trial = 0; trial < 3000; ++trial) {
    Points v(rng() % 170);
    const int grid = 2 + static_cast<int>(rng() % 5);
    for (auto& p : v) {
      switch (rng() % 8) {
        case 0:
          p = gkVector<2>(specials[rng() % 7], static_cast<double>(rng() % grid));
          break;
        case 1:
        case 2:
          p = gkVector<2>(u(rng), u(rng));
          break;
        default:
          p = gkVector<2>(static_cast<double>(rng() % grid), static_cast<double>(rng() % grid));
          break;
      }
    }
    if (trial % 3 == 0) {
      // One set in three without special values, where plain ties decide.
      for (auto& p : v) {
        if (!std::isfinite(p.x()) || std::abs(p.x()) > 1e3) {
          p = gkVector<2>(1.0, 1.0);
        }
      }
    }
    expectSame(v, "small set");
  }
}
