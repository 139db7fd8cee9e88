#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include <gk/base/line.h>
#include <gk/base/line_seg.h>
#include <gk/cntr/contour.h>
#include <gk/cntr/errors/contour_errors.h>
#include <gtest/gtest.h>

#include "contour_test_access.h"
#include "outlines.h"
#include "plain_reference.h"
#include "shapes.h"

using gk::test::Points;
using Access = gkContourTestAccess;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

/// Distances from a segment around the crossing test's tolerance (1e-6 from each segment, so
/// 2e-6 apart at most), and a little and well beyond it: where crowded-index searches must
/// keep every pair the plain scan keeps.
constexpr double kNearTouches[] = {0.5e-6, 0.9e-6, 1.1e-6, 1.9e-6, 2.1e-6, 5e-6, 1e-3};

/// Opens the protected queries (the indexed intersections and the median feature size).
class ProbeContour : public gkContour {
 public:
  using gkContour::gkContour;
  using gkContour::intersections;
  using gkContour::lineSegs;
  using gkContour::medianFeatureSize;
  using gkContour::segmentsClearOfOthers;
};

/// One crossing as the indexed query reports it: the point and the segment number.
struct Hit {
  gkVector<2> point;
  int segment;
};

std::vector<Hit> indexedHits(const ProbeContour& c, const gkLineSeg& seg, bool includeEnds) {
  std::vector<int> indices = {-7, -7, -7};  // must be cleared by the query
  const std::vector<gkVector<2>> points = c.intersections(seg, indices, includeEnds);
  EXPECT_EQ(points.size(), indices.size());
  std::vector<Hit> hits;
  for (std::size_t i = 0; i < points.size() && i < indices.size(); ++i) {
    hits.push_back({points[i], indices[i]});
  }
  return hits;
}

std::vector<int> segmentsOf(const std::vector<Hit>& hits) {
  std::vector<int> s;
  for (const Hit& h : hits) {
    s.push_back(h.segment);
  }
  return s;
}

std::vector<gkVector<2>> pointsOf(const std::vector<Hit>& hits) {
  std::vector<gkVector<2>> p;
  for (const Hit& h : hits) {
    p.push_back(h.point);
  }
  return p;
}

/// A uniform double in [lo, hi) from the top 53 bits of the engine, so the sequence is the
/// same with every standard library.
double uniform(std::mt19937_64& rng, double lo, double hi) {
  const double u = static_cast<double>(rng() >> 11) * 0x1.0p-53;
  return lo + u * (hi - lo);
}

/// An integer in [lo, hi], by the same conversion.
int uniformInt(std::mt19937_64& rng, int lo, int hi) {
  const int v = lo + static_cast<int>(uniform(rng, 0.0, static_cast<double>(hi - lo + 1)));
  return std::min(v, hi);
}

// --- plain references -----------------------------------------------------------------------

/// The segment walk written out by hand: closing segment first when closed.
std::vector<std::pair<gkVector<2>, gkVector<2>>> walk(const Points& pts, bool closed) {
  std::vector<std::pair<gkVector<2>, gkVector<2>>> segs;
  const std::size_t n = pts.size();
  if (n == 0) {
    return segs;
  }
  if (closed) {
    segs.emplace_back(pts[n - 1], pts[0]);
  }
  for (std::size_t i = 1; i < n; ++i) {
    segs.emplace_back(pts[i - 1], pts[i]);
  }
  return segs;
}

/// The cell rule literally: the integer part of q + 0.5, mirrored for negative quotients.
/// (Only used on finite, moderate coordinates, so no clamping is needed here.)
long plainCell(double c, double t) {
  const double q = c / t;
  return q >= 0.0 ? static_cast<long>(std::trunc(q + 0.5))
                  : -static_cast<long>(std::trunc(-q + 0.5));
}

std::vector<int> bruteForceWithin(const Points& pts, const gkVector<2>& pt, double tol) {
  std::vector<int> r;
  for (std::size_t j = 0; j < pts.size(); ++j) {
    if (pt.distance(pts[j]) < tol) {
      r.push_back(static_cast<int>(j));
    }
  }
  return r;
}

/// The order of the 3x3 walk: it visits cells column by column and lists a cell's vertices in
/// increasing order, so its result is that of the key (column, row, vertex number).
std::vector<int> plainCellOrder(const Points& pts, std::vector<int> found, double tol) {
  std::sort(found.begin(), found.end(), [&](int i, int j) {
    const gkVector<2>& a = pts[static_cast<std::size_t>(i)];
    const gkVector<2>& b = pts[static_cast<std::size_t>(j)];
    const long ax = plainCell(a.x(), tol);
    const long bx = plainCell(b.x(), tol);
    if (ax != bx) {
      return ax < bx;
    }
    const long ay = plainCell(a.y(), tol);
    const long by = plainCell(b.y(), tol);
    return ay != by ? ay < by : i < j;
  });
  return found;
}

bool boxesOverlap(double ax0, double ay0, double ax1, double ay1, double bx0, double by0,
                  double bx1, double by1) {
  return ax1 >= bx0 && ax0 <= bx1 && ay1 >= by0 && ay0 <= by1;
}

/// The crossings of a polyline with seg, walking every segment with the same rejections in the
/// same order, then ordering by the same exchange sort.
std::vector<Hit> plainIntersections(const Points& pts, bool closed, const gkLineSeg& seg,
                                    bool includeEnds) {
  const double rx0 = std::min(seg.p1().x(), seg.p2().x());
  const double ry0 = std::min(seg.p1().y(), seg.p2().y());
  const double rx1 = std::max(seg.p1().x(), seg.p2().x());
  const double ry1 = std::max(seg.p1().y(), seg.p2().y());
  double cx0 = pts[0].x(), cy0 = pts[0].y(), cx1 = pts[0].x(), cy1 = pts[0].y();
  for (const gkVector<2>& p : pts) {
    cx0 = std::min(cx0, p.x());
    cy0 = std::min(cy0, p.y());
    cx1 = std::max(cx1, p.x());
    cy1 = std::max(cy1, p.y());
  }
  std::vector<Hit> hits;
  if (!boxesOverlap(cx0, cy0, cx1, cy1, rx0, ry0, rx1, ry1)) {
    return hits;
  }
  const gkLine queryLine(seg.p1(), seg.p2());
  const auto segs = walk(pts, closed);
  for (std::size_t k = 0; k < segs.size(); ++k) {
    const gkVector<2> p = segs[k].first;
    const gkVector<2> q = segs[k].second;
    if (std::fabs(p.x() - q.x()) <= 1e-15 && std::fabs(p.y() - q.y()) <= 1e-15) {
      continue;
    }
    if (!boxesOverlap(std::min(p.x(), q.x()), std::min(p.y(), q.y()), std::max(p.x(), q.x()),
                      std::max(p.y(), q.y()), rx0, ry0, rx1, ry1)) {
      continue;
    }
    const gkLine line(p, q);
    if (line.isParallel(queryLine)) {
      continue;
    }
    const gkLineSeg s(p, q);
    if (!includeEnds && !(s.distToPoint(seg.p1()) > 1e-6 && s.distToPoint(seg.p2()) > 1e-6)) {
      continue;
    }
    const gkVector<2> at = line.intersect(queryLine);
    if (s.distToPoint(at) < 1e-6 && seg.distToPoint(at) < 1e-6) {
      hits.push_back({at, static_cast<int>(k)});
    }
  }
  const gkVector<2> d = seg.p2() - seg.p1();
  for (std::size_t i = 0; i + 1 < hits.size(); ++i) {
    for (std::size_t j = i + 1; j < hits.size(); ++j) {
      if ((hits[i].point - seg.p1()).dot(d) > (hits[j].point - seg.p1()).dot(d)) {
        std::swap(hits[i], hits[j]);
      }
    }
  }
  return hits;
}

/// The nearest point on the polyline, by a plain loop over the walk.
gkVector<2> plainClosestPoint(const Points& pts, bool closed, const gkVector<2>& pt) {
  gkVector<2> best;
  double bestD = kInf;
  for (const auto& s : walk(pts, closed)) {
    const double d = gkLineSeg(s.first, s.second).distToPoint(pt);
    if (d < bestD) {
      bestD = d;
      const gkVector<2> dir = s.second - s.first;
      const double t = (pt - s.first).dot(dir) / dir.dot(dir);
      if (!(t > 0.0)) {
        best = s.first;
      } else if (t >= 1.0) {
        best = s.second;
      } else {
        best = gkLine(s.first, s.second).proj(pt);
      }
    }
  }
  return best;
}

std::size_t plainClosestVertex(const Points& pts, const gkVector<2>& pt) {
  std::size_t best = 0;
  for (std::size_t i = 1; i < pts.size(); ++i) {
    if (pt.distance(pts[i]) < pt.distance(pts[best])) {
      best = i;
    }
  }
  return best;
}

Points square4() {
  return {{0, 0}, {4, 0}, {4, 4}, {0, 4}};
}

}  // namespace

// --- nearest vertex, nearest point, distance ------------------------------------------------

TEST(ContourProximity, ClosestVertexIndexTieGoesToTheLowerNumber) {
  const gkContour c({{0, 0}, {2, 0}, {4, 0}, {2, 2}}, true, 0);
  EXPECT_EQ(c.closestVertexIndex({1, 0}), 0);  // vertices 0 and 1 both at distance 1
  EXPECT_EQ(c.closestVertexIndex({3, 0}), 1);  // vertices 1 and 2 both at distance 1
  EXPECT_EQ(c.closestVertexIndex({2, 1}), 1);  // vertices 1 and 3 both at distance 1
  const gkContour repeated({{0, 0}, {5, 5}, {5, 5}}, false, 0);
  EXPECT_EQ(repeated.closestVertexIndex({5, 5}), 1);
}

TEST(ContourProximity, ClosestVertexIndexFindsTheStrictlyNearestVertex) {
  const gkContour c(square4(), true, 0);
  EXPECT_EQ(c.closestVertexIndex({3.9, 3.8}), 2);
  EXPECT_EQ(c.closestVertexIndex({-10, 10}), 3);
  EXPECT_EQ(c.closestVertexIndex({4, 0}), 1);
}

TEST(ContourProximity, ClosingSegmentWinsATieForTheNearestPoint) {
  // (0.25, 0.25) is 0.25 from the closing segment (x = 0) and from the first edge (y = 0).
  const gkContour c(gk::test::unitSquare(), true, 0);
  EXPECT_EQ(c.closestPoint({0.25, 0.25}, false), gkVector<2>(0, 0.25));
  EXPECT_EQ(c.distToPoint({0.25, 0.25}, false), 0.25);
}

TEST(ContourProximity, OnAnOpenContourTheFirstSegmentWinsATieForTheNearestPoint) {
  // Open, the square has no closing segment; (0.25, 0.5) is 0.5 from the first and last edges.
  const gkContour c(gk::test::unitSquare(), false, 0);
  EXPECT_EQ(c.closestPoint({0.25, 0.5}, false), gkVector<2>(0.25, 0));
  EXPECT_EQ(c.closestPoint({0.25, 0.25}, false), gkVector<2>(0.25, 0));
}

TEST(ContourProximity, VerticesOnlyReturnsTheNearestVertexAndOtherwiseTheNearestPointOnAnEdge) {
  const gkContour c(square4(), true, 0);
  // Vertices 1 and 2 are both sqrt(5) away; the lower number wins.
  EXPECT_EQ(c.closestPoint({3, 2}, true), gkVector<2>(4, 0));
  EXPECT_EQ(c.closestPoint({3, 2}, false), gkVector<2>(4, 2));
  EXPECT_EQ(c.distToPoint({3, 2}, true), std::sqrt(5.0));
  EXPECT_EQ(c.distToPoint({3, 2}, false), 1.0);
}

TEST(ContourProximity, APointBeyondACornerIsNearestToThatVertex) {
  const gkContour c(square4(), true, 0);
  EXPECT_EQ(c.closestPoint({7, -4}, false), gkVector<2>(4, 0));
  EXPECT_EQ(c.distToPoint({7, -4}, false), 5.0);
}

TEST(ContourProximity, APointOnTheContourIsAtDistanceZero) {
  const gkContour c(square4(), false, 0);
  EXPECT_EQ(c.closestPoint({4, 3}, false), gkVector<2>(4, 3));
  EXPECT_EQ(c.distToPoint({4, 3}, false), 0.0);
  EXPECT_EQ(c.distToPoint({4, 4}, true), 0.0);
  // Open, (0, 2) lies on no segment: the nearest points are on the first and last edges.
  EXPECT_EQ(c.distToPoint({0, 2}, false), 2.0);
}

TEST(ContourProximity, ZeroLengthSegmentsTakePartAsTheirVertex) {
  const gkContour allSame({{1, 1}, {1, 1}, {1, 1}}, true, 0);
  EXPECT_EQ(allSame.closestPoint({4, 5}, false), gkVector<2>(1, 1));
  EXPECT_EQ(allSame.distToPoint({4, 5}, false), 5.0);
  const gkContour withRepeat(gk::test::triangleWithRepeat(), true, 0);
  EXPECT_EQ(withRepeat.closestPoint({5, -1}, false), gkVector<2>(4, 0));
}

TEST(ContourProximity, ProximityQueriesThrowEmptyContourBelowTwoVertices) {
  for (const Points& pts : {Points(), Points{{1, 2}}}) {
    for (const bool closed : {true, false}) {
      const gkContour c(pts, closed, 0);
      EXPECT_THROW(c.closestVertexIndex({0, 0}), gkContourDefs::EmptyContour);
      EXPECT_THROW(c.closestPoint({0, 0}, true), gkContourDefs::EmptyContour);
      EXPECT_THROW(c.closestPoint({0, 0}, false), gkContourDefs::EmptyContour);
      EXPECT_THROW(c.distToPoint({0, 0}, true), gkContourDefs::EmptyContour);
      EXPECT_THROW(c.distToPoint({0, 0}, false), gkContourDefs::EmptyContour);
      EXPECT_THROW(c.vertexIndex({0, 0}, 1.0), gkContourDefs::EmptyContour);
    }
  }
}

TEST(ContourProximity, NearestPointAndDistanceMatchAPlainLoopOnRandomContours) {
  std::mt19937_64 rng(20240611);
  for (int round = 0; round < 300; ++round) {
    const int n = uniformInt(rng, 2, 12);
    Points pts;
    for (int i = 0; i < n; ++i) {
      // Now and then repeat the previous vertex, to have zero-length segments.
      if (i > 0 && uniformInt(rng, 0, 7) == 0) {
        pts.push_back(pts.back());
      } else {
        pts.emplace_back(uniform(rng, -10, 10), uniform(rng, -10, 10));
      }
    }
    const bool closed = uniformInt(rng, 0, 1) == 1;
    const gkContour c(pts, closed, 0);
    for (int q = 0; q < 10; ++q) {
      const gkVector<2> pt(uniform(rng, -15, 15), uniform(rng, -15, 15));
      const gkVector<2> expected = plainClosestPoint(pts, closed, pt);
      ASSERT_EQ(c.closestPoint(pt, false), expected) << "round " << round;
      ASSERT_EQ(c.distToPoint(pt, false), pt.distance(expected));
      const std::size_t v = plainClosestVertex(pts, pt);
      ASSERT_EQ(c.closestVertexIndex(pt), static_cast<long>(v));
      ASSERT_EQ(c.closestPoint(pt, true), pts[v]);
      ASSERT_EQ(c.distToPoint(pt, true), pt.distance(pts[v]));
    }
  }
}

TEST(ContourProximity, NearestVertexBehindANaNDoesNotBoundTheNearestPoint) {
  // The last vertex of an open contour is nearest, but the one segment it ends starts at NaN and
  // measures NaN: the answer is on the far segments, which a bound taken from that vertex would
  // have passed over.
  const double nan = std::numeric_limits<double>::quiet_NaN();
  Points pts = {{0, 10}, {10, 10}, {20, 10}, {nan, 0}, {1, 0}};
  const gkContour c(pts, false, 0);
  EXPECT_EQ(c.closestPoint({1, 1}, false), plainClosestPoint(pts, false, {1, 1}));
  EXPECT_EQ(c.closestPoint({1, 1}, false), gkVector<2>(1, 10));
}

TEST(ContourProximity, NearestPointSkipsFarBoxesYetMatchesThePlainLoopOnLargeContours) {
  // Many segments, so that most boxes lie beyond the best distance found and are passed over:
  // the answer must still be the plain loop's, bit for bit, ties and degenerate segments included.
  gk::test::DegenerateShapes gen(4242);
  for (int round = 0; round < 400; ++round) {
    const bool closed = round % 2 == 0;
    Points pts = gen.points(2 + gen.pick(300), round % 7 == 0);
    if (round % 11 == 0) {
      for (gkVector<2>& p : pts) {
        p = p * 1e12 + gkVector<2>(3e14, -2e14);  // far out, where doubles are sparse
      }
    }
    const gkContour c(pts, closed, 0);
    for (int q = 0; q < 12; ++q) {
      gkVector<2> pt = gen.points(1, q == 11)[0];
      if (q < 3) {
        pt = pts[gen.pick(pts.size())];  // on a vertex: ties between its two segments
      } else if (round % 11 == 0) {
        pt = pt * 1e12 + gkVector<2>(3e14, -2e14);
      }
      const gkVector<2> expected = plainClosestPoint(pts, closed, pt);
      const gkVector<2> found = c.closestPoint(pt, false);
      ASSERT_TRUE(
          (found.x() == expected.x() || (std::isnan(found.x()) && std::isnan(expected.x()))) &&
          (found.y() == expected.y() || (std::isnan(found.y()) && std::isnan(expected.y()))))
          << "round " << round << " query " << q;
    }
  }
}

// --- vertices within a tolerance --------------------------------------------------------------

TEST(ContourVertexIndex, VertexExactlyAtTheToleranceIsNotReturned) {
  const gkContour c({{0, 0}, {3, 4}, {10, 10}}, false, 0);
  EXPECT_EQ(c.vertexIndex({0, 0}, 5.0), std::vector<int>{0});
  EXPECT_EQ(c.vertexIndex({0, 0}, std::nextafter(5.0, 6.0)), (std::vector<int>{0, 1}));
  EXPECT_EQ(c.vertexIndex({3, 4}, 5.0), std::vector<int>{1});
}

TEST(ContourVertexIndex, NoVertexWithinTheToleranceGivesAnEmptyResult) {
  const gkContour c(square4(), true, 0);
  EXPECT_TRUE(c.vertexIndex({2, 2}, 1.0).empty());
  EXPECT_TRUE(c.vertexIndex({100, -100}, 1.0).empty());
}

TEST(ContourVertexIndex, AVertexJustInsideTheToleranceIsFoundWhenItsCellIsTwoColumnsAway) {
  // 5.85 - 4.55 rounds to 1.2999999999999998, just under the tolerance 1.3, but the quotients
  // round to 3.4999999999999996 (column 3) and 4.5 (column 5): the vertex lies outside the 3x3
  // neighbourhood of the query's cell and must still be found.
  const double tol = 1.3;
  const gkVector<2> a(4.55, 0);
  const gkVector<2> b(5.85, 0);
  ASSERT_LT(a.distance(b), tol);
  const gkContour c({a, b}, false, 0);
  EXPECT_EQ(c.vertexIndex(a, tol), (std::vector<int>{0, 1}));
  EXPECT_EQ(c.vertexIndex(b, tol), (std::vector<int>{0, 1}));
}

TEST(ContourVertexIndex, ResultIsOrderedColumnByColumnOverTheCellsThenByVertexNumber) {
  // Tolerance 1, query at the origin; the cells of the vertices are noted beside them.
  const Points pts = {
      {0.6, 0},      // 0: cell (1, 0)
      {0, 0.6},      // 1: cell (0, 1)
      {0, -0.6},     // 2: cell (0, -1)
      {-0.6, 0},     // 3: cell (-1, 0)
      {0.1, 0.1},    // 4: cell (0, 0)
      {0.3, 0},      // 5: cell (0, 0)
      {0.6, 0.6},    // 6: cell (1, 1)
      {-0.6, -0.6},  // 7: cell (-1, -1)
      {5, 5},        // 8: far away
  };
  const gkContour c(pts, true, 0);
  const std::vector<int> expected = {7, 3, 2, 4, 5, 1, 0, 6};
  EXPECT_EQ(c.vertexIndex({0, 0}, 1.0), expected);
  // The same vertices, but not sorted as a whole.
  std::vector<int> sorted = expected;
  std::sort(sorted.begin(), sorted.end());
  EXPECT_NE(sorted, expected);
}

TEST(ContourVertexIndex, APositiveHalfCellRoundsAwayFromZero) {
  // With tolerance 1, x = 2.5 lies in column 3 and x = 2 in column 2. The query (2.2, 0) sits in
  // column 2, so column 2 (vertex 1) is reported before column 3 (vertex 0). Were 2.5 rounded
  // down or to even, both would share column 2 and come out as {0, 1}.
  const gkContour c({{2.5, 0}, {2, 0}}, false, 0);
  EXPECT_EQ(c.vertexIndex({2.2, 0}, 1.0), (std::vector<int>{1, 0}));
  const auto& grids = Access::vertexGrid(c);
  ASSERT_TRUE(grids);
  ASSERT_EQ(grids->size(), 1u);
  const auto& cells = (*grids)[0].second;
  ASSERT_EQ(cells.count(gkPair<long>(3, 0)), 1u);
  EXPECT_EQ(cells.at(gkPair<long>(3, 0)), std::vector<int>{0});
  EXPECT_EQ(cells.at(gkPair<long>(2, 0)), std::vector<int>{1});
}

TEST(ContourVertexIndex, ANegativeHalfCellRoundsAwayFromZero) {
  // x = -2.5 lies in column -3, before column -2 of x = -2, so vertex 1 is reported first.
  // Rounding -2.5 up (to -2) would put both in column -2 and give {0, 1}.
  const gkContour c({{-2, 0}, {-2.5, 0}}, false, 0);
  EXPECT_EQ(c.vertexIndex({-2.2, 0}, 1.0), (std::vector<int>{1, 0}));
  const auto& cells = (*Access::vertexGrid(c))[0].second;
  EXPECT_EQ(cells.at(gkPair<long>(-3, 0)), std::vector<int>{1});
  EXPECT_EQ(cells.at(gkPair<long>(-2, 0)), std::vector<int>{0});
}

TEST(ContourVertexIndex, CellsAreCentredOnMultiplesOfTheTolerance) {
  const gkContour c({{0.49, -0.49}, {0.51, -0.51}, {1.49, 2.0}, {-1.51, 4.0}}, false, 0);
  (void)c.vertexIndex({0, 0}, 1.0);
  const auto& cells = (*Access::vertexGrid(c))[0].second;
  EXPECT_EQ(cells.size(), 4u);
  EXPECT_EQ(cells.at(gkPair<long>(0, 0)), std::vector<int>{0});
  EXPECT_EQ(cells.at(gkPair<long>(1, -1)), std::vector<int>{1});
  EXPECT_EQ(cells.at(gkPair<long>(1, 2)), std::vector<int>{2});
  EXPECT_EQ(cells.at(gkPair<long>(-2, 4)), std::vector<int>{3});
}

TEST(ContourVertexIndex, VerticesOfOneCellAreKeptInIncreasingOrder) {
  const gkContour c({{0.1, 0}, {5, 5}, {0, 0.1}, {-0.1, 0}}, false, 0);
  EXPECT_EQ(c.vertexIndex({0, 0}, 1.0), (std::vector<int>{0, 2, 3}));
  EXPECT_EQ((*Access::vertexGrid(c))[0].second.at(gkPair<long>(0, 0)), (std::vector<int>{0, 2, 3}));
}

TEST(ContourVertexIndex, ASecondCallWithTheSameToleranceBuildsNothingNew) {
  const gkContour c(square4(), true, 0);
  EXPECT_FALSE(Access::vertexGrid(c));
  EXPECT_EQ(c.vertexIndex({0, 0}, 1.5), std::vector<int>{0});
  ASSERT_TRUE(Access::vertexGrid(c));
  const auto* grids = Access::vertexGrid(c).get();
  ASSERT_EQ(grids->size(), 1u);
  EXPECT_EQ((*grids)[0].first, 1.5);
  const auto* cells = &(*grids)[0].second;
  const auto* firstList = cells->begin()->second.data();
  const auto snapshot = *cells;

  EXPECT_EQ(c.vertexIndex({4, 4}, 1.5), std::vector<int>{2});
  EXPECT_EQ(Access::vertexGrid(c).get(), grids);
  ASSERT_EQ(grids->size(), 1u);
  EXPECT_EQ(&(*grids)[0].second, cells);
  EXPECT_EQ(cells->begin()->second.data(), firstList);
  EXPECT_TRUE(*cells == snapshot);
}

TEST(ContourVertexIndex, AToleranceDifferingInTheLastBitBuildsASecondGrid) {
  const gkContour c(square4(), true, 0);
  const double t = 1.0;
  const double tNext = std::nextafter(t, 2.0);
  (void)c.vertexIndex({0, 0}, t);
  (void)c.vertexIndex({0, 0}, tNext);
  ASSERT_EQ(Access::vertexGrid(c)->size(), 2u);
  EXPECT_EQ((*Access::vertexGrid(c))[0].first, t);
  EXPECT_EQ((*Access::vertexGrid(c))[1].first, tNext);
  // Asking again with either one reuses its grid.
  (void)c.vertexIndex({1, 1}, tNext);
  (void)c.vertexIndex({1, 1}, t);
  EXPECT_EQ(Access::vertexGrid(c)->size(), 2u);
  (void)c.vertexIndex({1, 1}, std::nextafter(t, 0.0));
  EXPECT_EQ(Access::vertexGrid(c)->size(), 3u);
}

TEST(ContourVertexIndex, ChangingTheVerticesDropsTheGrids) {
  gkContour c(square4(), true, 0);
  (void)c.vertexIndex({0, 0}, 1.0);
  ASSERT_TRUE(Access::vertexGrid(c));
  c.points({{10, 10}, {20, 20}});
  EXPECT_FALSE(Access::vertexGrid(c));
  EXPECT_EQ(c.vertexIndex({10, 10}, 1.0), std::vector<int>{0});
  EXPECT_EQ(Access::vertexGrid(c)->size(), 1u);
}

TEST(ContourVertexIndex, BadTolerancesThrowBadParamsAndBuildNoGrid) {
  const gkContour c(square4(), true, 0);
  for (const double t : {0.0, -0.0, -1.0, kNaN, kInf, -kInf}) {
    EXPECT_THROW(c.vertexIndex({0, 0}, t), gkContourDefs::BadParams) << t;
    EXPECT_FALSE(Access::vertexGrid(c)) << t;
  }
  // Nor does a bad tolerance add to grids that exist.
  (void)c.vertexIndex({0, 0}, 2.0);
  for (const double t : {0.0, -1.0, kNaN, kInf}) {
    EXPECT_THROW(c.vertexIndex({0, 0}, t), gkContourDefs::BadParams) << t;
    EXPECT_EQ(Access::vertexGrid(c)->size(), 1u) << t;
  }
}

TEST(ContourVertexIndex, HugeCoordinatesGiveDefinedAnswers) {
  const Points pts = {{1e300, 1e300}, {-1e300, -1e300}, {0, 0}, {1e300, -1e300}, {1e299, 1e299}};
  const gkContour c(pts, true, 0);
  EXPECT_EQ(c.vertexIndex({1e300, 1e300}, 1.0), std::vector<int>{0});
  EXPECT_EQ(c.vertexIndex({-1e300, -1e300}, 1.0), std::vector<int>{1});
  EXPECT_EQ(c.vertexIndex({1e300, -1e300}, 1.0), std::vector<int>{3});
  EXPECT_EQ(c.vertexIndex({0, 0}, 1.0), std::vector<int>{2});
  // Quotients that overflow to infinity are clamped, not undefined.
  EXPECT_EQ(c.vertexIndex({1e300, 1e300}, 1e-300), std::vector<int>{0});
  EXPECT_EQ(c.vertexIndex({0, 0}, 1e-300), std::vector<int>{2});
  const double big = std::numeric_limits<double>::max();
  EXPECT_TRUE(c.vertexIndex({big, big}, 1.0).empty());
  EXPECT_TRUE(c.vertexIndex({-big, big}, 1.0).empty());
  // A huge tolerance: the far vertices are at a distance that overflows to infinity.
  EXPECT_EQ(c.vertexIndex({0, 0}, 1e300), std::vector<int>{2});
  EXPECT_EQ(c.vertexIndex({0, 0}, big), std::vector<int>{2});
  // The result is exactly that of a plain scan.
  for (const double t : {1.0, 1e-300, 1e300, big}) {
    for (const gkVector<2>& pt : pts) {
      auto got = c.vertexIndex(pt, t);
      std::sort(got.begin(), got.end());
      EXPECT_EQ(got, bruteForceWithin(pts, pt, t));
    }
  }
}

TEST(ContourVertexIndex, NonFiniteVerticesAndQueriesGiveDefinedAnswers) {
  Points pts = gk::test::nonFinite();  // vertices 0 to 4, each with a NaN or an infinity
  pts.emplace_back(0, 0);              // 5
  pts.emplace_back(0.5, 0);            // 6: column 1
  const gkContour c(pts, false, 0);
  EXPECT_EQ(c.vertexIndex({0, 0}, 1.0), (std::vector<int>{5, 6}));
  // A NaN vertex is never returned, however large the tolerance.
  EXPECT_EQ(c.vertexIndex({0, 0}, std::numeric_limits<double>::max()), (std::vector<int>{5, 6}));
  EXPECT_EQ(c.vertexIndex({0, 0}, 1e-3), std::vector<int>{5});
  // Non-finite query points find nothing: their distances are NaN or infinite.
  for (const gkVector<2>& pt : gk::test::nonFinite()) {
    EXPECT_TRUE(c.vertexIndex(pt, 1.0).empty());
    EXPECT_TRUE(c.vertexIndex(pt, std::numeric_limits<double>::max()).empty());
  }
  EXPECT_TRUE(c.vertexIndex({kNaN, kNaN}, 1.0).empty());
  EXPECT_TRUE(c.vertexIndex({-kInf, kInf}, 1.0).empty());
}

TEST(ContourVertexIndex, MatchesABruteForceScanAndTheCellOrderOnRandomContours) {
  std::mt19937_64 rng(7);
  const double tolerances[] = {1.0, 0.5, 0.25, 0.1, 0.3, 1.7, 3.0};
  int nonEmpty = 0;
  for (int round = 0; round < 400; ++round) {
    const double tol = round % 2 == 0 ? tolerances[uniformInt(rng, 0, 6)] : uniform(rng, 0.05, 2.0);
    const int n = uniformInt(rng, 2, 40);
    Points pts;
    for (int i = 0; i < n; ++i) {
      double xy[2];
      for (double& v : xy) {
        const int kind = uniformInt(rng, 0, 3);
        const double k = static_cast<double>(uniformInt(rng, -4, 4));
        if (kind == 0) {
          v = uniform(rng, -5.0, 5.0) * tol;
        } else if (kind == 1) {
          v = (k + 0.5) * tol;  // on a cell border
        } else if (kind == 2) {
          // A few bits either side of a cell border.
          const double border = (k + 0.5) * tol;
          v = border;
          for (int steps = uniformInt(rng, -3, 3); steps != 0; steps += steps > 0 ? -1 : 1) {
            v = std::nextafter(v, steps > 0 ? kInf : -kInf);
          }
        } else {
          v = (k + 0.5) * tol + uniform(rng, -1e-9, 1e-9);
        }
      }
      pts.emplace_back(xy[0], xy[1]);
    }
    const gkContour c(pts, round % 3 == 0, 0);
    for (int q = 0; q < 12; ++q) {
      gkVector<2> pt;
      if (q % 3 == 0) {
        // Near a vertex, about a tolerance away, so the strict bound is exercised.
        const gkVector<2>& v = pts[static_cast<std::size_t>(uniformInt(rng, 0, n - 1))];
        const double a = uniform(rng, 0.0, 6.283185307179586);
        const double r = tol * uniform(rng, 0.9, 1.1);
        pt = gkVector<2>(v.x() + r * std::cos(a), v.y() + r * std::sin(a));
      } else if (q % 3 == 1) {
        pt = pts[static_cast<std::size_t>(uniformInt(rng, 0, n - 1))];
      } else {
        pt = gkVector<2>(uniform(rng, -5.0, 5.0) * tol, uniform(rng, -5.0, 5.0) * tol);
      }
      const std::vector<int> got = c.vertexIndex(pt, tol);
      std::vector<int> asSet = got;
      std::sort(asSet.begin(), asSet.end());
      ASSERT_TRUE(std::adjacent_find(asSet.begin(), asSet.end()) == asSet.end());
      const std::vector<int> expected = bruteForceWithin(pts, pt, tol);
      EXPECT_EQ(asSet, expected) << "tolerance " << tol << ", query (" << pt.x() << ", " << pt.y()
                                 << "), round " << round << ", query " << q;
      if (asSet == expected) {
        ASSERT_EQ(got, plainCellOrder(pts, expected, tol)) << "round " << round << " query " << q;
      }
      nonEmpty += got.empty() ? 0 : 1;
    }
  }
  EXPECT_GT(nonEmpty, 2000);
}

// --- crossings with a segment ---------------------------------------------------------------

TEST(ContourIntersections, ASegmentThroughAVertexReportsItOnceForEachOfTheTwoSegments) {
  // Vertex 0 ends the closing segment 0 and starts segment 1; vertex 2 ends 2 and starts 3.
  const ProbeContour c({{0, 0}, {2, 0}, {2, 2}, {0, 2}}, true, 0);
  const auto hits = indexedHits(c, gkLineSeg({-1, -1}, {1, 1}), true);
  EXPECT_EQ(pointsOf(hits), (std::vector<gkVector<2>>{{0, 0}, {0, 0}}));
  EXPECT_EQ(segmentsOf(hits), (std::vector<int>{0, 1}));

  const auto both = indexedHits(c, gkLineSeg({-1, -1}, {3, 3}), true);
  EXPECT_EQ(pointsOf(both), (std::vector<gkVector<2>>{{0, 0}, {0, 0}, {2, 2}, {2, 2}}));
  EXPECT_EQ(segmentsOf(both), (std::vector<int>{0, 1, 2, 3}));
  // The public form gives the same points.
  EXPECT_EQ(c.intersections(gkLineSeg({-1, -1}, {3, 3}), true), pointsOf(both));
}

TEST(ContourIntersections, PointsAreOrderedAlongTheQuerySegmentInEitherDirection) {
  const ProbeContour c(square4(), true, 0);
  // The line y = x / 2 passes through vertex 0 (segments 0 and 1) and crosses segment 2 at (4, 2).
  const auto forward = indexedHits(c, gkLineSeg({-2, -1}, {6, 3}), true);
  EXPECT_EQ(pointsOf(forward), (std::vector<gkVector<2>>{{0, 0}, {0, 0}, {4, 2}}));
  EXPECT_EQ(segmentsOf(forward), (std::vector<int>{0, 1, 2}));

  // Backwards, the exchange sort moves the crossing at (4, 2) to the front by swapping it with
  // the first record, which leaves the two vertex records in the order 1, 0: the sort is not
  // stable, and this is the order callers see.
  const auto backward = indexedHits(c, gkLineSeg({6, 3}, {-2, -1}), true);
  EXPECT_EQ(pointsOf(backward), (std::vector<gkVector<2>>{{4, 2}, {0, 0}, {0, 0}}));
  EXPECT_EQ(segmentsOf(backward), (std::vector<int>{2, 1, 0}));
}

TEST(ContourIntersections, AHorizontalSegmentAcrossASquareMeetsTheSidesInOrder) {
  const ProbeContour c(square4(), true, 0);
  const auto right = indexedHits(c, gkLineSeg({-1, 1}, {5, 1}), true);
  EXPECT_EQ(pointsOf(right), (std::vector<gkVector<2>>{{0, 1}, {4, 1}}));
  EXPECT_EQ(segmentsOf(right), (std::vector<int>{0, 2}));
  const auto left = indexedHits(c, gkLineSeg({5, 1}, {-1, 1}), false);
  EXPECT_EQ(pointsOf(left), (std::vector<gkVector<2>>{{4, 1}, {0, 1}}));
  EXPECT_EQ(segmentsOf(left), (std::vector<int>{2, 0}));
}

TEST(ContourIntersections, OpenContourNumbersItsSegmentsFromVertexZero) {
  const ProbeContour c(square4(), false, 0);
  // Open, there is no closing segment on x = 0: only the side x = 4 (segment 1) is crossed.
  const auto hits = indexedHits(c, gkLineSeg({-1, 1}, {5, 1}), true);
  EXPECT_EQ(pointsOf(hits), (std::vector<gkVector<2>>{{4, 1}}));
  EXPECT_EQ(segmentsOf(hits), (std::vector<int>{1}));
}

TEST(ContourIntersections, WithoutEndsTheSegmentsTheQueryStartsAndEndsOnAreDropped) {
  const ProbeContour c(square4(), true, 0);
  // From (2, 0) on segment 1 up through segment 3 at (2, 4).
  const auto withEnds = indexedHits(c, gkLineSeg({2, 0}, {2, 6}), true);
  EXPECT_EQ(pointsOf(withEnds), (std::vector<gkVector<2>>{{2, 0}, {2, 4}}));
  EXPECT_EQ(segmentsOf(withEnds), (std::vector<int>{1, 3}));
  const auto withoutEnds = indexedHits(c, gkLineSeg({2, 0}, {2, 6}), false);
  EXPECT_EQ(pointsOf(withoutEnds), (std::vector<gkVector<2>>{{2, 4}}));
  EXPECT_EQ(segmentsOf(withoutEnds), (std::vector<int>{3}));
  // Ending on segment 1 instead drops it in the same way.
  EXPECT_EQ(c.intersections(gkLineSeg({2, 6}, {2, 0}), false), (std::vector<gkVector<2>>{{2, 4}}));
  // Within 1e-6 counts as on it; beyond does not.
  EXPECT_EQ(c.intersections(gkLineSeg({2, -0.5e-6}, {2, 6}), false).size(), 1u);
  EXPECT_EQ(c.intersections(gkLineSeg({2, -2e-6}, {2, 6}), false).size(), 2u);
}

TEST(ContourIntersections, WithoutEndsACrossingElsewhereOnTheSegmentTheQueryStartsOnIsLost) {
  // The query starts 5e-7 above segment 1 (y = 0), so within reach of it, and descends so
  // slowly that it crosses y = 0 more than one unit further on, at x = 1 + 8/7.
  const ProbeContour c({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true, 0);
  const gkLineSeg seg({1, 5e-7}, {9, -3e-6});
  const auto withEnds = indexedHits(c, seg, true);
  ASSERT_EQ(withEnds.size(), 1u);
  EXPECT_EQ(withEnds[0].segment, 1);
  EXPECT_NEAR(withEnds[0].point.x(), 1.0 + 8.0 / 7.0, 1e-9);
  EXPECT_NEAR(withEnds[0].point.y(), 0.0, 1e-12);
  EXPECT_TRUE(c.intersections(seg, false).empty());
}

TEST(ContourIntersections, ParallelAndCollinearOverlappingSegmentsGiveNoPoint) {
  const ProbeContour c({{0, 0}, {4, 0}}, false, 0);
  for (const bool ends : {true, false}) {
    EXPECT_TRUE(c.intersections(gkLineSeg({1, 0}, {3, 0}), ends).empty());
    EXPECT_TRUE(c.intersections(gkLineSeg({-1, 0}, {5, 0}), ends).empty());
    EXPECT_TRUE(c.intersections(gkLineSeg({3, 0}, {1, 0}), ends).empty());
    EXPECT_TRUE(c.intersections(gkLineSeg({1, 1e-9}, {3, 1e-9}), ends).empty());
  }
  // A zero-length query segment has no direction: it is parallel to everything.
  const ProbeContour square(square4(), true, 0);
  EXPECT_TRUE(square.intersections(gkLineSeg({2, 0}, {2, 0}), true).empty());
  EXPECT_TRUE(square.intersections(gkLineSeg({0, 0}, {0, 0}), true).empty());
}

TEST(ContourIntersections, AQueryOutsideTheContourBoxIsRejectedBeforeAnySegmentIsBuilt) {
  const ProbeContour c(square4(), true, 0);
  std::vector<int> indices = {5, 6};
  EXPECT_TRUE(c.intersections(gkLineSeg({5, -1}, {7, 9}), indices, true).empty());
  EXPECT_TRUE(indices.empty());
  EXPECT_FALSE(Access::lineSegsValid(c));
  EXPECT_TRUE(c.intersections(gkLineSeg({-3, 5}, {9, 4.5}), false).empty());
  EXPECT_FALSE(Access::lineSegsValid(c));
}

TEST(ContourIntersections, BoxesThatOnlyTouchStillOverlap) {
  const ProbeContour c(square4(), true, 0);
  // The query box touches the contour box at the corner (4, 4), which is vertex 2.
  const auto hits = indexedHits(c, gkLineSeg({4, 4}, {6, 6}), true);
  EXPECT_EQ(pointsOf(hits), (std::vector<gkVector<2>>{{4, 4}, {4, 4}}));
  EXPECT_EQ(segmentsOf(hits), (std::vector<int>{2, 3}));
  EXPECT_TRUE(Access::lineSegsValid(c));
}

TEST(ContourIntersections, DegenerateSegmentsOfTheContourAreSkippedButKeepTheirNumbers) {
  // Segment 2 runs from vertex 1 to its repeat, vertex 2; segment 3 follows it.
  const ProbeContour c(gk::test::triangleWithRepeat(), true, 0);
  const auto hits = indexedHits(c, gkLineSeg({-1, 1}, {5, 1}), true);
  ASSERT_EQ(hits.size(), 2u);
  EXPECT_EQ(hits[0].point, gkVector<2>(0, 1));
  EXPECT_EQ(hits[0].segment, 0);
  EXPECT_EQ(hits[1].segment, 3);
  EXPECT_NEAR(hits[1].point.x(), 8.0 / 3.0, 1e-12);
  EXPECT_NEAR(hits[1].point.y(), 1.0, 1e-12);
}

TEST(ContourIntersections, SegmentQueriesThrowEmptyContourBelowTwoVertices) {
  for (const Points& pts : {Points(), Points{{1, 2}}}) {
    for (const bool closed : {true, false}) {
      const ProbeContour c(pts, closed, 0);
      std::vector<int> indices;
      EXPECT_THROW(c.intersections(gkLineSeg({0, 0}, {3, 3}), true), gkContourDefs::EmptyContour);
      EXPECT_THROW(c.intersections(gkLineSeg({0, 0}, {3, 3}), false), gkContourDefs::EmptyContour);
      EXPECT_THROW(c.intersections(gkLineSeg({0, 0}, {3, 3}), indices, true),
                   gkContourDefs::EmptyContour);
      EXPECT_THROW(c.intersections(gkContour(square4(), true, 0)), gkContourDefs::EmptyContour);
    }
  }
}

TEST(ContourIntersections, MatchAPlainWalkWithTheSameTestsAndSortOnRandomContours) {
  std::mt19937_64 rng(99);
  int total = 0;
  int pairedAtVertex = 0;
  for (int round = 0; round < 250; ++round) {
    const int n = uniformInt(rng, 2, 14);
    Points pts;
    for (int i = 0; i < n; ++i) {
      if (i > 0 && uniformInt(rng, 0, 9) == 0) {
        pts.push_back(pts.back());
      } else if (uniformInt(rng, 0, 3) == 0) {
        // Small integers make exact vertex hits and axis-parallel sides common.
        pts.emplace_back(uniformInt(rng, 0, 6), uniformInt(rng, 0, 6));
      } else {
        pts.emplace_back(uniform(rng, 0, 6), uniform(rng, 0, 6));
      }
    }
    const bool closed = uniformInt(rng, 0, 1) == 1;
    const ProbeContour c(pts, closed, 0);
    const auto segs = walk(pts, closed);
    for (int q = 0; q < 12; ++q) {
      gkVector<2> a;
      gkVector<2> b;
      const int kind = q % 4;
      if (kind == 0) {
        a = gkVector<2>(uniform(rng, -2, 8), uniform(rng, -2, 8));
        b = gkVector<2>(uniform(rng, -2, 8), uniform(rng, -2, 8));
      } else if (kind == 1) {
        // Through a vertex, symmetric about it.
        const gkVector<2>& v = pts[static_cast<std::size_t>(uniformInt(rng, 0, n - 1))];
        const gkVector<2> d(uniformInt(rng, -3, 3), uniformInt(rng, -3, 3));
        a = v - d;
        b = v + d;
      } else if (kind == 2) {
        // Starting on a segment of the contour (for the dropped-segment rule).
        const auto& s = segs[static_cast<std::size_t>(uniformInt(rng, 0, n - 2))];
        a = s.first + (s.second - s.first) * uniform(rng, 0, 1);
        b = gkVector<2>(uniform(rng, -2, 8), uniform(rng, -2, 8));
      } else {
        // Between two vertices.
        a = pts[static_cast<std::size_t>(uniformInt(rng, 0, n - 1))];
        b = pts[static_cast<std::size_t>(uniformInt(rng, 0, n - 1))];
      }
      const gkLineSeg seg(a, b);
      for (const bool ends : {true, false}) {
        const std::vector<Hit> expected = plainIntersections(pts, closed, seg, ends);
        const std::vector<Hit> got = indexedHits(c, seg, ends);
        ASSERT_EQ(pointsOf(got), pointsOf(expected)) << "round " << round << " query " << q;
        ASSERT_EQ(segmentsOf(got), segmentsOf(expected)) << "round " << round << " query " << q;
        ASSERT_EQ(c.intersections(seg, ends), pointsOf(expected));
        total += static_cast<int>(got.size());
        for (std::size_t i = 0; i + 1 < got.size(); ++i) {
          pairedAtVertex += got[i].point == got[i + 1].point ? 1 : 0;
        }
      }
    }
  }
  EXPECT_GT(total, 3000);
  EXPECT_GT(pairedAtVertex, 100);
}

// --- crossings with another contour ---------------------------------------------------------

TEST(ContourIntersections, CrossingsWithAClosedContourStartWithItsClosingSegment) {
  const gkContour c(square4(), true, 0);
  // The other rectangle's walk: closing (2,2)->(2,-2) meets y = 0 at (2, 0); then two sides
  // outside; then (6,2)->(2,2) meets x = 4 at (4, 2).
  const Points other = {{2, -2}, {6, -2}, {6, 2}, {2, 2}};
  EXPECT_EQ(c.intersections(gkContour(other, true, 0)), (std::vector<gkVector<2>>{{2, 0}, {4, 2}}));
  // Open, the side that closed it is gone.
  EXPECT_EQ(c.intersections(gkContour(other, false, 0)), (std::vector<gkVector<2>>{{4, 2}}));
}

TEST(ContourIntersections, CrossingsWithAnotherContourAreGroupedByItsSegmentsInWalkOrder) {
  const gkContour c(square4(), true, 0);
  // Leftwards along y = 1, up outside, then rightwards along y = 3.
  const gkContour other({{5, 1}, {-1, 1}, {-1, 3}, {5, 3}}, false, 0);
  EXPECT_EQ(c.intersections(other), (std::vector<gkVector<2>>{{4, 1}, {0, 1}, {0, 3}, {4, 3}}));
}

TEST(ContourIntersections, CrossingsWithAnotherContourIncludeEndsOnTheContour) {
  const gkContour c(square4(), true, 0);
  // The other contour's vertex (2, 0) lies on segment 1: both of its segments report it.
  const gkContour other({{2, -1}, {2, 0}, {3, -1}}, false, 0);
  EXPECT_EQ(c.intersections(other), (std::vector<gkVector<2>>{{2, 0}, {2, 0}}));
}

TEST(ContourIntersections, AnEmptyOrOneVertexOtherContourGivesNothingAndDoesNotThrow) {
  const gkContour c(square4(), true, 0);
  EXPECT_TRUE(c.intersections(gkContour(Points(), true, 0)).empty());
  EXPECT_TRUE(c.intersections(gkContour(Points(), false, 0)).empty());
  EXPECT_TRUE(c.intersections(gkContour({{2, 0}}, false, 0)).empty());
  // Closed, one vertex makes one zero-length segment, which has no direction to cross with.
  EXPECT_TRUE(c.intersections(gkContour({{2, 0}}, true, 0)).empty());
}

TEST(ContourIntersections, CrossingsWithAnotherContourAreTheConcatenatedSegmentQueries) {
  std::mt19937_64 rng(5);
  for (int round = 0; round < 60; ++round) {
    Points mine;
    Points theirs;
    for (int i = uniformInt(rng, 2, 9); i > 0; --i) {
      mine.emplace_back(uniform(rng, 0, 5), uniform(rng, 0, 5));
    }
    for (int i = uniformInt(rng, 1, 7); i > 0; --i) {
      theirs.emplace_back(uniform(rng, -1, 6), uniform(rng, -1, 6));
    }
    const bool mineClosed = uniformInt(rng, 0, 1) == 1;
    const bool theirsClosed = uniformInt(rng, 0, 1) == 1;
    std::vector<gkVector<2>> expected;
    for (const auto& s : walk(theirs, theirsClosed)) {
      for (const Hit& h :
           plainIntersections(mine, mineClosed, gkLineSeg(s.first, s.second), true)) {
        expected.push_back(h.point);
      }
    }
    const gkContour c(mine, mineClosed, 0);
    ASSERT_EQ(c.intersections(gkContour(theirs, theirsClosed, 0)), expected) << round;
  }
}

// --- self-intersection ----------------------------------------------------------------------

TEST(ContourSelfIntersection, TriangleIsNotSelfIntersecting) {
  EXPECT_FALSE(gkContour(gk::test::triangle(), true, 0).isSelfIntersecting());
  EXPECT_FALSE(gkContour(gk::test::triangle(), false, 0).isSelfIntersecting());
}

TEST(ContourSelfIntersection, BowTieIsSelfIntersecting) {
  EXPECT_TRUE(gkContour(gk::test::bowTie(), true, 0).isSelfIntersecting());
  // Open, its first and last segments still cross at (1, 1).
  EXPECT_TRUE(gkContour(gk::test::bowTie(), false, 0).isSelfIntersecting());
}

TEST(ContourSelfIntersection, NeighbouringSegmentsThatTouchAtSharedVerticesDoNotCount) {
  EXPECT_FALSE(gkContour(gk::test::unitSquare(), true, 0).isSelfIntersecting());
  EXPECT_FALSE(gkContour(gk::test::triangleWithRepeat(), true, 0).isSelfIntersecting());
  // A zigzag whose every segment meets its neighbours only at their shared vertices.
  EXPECT_FALSE(gkContour({{0, 0}, {1, 1}, {2, 0}, {3, 1}, {4, 0}}, false, 0).isSelfIntersecting());
  // A spike folding straight back: collinear neighbours are parallel and never cross.
  EXPECT_FALSE(gkContour({{0, 0}, {2, 0}, {1, 0}}, false, 0).isSelfIntersecting());
}

TEST(ContourSelfIntersection, SegmentsMeetingOnlyAtARepeatedVertexDoNotCount) {
  // Two loops that touch at the repeated vertex (2, 1) and nowhere else: every segment that
  // meets a query segment's end is dropped, so a mere touch is not a crossing.
  const Points touching = {{0, 0}, {2, 1}, {4, 0}, {4, 2}, {2, 1}, {0, 2}};
  EXPECT_FALSE(gkContour(touching, true, 0).isSelfIntersecting());
  // Pulling one loop through the other makes a true crossing.
  const Points crossing = {{0, 0}, {2, 1}, {4, 0}, {4, 2}, {2, 0.5}, {0, 2}};
  EXPECT_TRUE(gkContour(crossing, true, 0).isSelfIntersecting());
}

TEST(ContourSelfIntersection, FewerThanTwoVerticesIsNotSelfIntersecting) {
  for (const bool closed : {true, false}) {
    EXPECT_FALSE(gkContour(Points(), closed, 0).isSelfIntersecting());
    EXPECT_FALSE(gkContour({{1, 1}}, closed, 0).isSelfIntersecting());
  }
  EXPECT_FALSE(gkContour({{1, 1}, {1, 1}, {1, 1}}, true, 0).isSelfIntersecting());
}

TEST(ContourSelfIntersection, TheAnswerIsCachedUntilTheVerticesChange) {
  gkContour c(gk::test::bowTie(), true, 0);
  EXPECT_TRUE(c.isSelfIntersecting());
  EXPECT_TRUE(c.isSelfIntersecting());
  c.points(gk::test::triangle());
  EXPECT_FALSE(c.isSelfIntersecting());
  EXPECT_FALSE(c.isSelfIntersecting());
  c.points(gk::test::bowTie());
  EXPECT_TRUE(c.isSelfIntersecting());
}

TEST(ContourSelfIntersection, ACachedAnswerIsReturnedWithoutLookingAtTheSegments) {
  // The test access seeds the cache with "self-intersecting" on a triangle: a cached answer is
  // returned as it stands.
  gkContour c(gk::test::triangle(), true, 0);
  Access::fillPlainCaches(c);
  EXPECT_TRUE(c.isSelfIntersecting());
  c.isClosed(true);
  EXPECT_FALSE(c.isSelfIntersecting());
}

// --- median feature size --------------------------------------------------------------------

TEST(ContourMedianFeatureSize, SidesOneTwoThreeFourGiveTheUpperMedianThree) {
  // Closed and collinear, walked as 3 (closing), 1, 4, 2.
  EXPECT_EQ(ProbeContour({{0, 0}, {1, 0}, {5, 0}, {3, 0}}, true, 0).medianFeatureSize(), 3.0);
  // Open, walked as 1, 2, 3, 4.
  EXPECT_EQ(ProbeContour({{0, 0}, {1, 0}, {1, 2}, {4, 2}, {4, 6}}, false, 0).medianFeatureSize(),
            3.0);
}

TEST(ContourMedianFeatureSize, AnOddCountGivesTheMiddleLength) {
  // The 3-4-5 triangle, closed: lengths 5 (closing), 4, 3 -> 4.
  EXPECT_EQ(ProbeContour({{0, 0}, {4, 0}, {4, 3}}, true, 0).medianFeatureSize(), 4.0);
  // Two vertices, open: the single length.
  EXPECT_EQ(ProbeContour({{0, 0}, {3, 4}}, false, 0).medianFeatureSize(), 5.0);
  // Two vertices, closed: the same length twice.
  EXPECT_EQ(ProbeContour({{0, 0}, {3, 4}}, true, 0).medianFeatureSize(), 5.0);
}

TEST(ContourMedianFeatureSize, ZeroLengthSegmentsAreIncluded) {
  // Lengths 0, 1, 2: the median is 1 (without the zero it would be 2).
  EXPECT_EQ(ProbeContour({{0, 0}, {0, 0}, {1, 0}, {3, 0}}, false, 0).medianFeatureSize(), 1.0);
  EXPECT_EQ(ProbeContour({{1, 1}, {1, 1}, {1, 1}}, true, 0).medianFeatureSize(), 0.0);
}

TEST(ContourMedianFeatureSize, TheValueIsCachedUntilTheVerticesChange) {
  ProbeContour c({{0, 0}, {1, 0}, {1, 2}, {4, 2}, {4, 6}}, false, 0);
  EXPECT_EQ(c.medianFeatureSize(), 3.0);
  // A seeded cache value is returned as it stands...
  Access::fillPlainCaches(c);
  EXPECT_EQ(c.medianFeatureSize(), 4.0);
  // ...until a change of the vertices drops it.
  c.points({{0, 0}, {10, 0}});
  EXPECT_EQ(c.medianFeatureSize(), 10.0);
  c.isClosed(true);
  EXPECT_EQ(c.medianFeatureSize(), 10.0);
}

TEST(ContourMedianFeatureSize, ThrowsEmptyContourBelowTwoVertices) {
  for (const bool closed : {true, false}) {
    EXPECT_THROW(ProbeContour(Points(), closed, 0).medianFeatureSize(),
                 gkContourDefs::EmptyContour);
    EXPECT_THROW(ProbeContour({{1, 1}}, closed, 0).medianFeatureSize(),
                 gkContourDefs::EmptyContour);
  }
}

namespace {

/// The plain median: every segment length of the walk, fully sorted in the NaN-last order, the
/// one at the middle.
void expectMedianOfSortedLengths(const Points& v, bool closed, int shape) {
  std::vector<double> lengths;
  const std::size_t segments = closed ? v.size() : v.size() - 1;
  for (std::size_t k = 0; k < segments; ++k) {
    const gkVector<2>& p = closed ? v[k == 0 ? v.size() - 1 : k - 1] : v[k];
    const gkVector<2>& q = closed ? v[k] : v[k + 1];
    lengths.push_back(p.distance(q));
  }
  std::sort(lengths.begin(), lengths.end(),
            [](double a, double b) { return !std::isnan(a) && (std::isnan(b) || a < b); });
  const double expected = lengths[lengths.size() / 2];
  const double median = ProbeContour(v, closed, 0).medianFeatureSize();
  if (std::isnan(expected)) {
    EXPECT_TRUE(std::isnan(median)) << shape;
  } else {
    EXPECT_EQ(median, expected) << shape;
  }
}

}  // namespace

TEST(ContourMedianFeatureSize, MatchesTheMiddleOfTheFullySortedLengths) {
  // Random walks with repeated vertices, equal lengths and now and then a NaN coordinate: the
  // selected middle length is the one the full sort in the NaN-last order puts there.
  std::mt19937_64 rng(51);
  std::uniform_int_distribution<int> coordinate(-6, 6);
  std::uniform_int_distribution<int> count(2, 60);
  for (int shape = 0; shape < 3000; ++shape) {
    Points v;
    const int n = count(rng);
    for (int k = 0; k < n; ++k) {
      v.emplace_back(coordinate(rng), coordinate(rng));
    }
    if (shape % 7 == 0) {
      v[static_cast<std::size_t>(shape) % v.size()] =
          gkVector<2>(std::numeric_limits<double>::quiet_NaN(), 1.0);
    }
    expectMedianOfSortedLengths(v, shape % 2 == 0, shape);
  }
}

TEST(ContourMedianFeatureSize, MatchesTheFullSortOnRealCoordinatesAtEveryScale) {
  // Real coordinates, at scales where squares underflow (1e-160) or overflow (1e160), with
  // near-equal lengths (points on a circle) and infinities: the middle of the sorted lengths.
  std::mt19937_64 rng(52);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  for (int shape = 0; shape < 3000; ++shape) {
    const double scale = std::pow(10.0, (shape % 7) * 53.0 - 160.0);
    Points v;
    const int n = 2 + shape % 41;
    for (int k = 0; k < n; ++k) {
      if (shape % 3 == 0) {
        const double a = 6.283185307179586 * k / n + 1e-9 * u(rng);
        v.emplace_back(scale * std::cos(a), scale * std::sin(a));
      } else {
        v.emplace_back(scale * u(rng), scale * u(rng));
      }
    }
    if (shape % 11 == 0) {
      v[static_cast<std::size_t>(shape) % v.size()] =
          gkVector<2>(std::numeric_limits<double>::infinity(), 1.0);
    }
    expectMedianOfSortedLengths(v, shape % 2 == 0, shape);
  }
}

// --- the indexed segment queries against the plain full scans ------------------------------

namespace {

/// Bit-for-bit equality, so that NaN coordinates compare too.
bool sameBits(const std::vector<gkVector<2>>& a, const std::vector<gkVector<2>>& b) {
  if (a.size() != b.size()) {
    return false;
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    const double xa = a[i].x(), ya = a[i].y(), xb = b[i].x(), yb = b[i].y();
    if (std::memcmp(&xa, &xb, sizeof xa) != 0 || std::memcmp(&ya, &yb, sizeof ya) != 0) {
      return false;
    }
  }
  return true;
}

/// A star polygon of n vertices with radial noise, every vertex swapped with its successor with
/// probability swapPercent/100: dense crossings for the grid.
Points noisyStar(std::size_t n, int swapPercent, gk::test::DegenerateShapes& gen) {
  Points v = gk::test::starOutline(n, 0.3, [&] { return gen.real(1.0); });
  for (std::size_t k = 0; k + 1 < n; ++k) {
    if (gen.pick(100) < static_cast<std::uint64_t>(swapPercent)) {
      std::swap(v[k], v[k + 1]);
    }
  }
  return v;
}

/// Runs `queries` random segments (ends drawn like the vertices, and ends on vertices) through
/// the indexed query and the plain scan, with and without ends, and expects identical answers.
void expectSegmentQueriesAgree(const ProbeContour& fast, gk::test::DegenerateShapes& gen,
                               int queries, bool nonFinite) {
  const gk::test::PlainContour plain(fast);
  for (int q = 0; q < queries; ++q) {
    Points ends = gen.points(2, nonFinite);
    if (gen.pick(3) == 0 && !fast.points().empty()) {
      ends[0] = fast.points()[gen.pick(fast.points().size())];
    }
    const gkLineSeg seg(ends[0], ends[1]);
    for (const bool includeEnds : {false, true}) {
      std::vector<int> fastIndices;
      std::vector<int> plainIndices;
      const Points fastPoints = fast.intersections(seg, fastIndices, includeEnds);
      const Points plainPoints = plain.plainIntersections(seg, plainIndices, includeEnds);
      ASSERT_TRUE(sameBits(fastPoints, plainPoints));
      ASSERT_EQ(fastIndices, plainIndices);
    }
  }
}

}  // namespace

TEST(ContourIndexedQueries, SegmentQueriesMatchTheFullScanOnThousandsOfDegenerateContours) {
  gk::test::DegenerateShapes gen(20261125);
  for (int shape = 0; shape < 3000; ++shape) {
    const ProbeContour c(gen.points(2 + gen.pick(40)), gen.pick(2) == 0, 0);
    expectSegmentQueriesAgree(c, gen, 8, false);
  }
}

TEST(ContourIndexedQueries, SegmentQueriesMatchTheFullScanWithNonFiniteAndHugeCoordinates) {
  gk::test::DegenerateShapes gen(77);
  for (int shape = 0; shape < 1500; ++shape) {
    const ProbeContour c(gen.points(2 + gen.pick(30), true), gen.pick(2) == 0, 0);
    expectSegmentQueriesAgree(c, gen, 6, true);
  }
}

TEST(ContourIndexedQueries, SegmentQueriesMatchTheFullScanOnLargeCrossingStars) {
  gk::test::DegenerateShapes gen(5);
  for (const std::size_t n : {64u, 500u, 3000u}) {
    const ProbeContour c(noisyStar(n, 10, gen), true, 0);
    const gk::test::PlainContour plain(c);
    // Segments of the contour itself, and long chords through the whole star.
    for (std::size_t k = 0; k < n; k += n / 50) {
      for (const bool includeEnds : {false, true}) {
        std::vector<int> a;
        std::vector<int> b;
        const gkLineSeg own(c.points()[k], c.points()[(k + 1) % n]);
        ASSERT_TRUE(sameBits(c.intersections(own, a, includeEnds),
                             plain.plainIntersections(own, b, includeEnds)));
        ASSERT_EQ(a, b);
        const gkLineSeg chord(c.points()[k], c.points()[(k + n / 2) % n]);
        ASSERT_TRUE(sameBits(c.intersections(chord, a, includeEnds),
                             plain.plainIntersections(chord, b, includeEnds)));
        ASSERT_EQ(a, b);
      }
    }
  }
}

TEST(ContourIndexedQueries, SelfIntersectionSkippingNeighboursMatchesThePlainScanOnLargerShapes) {
  // Up to 80 vertices of grid points, repeats, collinear runs, slanted near-touches and, one
  // shape in five, non-finite and huge coordinates, open and closed: the neighbours of each
  // segment are skipped untested only where that cannot change the answer.
  gk::test::DegenerateShapes gen(808);
  int crossing = 0;
  for (int shape = 0; shape < 3000; ++shape) {
    // One shape in three a star with few or no swaps, so that simple shapes are common too.
    Points pts = shape % 3 == 0 ? noisyStar(4 + gen.pick(80), static_cast<int>(gen.pick(3)), gen)
                                : gen.points(2 + gen.pick(80), shape % 5 == 0);
    if (shape % 7 == 0 && pts.size() > 3) {
      // A vertex a hair off a non-adjacent edge, on either side of the proximity tolerance.
      const gkVector<2> a = pts[0];
      const gkVector<2> b = pts[1];
      const gkVector<2> normal = gkVector<2>(a.y() - b.y(), b.x() - a.x());
      const double len = normal.len();
      if (len > 0) {
        pts[pts.size() / 2] = (a + b) / 2.0 + normal * ((shape % 2 == 0 ? 0.9e-6 : 1.1e-6) / len);
      }
    }
    const gkContour c(pts, gen.pick(2) == 0, 0);
    const bool expected = gk::test::PlainContour(c).plainIsSelfIntersecting();
    ASSERT_EQ(c.isSelfIntersecting(), expected) << "shape " << shape;
    crossing += expected ? 1 : 0;
  }
  EXPECT_GT(crossing, 300);
  EXPECT_LT(crossing, 2700);
}

TEST(ContourIndexedQueries, SelfIntersectionMatchesThePlainScanOnSmoothOutlinesAndDenseStars) {
  // A smooth outline leaves few segments per cell of the index, so self-intersection asks the
  // pairs sharing a cell; a dense star crowds the cells, so it asks one query per segment.
  // Both must give the plain answer, with and without crossings.
  gk::test::DegenerateShapes gen(99);
  for (const int swapPercent : {0, 2}) {
    for (const bool closed : {true, false}) {
      Points smooth;
      for (int k = 0; k < 1500; ++k) {
        const double t = 6.283185307179586 * k / 1500.0;
        const double r = 100.0 * (1.0 + 0.2 * std::sin(3.0 * t)) + 0.01 * gen.real(1.0);
        smooth.emplace_back(r * std::cos(t), r * std::sin(t));
      }
      for (std::size_t k = 0; k + 1 < smooth.size(); ++k) {
        if (gen.pick(100) < static_cast<std::uint64_t>(swapPercent)) {
          std::swap(smooth[k], smooth[k + 1]);
        }
      }
      const gkContour blob(smooth, closed, 0);
      EXPECT_EQ(blob.isSelfIntersecting(), gk::test::PlainContour(blob).plainIsSelfIntersecting());
      EXPECT_EQ(blob.isSelfIntersecting(), swapPercent > 0);
      // A smooth C, which is not star-shaped about the centre of its vertices: without swaps
      // too, its answer comes from the index.
      Points band;
      for (int k = 0; k < 1500; ++k) {
        const bool outer = k < 750;
        const double t = 0.5 + 5.283185307179586 * (outer ? k : 1499 - k) / 749.0;
        const double r = (outer ? 100.0 : 80.0) + 0.01 * gen.real(1.0);
        band.emplace_back(r * std::cos(t), r * std::sin(t));
      }
      for (std::size_t k = 0; k + 1 < band.size(); ++k) {
        if (gen.pick(100) < static_cast<std::uint64_t>(swapPercent)) {
          std::swap(band[k], band[k + 1]);
        }
      }
      const gkContour c(band, closed, 0);
      EXPECT_EQ(c.isSelfIntersecting(), gk::test::PlainContour(c).plainIsSelfIntersecting());
      EXPECT_EQ(c.isSelfIntersecting(), swapPercent > 0);
      if (swapPercent == 0) {
        EXPECT_TRUE(Access::lineSegsValid(c));
      }
      const gkContour star(noisyStar(1500, swapPercent, gen), closed, 0);
      EXPECT_EQ(star.isSelfIntersecting(), gk::test::PlainContour(star).plainIsSelfIntersecting());
    }
  }
}

TEST(ContourIndexedQueries, SelfIntersectionMatchesThePlainPairScan) {
  gk::test::DegenerateShapes gen(11);
  int crossing = 0;
  for (int shape = 0; shape < 4000; ++shape) {
    const gkContour c(gen.points(2 + gen.pick(12), shape % 4 == 0), gen.pick(2) == 0, 0);
    const bool expected = gk::test::PlainContour(c).plainIsSelfIntersecting();
    ASSERT_EQ(c.isSelfIntersecting(), expected) << "shape " << shape;
    crossing += expected ? 1 : 0;
  }
  // Both answers must be well represented for the comparison to mean anything.
  EXPECT_GT(crossing, 400);
  EXPECT_LT(crossing, 3600);
  for (const int swapPercent : {0, 1, 10}) {
    const gkContour star(noisyStar(2000, swapPercent, gen), true, 0);
    EXPECT_EQ(star.isSelfIntersecting(), gk::test::PlainContour(star).plainIsSelfIntersecting());
  }
}

TEST(ContourIndexedQueries, IntersectionsWithAnotherContourMatchThePlainScan) {
  gk::test::DegenerateShapes gen(13);
  for (int shape = 0; shape < 2000; ++shape) {
    const gkContour a(gen.points(2 + gen.pick(20), shape % 5 == 0), gen.pick(2) == 0, 0);
    const gkContour b(gen.points(1 + gen.pick(20), shape % 7 == 0), gen.pick(2) == 0, 0);
    ASSERT_TRUE(sameBits(a.intersections(b), gk::test::PlainContour(a).plainIntersections(b)))
        << "shape " << shape;
  }
}

TEST(ContourIndexedQueries, CrossingsWithEqualPositionsKeepTheExchangeOrder) {
  // Eight segments meet at the centre; a query through it finds them all at the same position,
  // where the exchange order (not a stable order) is what callers see.
  Points fan;
  for (int k = 0; k < 8; ++k) {
    const double angle = 0.7853981633974483 * k;
    fan.emplace_back(0, 0);
    fan.emplace_back(10 * std::cos(angle), 10 * std::sin(angle));
  }
  const ProbeContour c(fan, true, 0);
  const gk::test::PlainContour plain(c);
  const gkLineSeg query({-5, -1}, {5, 1});
  std::vector<int> fastIndices;
  std::vector<int> plainIndices;
  const Points found = c.intersections(query, fastIndices, true);
  EXPECT_TRUE(sameBits(found, plain.plainIntersections(query, plainIndices, true)));
  EXPECT_EQ(fastIndices, plainIndices);
  EXPECT_GE(found.size(), 8u);
}

TEST(ContourIndexedQueries, NearTouchesAroundTheProximityToleranceMatchThePlainScan) {
  // A spike stops short of (or passes) a slanted segment by distances around the tolerance, at
  // several scales, so the cheap far-apart rejection works right at its edge. The segment is
  // slanted so that the spike's box overlaps its box and only the distance decides.
  int kept = 0;
  int near = 0;
  for (const double scale : {1.0, 1e3, 1e6}) {
    for (const double gap : {-3e-6, -2.1e-6, -1.9e-6, -1.1e-6, -0.9e-6, 0.0, 0.5e-6, 0.9e-6, 1.1e-6,
                             1.9e-6, 2.1e-6, 3e-6}) {
      for (const double slant : {1e-9, 0.05, 0.3}) {
        // The base runs from (0, 0) to (s, s/2); its unit normal is (-1, 2) / sqrt(5).
        const gkVector<2> tip(scale / 2 - gap / std::sqrt(5.0),
                              scale / 4 + 2 * gap / std::sqrt(5.0));
        const Points v{{0, 0},
                       {scale, scale / 2},
                       {scale, scale},
                       {scale / 2 + slant * scale, scale},
                       tip,
                       {scale / 2 - slant * scale, scale}};
        const ProbeContour c(v, true, 0);
        const gk::test::PlainContour plain(c);
        EXPECT_EQ(c.isSelfIntersecting(), plain.plainIsSelfIntersecting())
            << scale << " " << gap << " " << slant;
        for (std::size_t k = 0; k < v.size(); ++k) {
          const gkLineSeg seg(v[k], v[(k + 1) % v.size()]);
          for (const bool includeEnds : {false, true}) {
            std::vector<int> a;
            std::vector<int> b;
            const Points found = c.intersections(seg, a, includeEnds);
            ASSERT_TRUE(sameBits(found, plain.plainIntersections(seg, b, includeEnds)));
            ASSERT_EQ(a, b);
            kept += static_cast<int>(found.size());
            near += (k == 1 && gap > 0 && !found.empty()) ? 1 : 0;
          }
        }
      }
    }
  }
  EXPECT_GT(kept, 100);
  // Spikes that stop short within the tolerance are crossings here.
  EXPECT_GT(near, 0);
}

TEST(ContourIndexedQueries, SelfIntersectionOfCloselyStackedRowsMatchesThePlainScan) {
  // A serpentine of long rows of short segments, the rows much closer together than the
  // segments are long: each cell of the segment index lists many segments, of many rows, while
  // few of their boxes overlap, so self-intersection asks the listed pairs. A vertex pushed
  // toward the next row, to distances around the tolerance and through it, must give the plain
  // answer, open and closed.
  int crossing = 0;
  double fewestListed = 1e9;
  double mostListed = 0;
  // The gap left between the pushed vertex and the next row; negative goes through it.
  for (const double gap : {0.02, 0.01, 2.1e-6, 1.1e-6, 0.9e-6, -1e-3}) {
    for (const bool closed : {false, true}) {
      Points v;
      const double rowGap = 0.02;
      for (int row = 0; row < 30; ++row) {
        for (int k = 0; k <= 50; ++k) {
          v.emplace_back(row % 2 == 0 ? k : 50 - k, rowGap * row);
        }
      }
      // Vertex 20 of row 10 (which runs right to left) goes up toward row 11.
      gkVector<2>& pushed = v[10 * 51 + 20];
      pushed = gkVector<2>(pushed.x(), pushed.y() + rowGap - gap);
      const gkContour c(v, closed, 0);
      const bool expected = gk::test::PlainContour(c).plainIsSelfIntersecting();
      EXPECT_EQ(c.isSelfIntersecting(), expected) << gap << " " << closed;
      crossing += expected ? 1 : 0;
      fewestListed = std::min(fewestListed, gkContourTestAccess::indexPairsPerSegment(c));
      mostListed = std::max(mostListed, gkContourTestAccess::indexPairsPerSegment(c));
    }
  }
  EXPECT_GT(fewestListed, 16.0);
  EXPECT_LT(mostListed, 64.0);
  EXPECT_GT(crossing, 2);
  EXPECT_LT(crossing, 10);
}

TEST(ContourIndexedQueries, SelfIntersectionOfCrowdedOutlinesMatchesThePlainScan) {
  // Long spikes crowd the cells of the segment index, so self-intersection first looks for an
  // early crossing, then lets a plane sweep show that no two segments come close enough to
  // cross, and queries every segment only when the sweep cannot. Stars plain, with a swap,
  // with a tip moved to distances around the tolerance from a segment two along, and with a
  // vertex repeated further on, open and closed, must all give the plain answer.
  gk::test::DegenerateShapes gen(77);
  int crowded = 0;
  int crossing = 0;
  for (int shape = 0; shape < 48; ++shape) {
    const std::size_t n = 400 + gen.pick(300);
    Points v = gk::test::starOutline(n, 3.0, [&] { return gen.real(1.0); });
    const std::size_t i = 1 + gen.pick(n - 6);
    switch (shape % 4) {
      case 1:
        std::swap(v[i], v[i + 1]);
        break;
      case 2: {
        const gkVector<2> a = v[i + 2];
        const gkVector<2> b = v[i + 3];
        const gkVector<2> along = b - a;
        const gkVector<2> normal = gkVector<2>(-along.y(), along.x()) / along.len();
        const double side = gen.pick(2) == 0 ? 1.0 : -1.0;
        v[i] = (a + b) / 2.0 + normal * (side * kNearTouches[gen.pick(7)]);
        break;
      }
      case 3:
        v[i] = v[i + 2 + gen.pick(3)];
        break;
      default:
        break;
    }
    const gkContour c(v, shape % 8 < 6, 0);
    const bool expected = gk::test::PlainContour(c).plainIsSelfIntersecting();
    ASSERT_EQ(c.isSelfIntersecting(), expected) << "shape " << shape;
    crowded += gkContourTestAccess::indexPairsPerSegment(c) > 32.0 ? 1 : 0;
    crossing += expected ? 1 : 0;
  }
  EXPECT_GT(crowded, 36);
  EXPECT_GT(crossing, 12);
  EXPECT_LT(crossing, 36);
}

TEST(ContourIndexedQueries, CrossingsWithAnotherContourMatchThePlainWalkOnCrowdedStars) {
  // Long spikes crowd the segment index, so the crossings with another contour are searched
  // through the rectangles of runs of consecutive segments instead. Stars against copies of
  // themselves turned a little, turned not at all (every segment overlaps its twin and every
  // vertex touches), moved along, with one tip pushed to distances around the tolerance from a
  // segment of the star, with repeated and swapped vertices, open and closed on either side,
  // must give the plain walk's points in its order, to the last bit.
  gk::test::DegenerateShapes gen(91);
  int crowded = 0;
  std::size_t found = 0;
  for (int shape = 0; shape < 24; ++shape) {
    const std::size_t n = 700 + gen.pick(300);
    Points v = gk::test::starOutline(n, 3.0, [&] { return gen.real(1.0); });
    if (shape % 3 == 1) {
      const std::size_t i = 1 + gen.pick(n - 6);
      std::swap(v[i], v[i + 1]);
      v[i + 3] = v[i + 4];
    }
    const double turns[] = {0.01, 1e-4, 0.0, 0.5};
    const double turn = turns[shape % 4];
    Points w;
    for (const gkVector<2>& p : v) {
      w.emplace_back(
          std::cos(turn) * p.x() - std::sin(turn) * p.y(),
          std::sin(turn) * p.x() + std::cos(turn) * p.y() + (shape % 5 == 4 ? 7.0 : 0.0));
    }
    // A tip of the copy pushed next to a segment of the star, either side.
    const std::size_t j = 1 + gen.pick(n - 3);
    const gkVector<2> along = v[j + 1] - v[j];
    const gkVector<2> normal = gkVector<2>(-along.y(), along.x()) / along.len();
    const double side = gen.pick(2) == 0 ? 1.0 : -1.0;
    w[gen.pick(n)] = (v[j] + v[j + 1]) / 2.0 + normal * (side * kNearTouches[gen.pick(7)]);

    const gkContour c(v, shape % 6 < 4, 0);
    const gkContour other(w, shape % 4 < 3, 0);
    const std::vector<gkVector<2>> expected = gk::test::PlainContour(c).plainIntersections(other);
    const std::vector<gkVector<2>> got = c.intersections(other);
    ASSERT_EQ(got.size(), expected.size()) << "shape " << shape;
    for (std::size_t i = 0; i < got.size(); ++i) {
      ASSERT_EQ(std::memcmp(&got[i], &expected[i], sizeof(gkVector<2>)), 0)
          << "shape " << shape << ", crossing " << i;
    }
    crowded += gkContourTestAccess::indexPairsPerSegment(c) > 8.0 ? 1 : 0;
    found += got.size();
  }
  EXPECT_EQ(crowded, 24);
  EXPECT_GT(found, 5000u);
}

TEST(ContourIndexedQueries, SegmentQueriesOnCrowdedStarsMatchThePlainWalk) {
  // On a crowded star a single query is also searched through the runs of segments: the
  // boundary walk asks each of its steps that way, without ends, and its start probes short
  // segments across an edge. Segments of the star itself, vertex-to-vertex chords, short probes,
  // near touches around the tolerance, long rays and random segments, with and without ends,
  // must give the plain walk's points and segment numbers.
  gk::test::DegenerateShapes gen(313);
  int crowded = 0;
  std::size_t found = 0;
  for (int shape = 0; shape < 8; ++shape) {
    const std::size_t n = 600 + gen.pick(300);
    Points v = gk::test::starOutline(n, 3.0, [&] { return gen.real(1.0); });
    for (std::size_t k = 0; k + 1 < n; ++k) {
      if (gen.pick(10) == 0) {
        std::swap(v[k], v[k + 1]);
      }
    }
    const bool closed = shape % 4 != 3;
    const ProbeContour c(v, closed, 0);
    for (int q = 0; q < 150; ++q) {
      const std::size_t i = gen.pick(n - 2);
      const gkVector<2> along = v[i + 1] - v[i];
      const gkVector<2> normal = gkVector<2>(-along.y(), along.x()) / along.len();
      gkVector<2> a;
      gkVector<2> b;
      switch (q % 6) {
        case 0:  // a segment of the star, as the walk steps along it
          a = v[i];
          b = v[i + 1];
          break;
        case 1: {  // a short probe across the middle of a segment
          const gkVector<2> mid = (v[i] + v[i + 1]) / 2.0;
          a = mid + normal * 0.05;
          b = mid - normal * 0.05;
          break;
        }
        case 2: {  // a stub stopping short of a segment, or past it, by about the tolerance
          const gkVector<2> mid = (v[i] + v[i + 1]) / 2.0;
          const double side = gen.pick(2) == 0 ? 1.0 : -1.0;
          a = mid + normal * (side * kNearTouches[gen.pick(7)]);
          b = mid + normal * (side * 5.0);
          break;
        }
        case 3:  // a ray from a vertex through the whole star
          a = v[i];
          b = v[i] + along.unit() * 900.0;
          break;
        case 4:  // a chord between two vertices
          a = v[i];
          b = v[gen.pick(n)];
          break;
        default:
          a = gkVector<2>(gen.real(800.0) - 400.0, gen.real(800.0) - 400.0);
          b = a + gkVector<2>(gen.real(60.0) - 30.0, gen.real(60.0) - 30.0);
          break;
      }
      const gkLineSeg seg(a, b);
      for (const bool ends : {true, false}) {
        const std::vector<Hit> expected = plainIntersections(v, closed, seg, ends);
        const std::vector<Hit> got = indexedHits(c, seg, ends);
        ASSERT_EQ(pointsOf(got), pointsOf(expected)) << "shape " << shape << " query " << q;
        ASSERT_EQ(segmentsOf(got), segmentsOf(expected)) << "shape " << shape << " query " << q;
        found += got.size();
      }
    }
    crowded += gkContourTestAccess::indexPairsPerSegment(c) > 16.0 ? 1 : 0;
  }
  EXPECT_EQ(crowded, 8);
  EXPECT_GT(found, 2000u);
}

TEST(ContourSelfIntersection, ACrossingNearTheStartIsFoundBeforeAnySegmentCacheIsBuilt) {
  // Two vertices out of order among the first segments of a long outline: the segments on
  // either side of the swapped pair cross, and the answer comes from them alone.
  Points v;
  for (int k = 0; k < 640; ++k) {
    const double angle = 6.283185307179586 * k / 640.0;
    v.emplace_back(100.0 * std::cos(angle), 100.0 * std::sin(angle));
  }
  std::swap(v[5], v[6]);
  for (const bool closed : {true, false}) {
    const gkContour c(v, closed, 0);
    EXPECT_TRUE(c.isSelfIntersecting());
    EXPECT_FALSE(Access::lineSegsValid(c));
    EXPECT_TRUE(gk::test::PlainContour(c).plainIsSelfIntersecting());
  }
  // Past the first 1/32 of the segments, the same swap is found by the full search.
  std::swap(v[5], v[6]);
  std::swap(v[300], v[301]);
  const gkContour late(v, true, 0);
  EXPECT_TRUE(late.isSelfIntersecting());
  EXPECT_TRUE(Access::lineSegsValid(late));
}

TEST(ContourSelfIntersection, AStarShapedOutlineIsAnsweredBeforeAnySegmentCacheIsBuilt) {
  // A smooth outline seen from the centre of its vertices, every segment turning the same way:
  // its segments keep apart, and no cache is needed to say so.
  Points v;
  for (int k = 0; k < 2000; ++k) {
    const double t = 6.283185307179586 * k / 2000.0;
    const double r = 50.0 * (1.0 + 0.3 * std::sin(5.0 * t));
    v.emplace_back(r * std::cos(t) + 7.0, r * std::sin(t) - 3.0);
  }
  for (const bool closed : {true, false}) {
    const gkContour c(v, closed, 0);
    EXPECT_FALSE(c.isSelfIntersecting());
    EXPECT_FALSE(Access::lineSegsValid(c));
    EXPECT_FALSE(gk::test::PlainContour(c).plainIsSelfIntersecting());
  }
}

TEST(ContourSegmentsClear, AClearSegmentFindsNothingAlongItselfEitherWay) {
  // Boxes with a notch whose tip comes to a hair above the bottom edge, on it, or through it
  // (boxes apart or meeting, distances around the tolerance), and grid shapes with repeats and
  // collinear runs: every segment called clear, queried along itself without ends in either
  // direction, finds no crossing.
  gk::test::DegenerateShapes gen(515);
  std::mt19937_64 rng(616);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  int clearCount = 0;
  int notClear = 0;
  for (int shape = 0; shape < 1500; ++shape) {
    Points v;
    if (shape % 2 == 0) {
      // A box with a notch whose tip comes down to a hair above the bottom edge.
      const double hair =
          (shape % 8 < 4 ? 1.0 : -1.0) * kNearTouches[static_cast<std::size_t>(shape / 2) % 7];
      const double tipX = 2.0 + 6.0 * u(rng);
      v = {{0, 0}, {10, 0}, {10, 5}, {tipX + 1.0, 5}, {tipX, hair}, {tipX - 1.0, 5}, {0, 5}};
      if (shape % 4 == 0) {
        std::reverse(v.begin(), v.end());
      }
    } else {
      v = gen.points(3 + gen.pick(30), shape % 5 == 0);
    }
    const ProbeContour c(v, true, 0);
    const std::vector<bool> clear = c.segmentsClearOfOthers();
    ASSERT_EQ(clear.size(), c.lineSegs().size());
    for (std::size_t k = 0; k < clear.size(); ++k) {
      (clear[k] ? clearCount : notClear) += 1;
      if (!clear[k]) {
        continue;
      }
      const gkLineSeg& s = c.lineSegs()[k];
      EXPECT_TRUE(c.intersections(s, false).empty()) << "shape " << shape << ", segment " << k;
      EXPECT_TRUE(c.intersections(gkLineSeg(s.p2(), s.p1()), false).empty())
          << "shape " << shape << ", segment " << k << " backwards";
    }
  }
  EXPECT_GT(clearCount, 3000);
  EXPECT_GT(notClear, 1000);
}

TEST(ContourSegmentsClear, NoSegmentIsClearWhenACoordinateIsNotFiniteOrHuge) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const gkVector<2>& bad : {gkVector<2>(nan, 1), gkVector<2>(1, 1e101),
                                 gkVector<2>(std::numeric_limits<double>::infinity(), 0)}) {
    const ProbeContour c({{0, 0}, {10, 0}, {10, 10}, bad, {0, 10}}, true, 0);
    const std::vector<bool> clear = c.segmentsClearOfOthers();
    EXPECT_EQ(std::count(clear.begin(), clear.end(), true), 0);
  }
  const ProbeContour square({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true, 0);
  EXPECT_EQ(square.segmentsClearOfOthers(), std::vector<bool>(4, true));
}

TEST(ContourSelfIntersection, ADenseStarIsAnsweredFromTheMeanOfEveryVertex) {
  // A star of 2048 spikes sees all of itself only from a disc about a unit wide around the
  // origin, and the mean of 64 of its vertices often lies outside it; the mean of all of them
  // lies inside. Such a star is answered after the box and the quick look near the start,
  // still without segment caches. Some draws of the radii give one.
  bool found = false;
  for (std::uint64_t seed = 1; seed < 100 && !found; ++seed) {
    std::mt19937_64 rng(seed);
    std::uniform_real_distribution<double> u(0.0, 1.0);
    const Points v = gk::test::starOutline(2048, 0.3, [&] { return u(rng); });
    const gkContour c(v, true, 0);
    EXPECT_FALSE(c.isSelfIntersecting());
    if (Access::encloseRectCache(c).size() == 1 && !Access::lineSegsValid(c)) {
      found = true;
      EXPECT_FALSE(gk::test::PlainContour(c).plainIsSelfIntersecting());
      const gkContour open(v, false, 0);
      EXPECT_FALSE(open.isSelfIntersecting());
      EXPECT_FALSE(gk::test::PlainContour(open).plainIsSelfIntersecting());
    }
  }
  EXPECT_TRUE(found);
}

TEST(ContourSelfIntersection, StarShapedOutlinesNearTheToleranceMatchThePlainScan) {
  // Star-shaped polygons (jittered angles in order, random radii, either way round), some with a
  // vertex placed just after another, so close that the segments on either side of the pair
  // pass within 0.2e-6 to 2.2e-6 of each other: near the crossing test's tolerance, where the
  // one-pass answer must stand aside. Open and closed, against the plain scan.
  std::mt19937_64 rng(4242);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  int answeredAtOnce = 0;
  int crossing = 0;
  for (int shape = 0; shape < 1500; ++shape) {
    const std::size_t n = 4 + static_cast<std::size_t>(u(rng) * 40);
    Points v;
    for (std::size_t k = 0; k < n; ++k) {
      const double a =
          6.283185307179586 * (static_cast<double>(k) + 0.8 * u(rng)) / static_cast<double>(n);
      const double r = 10.0 * (0.8 + 0.4 * u(rng));
      v.emplace_back(r * std::cos(a), r * std::sin(a));
    }
    if (shape % 2 == 0) {
      // The pair: a copy of vertex k moved outward and a hair along the turn.
      const std::size_t k = static_cast<std::size_t>(u(rng) * static_cast<double>(n));
      const gkVector<2> p = v[k];
      const double along = 1e-9 * (1.0 + u(rng));
      const double out = 0.2e-6 + 2e-6 * u(rng);
      const gkVector<2> radial = p / p.len();
      const gkVector<2> turn(-radial.y(), radial.x());
      v.insert(v.begin() + static_cast<std::ptrdiff_t>(k) + 1,
               p + radial * out + turn * (along * p.len()));
    }
    if (shape % 3 == 0) {
      std::reverse(v.begin(), v.end());
    }
    for (const bool closed : {true, false}) {
      const gkContour c(v, closed, 0);
      const bool expected = gk::test::PlainContour(c).plainIsSelfIntersecting();
      ASSERT_EQ(c.isSelfIntersecting(), expected) << "shape " << shape << ", closed " << closed;
      answeredAtOnce += Access::lineSegsValid(c) ? 0 : 1;
      crossing += expected ? 1 : 0;
    }
  }
  EXPECT_GT(answeredAtOnce, 1400);  // nearly every shape without the pair
  EXPECT_GT(crossing, 40);
}

TEST(ContourSelfIntersection, NearStartFoldsAroundTheToleranceMatchThePlainScan) {
  // A vertex among the first segments pulled toward the segment two or three along, stopping
  // short of it or passing it by distances around the tolerance, on lines and circles, open
  // and closed, with repeated vertices: the early search must never answer where the plain
  // scan does not, and the full search takes over where it finds nothing.
  gk::test::DegenerateShapes gen(4242);
  const double distances[] = {-1e-3, -2e-6, -0.9e-6, 0.0, 0.5e-6, 0.9e-6, 1.1e-6, 2.1e-6, 1e-3};
  int crossing = 0;
  int early = 0;
  for (int shape = 0; shape < 400; ++shape) {
    const std::size_t n = 64 + gen.pick(200);
    Points v;
    for (std::size_t k = 0; k < n; ++k) {
      const double t = 6.283185307179586 * static_cast<double>(k) / static_cast<double>(n);
      v.emplace_back(100.0 * std::cos(t) + 0.3 * gen.real(1.0), 100.0 * std::sin(t));
    }
    const std::size_t i = gen.pick(n / 32 + 1);
    const std::size_t j = i + 2 + gen.pick(2);
    if (j + 1 < n) {
      // Vertex i + 1 moved onto the segment j -> j + 1 (the walk's numbering differs by one
      // between open and closed), then off it along its normal by the chosen distance.
      const gkVector<2> along = v[j + 1] - v[j];
      const gkVector<2> normal = gkVector<2>(-along.y(), along.x()) / along.len();
      v[i + 1] = v[j] + along * gen.real(1.0) + normal * distances[gen.pick(9)];
    }
    if (shape % 5 == 0) {
      v[i + 2] = v[i + 1];
    }
    const gkContour c(v, shape % 2 == 0, 0);
    const bool expected = gk::test::PlainContour(c).plainIsSelfIntersecting();
    ASSERT_EQ(c.isSelfIntersecting(), expected) << "shape " << shape;
    crossing += expected ? 1 : 0;
    early += Access::lineSegsValid(c) ? 0 : 1;
  }
  EXPECT_GT(crossing, 100);
  EXPECT_LT(crossing, 380);
  // Most crossings, not all: some pass a segment only within the tolerance of its ends.
  EXPECT_GT(early, 50);
  EXPECT_LT(early, crossing);
}
