// gwConvexHull against Boost.Geometry's convex_hull. Both keep strict corners only (Boost's
// monotone chain pops a point on the side test "<= 0", as the library drops points on a hull
// edge), so the hulls are compared as vertex sequences: Boost's ring, closing point removed,
// turned to start where the library documents its start (smallest x, then smallest y).

#include <gk/base/convex_hull.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include "oracle_shapes.h"

namespace {

using gk::oracle::BPoint;
using gk::oracle::Points;
using gk::oracle::Rng;
namespace bg = boost::geometry;

constexpr int kCloudsPerFamily = 1000;

Points libraryHull(const Points& pts) {
  Points hull;
  gwConvexHull(pts, hull);
  return hull;
}

/// Boost's hull as the library lays its hull out: counter-clockwise (the ring type's order),
/// open, starting at the smallest (x, y).
Points boostHull(const Points& pts) {
  bg::model::multi_point<BPoint> cloud;
  for (const gkVector<2>& p : pts) {
    cloud.push_back(BPoint(p.x(), p.y()));
  }
  gk::oracle::BRing ring;
  bg::convex_hull(cloud, ring);
  Points out;
  for (const BPoint& p : ring) {
    out.emplace_back(p.x(), p.y());
  }
  if (out.size() > 1 && out.front() == out.back()) {
    out.pop_back();
  }
  const auto lexLess = [](const gkVector<2>& a, const gkVector<2>& b) {
    return a.x() < b.x() || (a.x() == b.x() && a.y() < b.y());
  };
  std::rotate(out.begin(), std::min_element(out.begin(), out.end(), lexLess), out.end());
  return out;
}

/// Fewer than three distinct points, or all of them on one line: the library documents its
/// own answer (one point, or the two extreme points), which Boost's degenerate rings do not
/// follow in shape; the extreme points are computed here directly.
bool degenerate(const Points& pts, Points& expected) {
  Points sorted = pts;
  std::sort(sorted.begin(), sorted.end(), [](const gkVector<2>& a, const gkVector<2>& b) {
    return a.x() < b.x() || (a.x() == b.x() && a.y() < b.y());
  });
  sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
  for (std::size_t k = 2; k < sorted.size(); ++k) {
    if ((sorted[1] - sorted[0]).cross(sorted[k] - sorted[0]) != 0.0) {
      return false;
    }
  }
  expected = sorted.size() == 1 ? Points{sorted[0]} : Points{sorted.front(), sorted.back()};
  return true;
}

void expectSameHull(const Points& pts, int caseNo, int& degenerateCount) {
  const Points hull = libraryHull(pts);
  Points expected;
  if (degenerate(pts, expected)) {
    ++degenerateCount;
    EXPECT_EQ(hull, expected) << "case " << caseNo;
    return;
  }
  EXPECT_EQ(hull, boostHull(pts)) << "case " << caseNo << " of " << pts.size() << " points";
}

}  // namespace

TEST(ConvexHullOracle, AgreesWithBoostOnAThousandRandomCloudsOfDoubles) {
  Rng rng(31);
  int degenerateCount = 0;
  for (int i = 0; i < kCloudsPerFamily; ++i) {
    const int n = rng.integer(3, 60);
    const double scale = rng.uniform(1e-3, 1e3);
    Points pts;
    for (int k = 0; k < n; ++k) {
      pts.emplace_back(scale * rng.uniform(-1, 1), scale * rng.uniform(-1, 1));
    }
    expectSameHull(pts, i, degenerateCount);
  }
  EXPECT_EQ(degenerateCount, 0);
}

TEST(ConvexHullOracle, AgreesWithBoostOnAThousandGridCloudsFullOfDuplicatesAndCollinearPoints) {
  // Small integers: every orientation test is exact in double, so both implementations see the
  // same collinearities and the comparison can be exact.
  Rng rng(32);
  int degenerateCount = 0;
  for (int i = 0; i < kCloudsPerFamily; ++i) {
    const int n = rng.integer(1, 30);
    const int side = rng.integer(1, 6);
    Points pts;
    for (int k = 0; k < n; ++k) {
      pts.emplace_back(rng.integer(0, side), rng.integer(0, side));
    }
    expectSameHull(pts, i, degenerateCount);
  }
  // Seeded: a fixed share of the clouds is a point or a line, which the library documents.
  EXPECT_GT(degenerateCount, 10);
}

TEST(ConvexHullOracle, AgreesWithBoostOnAThousandCloudsWithManyPointsOnTheHull) {
  // Points on a circle (almost all of them corners) plus points inside: the long chains of
  // nearly collinear corners are where a sloppy orientation test would drop one.
  Rng rng(33);
  int degenerateCount = 0;
  for (int i = 0; i < kCloudsPerFamily; ++i) {
    const int n = rng.integer(3, 80);
    const gkVector<2> c(rng.uniform(-100, 100), rng.uniform(-100, 100));
    Points pts;
    for (int k = 0; k < n; ++k) {
      const double a = rng.uniform(0.0, 2.0 * gk::oracle::kPi);
      const double r = k % 3 == 0 ? rng.uniform(0.0, 9.0) : 10.0;
      pts.emplace_back(c.x() + r * std::cos(a), c.y() + r * std::sin(a));
    }
    expectSameHull(pts, i, degenerateCount);
  }
  EXPECT_EQ(degenerateCount, 0);
}

TEST(ConvexHullOracle, EdgePointsAreDroppedLikeBoostDropsThem) {
  // The documented treatment of collinear points, in the case both implementations share:
  // the midpoints of a square's sides are not corners.
  const Points pts = {{0, 0}, {1, 0}, {2, 0}, {2, 1}, {2, 2}, {1, 2}, {0, 2}, {0, 1}, {1, 1}};
  const Points expected = {{0, 0}, {2, 0}, {2, 2}, {0, 2}};
  EXPECT_EQ(libraryHull(pts), expected);
  EXPECT_EQ(boostHull(pts), expected);
}
