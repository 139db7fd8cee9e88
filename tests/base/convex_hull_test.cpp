#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <vector>

#include <gk/base/convex_hull.h>
#include <gk/base/vector.h>

#include "base/detail/orientation.h"
#include "plain_hull.h"

namespace {

using V = gkVector<2>;
using Points = std::vector<V>;

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

Points hullOf(const Points& points) {
  Points hull;
  gwConvexHull(points, hull);
  return hull;
}

double signedArea(const Points& polygon) {
  double twice = 0.0;
  for (std::size_t i = 0; i < polygon.size(); ++i) {
    twice += polygon[i].cross(polygon[(i + 1) % polygon.size()]);
  }
  return twice / 2.0;
}

/// Jarvis' gift wrapping, written for clarity rather than speed, as an independent reference.
/// From the current corner, the next corner is the point with no other point to its right;
/// among points on that supporting line the farthest, so that edge points are skipped.
/// It starts from the smallest (x, y) point, which is always a strict corner. Its turns are
/// the integer sums, independent of the expansions the library's own turns mostly use.
Points referenceHull(const Points& input) {
  Points pts;
  for (const V& p : input) {
    if (std::isfinite(p.x()) && std::isfinite(p.y()) &&
        std::find(pts.begin(), pts.end(), p) == pts.end()) {
      pts.push_back(p);
    }
  }
  if (pts.size() < 2) {
    return pts;
  }
  const V start = *std::min_element(pts.begin(), pts.end(), [](const V& a, const V& b) {
    return a.x() < b.x() || (a.x() == b.x() && a.y() < b.y());
  });
  Points hull;
  V cur = start;
  do {
    hull.push_back(cur);
    if (hull.size() > pts.size()) {
      ADD_FAILURE() << "reference hull does not close";
      return hull;
    }
    V next = cur == pts[0] ? pts[1] : pts[0];
    for (const V& r : pts) {
      if (r == cur) {
        continue;
      }
      const int c = gk::detail::orientationByIntegers(cur, next, r);
      const V dr = r - cur;
      const V dn = next - cur;
      if (c < 0 || (c == 0 && dr.dot(dr) > dn.dot(dn))) {
        next = r;
      }
    }
    cur = next;
  } while (cur != start);
  return hull;
}

void expectSameHull(const Points& points) {
  const Points got = hullOf(points);
  const Points want = referenceHull(points);
  ASSERT_EQ(got.size(), want.size());
  for (std::size_t i = 0; i < got.size(); ++i) {
    ASSERT_EQ(got[i], want[i]) << "vertex " << i << " of " << got.size();
  }
}

}  // namespace

// ---- documented rules on small examples ------------------------------------------------------

TEST(ConvexHull, NoPointGivesAnEmptyHull) {
  EXPECT_TRUE(hullOf({}).empty());
}

TEST(ConvexHull, OnePointGivesThatPoint) {
  EXPECT_EQ(hullOf({V(0.1, 0.2)}), Points({V(0.1, 0.2)}));
}

TEST(ConvexHull, AllPointsEqualGiveThatPointOnce) {
  EXPECT_EQ(hullOf({V(3.0, 4.0), V(3.0, 4.0), V(3.0, 4.0)}), Points({V(3.0, 4.0)}));
  EXPECT_EQ(hullOf({V(1.0, 1.0), V(1.0, 1.0)}), Points({V(1.0, 1.0)}));
}

TEST(ConvexHull, TwoPointsGiveBothWithTheSmallerXFirst) {
  EXPECT_EQ(hullOf({V(3.0, 1.0), V(1.0, 5.0)}), Points({V(1.0, 5.0), V(3.0, 1.0)}));
  EXPECT_EQ(hullOf({V(1.0, 5.0), V(3.0, 1.0)}), Points({V(1.0, 5.0), V(3.0, 1.0)}));
}

TEST(ConvexHull, TwoPointsWithEqualXGiveTheSmallerYFirst) {
  EXPECT_EQ(hullOf({V(2.0, 7.0), V(2.0, 3.0)}), Points({V(2.0, 3.0), V(2.0, 7.0)}));
}

TEST(ConvexHull, TriangleComesOutCounterClockwise) {
  // Given clockwise, returned counter-clockwise from the smallest x.
  const Points hull = hullOf({V(0.0, 0.0), V(0.0, 3.0), V(4.0, 0.0)});
  EXPECT_EQ(hull, Points({V(0.0, 0.0), V(4.0, 0.0), V(0.0, 3.0)}));
  EXPECT_EQ(signedArea(hull), 6.0);
}

TEST(ConvexHull, InteriorAndEdgePointsAreLeftOut) {
  const Points pts = {V(2.0, 2.0), V(4.0, 4.0), V(2.0, 0.0), V(0.0, 4.0), V(1.0, 3.0),
                      V(4.0, 0.0), V(4.0, 1.0), V(0.0, 0.0), V(0.0, 2.0), V(3.0, 4.0)};
  EXPECT_EQ(hullOf(pts), Points({V(0.0, 0.0), V(4.0, 0.0), V(4.0, 4.0), V(0.0, 4.0)}));
}

TEST(ConvexHull, StartIsTheSmallestXAndAmongThoseTheSmallestY) {
  const Points pts = {V(0.0, 5.0), V(3.0, -4.0), V(0.0, -2.0), V(6.0, 1.0), V(0.0, 1.0)};
  const Points hull = hullOf(pts);
  ASSERT_FALSE(hull.empty());
  EXPECT_EQ(hull.front(), V(0.0, -2.0));
  EXPECT_EQ(hull, Points({V(0.0, -2.0), V(3.0, -4.0), V(6.0, 1.0), V(0.0, 5.0)}));
}

TEST(ConvexHull, DuplicateCornersAppearOnce) {
  const Points pts = {V(0.0, 0.0), V(1.0, 0.0), V(0.0, 1.0), V(1.0, 0.0),
                      V(0.0, 0.0), V(0.0, 1.0), V(1.0, 0.0)};
  EXPECT_EQ(hullOf(pts), Points({V(0.0, 0.0), V(1.0, 0.0), V(0.0, 1.0)}));
}

TEST(ConvexHull, EveryReturnedVertexIsAStrictCorner) {
  // A regular grid: lots of points on every edge.
  Points pts;
  for (int x = 0; x <= 6; ++x) {
    for (int y = 0; y <= 3; ++y) {
      pts.emplace_back(x, y);
    }
  }
  const Points hull = hullOf(pts);
  ASSERT_EQ(hull, Points({V(0.0, 0.0), V(6.0, 0.0), V(6.0, 3.0), V(0.0, 3.0)}));
  for (std::size_t i = 0; i < hull.size(); ++i) {
    const V& a = hull[i];
    const V& b = hull[(i + 1) % hull.size()];
    const V& c = hull[(i + 2) % hull.size()];
    EXPECT_GT((b - a).cross(c - b), 0.0) << i;
  }
}

TEST(ConvexHull, CollinearPointsGiveTheTwoExtremesStartFirst) {
  const Points pts = {V(2.0, 2.0), V(3.0, 3.0), V(0.0, 0.0), V(1.0, 1.0), V(2.0, 2.0)};
  EXPECT_EQ(hullOf(pts), Points({V(0.0, 0.0), V(3.0, 3.0)}));
}

TEST(ConvexHull, CollinearPointsOnAVerticalLineStartAtTheSmallestY) {
  EXPECT_EQ(hullOf({V(5.0, 9.0), V(5.0, 1.0), V(5.0, 4.0)}), Points({V(5.0, 1.0), V(5.0, 9.0)}));
}

TEST(ConvexHull, CollinearPointsOnADescendingLine) {
  const Points pts = {V(1.0, 3.0), V(3.0, -1.0), V(0.0, 5.0), V(2.0, 1.0)};
  EXPECT_EQ(hullOf(pts), Points({V(0.0, 5.0), V(3.0, -1.0)}));
}

TEST(ConvexHull, NonFinitePointsAreIgnored) {
  const Points clean = {V(0.0, 0.0), V(2.0, 0.0), V(1.0, 2.0)};
  Points dirty = clean;
  dirty.insert(dirty.begin(), V(kNaN, 0.0));
  dirty.emplace_back(-kInf, 1.0);
  dirty.emplace_back(1.0, kInf);
  dirty.emplace_back(kNaN, kNaN);
  dirty.insert(dirty.begin() + 2, V(0.5, -kInf));
  EXPECT_EQ(hullOf(dirty), hullOf(clean));
  EXPECT_EQ(hullOf(dirty), Points({V(0.0, 0.0), V(2.0, 0.0), V(1.0, 2.0)}));
}

TEST(ConvexHull, OnlyNonFinitePointsGiveAnEmptyHull) {
  EXPECT_TRUE(hullOf({V(kNaN, 1.0), V(kInf, kInf), V(0.0, -kInf)}).empty());
}

TEST(ConvexHull, OneFinitePointAmongNonFiniteOnesGivesThatPoint) {
  EXPECT_EQ(hullOf({V(kNaN, 1.0), V(2.0, 3.0), V(kInf, 0.0)}), Points({V(2.0, 3.0)}));
}

TEST(ConvexHull, ReplacesWhateverTheOutputHeldBefore) {
  Points hull = {V(9.0, 9.0), V(8.0, 8.0), V(7.0, 7.0), V(6.0, 6.0), V(5.0, 5.0)};
  gwConvexHull({V(1.0, 1.0)}, hull);
  EXPECT_EQ(hull, Points({V(1.0, 1.0)}));
  gwConvexHull({}, hull);
  EXPECT_TRUE(hull.empty());
}

TEST(ConvexHull, InputOrderDoesNotMatter) {
  Points pts = {V(0.0, 0.0), V(5.0, 1.0), V(6.0, 4.0), V(2.0, 6.0), V(-1.0, 3.0),
                V(2.0, 2.0), V(3.0, 3.0), V(1.0, 4.0), V(5.0, 1.0), V(0.0, 0.0)};
  const Points expected = hullOf(pts);
  EXPECT_EQ(expected, Points({V(-1.0, 3.0), V(0.0, 0.0), V(5.0, 1.0), V(6.0, 4.0), V(2.0, 6.0)}));
  std::mt19937 rng(1);
  for (int i = 0; i < 50; ++i) {
    std::shuffle(pts.begin(), pts.end(), rng);
    ASSERT_EQ(hullOf(pts), expected);
  }
}

TEST(ConvexHull, HullOfAHullIsItself) {
  const Points hull = hullOf({V(0.1, 0.2), V(3.7, -1.1), V(2.2, 4.9), V(-1.3, 2.6), V(1.0, 1.0)});
  EXPECT_EQ(hullOf(hull), hull);
}

TEST(ConvexHull, HullHasPositiveArea) {
  const Points hull = hullOf({V(0.1, 0.2), V(3.7, -1.1), V(2.2, 4.9), V(-1.3, 2.6), V(1.0, 1.0)});
  ASSERT_GE(hull.size(), 3u);
  EXPECT_GT(signedArea(hull), 0.0);
}

// ---- against the reference -------------------------------------------------------------------

TEST(ConvexHullReference, ReferenceAgreesWithHandWorkedExamples) {
  // The reference itself must get the documented rules right, or the comparisons prove nothing.
  EXPECT_EQ(referenceHull({}), Points());
  EXPECT_EQ(referenceHull({V(1.0, 1.0), V(1.0, 1.0)}), Points({V(1.0, 1.0)}));
  EXPECT_EQ(referenceHull({V(2.0, 2.0), V(0.0, 0.0), V(1.0, 1.0)}),
            Points({V(0.0, 0.0), V(2.0, 2.0)}));
  EXPECT_EQ(referenceHull({V(0.0, 4.0), V(2.0, 0.0), V(4.0, 4.0), V(0.0, 0.0), V(4.0, 0.0),
                           V(2.0, 2.0), V(0.0, 2.0)}),
            Points({V(0.0, 0.0), V(4.0, 0.0), V(4.0, 4.0), V(0.0, 4.0)}));
}

TEST(ConvexHullReference, SmallIntegerGridsWithManyDuplicatesAndCollinearPoints) {
  std::mt19937_64 rng(424242);
  std::uniform_int_distribution<int> count(0, 40);
  for (int extent : {1, 2, 3, 5, 10}) {
    std::uniform_int_distribution<int> coord(0, extent);
    for (int round = 0; round < 400; ++round) {
      Points pts(static_cast<std::size_t>(count(rng)));
      for (V& p : pts) {
        p = V(coord(rng), coord(rng));
      }
      expectSameHull(pts);
    }
  }
}

TEST(ConvexHullReference, WideIntegerRange) {
  std::mt19937_64 rng(77);
  std::uniform_int_distribution<int> count(3, 200);
  std::uniform_int_distribution<int> coord(-1000000, 1000000);
  for (int round = 0; round < 300; ++round) {
    Points pts(static_cast<std::size_t>(count(rng)));
    for (V& p : pts) {
      p = V(coord(rng), coord(rng));
    }
    expectSameHull(pts);
  }
}

TEST(ConvexHullReference, PointsOnAFewLinesAndTheirIntersections) {
  // Many points on three lines with integer slopes: long collinear runs on and off the hull.
  std::mt19937_64 rng(31337);
  std::uniform_int_distribution<int> t(-20, 20);
  std::uniform_int_distribution<int> slope(-3, 3);
  std::uniform_int_distribution<int> offset(-10, 10);
  std::uniform_int_distribution<int> count(1, 60);
  std::uniform_int_distribution<int> which(0, 3);
  for (int round = 0; round < 500; ++round) {
    const int m[3] = {slope(rng), slope(rng), slope(rng)};
    const int c[3] = {offset(rng), offset(rng), offset(rng)};
    Points pts(static_cast<std::size_t>(count(rng)));
    for (V& p : pts) {
      const int k = which(rng);
      const int x = t(rng);
      p = k == 3 ? V(c[0], x) : V(x, m[k] * x + c[k]);  // k == 3: a vertical line
    }
    expectSameHull(pts);
  }
}

TEST(ConvexHullReference, AllCollinearInputs) {
  std::mt19937_64 rng(8);
  std::uniform_int_distribution<int> t(-50, 50);
  std::uniform_int_distribution<int> dir(-4, 4);
  std::uniform_int_distribution<int> count(1, 30);
  for (int round = 0; round < 300; ++round) {
    const V base(t(rng), t(rng));
    const V d(dir(rng), dir(rng));
    Points pts(static_cast<std::size_t>(count(rng)));
    for (V& p : pts) {
      p = base + d * t(rng);
    }
    expectSameHull(pts);
    const Points hull = hullOf(pts);
    EXPECT_LE(hull.size(), 2u);
  }
}

TEST(ConvexHullReference, DyadicCoordinatesCloseTogether) {
  // Multiples of 1/64: exact products, so every orientation is decided exactly.
  std::mt19937_64 rng(64);
  std::uniform_int_distribution<int> coord(-32, 32);
  std::uniform_int_distribution<int> count(0, 80);
  for (int round = 0; round < 400; ++round) {
    Points pts(static_cast<std::size_t>(count(rng)));
    for (V& p : pts) {
      p = V(coord(rng) / 64.0, coord(rng) / 64.0);
    }
    expectSameHull(pts);
  }
}

TEST(ConvexHullReference, RealCoordinatesInGeneralPosition) {
  std::mt19937_64 rng(2718);
  std::uniform_real_distribution<double> coord(-100.0, 100.0);
  std::uniform_int_distribution<int> count(0, 300);
  for (int round = 0; round < 300; ++round) {
    Points pts(static_cast<std::size_t>(count(rng)));
    for (V& p : pts) {
      p = V(coord(rng), coord(rng));
    }
    expectSameHull(pts);
  }
}

TEST(ConvexHullReference, PointsNearACircleKeepManyCorners) {
  std::mt19937_64 rng(1414);
  std::uniform_real_distribution<double> angle(0.0, 6.283185307179586);
  std::uniform_real_distribution<double> radius(0.9, 1.0);
  for (int round = 0; round < 100; ++round) {
    Points pts(200);
    for (V& p : pts) {
      p = V(radius(rng) * 50.0, gkRadian(angle(rng)));
    }
    expectSameHull(pts);
  }
}

TEST(ConvexHullReference, InputsWithNonFinitePointsMixedIn) {
  std::mt19937_64 rng(99);
  std::uniform_int_distribution<int> coord(0, 6);
  std::uniform_int_distribution<int> count(0, 30);
  std::uniform_int_distribution<int> junk(0, 5);
  const V nonFinite[] = {V(kNaN, 0.0), V(0.0, kNaN), V(kInf, 1.0), V(1.0, -kInf), V(kNaN, kInf)};
  for (int round = 0; round < 400; ++round) {
    Points pts(static_cast<std::size_t>(count(rng)));
    for (V& p : pts) {
      const int j = junk(rng);
      p = j < 5 && junk(rng) == 0 ? nonFinite[j] : V(coord(rng), coord(rng));
    }
    expectSameHull(pts);
  }
}

TEST(ConvexHullBucketSort, LargeInputsGiveThePlainSortsHullOnRandomAndDegenerateClouds) {
  std::mt19937_64 rng(31337);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  for (int trial = 0; trial < 300; ++trial) {
    const std::size_t n = 256 + static_cast<std::size_t>(rng() % 4000);
    const int kind = trial % 6;
    Points cloud;
    for (std::size_t i = 0; i < n; ++i) {
      switch (kind) {
        case 0:  // doubles of every size and sign
          cloud.emplace_back(u(rng) * std::pow(10.0, static_cast<int>(rng() % 40) - 20),
                             u(rng) * std::pow(10.0, static_cast<int>(rng() % 40) - 20));
          break;
        case 1:  // a small integer grid: duplicates, equal x, collinear runs
          cloud.emplace_back(static_cast<double>(rng() % 9) - 4.0,
                             static_cast<double>(rng() % 9) - 4.0);
          break;
        case 2:  // zeros of both signs and subnormals
          cloud.emplace_back(
              (rng() % 2 ? -1.0 : 1.0) * (rng() % 3 == 0 ? 0.0 : 5e-324 * (rng() % 5)),
              (rng() % 2 ? -0.0 : 0.0) + static_cast<double>(rng() % 3));
          break;
        case 3: {  // on a circle: every point a corner
          const double a = 6.283185307179586 * static_cast<double>(i) / static_cast<double>(n);
          cloud.emplace_back(1e3 * std::cos(a), 1e3 * std::sin(a));
          break;
        }
        case 4:  // non-finite points mixed in
          cloud.emplace_back(rng() % 10 == 0 ? kNaN : u(rng), rng() % 13 == 0 ? -kInf : u(rng));
          break;
        default:  // huge coordinates
          cloud.emplace_back(u(rng) * 1e300, u(rng) * 1e300);
          break;
      }
    }
    const Points got = hullOf(cloud);
    const Points expected = gk::test::plainConvexHull(cloud);
    ASSERT_EQ(got, expected) << "trial " << trial << " kind " << kind;
  }
}

// ---- exact turns -------------------------------------------------------------------------------

TEST(ConvexHull, TurnsAreExactSoAPointOneUnitInTheLastPlaceOffAnEdgeIsACorner) {
  // (12, 12) lies 12 * 2^-53 to the left of the line from a to (24, 24): a strict corner. The
  // rounded cross product of the three is exactly zero, which would drop it.
  const V a(std::nextafter(0.5, 1.0), 0.5);
  const Points pts = {V(12.0, 12.0), a, V(24.0, 24.0), V(20.0, 0.0)};
  EXPECT_EQ(((V(12.0, 12.0) - a).cross(V(24.0, 24.0) - a)), 0.0);
  EXPECT_EQ(hullOf(pts), Points({a, V(20.0, 0.0), V(24.0, 24.0), V(12.0, 12.0)}));
  // Moved one unit to the other side, the same point is on the inner side of that line.
  const V b(0.5, std::nextafter(0.5, 1.0));
  EXPECT_EQ(hullOf({V(12.0, 12.0), b, V(24.0, 24.0), V(20.0, 0.0)}),
            Points({b, V(20.0, 0.0), V(24.0, 24.0)}));
}

TEST(ConvexHull, HugeCoordinatesGiveTheScaledHullOfTheSamePointsAtUnitScale) {
  // Scaling by a power of two is exact, and a hull scaled is the hull of the scaled points,
  // even where every cross product overflows.
  std::mt19937_64 rng(4242);
  std::uniform_int_distribution<int> coord(-1000, 1000);
  for (const double scale : {0x1p1000, 0x1p1013, 0x1p-1000, 0x1p-1064}) {
    for (int round = 0; round < 50; ++round) {
      Points pts(static_cast<std::size_t>(20 + round * 7));
      for (V& p : pts) {
        p = V(coord(rng), coord(rng));
      }
      Points scaled = pts;
      for (V& p : scaled) {
        p = V(p.x() * scale, p.y() * scale);
      }
      Points expected = hullOf(pts);
      for (V& p : expected) {
        p = V(p.x() * scale, p.y() * scale);
      }
      ASSERT_EQ(hullOf(scaled), expected) << "scale " << scale << " round " << round;
    }
  }
}

// ---- the filter against the plain chain --------------------------------------------------------

namespace {

/// Point sets of the kinds a hull meets, for `kind` 0 … 13, of n points.
Points hullTestCloud(int kind, std::size_t n, std::mt19937_64& rng) {
  std::uniform_real_distribution<double> u(0.0, 1.0);
  const double twoPi = 6.283185307179586;
  Points cloud;
  for (std::size_t i = 0; i < n; ++i) {
    const double t = twoPi * static_cast<double>(i) / static_cast<double>(n);
    switch (kind) {
      case 0:  // a spiky star outline
        cloud.push_back(V(100.0 * (1.0 + 0.3 * u(rng)), gkRadian(t)));
        break;
      case 1:  // a smooth blob outline with noise
        cloud.push_back(
            V(100.0 * (1.0 + 0.2 * std::sin(3.0 * t) + 0.1 * std::cos(7.0 * t)) + 0.01 * u(rng),
              gkRadian(t)));
        break;
      case 2:  // uniform in a disc
        cloud.push_back(V(100.0 * std::sqrt(u(rng)), gkRadian(twoPi * u(rng))));
        break;
      case 3:  // on a circle: every point a corner
        cloud.push_back(V(1e3 * std::cos(t), 1e3 * std::sin(t)));
        break;
      case 4:  // a small integer grid: duplicates, collinear runs, equal x at the extremes
        cloud.emplace_back(static_cast<double>(rng() % 7), static_cast<double>(rng() % 7));
        break;
      case 5:  // the corners and edges of a square, many points on each edge
        cloud.push_back(
            rng() % 2 ? V(static_cast<double>(rng() % 2) * 8.0, static_cast<double>(rng() % 9))
                      : V(static_cast<double>(rng() % 9), static_cast<double>(rng() % 2) * 8.0));
        break;
      case 6:  // a thin sliver, nearly on one line
        cloud.emplace_back(u(rng) * 1e3, u(rng) * 1e-9);
        break;
      case 7:  // far from the origin
        cloud.emplace_back(1e9 + u(rng), -3e8 + u(rng));
        break;
      case 8:  // huge: every cross product overflows
        cloud.emplace_back((u(rng) - 0.5) * 1e308, (u(rng) - 0.5) * 1e308);
        break;
      case 9:  // subnormal
        cloud.emplace_back(static_cast<double>(rng() % 1000) * 0x1p-1074,
                           static_cast<double>(rng() % 1000) * 0x1p-1074);
        break;
      case 10:  // non-finite points mixed in
        cloud.emplace_back(rng() % 10 == 0 ? kNaN : u(rng), rng() % 13 == 0 ? -kInf : u(rng));
        break;
      case 11:  // zeros of both signs on the axes, a few ones
        cloud.emplace_back(rng() % 3 == 0 ? (rng() % 2 ? 0.0 : -0.0) : u(rng) - 0.5,
                           rng() % 3 == 0 ? (rng() % 2 ? 0.0 : -0.0) : u(rng) - 0.5);
        break;
      case 12:  // a regular polygon's corners, each repeated, with points on its edges
      {
        const std::size_t k = i % 12;
        const double a0 = twoPi * static_cast<double>(k) / 12.0;
        const double a1 = twoPi * static_cast<double>(k + 1) / 12.0;
        const double s = static_cast<double>(rng() % 5) / 4.0;
        cloud.emplace_back(std::cos(a0) + s * (std::cos(a1) - std::cos(a0)),
                           std::sin(a0) + s * (std::sin(a1) - std::sin(a0)));
        break;
      }
      default:  // coordinates of every size
        cloud.emplace_back((u(rng) - 0.5) * std::pow(10.0, static_cast<int>(rng() % 40) - 20),
                           (u(rng) - 0.5) * std::pow(10.0, static_cast<int>(rng() % 40) - 20));
        break;
    }
  }
  return cloud;
}

}  // namespace

TEST(ConvexHullFilter, SameHullAsThePlainChainOnOutlinesCloudsAndDegenerateSets) {
  std::mt19937_64 rng(20261125);
  for (int trial = 0; trial < 1400; ++trial) {
    const int kind = trial % 14;
    // Sizes on both sides of the filter's threshold and of the bucket sort's.
    const std::size_t n = 3 + static_cast<std::size_t>(rng() % (trial % 5 == 0 ? 3000 : 300));
    Points cloud = hullTestCloud(kind, n, rng);
    if (trial % 3 == 0) {
      std::shuffle(cloud.begin(), cloud.end(), rng);
    }
    const Points got = hullOf(cloud);
    const Points expected = gk::test::plainConvexHull(cloud);
    ASSERT_EQ(got, expected) << "trial " << trial << " kind " << kind << " n " << n;
  }
}

TEST(ConvexHullFilter, EveryPointOfALargeCircleStaysACorner) {
  // The sample's hull is inside the circle by a hair: no point may be dropped.
  Points circle;
  for (int i = 0; i < 20000; ++i) {
    const double t = 6.283185307179586 * i / 20000.0;
    circle.emplace_back(1e6 * std::cos(t), 1e6 * std::sin(t));
  }
  EXPECT_EQ(hullOf(circle), gk::test::plainConvexHull(circle));
  EXPECT_GT(hullOf(circle).size(), 19000u);
}

TEST(ConvexHullFilter, AnXRangeSoNarrowThatItsSlabScaleOverflowsStillGivesThePlainHull) {
  // x spans a few subnormals, so slabs / width is infinite: every point is at the left edge
  // (0 times infinity) or right of it.
  std::mt19937_64 rng(5);
  for (int round = 0; round < 50; ++round) {
    Points pts;
    for (int i = 0; i < 600; ++i) {
      pts.emplace_back(static_cast<double>(rng() % 21) * 0x1p-1074,
                       static_cast<double>(rng() % 1000) - 500.0);
    }
    ASSERT_EQ(hullOf(pts), gk::test::plainConvexHull(pts)) << round;
  }
}

TEST(ConvexHullFilter, ASampleWithoutAnAreaLeavesEveryPointToTheBucketSort) {
  // The sample is every s-th point; when those all lie on one line, or are all one point, the
  // sample has no polygon and every finite point goes through the plain path's bucket sort.
  std::mt19937_64 rng(77);
  for (int round = 0; round < 40; ++round) {
    const std::size_t n = 300 + static_cast<std::size_t>(rng() % 2000);
    Points pts;
    for (std::size_t i = 0; i < n; ++i) {
      const double t = static_cast<double>(rng() % 1000);
      pts.emplace_back(round % 2 == 0 ? V(t, 3.0 * t - 7.0) : V(t, t * 0.5));
    }
    if (round % 4 == 1 || round % 4 == 2) {
      // Points off the line at every 7th place, which the sample takes now and then: the hull
      // gains corners, and the sample a polygon or not.
      for (std::size_t i = 1; i < n; i += 7) {
        pts[i] = V(static_cast<double>(rng() % 1000), static_cast<double>(rng() % 1000));
      }
    }
    ASSERT_EQ(hullOf(pts), gk::test::plainConvexHull(pts)) << round;
  }
}

namespace {

/// 200 points whose sample (every 4th) is the triangle first, second, third, with first ->
/// second an edge of its lower chain; the other points bulge out below that edge by `out` at
/// the middle (out scaled by 4 t (1 - t) along it), and are corners of the hull.
Points bulgingBelowAnEdge(const V& first, const V& second, const V& third, const V& out) {
  Points pts(200, (first + second + third) / 3.0);
  pts[0] = first;
  pts[4] = second;
  pts[8] = third;
  for (std::size_t i = 1; i < 200; ++i) {
    if (i % 4 != 0) {
      const double t = static_cast<double>(i) / 200.0;
      const double bulge = 4.0 * t * (1.0 - t);
      pts[i] = V(first.x() * (1.0 - t) + second.x() * t + bulge * out.x(),
                 first.y() * (1.0 - t) + second.y() * t + bulge * out.y());
    }
  }
  return pts;
}

}  // namespace

TEST(ConvexHullFilter, AChainEdgeWhoseRiseOverflowsCertifiesNothing) {
  // The lower chain falls from (-1e300, 0.9 max) to (0, -max), a drop beyond the largest
  // double: interpolating along it overflows. That once gave -infinity at one end of a slab,
  // let the other end's value stand for the slab's floor, and dropped the bulging corners.
  const double big = std::numeric_limits<double>::max();
  const Points pts = bulgingBelowAnEdge(V(-1e300, 0.9 * big), V(0.0, -big), V(1e300, 0.9 * big),
                                        V(-1e292, -0.05 * big));
  const Points expected = gk::test::plainConvexHull(pts);
  ASSERT_GT(expected.size(), 20u);
  EXPECT_EQ(hullOf(pts), expected);
}

TEST(ConvexHullFilter, CoordinatesNearTheLargestDoubleWhoseDifferencesOverflowGiveThePlainHull) {
  // The sample's chains rise or run by more than the largest double between corners: their
  // interpolation overflows, and such a slab must certify nothing (an infinite end once let the
  // other end's value pass for the slab's bound, and corners were dropped).
  std::mt19937_64 rng(1023);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  const double big = std::numeric_limits<double>::max();
  for (int round = 0; round < 60; ++round) {
    Points pts;
    const std::size_t n = 150 + static_cast<std::size_t>(rng() % 600);
    for (std::size_t i = 0; i < n; ++i) {
      const double t = 6.283185307179586 * static_cast<double>(i) / static_cast<double>(n);
      switch (round % 3) {
        case 0:  // a ring just inside the largest double
          pts.emplace_back(0.9 * big * std::cos(t), 0.9 * big * std::sin(t));
          break;
        case 1:  // a cloud over the whole range
          pts.emplace_back(u(rng) * big, u(rng) * big);
          break;
        default:  // a flat ring whose bottom is near -max and top near +max
          pts.emplace_back(1e300 * std::cos(t), big * std::sin(t));
          break;
      }
    }
    std::shuffle(pts.begin(), pts.end(), rng);
    ASSERT_EQ(hullOf(pts), gk::test::plainConvexHull(pts)) << round;
  }
}
