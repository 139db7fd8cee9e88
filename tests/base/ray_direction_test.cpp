#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include <gk/base/angle.h>
#include <gk/base/tolerances.h>
#include <gk/base/vector.h>

#include "base/detail/chain_bounds.h"
#include "base/detail/ray_direction.h"
#include "outlines.h"
#include "plain_reference.h"
#include "plain_region_reference.h"

using gk::detail::containmentRayDirection;
using Points = std::vector<gkVector<2>>;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kTwoPi = 6.283185307179586;

bool sameBits(double a, double b) {
  return a == b ? std::signbit(a) == std::signbit(b) : std::isnan(a) && std::isnan(b);
}

/// Asserts that the fast selection, by the pass over every vertex and by the search of the
/// runs of segments of the closed walk, gives the plain direction bit for bit.
/// chains are the runs of vertices' closed walk, built here when not given.
void expectPlainDirection(const Points& vertices, const gkVector<2>& pt,
                          const gk::detail::ChainBounds* chains = nullptr) {
  gkVector<2> plain(7.0, 7.0);
  const bool plainRay = gk::test::plainRayDirection(vertices, pt, plain);
  std::unique_ptr<gk::detail::ChainBounds> built;
  if (chains == nullptr) {
    built = std::make_unique<gk::detail::ChainBounds>(vertices, true);
    chains = built.get();
  }
  for (const gk::detail::ChainBounds* runs :
       {static_cast<const gk::detail::ChainBounds*>(nullptr), chains}) {
    gkVector<2> fast(7.0, 7.0);
    const bool fastRay = containmentRayDirection(vertices, pt, fast, runs);
    ASSERT_EQ(fastRay, plainRay) << "n " << vertices.size() << " at (" << pt.x() << ", " << pt.y()
                                 << "), runs " << (runs != nullptr);
    if (plainRay) {
      ASSERT_TRUE(sameBits(fast.x(), plain.x()) && sameBits(fast.y(), plain.y()))
          << "n " << vertices.size() << " at (" << pt.x() << ", " << pt.y() << "), runs "
          << (runs != nullptr) << ": fast (" << fast.x() << ", " << fast.y() << ") plain ("
          << plain.x() << ", " << plain.y() << ")";
    }
  }
}

Points star(std::size_t n, std::mt19937_64& rng) {
  std::uniform_real_distribution<double> u(0, 1);
  return gk::test::starOutline(n, 0.3, [&] { return u(rng); });
}

}  // namespace

TEST(ContainmentRayDirection, MatchesTheFullSortInsideAndAroundDenseStars) {
  std::mt19937_64 rng(5);
  std::uniform_real_distribution<double> u(-140, 140);
  for (const std::size_t n : {17u, 100u, 1000u, 20000u}) {
    const Points v = star(n, rng);
    const gk::detail::ChainBounds chains(v, true);
    for (int q = 0; q < 200; ++q) {
      expectPlainDirection(v, gkVector<2>(u(rng), u(rng)), &chains);
    }
  }
}

TEST(ContainmentRayDirection, MatchesTheFullSortWhereEveryDirectionLiesInANarrowCone) {
  // From far outside, all directions fall within a few degrees, in every quadrant in turn: the
  // wide gap is then the one that wraps round, or lies in the quadrant the cone is in.
  std::mt19937_64 rng(6);
  const Points v = star(4000, rng);
  const gk::detail::ChainBounds chains(v, true);
  for (int k = 0; k < 64; ++k) {
    const double a = kTwoPi * k / 64.0;
    expectPlainDirection(v, gkVector<2>(5000 * std::cos(a), 5000 * std::sin(a)), &chains);
    expectPlainDirection(v, gkVector<2>(150 * std::cos(a), 150 * std::sin(a)), &chains);
  }
}

TEST(ContainmentRayDirection, MatchesTheFullSortWhenManyDirectionsTieOnTheAxis) {
  // Integer grid outlines queried at integer heights: many vertices lie straight to the right
  // (angle 0), straight up, left or down, so the smallest keys are all equal.
  Points v;
  for (int x = 0; x <= 40; ++x) {
    v.emplace_back(x, 0);
  }
  for (int y = 1; y <= 40; ++y) {
    v.emplace_back(40, y);
  }
  for (int x = 39; x >= 0; --x) {
    v.emplace_back(x, 40);
  }
  for (int y = 39; y >= 1; --y) {
    v.emplace_back(0, y);
  }
  for (int y = -1; y <= 41; ++y) {
    for (const double x : {-1.0, 0.5, 20.0, 39.5, 41.0}) {
      expectPlainDirection(v, gkVector<2>(x, y));
      expectPlainDirection(v, gkVector<2>(x, y + 0.5));
    }
  }
}

TEST(ContainmentRayDirection, MatchesTheFullSortForDirectionsAHairBelowTheAxis) {
  // A direction just below +x normalises to one full turn, which rounds to 2 pi and so to 0:
  // it belongs at the front of the order, not the back.
  Points v;
  for (int k = 0; k < 40; ++k) {
    v.emplace_back(10 + k, -1e-300 * (k + 1));
    v.emplace_back(10 + k, -1e-17 * (k + 1));
    v.emplace_back(-10 - k, 5 + k);
    v.emplace_back(-10 - k, -5 - k);
  }
  expectPlainDirection(v, gkVector<2>(0, 0));
  expectPlainDirection(v, gkVector<2>(0, -0.0));
  expectPlainDirection(v, gkVector<2>(-0.0, 1e-300));
}

TEST(ContainmentRayDirection, MatchesTheFullSortOnDegenerateAndNonFiniteOutlines) {
  gk::test::DegenerateShapes gen(77);
  for (int shape = 0; shape < 3000; ++shape) {
    const Points v = gen.points(3 + gen.pick(120), shape % 5 == 0);
    for (int q = 0; q < 6; ++q) {
      gkVector<2> p = gen.points(1, q == 5)[0];
      if (q == 0) {
        p = v[gen.pick(v.size())];
      } else if (q == 1) {
        p = v[gen.pick(v.size())] + gkVector<2>(gkTolProximity, 0);  // exactly at the tolerance
      }
      expectPlainDirection(v, p);
    }
  }
}

TEST(ContainmentRayDirection, MatchesTheFullSortFarFromTheOrigin) {
  std::mt19937_64 rng(9);
  for (const double offset : {1e8, 1e15, 1e150}) {
    Points v = star(500, rng);
    for (gkVector<2>& p : v) {
      p = p * (offset / 1e3) + gkVector<2>(offset, -offset);
    }
    std::uniform_real_distribution<double> u(-1.2, 1.2);
    for (int q = 0; q < 50; ++q) {
      expectPlainDirection(
          v, gkVector<2>(offset + offset / 10 * u(rng), -offset + offset / 10 * u(rng)));
    }
  }
}

TEST(ContainmentRayDirection, MatchesTheFullSortWhenTheFirstWideGapLiesDeepInTheOrder) {
  // Points beside a fine outline that lies to their right see it as one dense fan of
  // directions from angle 0 up: the first wide gap comes after hundreds of directions, past the
  // rounds of smallest keys, where only the jumps of the keys get an angle.
  std::mt19937_64 rng(31);
  std::uniform_real_distribution<double> u(0, 1);
  for (const std::size_t n : {200u, 1024u, 3000u}) {
    const Points v = gk::test::blobOutline(n, 0.02, [&] { return u(rng); });
    const gk::detail::ChainBounds chains(v, true);
    for (int q = 0; q < 150; ++q) {
      const double y = 240 * u(rng) - 120;
      expectPlainDirection(v, gkVector<2>(-150 + 60 * u(rng), y), &chains);
      expectPlainDirection(v, gkVector<2>(-60 * u(rng), 0.5 * y), &chains);
    }
  }
}

TEST(ContainmentRayDirection, MatchesTheFullSortWhenGapsStraddleTheThreshold) {
  // Directions from the origin spaced a hair under the threshold pi/n, now and then by half of
  // it, by a hair over it, or by so nearly the threshold that the rounding of the angles decides
  // whether the gap is wide: every neighbour in key order is then a jump that takes angles,
  // deep in the order and in every quadrant.
  std::mt19937_64 rng(32);
  std::uniform_real_distribution<double> u(0, 1);
  for (int shape = 0; shape < 60; ++shape) {
    const std::size_t n = 300 + static_cast<std::size_t>(u(rng) * 900);
    const double threshold = 3.141592653589793 / static_cast<double>(n);
    const std::size_t firstWide = static_cast<std::size_t>(u(rng) * static_cast<double>(n));
    double angle = kTwoPi * u(rng);
    Points v;
    for (std::size_t k = 0; k < n; ++k) {
      v.emplace_back(100 * std::cos(angle), 100 * std::sin(angle));
      const double pick = u(rng);
      double step = threshold * (1 - 1e-9);
      if (pick < 0.05) {
        step = threshold * 0.5;
      } else if (pick < 0.06) {
        step = threshold * (1 + 1e-13 * (u(rng) - 0.5));  // the rounding decides
      } else if (k == firstWide || pick > 0.995) {
        step = threshold * (1 + 1e-9);
      }
      angle += step;
    }
    expectPlainDirection(v, gkVector<2>(0, 0));
    expectPlainDirection(v, gkVector<2>(1e-3 * (u(rng) - 0.5), 1e-3 * (u(rng) - 0.5)));
  }
}

TEST(ContainmentRayDirection, MatchesTheFullSortWhenRaysOfVerticesStraddleTheThreshold) {
  // Several vertices on each ray from the origin, at different distances: their angles and
  // keys differ by rounding alone, not always in the same order, and the rays are spaced so
  // nearly at the threshold that those roundings decide which gap is wide.
  std::mt19937_64 rng(33);
  std::uniform_real_distribution<double> u(0, 1);
  std::vector<double> distances;
  for (int k = 0; k < 24; ++k) {
    distances.push_back(std::exp(10 * u(rng) - 3));
  }
  for (int shape = 0; shape < 300; ++shape) {
    const std::size_t rays = 40 + static_cast<std::size_t>(u(rng) * 60);
    const std::size_t n = rays * distances.size();
    const double threshold = 3.141592653589793 / static_cast<double>(n);
    double angle = kTwoPi * u(rng);
    Points v;
    for (std::size_t k = 0; k < rays; ++k) {
      for (const double d : distances) {
        v.emplace_back(d * std::cos(angle), d * std::sin(angle));
      }
      angle += threshold * (1 + 1e-13 * (u(rng) - 0.5));
    }
    expectPlainDirection(v, gkVector<2>(0, 0));
    // The same rays closer together, within a fan: only the gap that wraps round from the last
    // ray to the first is wide, and the ray bisects it from the largest angle of the last ray.
    v.clear();
    for (std::size_t k = 0; k < rays; ++k) {
      for (const double d : distances) {
        v.emplace_back(d * std::cos(angle), d * std::sin(angle));
      }
      angle += threshold * 0.9;
    }
    expectPlainDirection(v, gkVector<2>(0, 0));
  }
}

TEST(ContainmentRayDirection, PointWithinTheToleranceOfAVertexHasNoRay) {
  const Points v = {{0, 0}, {4, 0}, {4, 4}, {0, 4}};
  gkVector<2> direction(7, 7);
  EXPECT_FALSE(containmentRayDirection(v, gkVector<2>(4, 4 - 0.9 * gkTolProximity), direction));
  EXPECT_EQ(direction, gkVector<2>(7, 7));
  EXPECT_TRUE(containmentRayDirection(v, gkVector<2>(4, 4 - 1.1 * gkTolProximity), direction));
}

TEST(ContainmentRayDirection, RayBisectsTheFirstWideGapInAscendingOrder) {
  // Straight left and right of the point: directions 0 and pi, threshold pi / 2. The first gap,
  // from 0 to pi, is wide enough, and its bisector points straight up.
  const Points v = {{-1, 0}, {1, 0}};
  gkVector<2> direction;
  ASSERT_TRUE(containmentRayDirection(v, gkVector<2>(0, 0), direction));
  EXPECT_NEAR(direction.x(), 0.0, 1e-15);
  EXPECT_DOUBLE_EQ(direction.y(), 1.0);
}

TEST(ContainmentRayDirection, WithoutAWideEnoughGapTheRayRunsAlongPlusX) {
  // NaN directions sort last and every gap next to one is NaN, never wide.
  const Points v = {{kNaN, 0}, {kNaN, 1}, {kInf, kInf}};
  gkVector<2> direction;
  ASSERT_TRUE(containmentRayDirection(v, gkVector<2>(0, 0), direction));
  EXPECT_EQ(direction, gkVector<2>(1.0, 0.0));
}

TEST(ContainmentRayDirection, MatchesTheFullSortAroundAndOnFineOutlines) {
  // Smooth outlines with noise near the vertex spacing: points inside, outside within the box
  // (many seeing part of the outline edge-on), next to vertices at and around the tolerance,
  // and next to the middle of segments.
  std::mt19937_64 rng(12);
  std::uniform_real_distribution<double> u(0, 1);
  for (const std::size_t n : {40u, 300u, 5000u, 20000u}) {
    Points v;
    for (std::size_t k = 0; k < n; ++k) {
      const double t = kTwoPi * static_cast<double>(k) / static_cast<double>(n);
      const double r = 100 * (1 + 0.2 * std::sin(3 * t) + 0.1 * std::cos(7 * t)) + 0.02 * u(rng);
      v.emplace_back(r * std::cos(t), r * std::sin(t));
    }
    const gk::detail::ChainBounds chains(v, true);
    for (int q = 0; q < 200; ++q) {
      const gkVector<2>& a = v[static_cast<std::size_t>(u(rng) * static_cast<double>(n))];
      const gkVector<2>& b = v[(static_cast<std::size_t>(u(rng) * static_cast<double>(n)))];
      switch (q % 5) {
        case 0:
          expectPlainDirection(v, gkVector<2>(280 * u(rng) - 140, 280 * u(rng) - 140), &chains);
          break;
        case 1: {
          const double f[] = {0.5, 0.999, 1.0, 1.001, 2.0};
          const double a0 = kTwoPi * u(rng);
          const double d = gkTolProximity * f[q / 5 % 5];
          expectPlainDirection(v, a + gkVector<2>(d * std::cos(a0), d * std::sin(a0)), &chains);
          break;
        }
        case 2:
          expectPlainDirection(v, (a + b) / 2.0, &chains);
          break;
        case 3:
          expectPlainDirection(v, a * (1.0 + 1e-3 * (u(rng) - 0.5)), &chains);
          break;
        default:
          expectPlainDirection(v, a + gkVector<2>(0, 1e-9 * (u(rng) - 0.5)), &chains);
          break;
      }
    }
  }
}
