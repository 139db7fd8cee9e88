// Shapes with NaN, +inf or -inf in one coordinate slot (x or y of each vertex in turn, in the
// outline and in a hole), and shapes near 1e15: every public operation ends quickly with the
// result docs/behaviour.md ("Non-finite and extreme coordinates") promises or with a typed
// library error. Each test walks the whole table of slots.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include <gk/base/archive.h>
#include <gk/base/exception.h>
#include <gk/base/math_error.h>
#include <gk/base/xform_base.h>
#include <gk/ch_core/contour_t.h>
#include <gk/cntr/contour.h>
#include <gk/cntr/errors/contour_errors.h>
#include <gk/cntr/moments/polygon_moments.h>
#include <gk/cntr/region.h>
#include <gk/cntr/region_set.h>

#include "geometry_fuzz_target.h"
#include "recording_tablet.h"
#include "shapes.h"

namespace {

using gk::test::Points;
using gk::test::squareAt;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kHalfPi = 1.5707963267948966;
constexpr double kPi = 3.141592653589793;

/// One poisoned coordinate: `axis` (0 x, 1 y) of `vertex` becomes `value`.
struct Slot {
  int vertex;
  int axis;
  double value;

  std::string name() const {
    const char* v = std::isnan(value) ? "NaN" : (value > 0 ? "+inf" : "-inf");
    return std::string(axis == 0 ? "x" : "y") + " of vertex " + std::to_string(vertex) + " is " + v;
  }
};

/// Every slot of a four-vertex outline, with each hostile value.
std::vector<Slot> slots() {
  std::vector<Slot> out;
  for (const double value : {kNaN, kInf, -kInf}) {
    for (int vertex = 0; vertex < 4; ++vertex) {
      for (int axis = 0; axis < 2; ++axis) {
        out.push_back({vertex, axis, value});
      }
    }
  }
  return out;
}

Points poisoned(Points p, const Slot& s) {
  gkVector<2>& v = p[static_cast<std::size_t>(s.vertex)];
  v = s.axis == 0 ? gkVector<2>(s.value, v.y()) : gkVector<2>(v.x(), s.value);
  return p;
}

/// The square (0,0)-(10,10), counter-clockwise from the origin, with one slot poisoned.
Points outline(const Slot& s) {
  return poisoned(squareAt(0, 0, 10), s);
}

bool sameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

bool sameBits(const gkVector<2>& a, const gkVector<2>& b) {
  return sameBits(a.x(), b.x()) && sameBits(a.y(), b.y());
}

bool sameBits(const Points& a, const Points& b) {
  if (a.size() != b.size()) {
    return false;
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (!sameBits(a[i], b[i])) {
      return false;
    }
  }
  return true;
}

std::size_t next(const Slot& s, int step) {
  return static_cast<std::size_t>((s.vertex + step) % 4);
}

// --- contour measures ---------------------------------------------------------------------

TEST(NonFiniteVertex, LengthIsNaNForNaNAndInfiniteForAnInfinity) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    const gkContour c(outline(s), true, 0);
    if (std::isnan(s.value)) {
      EXPECT_TRUE(std::isnan(c.length()));
    } else {
      EXPECT_EQ(c.length(), kInf);
    }
  }
}

TEST(NonFiniteVertex, MeanPositionIsNaN) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    const gkVector<2> mean = gkContour(outline(s), true, 0).meanPosition();
    EXPECT_TRUE(std::isnan(mean.x()));
    EXPECT_TRUE(std::isnan(mean.y()));
  }
}

TEST(NonFiniteVertex, EnclosingRectangleSkipsNaNAndReachesAnInfinity) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    double lo[2] = {0, 0};
    double hi[2] = {10, 10};
    // The box grows from vertex 0 by comparisons that a NaN never wins: a NaN in vertex 0
    // stays, one anywhere else is passed over.
    if (std::isnan(s.value) && s.vertex == 0) {
      lo[s.axis] = kNaN;
      hi[s.axis] = kNaN;
    } else if (s.value == kInf) {
      hi[s.axis] = kInf;
    } else if (s.value == -kInf) {
      lo[s.axis] = -kInf;
    }
    const gkRect box = gkContour(outline(s), true, 0).encloseRect();
    EXPECT_TRUE(sameBits(box.ul(), gkVector<2>(lo[0], lo[1])));
    EXPECT_TRUE(sameBits(box.lr(), gkVector<2>(hi[0], hi[1])));
  }
}

TEST(NonFiniteVertex, ExtremalVertexIsNeverANaNScoreAndIsAnInfiniteOneInItsDirection) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    const gkContour c(outline(s), true, 0);
    if (std::isnan(s.value)) {
      // Oblique directions score both coordinates; the axis directions score the bare
      // coordinate, so only the direction along the NaN's own axis sees it.
      const double along = s.axis == 0 ? 0.0 : kHalfPi;
      for (const double angle : {0.7, 2.5, along, along + kPi}) {
        EXPECT_NE(c.extremalVertexIndex(gkRadian(angle)), s.vertex) << angle;
      }
      // Across its axis the vertex still scores its finite coordinate, and the lowest index wins
      // a tie: (NaN, 0) is extremal downwards, as (0, 0) was.
      const gkVector<2> finite = squareAt(0, 0, 10)[next(s, 0)];
      const double across =
          s.axis == 0 ? (finite.y() == 0 ? -kHalfPi : kHalfPi) : (finite.x() == 0 ? kPi : 0.0);
      // Its partner on that side: (0,0)-(10,0) and (10,10)-(0,10) share a y, (0,0)-(0,10) and
      // (10,0)-(10,10) an x.
      const int tiedWith = s.axis == 0 ? (s.vertex ^ 1) : 3 - s.vertex;
      EXPECT_EQ(c.extremalVertexIndex(gkRadian(across)), std::min(s.vertex, tiedWith));
    } else {
      const double toward =
          s.axis == 0 ? (s.value > 0 ? 0.0 : kPi) : (s.value > 0 ? kHalfPi : -kHalfPi);
      EXPECT_EQ(c.extremalVertexIndex(gkRadian(toward)), s.vertex);
    }
  }
}

TEST(NonFiniteVertex, FarthestPairCircleLeavesOutANaNVertexAndIsInfiniteWithAnInfinity) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    const gkContour c(outline(s), true, 0);
    const gkCircle circle = c.encloseCircle(gkContourDefs::eFarthestPair);
    if (std::isnan(s.value)) {
      // The three other corners keep one diagonal.
      EXPECT_EQ(circle.center(), gkVector<2>(5, 5));
      EXPECT_EQ(circle.radius(), std::sqrt(200.0) / 2.0);
    } else {
      EXPECT_EQ(circle.radius(), kInf);
    }
    EXPECT_EQ(c.diameter(gkContourDefs::eFarthestPair), 2.0 * circle.radius());
  }
}

TEST(NonFiniteVertex, FirstVertexCircleIsCentredOnVertexZeroAsStored) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    const gkContour c(outline(s), true, 0);
    const gkCircle circle = c.encloseCircle(gkContourDefs::eFirstVertexCentered);
    EXPECT_TRUE(sameBits(circle.center(), c.points()[0]));
    if (!std::isnan(s.value)) {
      EXPECT_EQ(circle.radius(), kInf);
    } else if (s.vertex == 0) {
      // Every distance from a NaN centre is NaN, and NaN never beats the starting 0.
      EXPECT_EQ(circle.radius(), 0.0);
    } else {
      // A NaN distance is passed over: the farthest of the others.
      EXPECT_EQ(circle.radius(), s.vertex == 2 ? 10.0 : std::sqrt(200.0));
    }
  }
}

TEST(NonFiniteVertex, ConvexHullIsTheHullOfTheFiniteVertices) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    gkRegion hull;
    gkContour(outline(s), true, 0).convexHull(hull);
    ASSERT_EQ(hull.points().size(), 3u);
    for (const gkVector<2>& v : hull.points()) {
      EXPECT_TRUE(std::isfinite(v.x()) && std::isfinite(v.y()));
    }
    EXPECT_EQ(hull.area(false), 50.0);
  }
}

TEST(NonFiniteVertex, FittedEllipseIsTheDefaultWithResidualMinusOne) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    gkEllipse e(gkCircle(gkVector<2>(1, 2), 3));
    double residual = 0.0;
    gkContour(outline(s), true, 0).fitEllipse(e, residual);
    EXPECT_EQ(residual, -1.0);
    EXPECT_EQ(e.center(), gkVector<2>());
    EXPECT_EQ(e.radii(), gkVector<2>());
  }
}

// --- contour proximity and intersections ----------------------------------------------------

TEST(NonFiniteVertex, ClosestVertexIsNeverTheNonFiniteOne) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    const gkContour c(outline(s), true, 0);
    const gkVector<2> near = squareAt(0, 0, 10)[next(s, 1)] + gkVector<2>(0.25, -0.5);
    EXPECT_EQ(c.closestVertexIndex(near), static_cast<long>(next(s, 1)));
    // Even when asked at the place where the vertex was: its distance never wins.
    EXPECT_NE(c.closestVertexIndex(squareAt(0, 0, 10)[next(s, 0)]), s.vertex);
  }
}

TEST(NonFiniteVertex, ClosestPointIsFoundOnTheEdgesWithFiniteEnds) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    const gkContour c(outline(s), true, 0);
    // The edge opposite the poisoned vertex, from vertex k+2 to k+3, and a point 1 outside it.
    const Points square = squareAt(0, 0, 10);
    const gkVector<2> a = square[next(s, 2)];
    const gkVector<2> b = square[next(s, 3)];
    const gkVector<2> mid = (a + b) / 2.0;
    const gkVector<2> outward = mid - gkVector<2>(5, 5);
    const gkVector<2> query = mid + outward / 5.0;
    EXPECT_EQ(c.closestPoint(query, false), mid);
    EXPECT_EQ(c.distToPoint(query, false), 1.0);
  }
}

TEST(NonFiniteVertex, VertexIndexNeverNamesTheNonFiniteVertex) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    const gkContour c(outline(s), true, 0);
    EXPECT_TRUE(c.vertexIndex(squareAt(0, 0, 10)[next(s, 0)], 1.0).empty());
    EXPECT_EQ(c.vertexIndex(squareAt(0, 0, 10)[next(s, 2)], 1.0),
              std::vector<int>{static_cast<int>(next(s, 2))});
  }
}

TEST(NonFiniteVertex, SegmentsWithANonFiniteEndCrossNothing) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    const gkContour c(outline(s), true, 0);
    // y = 5 crosses the left edge (vertex 3 to 0) and the right edge (vertex 1 to 2). A NaN
    // in vertex 0 makes the contour's box NaN, and a NaN box overlaps nothing: no crossing.
    std::vector<gkVector<2>> expected;
    const bool nanBox = std::isnan(s.value) && s.vertex == 0;
    if (nanBox) {
    } else if (s.vertex != 3 && s.vertex != 0) {
      expected.emplace_back(0, 5);
    }
    if (!nanBox && s.vertex != 1 && s.vertex != 2) {
      expected.emplace_back(10, 5);
    }
    EXPECT_EQ(c.intersections(gkLineSeg(gkVector<2>(-1, 5), gkVector<2>(11, 5)), true), expected);
    EXPECT_FALSE(c.isSelfIntersecting());
    // A contour through the hostile vertex crosses the square only where its finite edges do.
    const gkContour across(Points{{-1, 5}, {11, 5}}, false, 0);
    EXPECT_EQ(c.intersections(across), expected);
  }
}

// --- the rest of the contour: layout, drawing, transforms, archive --------------------------

TEST(NonFiniteVertex, VerticesAreKeptDrawnMappedAndStoredBitForBit) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    const Points p = outline(s);
    const gkContour c(p, true, 0);
    EXPECT_TRUE(sameBits(c.points(), p));
    EXPECT_EQ(c.segmentCount(), 4);
    EXPECT_TRUE(sameBits(c.polygon().vertices(), Points{p[0], p[1], p[2], p[3], p[0]}));

    gk::test::RecordingTablet tablet;
    c.draw(tablet, gkContourDefs::eDrawOutline, gkColor(), gkUITablet::eDefaultLayer);
    ASSERT_EQ(tablet.calls.size(), 4u);
    EXPECT_TRUE(sameBits(gkVector<2>(tablet.calls[0].from.x(), tablet.calls[0].from.y()), p[3]));
    EXPECT_TRUE(sameBits(gkVector<2>(tablet.calls[0].to.x(), tablet.calls[0].to.y()), p[0]));

    // IEEE arithmetic, no special case: 0 * inf is NaN, so a scale turns (0, inf) into (NaN, inf).
    const gkXform<2> x(gkMatrix<2>(2, 0, 0, 2), gkVector<2>(1, 1));
    gkContour mapped;
    c.map(x, mapped);
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_TRUE(sameBits(mapped.points()[i], x * p[i])) << i;
    }

    std::ostringstream os;
    {
      gkArchive ar(os);
      gkPtrHandle<gkContour> h(new gkContour(c));
      ar || h;
    }
    std::istringstream is(os.str());
    gkArchive ar(is);
    gkPtrHandle<gkContour> back;
    ar || back;
    ASSERT_TRUE(back);
    EXPECT_TRUE(sameBits(back->points(), p));
  }
}

// --- regions ------------------------------------------------------------------------------

TEST(NonFiniteVertex, RegionMomentsAreNaN) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    const gkRegion r(outline(s));
    for (const bool holes : {false, true}) {
      EXPECT_TRUE(std::isnan(r.area(holes)));
      EXPECT_TRUE(std::isnan(r.centerOfMass(holes).x()));
      EXPECT_TRUE(std::isnan(r.centerOfMass(holes).y()));
      EXPECT_TRUE(std::isnan(r.inertiaMatrix(holes).element(0, 0)));
    }
    EXPECT_TRUE(std::isnan(gw_Area(outline(s))));
  }
}

TEST(NonFiniteVertex, AnInfiniteVertexContainsNothing) {
  for (const Slot& s : slots()) {
    if (std::isnan(s.value)) {
      continue;
    }
    SCOPED_TRACE(s.name());
    const gkRegion r(outline(s));
    // The containment ray is as long as the first-vertex diameter, infinite here: it crosses
    // nothing.
    for (const gkVector<2>& p : {gkVector<2>(5, 5), gkVector<2>(1, 9), gkVector<2>(20, 5)}) {
      EXPECT_FALSE(r.inside(p, true));
      EXPECT_FALSE(r.inside(p, false));
    }
  }
}

TEST(NonFiniteVertex, ANaNVertexLeavesContainmentToTheFiniteEdges) {
  for (const Slot& s : slots()) {
    if (!std::isnan(s.value)) {
      continue;
    }
    SCOPED_TRACE(s.name());
    const gkRegion r(outline(s));
    // Far outside the box: false without a ray.
    EXPECT_FALSE(r.inside(gkVector<2>(20, 5), true));
    // On a finite vertex: inside, deliberately, as for any region; but a NaN in vertex 0 makes
    // the box NaN, and no point is within a NaN box.
    EXPECT_EQ(r.inside(squareAt(0, 0, 10)[next(s, 2)], true), s.vertex != 0);
    // Anywhere else the answer is a plain bool (two edges are missing, so no answer is right).
    EXPECT_NO_THROW((void)r.inside(gkVector<2>(5, 5), true));
  }
}

TEST(NonFiniteVertex, RegularizeAndOuterHullLeaveTheRegionAsItIs) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    const gkRegion r(outline(s));
    gkRegion result;
    r.regularize(result);
    EXPECT_TRUE(sameBits(result.points(), r.points()));
    r.outerHull(result);
    EXPECT_TRUE(sameBits(result.points(), r.points()));
    for (const auto mode : {gkContourDefs::eOuterHull, gkContourDefs::eRegularize}) {
      EXPECT_TRUE(sameBits(gkRegion(outline(s), mode).points(), r.points()));
    }
  }
}

TEST(NonFiniteVertex, ANonFiniteHoleIsAcceptedAndTakesNoFiniteArea) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    gkRegion r(squareAt(-10, -10, 40));
    const gkPtrHandle_const<gkRegion> hole(new gkRegion(outline(s)));
    // Its edges cross nothing, so the outline check lets it in.
    r.holes(gkRegion::Holes{hole});
    ASSERT_EQ(r.holes().size(), 1u);
    EXPECT_EQ(r.area(false), 1600.0);
    EXPECT_TRUE(std::isnan(r.area(true)));
    EXPECT_TRUE(std::isnan(r.centerOfMass(true).x()));
    // Points away from the hole's box need no ray through it.
    EXPECT_TRUE(r.inside(gkVector<2>(25, 25), true));
    EXPECT_TRUE(r.inside(gkVector<2>(-5, 25), true));
    long holeIndex = 9;
    EXPECT_EQ(r.closestVertexIndex(gkVector<2>(29, 29), true, holeIndex), 2);
    EXPECT_EQ(holeIndex, -1);
    EXPECT_EQ(r.distToPoint(gkVector<2>(25, 31), false, true, false), 1.0);
    gkRegion result;
    r.outerHull(result);
    ASSERT_EQ(result.holes().size(), 1u);
    EXPECT_EQ(result.holes()[0].get(), hole.get());
  }
}

TEST(NonFiniteVertex, RegionSetsSumNaNAndKeepTheirFiniteMembersAnswers) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    const gkRegionSet set(gkRegionSet::Regions{gk::test::regionHandle(outline(s)),
                                               gk::test::regionHandle(squareAt(20, 0, 10))});
    EXPECT_TRUE(std::isnan(set.area(false)));
    EXPECT_TRUE(std::isnan(set.centerOfMass(false).x()));
    EXPECT_FALSE(set.isSelfIntersecting());
    EXPECT_TRUE(set.inside(gkVector<2>(25, 5), true));
    EXPECT_EQ(set.distToPoint(gkVector<2>(35, 5), true, true, false), std::sqrt(50.0));
    // Not self-intersecting, so kept as it is (compared by bits: NaN != NaN).
    gkRegionSet result;
    set.regularize(result);
    ASSERT_EQ(result.regions().size(), 2u);
    EXPECT_TRUE(sameBits(result.regions()[0]->points(), outline(s)));
  }
}

TEST(NonFiniteVertex, EdgeletContoursCarryTheValueIntoTheirData) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    gkContourT<gkEdgelet> c;
    c.points(outline(s));
    ASSERT_EQ(c.data().size(), 4u);
    // Data are the vertices mapped by the data-from-points transform in plain IEEE arithmetic:
    // even the identity turns the finite partner of an infinity into NaN (0 * inf).
    const gkXform<2> identity;
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_TRUE(sameBits(c.data()[i].position(), identity * c.points()[i])) << i;
    }
    if (!std::isnan(s.value)) {
      const gkVector<2> datum = c.data()[static_cast<std::size_t>(s.vertex)].position();
      EXPECT_TRUE(std::isnan(s.axis == 0 ? datum.y() : datum.x()));
    }
    // Through a singular transform the points cannot be rebuilt: a typed error.
    const gkContourT<gkEdgelet>::XformHandle singular(
        new gk2XformLinear(gkXform<2>(gkMatrix<2>(1, 1, 1, 1), gkVector<2>())));
    EXPECT_THROW(gkContourT<gkEdgelet>(c.data(), singular), gkMathError::Singular);
  }
}

// Every public operation, through the geometry fuzzer's body, on every slot of the outline, of
// a hole, of an island and of the other contour: only library errors end an operation.
TEST(NonFiniteVertex, EveryOperationEndsWithAnAnswerOrALibraryError) {
  for (const Slot& s : slots()) {
    SCOPED_TRACE(s.name());
    gkGeometryFuzzScene scene;
    scene.contour = outline(s);
    scene.other = {{-1, 5}, {11, 5}, {5, 5}};
    scene.region.outline = squareAt(-10, -10, 40);
    scene.region.holes = {{outline(s), {{squareAt(4, 4, 2), {}}}}, {squareAt(22, 22, 2), {}}};
    scene.setMembers = {{outline(s), {}}, {squareAt(2, 2, 1), {{outline(s), {}}}}};
    scene.point = gkVector<2>(5, 5);
    scene.segmentStart = gkVector<2>(-20, 5);
    scene.segmentEnd = gkVector<2>(40, 5);
    for (const std::uint8_t mode : {0, 1, 2}) {
      scene.regionMode = mode;
      scene.setMode = mode;
      EXPECT_NO_THROW(gkGeometryFuzzRun(scene));
    }
    // A bow-tie with the hostile value on a fifth vertex: a walk is needed, and it is bounded.
    scene.region.outline =
        poisoned(Points{{0, 0}, {10, 10}, {10, 0}, {0, 10}, {-5, 5}}, Slot{4, s.axis, s.value});
    scene.region.holes.clear();
    scene.regionMode = 1;
    EXPECT_NO_THROW(gkGeometryFuzzRun(scene));
  }
}

// --- coordinates near 1e15 ------------------------------------------------------------------

/// A unit square at (1e15, 1e15): every coordinate and every difference is exact (1e15 is
/// below 2^53), but products of coordinates are not.
Points farSquare() {
  return squareAt(1e15, 1e15, 1.0);
}

TEST(FarCoordinates, MeasuresThatWorkOnDifferencesAreExact) {
  const gkContour c(farSquare(), true, 0);
  EXPECT_EQ(c.length(), 4.0);
  EXPECT_EQ(c.meanPosition(), gkVector<2>(1e15 + 0.5, 1e15 + 0.5));
  EXPECT_EQ(c.encloseRect().ul(), gkVector<2>(1e15, 1e15));
  EXPECT_EQ(c.encloseRect().lr(), gkVector<2>(1e15 + 1, 1e15 + 1));
  EXPECT_EQ(c.encloseCircle(gkContourDefs::eFarthestPair).radius(), std::sqrt(2.0) / 2.0);
  EXPECT_EQ(c.diameter(gkContourDefs::eFirstVertexCentered), 2.0 * std::sqrt(2.0));
  EXPECT_EQ(c.extremalVertexIndex(gkRadian(0.25 * kPi)), 2);
  gkRegion hull;
  c.convexHull(hull);
  EXPECT_EQ(hull.points().size(), 4u);
}

TEST(FarCoordinates, ProximityAndCrossingsAreExact) {
  const gkContour c(farSquare(), true, 0);
  const gkVector<2> corner(1e15 + 1, 1e15 + 1);
  EXPECT_EQ(c.closestVertexIndex(corner + gkVector<2>(0.25, 0.25)), 2);
  EXPECT_EQ(c.closestPoint(gkVector<2>(1e15 + 0.5, 1e15 + 3), false),
            gkVector<2>(1e15 + 0.5, 1e15 + 1));
  EXPECT_EQ(c.vertexIndex(corner, 0.5), std::vector<int>{2});
  const gkLineSeg across(gkVector<2>(1e15 - 1, 1e15 + 0.5), gkVector<2>(1e15 + 2, 1e15 + 0.5));
  EXPECT_EQ(c.intersections(across, true),
            (std::vector<gkVector<2>>{{1e15, 1e15 + 0.5}, {1e15 + 1, 1e15 + 0.5}}));
  EXPECT_FALSE(c.isSelfIntersecting());
}

TEST(FarCoordinates, ContainmentAndWalksAreExact) {
  gkRegion r(squareAt(1e15, 1e15, 8.0));
  r.holes(gkRegion::Holes{gk::test::regionHandle(squareAt(1e15 + 3, 1e15 + 3, 2.0))});
  EXPECT_TRUE(r.inside(gkVector<2>(1e15 + 1, 1e15 + 1), true));
  EXPECT_FALSE(r.inside(gkVector<2>(1e15 + 4, 1e15 + 4), true));
  EXPECT_TRUE(r.inside(gkVector<2>(1e15 + 4, 1e15 + 4), false));
  EXPECT_FALSE(r.inside(gkVector<2>(1e15 + 9, 1e15 + 4), false));
  // A bow-tie at 1e15 with 64-unit edges is walked into its outer hull as at the origin.
  const auto bowTie = [](double side) {
    return gkRegion(
        Points{{1e15, 1e15}, {1e15 + side, 1e15 + side}, {1e15 + side, 1e15}, {1e15, 1e15 + side}});
  };
  ASSERT_TRUE(bowTie(64).isSelfIntersecting());
  gkRegion hull;
  bowTie(64).outerHull(hull);
  EXPECT_FALSE(hull.isSelfIntersecting());
  EXPECT_EQ(hull.points().size(), 6u);
  // The walk's start probe reaches 1/100 of the median edge to either side of an edge; with
  // 2-unit edges that is 0.028, below the spacing of doubles at 1e15 (0.125), so the probe
  // does not move, no edge can start the walk, and the walk refuses: a typed error.
  EXPECT_THROW(bowTie(2).outerHull(hull), gkContourDefs::BadParams);
  EXPECT_THROW(bowTie(2).regularize(hull), gkContourDefs::BadParams);
}

TEST(FarCoordinates, MomentsAreSummedAboutTheOriginAndLoseTheSquareAtThisScale) {
  // Products of coordinates near 1e15 are near 1e30, whose unit in the last place is about
  // 1.4e14: the unit square's area and centre are lost to rounding entirely. The formulas are
  // kept as they are (about the origin); move such shapes near the origin first.
  const gkRegion r(farSquare());
  EXPECT_EQ(r.area(false), 0.0);
  EXPECT_EQ(r.centerOfMass(false), gkVector<2>(0, 0));
  EXPECT_EQ(gw_Area(farSquare()), 0.0);
  // The same square at the origin is exact.
  EXPECT_EQ(gkRegion(squareAt(0, 0, 1.0)).area(false), 1.0);
}

TEST(FarCoordinates, EveryOperationEndsWithAnAnswerOrALibraryError) {
  for (const double scale : {1e15, -1e15, 1e154, 1e300}) {
    SCOPED_TRACE(scale);
    gkGeometryFuzzScene scene;
    scene.contour = {
        {scale, scale}, {2 * scale, scale}, {scale, 2 * scale}, {2 * scale, 2 * scale}};
    scene.other = squareAt(scale, scale, scale / 2);
    scene.region.outline = scene.contour;
    scene.region.holes = {{squareAt(1.1 * scale, 1.4 * scale, scale / 8), {}}};
    scene.setMembers = {{squareAt(scale, scale, 1), {}}};
    scene.point = gkVector<2>(1.5 * scale, 1.5 * scale);
    scene.segmentStart = gkVector<2>(0, 0);
    scene.segmentEnd = gkVector<2>(3 * scale, 3 * scale);
    scene.tolerance = 1e-6;
    scene.regionMode = 1;
    scene.setMode = 2;
    EXPECT_NO_THROW(gkGeometryFuzzRun(scene));
  }
}

}  // namespace
