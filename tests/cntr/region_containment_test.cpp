#include <gk/cntr/region.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include <gk/cntr/errors/contour_errors.h>
#include <gtest/gtest.h>

#include "plain_reference.h"
#include "plain_region_reference.h"
#include "region_test_access.h"
#include "shapes.h"

using gk::test::Points;
using gk::test::regionHandle;
using gk::test::squareAt;
using RegionAccess = gkRegionTestAccess;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

gkVector<2> pt(double x, double y) {
  return gkVector<2>(x, y);
}

/// Runs a query on hostile input: an answer and a typed library error are both acceptable
/// (true); any other exception is not (false).
bool givesAnswerOrTypedError(const std::function<void()>& query) {
  try {
    query();
  } catch (const gkContourDefs::Errors&) {
    return true;
  } catch (...) {
    return false;
  }
  return true;
}

}  // namespace

// --- insideCount ---------------------------------------------------------------------------

TEST(RegionInsideCount, PointOnABoundaryVertexCountsOneAndIsInside) {
  const gkRegion r(gk::test::cShape());
  // (2, 2) is the inner corner of the C: a ray from it would see the arms, yet the vertex rule
  // answers first.
  for (const gkVector<2>& v : r.points()) {
    EXPECT_EQ(RegionAccess::insideCount(r, v, false), 1) << v.x() << ", " << v.y();
    EXPECT_EQ(RegionAccess::insideCount(r, v, true), 1) << v.x() << ", " << v.y();
    EXPECT_TRUE(r.inside(v, false));
    EXPECT_TRUE(r.inside(v, true));
  }
}

TEST(RegionInsideCount, PointWithinAMillionthOfAVertexCountsOne) {
  const gkRegion r(gk::test::cShape());
  // Just inside the box, 9e-7 from the inner corner (2, 8), on the slot side (outside the C).
  EXPECT_EQ(RegionAccess::insideCount(r, pt(2.0 + 9e-7, 8.0), false), 1);
  EXPECT_TRUE(r.inside(pt(2.0 + 9e-7, 8.0), false));
  EXPECT_TRUE(r.inside(pt(2.0 + 9e-7, 8.0), true));
}

TEST(RegionInsideCount, PointNearACornerButOutsideTheBoxCountsZero) {
  // The box test comes first: 7e-7 from the corner (1, 1), but beyond the box, so no vertex rule.
  const gkRegion r(gk::test::unitSquare());
  const gkVector<2> p(1.0 + 5e-7, 1.0 + 5e-7);
  ASSERT_LE(p.distance(pt(1, 1)), 1e-6);
  EXPECT_EQ(RegionAccess::insideCount(r, p, false), 0);
  EXPECT_FALSE(r.inside(p, false));
}

TEST(RegionInsideCount, PointOnAHoleVertexIsClaimedByTheHoleOnlyWithConsiderHoles) {
  const gkRegion r = gk::test::squareWithHole();
  // (3, 3) is vertex 0 of the hole: the hole counts it as its own inside.
  EXPECT_EQ(RegionAccess::insideCount(*r.holes()[0], pt(3, 3), false), 1);
  EXPECT_EQ(RegionAccess::insideCount(r, pt(3, 3), false), 1);
  EXPECT_TRUE(r.inside(pt(3, 3), false));
  EXPECT_FALSE(r.inside(pt(3, 3), true));
}

TEST(RegionInsideCount, PointOutsideTheEnclosingRectangleCountsZero) {
  const gkRegion r(gk::test::cShape());
  for (const gkVector<2>& p : {pt(-1, 5), pt(11, 5), pt(5, -0.5), pt(5, 10.5), pt(-1e9, 1e9)}) {
    EXPECT_EQ(RegionAccess::insideCount(r, p, false), 0);
    EXPECT_EQ(RegionAccess::insideCount(r, p, true), 0);
    EXPECT_FALSE(r.inside(p, false));
    EXPECT_FALSE(r.inside(p, true));
  }
}

TEST(RegionInsideCount, HolesAreNeverCounted) {
  const gkRegion r = gk::test::squareWithHole();
  const gkRegion bare(squareAt(0, 0, 10));
  for (const gkVector<2>& p : {pt(5, 5), pt(1, 5), pt(5, 8.5)}) {
    EXPECT_EQ(RegionAccess::insideCount(r, p, false), RegionAccess::insideCount(bare, p, false));
    EXPECT_EQ(RegionAccess::insideCount(r, p, true), RegionAccess::insideCount(bare, p, true));
  }
  EXPECT_EQ(RegionAccess::insideCount(r, pt(5, 5), false), 1);
}

TEST(RegionInsideCount, BothDirectionsTakesTheSmallerCountFromInside) {
  // From the back of the C the first wide gap aims the ray up and right (about 53 degrees): out
  // of the back into the slot, into the upper arm and out of it, three crossings. The opposite
  // ray leaves through the outer edge of the back once.
  const gkRegion r(gk::test::cShape());
  EXPECT_EQ(RegionAccess::insideCount(r, pt(0.5, 3.5), false), 3);
  EXPECT_EQ(RegionAccess::insideCount(r, pt(0.5, 3.5), true), 1);
  EXPECT_TRUE(r.inside(pt(0.5, 3.5), false));
}

TEST(RegionInsideCount, BothDirectionsTakesTheSmallerCountFromTheMouth) {
  // In the slot of the C: the ray goes up and left (about 117 degrees) through the upper arm,
  // two crossings; the opposite ray leaves through the open mouth without crossing anything.
  const gkRegion r(gk::test::cShape());
  EXPECT_EQ(RegionAccess::insideCount(r, pt(9.5, 4.5), false), 2);
  EXPECT_EQ(RegionAccess::insideCount(r, pt(9.5, 4.5), true), 0);
  EXPECT_FALSE(r.inside(pt(9.5, 4.5), false));
}

// --- inside ----------------------------------------------------------------------------------

TEST(RegionInside, PointInsideAHoleIsOutsideWithHolesAndInsideWithout) {
  const gkRegion r = gk::test::squareWithHole();
  EXPECT_FALSE(r.inside(pt(5, 5), true));
  EXPECT_TRUE(r.inside(pt(5, 5), false));
}

TEST(RegionInside, PointBetweenBoundaryAndHoleIsInsideEitherWay) {
  const gkRegion r = gk::test::squareWithHole();
  EXPECT_TRUE(r.inside(pt(1, 1), true));
  EXPECT_TRUE(r.inside(pt(1, 1), false));
  EXPECT_TRUE(r.inside(pt(8.5, 5), true));
}

TEST(RegionInside, PointOutsideIsOutsideEitherWay) {
  const gkRegion r = gk::test::squareWithHole();
  EXPECT_FALSE(r.inside(pt(12, 5), true));
  EXPECT_FALSE(r.inside(pt(12, 5), false));
}

TEST(RegionInside, PointInIslandInsideHoleIsInside) {
  const gkRegion r = gk::test::islandInHole();
  const gkRegion& hole = *r.holes()[0];
  EXPECT_FALSE(hole.inside(pt(5, 5), true));
  EXPECT_TRUE(hole.inside(pt(5, 5), false));
  EXPECT_TRUE(r.inside(pt(5, 5), true));
  EXPECT_TRUE(r.inside(pt(5, 5), false));
}

TEST(RegionInside, PointInTheHoleAroundAnIslandIsOutside) {
  const gkRegion r = gk::test::islandInHole();
  EXPECT_FALSE(r.inside(pt(3, 5), true));
  EXPECT_TRUE(r.inside(pt(3, 5), false));
}

TEST(RegionInside, AHoleOutsideTheBoundaryCannotMakeAPointInside) {
  gkRegion r(squareAt(0, 0, 10));
  r.holes(gkRegion::Holes{regionHandle(squareAt(20, 0, 4))});
  EXPECT_FALSE(r.inside(pt(22, 2), true));
  EXPECT_FALSE(r.inside(pt(22, 2), false));
  EXPECT_TRUE(r.inside(pt(2, 2), true));
}

TEST(RegionInside, AnyOfSeveralHolesExcludesThePoint) {
  const gkRegion r = gk::test::squareWithThreeHoles();
  for (const gkVector<2>& p : {pt(3, 3), pt(10, 10), pt(17, 3)}) {
    EXPECT_FALSE(r.inside(p, true)) << p.x() << ", " << p.y();
    EXPECT_TRUE(r.inside(p, false)) << p.x() << ", " << p.y();
  }
  EXPECT_TRUE(r.inside(pt(10, 3), true));
}

TEST(RegionInside, ConsiderHolesWithoutHolesIsTheBoundaryAnswer) {
  const gkRegion r(gk::test::cShape());
  EXPECT_TRUE(r.inside(pt(1, 5), true));
  EXPECT_FALSE(r.inside(pt(6, 5), true));
}

// --- closestVertexIndex ----------------------------------------------------------------------

TEST(RegionClosestVertexIndex, NearestVertexOnHoleTwoSetsHoleIndexTwoAndTheHolesVertexNumber) {
  const gkRegion r = gk::test::squareWithThreeHoles();
  long h = -7;
  // Hole 2 is (16,2)-(18,4); (18.5, 4.5) is nearest its vertex 2, (18, 4).
  EXPECT_EQ(r.closestVertexIndex(pt(18.5, 4.5), true, h), 2);
  EXPECT_EQ(h, 2);
  EXPECT_EQ(r.closestVertexIndex(pt(15.5, 1.5), true, h), 0);
  EXPECT_EQ(h, 2);
}

TEST(RegionClosestVertexIndex, WithoutConsiderHolesHoleIndexIsMinusOne) {
  const gkRegion r = gk::test::squareWithThreeHoles();
  long h = 5;
  // The boundary's nearest vertex to (18.5, 4.5) is (20, 0), vertex 1.
  EXPECT_EQ(r.closestVertexIndex(pt(18.5, 4.5), false, h), 1);
  EXPECT_EQ(h, -1);
  EXPECT_EQ(r.closestVertexIndex(pt(18.5, 4.5)), 1);
}

TEST(RegionClosestVertexIndex, BoundaryVertexNearerThanAnyHoleGivesMinusOne) {
  const gkRegion r = gk::test::squareWithThreeHoles();
  long h = 5;
  EXPECT_EQ(r.closestVertexIndex(pt(19, 19), true, h), 2);
  EXPECT_EQ(h, -1);
}

TEST(RegionClosestVertexIndex, WithoutHolesHoleIndexIsMinusOne) {
  const gkRegion r(gk::test::unitSquare());
  long h = 3;
  EXPECT_EQ(r.closestVertexIndex(pt(0.9, 0.8), true, h), 2);
  EXPECT_EQ(h, -1);
}

TEST(RegionClosestVertexIndex, TieBetweenBoundaryAndHoleKeepsTheBoundary) {
  const gkRegion r = gk::test::squareWithHole();
  long h = 9;
  // (1.5, 1.5) is as far from the corner (0, 0) as from the hole's corner (3, 3).
  EXPECT_EQ(r.closestVertexIndex(pt(1.5, 1.5), true, h), 0);
  EXPECT_EQ(h, -1);
}

TEST(RegionClosestVertexIndex, TieBetweenTwoHolesKeepsTheEarlierHole) {
  // Two holes mirror each other about x = 10; (10, 6) is sqrt(5) from (8, 5) and from (12, 5).
  gkRegion r(squareAt(0, 0, 20));
  r.holes(gkRegion::Holes{regionHandle(squareAt(6, 5, 2)), regionHandle(squareAt(12, 5, 2))});
  long h = 9;
  EXPECT_EQ(r.closestVertexIndex(pt(10, 6), true, h), 1);  // (8, 5) is vertex 1 of hole 0
  EXPECT_EQ(h, 0);

  gkRegion swapped(squareAt(0, 0, 20));
  swapped.holes(gkRegion::Holes{regionHandle(squareAt(12, 5, 2)), regionHandle(squareAt(6, 5, 2))});
  EXPECT_EQ(swapped.closestVertexIndex(pt(10, 6), true, h), 0);  // (12, 5) is vertex 0
  EXPECT_EQ(h, 0);
}

TEST(RegionClosestVertexIndex, IslandVerticesAreNotSearched) {
  // Only the holes' own outer boundaries take part, not the holes of holes.
  const gkRegion r = gk::test::islandInHole();
  long h = 9;
  // (5, 5.1) is nearest the island's corners (4, 6) and (6, 6); of the hole's corners, (8, 8)
  // (vertex 2) and (2, 8) (vertex 3) tie, and the lower number wins.
  EXPECT_EQ(r.closestVertexIndex(pt(5, 5.1), true, h), 2);
  EXPECT_EQ(h, 0);
}

// --- closestPoint ----------------------------------------------------------------------------

TEST(RegionClosestPoint, ANearerHoleIsFoundEvenWithoutConsiderHoles) {
  const gkRegion r = gk::test::squareWithHole();
  // (2.5, 5) is 0.5 from the hole's left edge and 2.5 from the boundary.
  EXPECT_EQ(r.closestPoint(pt(2.5, 5), false, false), pt(3, 5));
  EXPECT_EQ(r.closestPoint(pt(2.5, 5), false, true), pt(3, 5));
  // From inside the hole too.
  EXPECT_EQ(r.closestPoint(pt(5, 3.5), false, false), pt(5, 3));
}

TEST(RegionClosestPoint, TheBoundaryWinsWhenNearer) {
  const gkRegion r = gk::test::squareWithHole();
  EXPECT_EQ(r.closestPoint(pt(0.5, 5), false, false), pt(0, 5));
  EXPECT_EQ(r.closestPoint(pt(12, 4), false, true), pt(10, 4));
}

TEST(RegionClosestPoint, ATieBetweenBoundaryAndHoleKeepsTheBoundary) {
  const gkRegion r = gk::test::squareWithHole();
  EXPECT_EQ(r.closestPoint(pt(1.5, 5), false, true), pt(0, 5));
}

TEST(RegionClosestPoint, VerticesOnlyWithoutConsiderHolesIgnoresTheHoles) {
  const gkRegion r = gk::test::squareWithHole();
  // (2.5, 3.2) is next to the hole corner (3, 3), yet only the boundary's corners are looked at.
  EXPECT_EQ(r.closestPoint(pt(2.5, 3.2), true, false), pt(0, 0));
  EXPECT_EQ(r.closestPoint(pt(2.5, 3.2), true, true), pt(3, 3));
}

TEST(RegionClosestPoint, VerticesOnlyReturnsTheVertexOfTheHoleItNames) {
  const gkRegion r = gk::test::squareWithThreeHoles();
  EXPECT_EQ(r.closestPoint(pt(9.8, 8.5), true, true), pt(9, 9));
  EXPECT_EQ(r.closestPoint(pt(11.4, 11.1), true, true), pt(11, 11));
  EXPECT_EQ(r.closestPoint(pt(15.5, 1.5), true, true), pt(16, 2));
}

// --- distToPoint -----------------------------------------------------------------------------

TEST(RegionDistToPoint, InsideWithZeroIfInsideIsExactlyZero) {
  const gkRegion r = gk::test::squareWithHole();
  for (const bool considerHoles : {false, true}) {
    for (const bool verticesOnly : {false, true}) {
      const double d = r.distToPoint(pt(1, 5), verticesOnly, considerHoles, true);
      EXPECT_EQ(d, 0.0);
      EXPECT_FALSE(std::signbit(d));
    }
  }
}

TEST(RegionDistToPoint, InsideWithoutZeroIfInsideIsTheDistanceToTheBoundary) {
  const gkRegion r = gk::test::squareWithHole();
  EXPECT_EQ(r.distToPoint(pt(1, 5), false, false, false), 1.0);
  EXPECT_EQ(r.distToPoint(pt(1, 5), false, true, false), 1.0);
  // Nearer the hole than the boundary: the hole's edge is the nearest boundary point.
  EXPECT_EQ(r.distToPoint(pt(8.5, 5), false, true, false), 1.5);
}

TEST(RegionDistToPoint, InsideAHoleIsZeroOnlyWhenHolesAreIgnored) {
  const gkRegion r = gk::test::squareWithHole();
  EXPECT_EQ(r.distToPoint(pt(5, 4), false, false, true), 0.0);
  EXPECT_EQ(r.distToPoint(pt(5, 4), false, true, true), 1.0);
}

TEST(RegionDistToPoint, OnTheIslandIsZeroAgain) {
  const gkRegion r = gk::test::islandInHole();
  EXPECT_EQ(r.distToPoint(pt(5, 5), false, true, true), 0.0);
  // The nearest boundary point lies on the hole (2,2)-(8,8), 3 away; the island is not searched.
  EXPECT_EQ(r.distToPoint(pt(5, 5), false, true, false), 3.0);
}

TEST(RegionDistToPoint, OutsideIsTheDistanceWhateverZeroIfInside) {
  const gkRegion r = gk::test::squareWithHole();
  EXPECT_EQ(r.distToPoint(pt(13, 5), false, true, true), 3.0);
  EXPECT_EQ(r.distToPoint(pt(13, 5), false, true, false), 3.0);
}

TEST(RegionDistToPoint, VerticesOnlyMeasuresToTheNearestVertex) {
  const gkRegion r = gk::test::squareWithHole();
  EXPECT_EQ(r.distToPoint(pt(13, 14), true, true, true), 5.0);
  EXPECT_EQ(r.distToPoint(pt(13, 5), true, true, true), std::sqrt(34.0));
  // Without considerHoles the hole's corner (3, 3) is not a candidate, (0, 0) is.
  EXPECT_EQ(r.distToPoint(pt(3, 4), true, false, false), 5.0);
  EXPECT_EQ(r.distToPoint(pt(3, 4), true, true, false), 1.0);
}

// --- intersections ---------------------------------------------------------------------------

namespace {

/// (0,0)-(20,10) with two holes on the line y = 5, listed right one first: (12,3)-(16,7), then
/// (3,3)-(7,7).
gkRegion wideWithTwoHoles() {
  gkRegion r(Points{{0, 0}, {20, 0}, {20, 10}, {0, 10}});
  r.holes(gkRegion::Holes{regionHandle(squareAt(12, 3, 4)), regionHandle(squareAt(3, 3, 4))});
  return r;
}

}  // namespace

TEST(RegionIntersections, SegmentCrossingsListTheBoundaryThenEachHoleInHoleOrder) {
  const gkRegion r = wideWithTwoHoles();
  const gkLineSeg seg(pt(-1, 5), pt(21, 5));
  const Points expected{pt(0, 5), pt(20, 5), pt(12, 5), pt(16, 5), pt(3, 5), pt(7, 5)};
  EXPECT_EQ(r.intersections(seg, true, true), expected);
  EXPECT_EQ(r.intersections(seg, false, true), expected);
}

TEST(RegionIntersections, EachBoundaryIsOrderedAlongTheSegmentButTheWholeIsNotResorted) {
  const gkRegion r = wideWithTwoHoles();
  const gkLineSeg seg(pt(21, 5), pt(-1, 5));
  const Points expected{pt(20, 5), pt(0, 5), pt(16, 5), pt(12, 5), pt(7, 5), pt(3, 5)};
  EXPECT_EQ(r.intersections(seg, true, true), expected);
}

TEST(RegionIntersections, SegmentWithoutConsiderHolesSeesTheBoundaryOnly) {
  const gkRegion r = wideWithTwoHoles();
  const gkLineSeg seg(pt(-1, 5), pt(21, 5));
  EXPECT_EQ(r.intersections(seg, true, false), (Points{pt(0, 5), pt(20, 5)}));
  EXPECT_EQ(r.intersections(seg, true), (Points{pt(0, 5), pt(20, 5)}));
}

TEST(RegionIntersections, IncludeEndsFalseDropsAHoleEdgeTheSegmentStartsOn) {
  const gkRegion r = wideWithTwoHoles();
  const gkLineSeg seg(pt(3, 5), pt(21, 5));
  EXPECT_EQ(r.intersections(seg, true, true),
            (Points{pt(20, 5), pt(12, 5), pt(16, 5), pt(3, 5), pt(7, 5)}));
  EXPECT_EQ(r.intersections(seg, false, true), (Points{pt(20, 5), pt(12, 5), pt(16, 5), pt(7, 5)}));
}

TEST(RegionIntersections, SegmentSeesTheHolesButNotTheirIslands) {
  const gkRegion r = gk::test::islandInHole();
  const gkLineSeg seg(pt(-1, 5), pt(11, 5));
  EXPECT_EQ(r.intersections(seg, true, true), (Points{pt(0, 5), pt(10, 5), pt(2, 5), pt(8, 5)}));
}

TEST(RegionIntersections, ContourCrossingsListTheBoundaryThenEachHoleInHoleOrder) {
  const gkRegion r = wideWithTwoHoles();
  const gkContour c(Points{pt(-1, 5), pt(21, 5)}, false, 0);
  EXPECT_EQ(r.intersections(c, true),
            (Points{pt(0, 5), pt(20, 5), pt(12, 5), pt(16, 5), pt(3, 5), pt(7, 5)}));
  EXPECT_EQ(r.intersections(c, false), (Points{pt(0, 5), pt(20, 5)}));
  EXPECT_EQ(r.intersections(c), (Points{pt(0, 5), pt(20, 5)}));
}

TEST(RegionIntersections, ContourCrossingsFollowTheContoursWalkWithinEachBoundary) {
  // A two-segment contour: the boundary's crossings, segment by segment of c, all come before
  // any crossing with a hole.
  const gkRegion r = wideWithTwoHoles();
  const gkContour c(Points{pt(-1, 5), pt(10, 5), pt(10, 11)}, false, 0);
  EXPECT_EQ(r.intersections(c, true), (Points{pt(0, 5), pt(10, 10), pt(3, 5), pt(7, 5)}));
}

// --- emptiness and hostile input -------------------------------------------------------------

TEST(RegionContainmentEmptiness, FewerThanTwoVerticesThrowEmptyContour) {
  for (const Points& pts : {Points{}, Points{{1, 1}}}) {
    const gkRegion r(pts);
    long h = 0;
    EXPECT_THROW(RegionAccess::insideCount(r, pt(1, 1), false), gkContourDefs::EmptyContour);
    EXPECT_THROW(r.inside(pt(1, 1), false), gkContourDefs::EmptyContour);
    EXPECT_THROW(r.inside(pt(1, 1), true), gkContourDefs::EmptyContour);
    EXPECT_THROW(r.closestVertexIndex(pt(1, 1), true, h), gkContourDefs::EmptyContour);
    EXPECT_THROW(r.closestPoint(pt(1, 1), true, true), gkContourDefs::EmptyContour);
    EXPECT_THROW(r.closestPoint(pt(1, 1), false, false), gkContourDefs::EmptyContour);
    EXPECT_THROW(r.distToPoint(pt(1, 1), false, false, true), gkContourDefs::EmptyContour);
    EXPECT_THROW(r.distToPoint(pt(1, 1), true, true, false), gkContourDefs::EmptyContour);
    EXPECT_THROW(r.intersections(gkLineSeg(pt(0, 0), pt(2, 2)), true, true),
                 gkContourDefs::EmptyContour);
    EXPECT_THROW(r.intersections(gkContour(gk::test::unitSquare(), true, 0), true),
                 gkContourDefs::EmptyContour);
  }
}

TEST(RegionContainmentEmptiness, AOneVertexHoleThrowsEmptyContourWhenItIsAsked) {
  gkRegion r(squareAt(0, 0, 10));
  r.holes(gkRegion::Holes{regionHandle(Points{{5, 5}})});
  ASSERT_EQ(r.holes().size(), 1u);
  long h = 0;
  EXPECT_TRUE(r.inside(pt(2, 2), false));
  EXPECT_THROW(r.inside(pt(2, 2), true), gkContourDefs::EmptyContour);
  // A point outside never reaches the holes.
  EXPECT_FALSE(r.inside(pt(12, 2), true));
  EXPECT_EQ(r.closestVertexIndex(pt(2, 2), false, h), 0);
  EXPECT_THROW(r.closestVertexIndex(pt(2, 2), true, h), gkContourDefs::EmptyContour);
  // The nearest point on any boundary searches the holes whatever considerHoles says.
  EXPECT_THROW(r.closestPoint(pt(2, 2), false, false), gkContourDefs::EmptyContour);
  EXPECT_EQ(r.closestPoint(pt(2, 2), true, false), pt(0, 0));
  EXPECT_EQ(r.intersections(gkLineSeg(pt(-1, 5), pt(11, 5)), true, false),
            (Points{pt(0, 5), pt(10, 5)}));
  EXPECT_THROW(r.intersections(gkLineSeg(pt(-1, 5), pt(11, 5)), true, true),
               gkContourDefs::EmptyContour);
}

TEST(RegionContainmentEmptiness, TwoVerticesAreEnoughForTheContourQueries) {
  const gkRegion r(Points{{0, 0}, {4, 0}});
  long h = 0;
  // On the doubled segment itself: the ray starts on both segments, which are dropped.
  EXPECT_FALSE(r.inside(pt(2, 0), true));
  EXPECT_TRUE(r.inside(pt(4, 0), true));
  EXPECT_EQ(r.closestVertexIndex(pt(3, 1), true, h), 1);
  EXPECT_EQ(h, -1);
  EXPECT_EQ(r.closestPoint(pt(3, 1), false, true), pt(3, 0));
  EXPECT_EQ(r.distToPoint(pt(3, 2), false, true, true), 2.0);
}

TEST(RegionContainmentHostile, AllVerticesEqualAnswerFromTheVertexRuleAndTheBox) {
  const gkRegion r(Points{{1, 1}, {1, 1}, {1, 1}});
  EXPECT_EQ(RegionAccess::insideCount(r, pt(1, 1), true), 1);
  EXPECT_TRUE(r.inside(pt(1, 1), true));
  EXPECT_FALSE(r.inside(pt(1 + 1e-7, 1), true));  // outside the point box
  EXPECT_FALSE(r.inside(pt(2, 2), true));
  EXPECT_EQ(r.closestPoint(pt(4, 5), false, true), pt(1, 1));
  EXPECT_EQ(r.distToPoint(pt(4, 5), false, true, true), 5.0);
  EXPECT_EQ(r.distToPoint(pt(4, 5), true, true, true), 5.0);
  EXPECT_EQ(r.distToPoint(pt(1, 1), false, true, true), 0.0);
}

TEST(RegionContainmentHostile, CollinearBoundaryEnclosesNothingButItsVertices) {
  const gkRegion r(Points{{0, 0}, {1, 0}, {2, 0}, {3, 0}});
  EXPECT_FALSE(r.inside(pt(1.5, 0), true));
  EXPECT_FALSE(r.inside(pt(1.5, 0.5), true));
  EXPECT_TRUE(r.inside(pt(2, 0), true));
  EXPECT_EQ(r.closestPoint(pt(1.5, 2), false, true), pt(1.5, 0));
  EXPECT_EQ(r.distToPoint(pt(1.5, 2), false, true, true), 2.0);
  EXPECT_EQ(r.distToPoint(pt(5, 0), false, true, true), 2.0);
}

TEST(RegionContainmentHostile, DiagonalCollinearBoundaryNeverHangs) {
  const gkRegion r(Points{{0, 0}, {1, 1}, {2, 2}, {3, 3}, {1.5, 1.5}});
  for (const gkVector<2>& p : {pt(0.5, 0.5), pt(1, 2), pt(2.5, 2.5), pt(3, 0)}) {
    EXPECT_TRUE(givesAnswerOrTypedError([&] { (void)r.inside(p, true); }));
    EXPECT_TRUE(givesAnswerOrTypedError([&] { (void)r.distToPoint(p, false, true, false); }));
  }
  // The nearest vertex of (3, 0) is the doubled-back (1.5, 1.5).
  EXPECT_EQ(r.distToPoint(pt(3, 0), true, true, false), std::sqrt(4.5));
}

TEST(RegionContainmentHostile, NaNQueryPointIsNeverInside) {
  const gkRegion r = gk::test::squareWithHole();
  for (const gkVector<2>& p : {pt(kNaN, 5), pt(5, kNaN), pt(kNaN, kNaN)}) {
    EXPECT_EQ(RegionAccess::insideCount(r, p, true), 0);
    EXPECT_FALSE(r.inside(p, true));
    EXPECT_FALSE(r.inside(p, false));
    // No distance to a NaN point is below +infinity, so the distance is NaN.
    EXPECT_TRUE(std::isnan(r.distToPoint(p, false, true, true)));
    EXPECT_TRUE(std::isnan(r.distToPoint(p, true, false, false)));
  }
}

TEST(RegionContainmentHostile, NaNQueryPointGetsTheDefaultPointOrVertexZero) {
  // Every distance is NaN, so no candidate is ever kept: the segment search returns the default
  // vector and the vertex search vertex 0 of the boundary, holes or not.
  gkRegion r(squareAt(1, 1, 8));
  r.holes(gkRegion::Holes{regionHandle(squareAt(3, 3, 2))});
  const gkVector<2> p(kNaN, kNaN);
  long h = 9;
  EXPECT_EQ(r.closestPoint(p, false, true), pt(0, 0));
  EXPECT_EQ(r.closestPoint(p, true, true), pt(1, 1));
  EXPECT_EQ(r.closestVertexIndex(p, true, h), 0);
  EXPECT_EQ(h, -1);
}

TEST(RegionContainmentHostile, InfiniteQueryPointIsOutsideAtInfiniteDistance) {
  const gkRegion r = gk::test::squareWithHole();
  for (const gkVector<2>& p : {pt(kInf, 5), pt(-kInf, kInf)}) {
    EXPECT_FALSE(r.inside(p, true));
    EXPECT_EQ(r.distToPoint(p, false, true, true), kInf);
    EXPECT_EQ(r.distToPoint(p, true, true, true), kInf);
  }
}

TEST(RegionContainmentHostile, NonFiniteVerticesGiveATypedErrorOrAnAnswer) {
  const gkRegion r(gk::test::nonFinite());
  long h = 0;
  for (const gkVector<2>& p : {pt(0, 0), pt(1, 1), pt(kNaN, 0), pt(1e300, -1e300)}) {
    EXPECT_TRUE(givesAnswerOrTypedError([&] { (void)r.inside(p, true); }));
    EXPECT_TRUE(givesAnswerOrTypedError([&] { (void)r.closestVertexIndex(p, true, h); }));
    EXPECT_TRUE(givesAnswerOrTypedError([&] { (void)r.closestPoint(p, false, true); }));
    EXPECT_TRUE(givesAnswerOrTypedError([&] { (void)r.distToPoint(p, false, true, false); }));
    EXPECT_TRUE(givesAnswerOrTypedError([&] { (void)r.distToPoint(p, true, true, true); }));
    EXPECT_TRUE(givesAnswerOrTypedError(
        [&] { (void)r.intersections(gkLineSeg(pt(-1, -1), pt(2, 2)), true, true); }));
  }
}

TEST(RegionContainmentHostile, HugeCoordinatesGiveATypedErrorOrAnAnswer) {
  const double big = 1e300;
  gkRegion r(squareAt(-big, -big, 2 * big));
  r.holes(gkRegion::Holes{regionHandle(squareAt(-big / 2, -big / 2, big))});
  long h = 0;
  for (const gkVector<2>& p : {pt(0, 0), pt(0.75 * big, 0), pt(2 * big, 0), pt(1, 1)}) {
    EXPECT_TRUE(givesAnswerOrTypedError([&] { (void)r.inside(p, true); }));
    EXPECT_TRUE(givesAnswerOrTypedError([&] { (void)r.inside(p, false); }));
    EXPECT_TRUE(givesAnswerOrTypedError([&] { (void)r.closestVertexIndex(p, true, h); }));
    EXPECT_TRUE(givesAnswerOrTypedError([&] { (void)r.closestPoint(p, false, false); }));
    EXPECT_TRUE(givesAnswerOrTypedError([&] { (void)r.distToPoint(p, false, true, false); }));
  }
  // The ray's length (twice a distance computed as sqrt(dx*dx + dy*dy)) overflows here, so the
  // answer for points that need a ray is not asserted. Points that need no ray answer exactly.
  EXPECT_TRUE(r.inside(pt(-big, -big), false));
  EXPECT_FALSE(r.inside(pt(3 * big, 0), true));
}

TEST(RegionContainmentHostile, WhenEveryDistanceOverflowsTheNearestPointIsTheDefaultVector) {
  // Distances are sqrt(dx*dx + dy*dy) on purpose (reproducible ties), so at 1e300 every one is
  // infinite; none is strictly below the starting +infinity and the nearest point stays the
  // default vector (0, 0), which is not on the region. The distance to it is infinite too.
  const double big = 1e300;
  gkRegion r(squareAt(-big, -big, 2 * big));
  r.holes(gkRegion::Holes{regionHandle(squareAt(-big / 2, -big / 2, big))});
  EXPECT_EQ(r.closestPoint(pt(2 * big, 0), false, false), pt(0, 0));
  EXPECT_EQ(r.closestPoint(pt(2 * big, 0), false, true), pt(0, 0));
  EXPECT_EQ(r.distToPoint(pt(2 * big, 0), false, true, true), kInf);
  // By vertex, too: no distance beats +infinity, so vertex 0 of the boundary is named.
  long h = 9;
  EXPECT_EQ(r.closestVertexIndex(pt(2 * big, 0), true, h), 0);
  EXPECT_EQ(h, -1);
  EXPECT_EQ(r.closestPoint(pt(2 * big, 0), true, true), pt(-big, -big));
}

TEST(RegionContainmentHostile, NaNVertexInAHoleStaysConfinedToTypedErrorsOrAnswers) {
  gkRegion r(squareAt(0, 0, 10));
  r.holes(gkRegion::Holes{regionHandle(Points{{4, 4}, {kNaN, 5}, {6, 6}})});
  long h = 0;
  for (const gkVector<2>& p : {pt(5, 5), pt(1, 1), pt(4, 4)}) {
    EXPECT_TRUE(givesAnswerOrTypedError([&] { (void)r.inside(p, true); }));
    EXPECT_TRUE(givesAnswerOrTypedError([&] { (void)r.closestVertexIndex(p, true, h); }));
    EXPECT_TRUE(givesAnswerOrTypedError([&] { (void)r.distToPoint(p, false, true, false); }));
  }
  EXPECT_TRUE(r.inside(pt(1, 1), false));
}

// --- the ray's length ------------------------------------------------------------------------

TEST(RegionInsideCount, APointOutsideCanCountInsideWhenTheRayEndsBeforeLeavingTheShape) {
  // The ray is as long as twice the greatest distance from vertex 0. With vertex 0 at the centre
  // of a "Pac-Man" (every vertex within 1 of it, so the ray is 2 long), a point in the missing
  // quarter near the box corner is about 2.2 from the far rim. Its vertex directions leave the
  // first gap wider than pi/10 between (0.57, 0.82) and (-0.26, 0.96), so the ray is aimed across
  // the shape at about 59.4 degrees: it enters through the edge from (-1, 0) to (0, 0) and ends
  // at about (0.03, 0.73), still inside. One crossing: the outside point counts as inside. The
  // opposite ray leaves at once, so both directions give 0.
  const Points pacMan{{0, 0},      {0, -1},      {0.5, -0.86},  {0.86, -0.5},  {1, 0},
                      {0.9, 0.42}, {0.57, 0.82}, {-0.26, 0.96}, {-0.76, 0.64}, {-1, 0}};
  const gkRegion r(pacMan);
  ASSERT_EQ(r.diameter(gkContourDefs::eFirstVertexCentered), 2.0);
  const gkVector<2> corner(-0.99, -0.99);
  EXPECT_EQ(RegionAccess::insideCount(r, corner, false), 1);
  EXPECT_TRUE(r.inside(corner, false));
  EXPECT_EQ(RegionAccess::insideCount(r, corner, true), 0);
  // A little farther in, the same ray reaches the rim: the answer is right again.
  EXPECT_FALSE(r.inside(pt(-0.5, -0.5), false));
}

// --- randomized oracle -----------------------------------------------------------------------

namespace {

constexpr double kTwoPi = 2.0 * 3.141592653589793;

double uniform(std::mt19937_64& g, double lo, double hi) {
  return lo + (hi - lo) * static_cast<double>(g() >> 11) * 0x1.0p-53;
}

/// A star-shaped polygon about (cx, cy): vertex k at angle 2*pi*k/n plus a jitter of less than a
/// third of a step, radius in [r0, r1]. Angles strictly increase, so it is simple.
Points randomStar(std::mt19937_64& g, int n, double cx, double cy, double r0, double r1) {
  Points pts;
  const double step = kTwoPi / n;
  for (int k = 0; k < n; ++k) {
    const double a = step * k + uniform(g, -0.3, 0.3) * step;
    const double rad = uniform(g, r0, r1);
    pts.emplace_back(cx + rad * std::cos(a), cy + rad * std::sin(a));
  }
  return pts;
}

/// Plain crossing-number test, half-open in y.
bool oracleInside(const Points& poly, const gkVector<2>& p) {
  bool in = false;
  for (std::size_t i = 0, j = poly.size() - 1; i < poly.size(); j = i++) {
    const gkVector<2>& a = poly[i];
    const gkVector<2>& b = poly[j];
    if ((a.y() > p.y()) != (b.y() > p.y())) {
      const double x = a.x() + (p.y() - a.y()) * (b.x() - a.x()) / (b.y() - a.y());
      if (p.x() < x) {
        in = !in;
      }
    }
  }
  return in;
}

/// Plain distance from p to the closed polygon's edges.
double oracleDistance(const Points& poly, const gkVector<2>& p) {
  double best = std::numeric_limits<double>::infinity();
  for (std::size_t i = 0, j = poly.size() - 1; i < poly.size(); j = i++) {
    const double ex = poly[i].x() - poly[j].x();
    const double ey = poly[i].y() - poly[j].y();
    double t = ((p.x() - poly[j].x()) * ex + (p.y() - poly[j].y()) * ey) / (ex * ex + ey * ey);
    t = std::min(1.0, std::max(0.0, t));
    const double dx = poly[j].x() + t * ex - p.x();
    const double dy = poly[j].y() + t * ey - p.y();
    best = std::min(best, std::sqrt(dx * dx + dy * dy));
  }
  return best;
}

}  // namespace

TEST(RegionInsideRandomized, AgreesWithACrossingNumberOracleOnRandomStars) {
  std::mt19937_64 g(20240611);
  int compared = 0;
  int disagreements = 0;
  for (int trial = 0; trial < 300; ++trial) {
    const int n = 5 + static_cast<int>(g() % 20);
    const double cx = uniform(g, -50, 50);
    const double cy = uniform(g, -50, 50);
    const Points poly = randomStar(g, n, cx, cy, 2.0, 10.0);
    const gkRegion r(poly);
    for (int q = 0; q < 30; ++q) {
      const gkVector<2> p(cx + uniform(g, -11, 11), cy + uniform(g, -11, 11));
      if (oracleDistance(poly, p) <= 1e-3) {
        continue;
      }
      ++compared;
      const bool expected = oracleInside(poly, p);
      if (r.inside(p, false) != expected) {
        ++disagreements;
        ADD_FAILURE() << "trial " << trial << " n " << n << " point (" << p.x() << ", " << p.y()
                      << ") oracle " << expected;
      }
    }
  }
  EXPECT_GT(compared, 5000);
  EXPECT_EQ(disagreements, 0);
}

// --- the containment ray against the plain full sort -----------------------------------------

TEST(RegionContainmentFastPaths, InsideCountMatchesTheFullSortOfDirections) {
  gk::test::DegenerateShapes gen(31);
  std::size_t inside = 0;
  std::size_t queries = 0;
  for (int shape = 0; shape < 1500; ++shape) {
    const gkRegion region(gen.points(3 + gen.pick(60), shape % 6 == 0), gkContourDefs::eIgnore);
    const gk::test::PlainRegion plain(region);
    for (int q = 0; q < 8; ++q) {
      gkVector<2> p = gen.points(1, q == 7)[0];
      if (q == 0) {
        p = region.points()[gen.pick(region.points().size())];  // on a vertex
      }
      for (const bool both : {false, true}) {
        const long fast = RegionAccess::insideCount(region, p, both);
        ASSERT_EQ(fast, plain.plainInsideCount(p, both)) << "shape " << shape << " query " << q;
        inside += fast % 2 == 1 ? 1 : 0;
        ++queries;
      }
    }
  }
  EXPECT_GT(inside, queries / 10);
  EXPECT_LT(inside, queries * 9 / 10);
}

TEST(RegionContainmentFastPaths, InsideCountMatchesTheFullSortOnDenseStars) {
  // Many vertices, so the first wide gap may come late in the order.
  std::mt19937_64 rng(8);
  std::uniform_real_distribution<double> u(0, 1);
  for (const std::size_t n : {64u, 1000u, 5000u}) {
    std::vector<gkVector<2>> v;
    for (std::size_t k = 0; k < n; ++k) {
      const double a = 6.283185307179586 * static_cast<double>(k) / static_cast<double>(n);
      const double r = 100 * (1 + 0.3 * u(rng));
      v.emplace_back(r * std::cos(a), r * std::sin(a));
    }
    const gkRegion region(v, gkContourDefs::eIgnore);
    const gk::test::PlainRegion plain(region);
    for (int q = 0; q < 40; ++q) {
      const gkVector<2> p(260 * u(rng) - 130, 260 * u(rng) - 130);
      ASSERT_EQ(RegionAccess::insideCount(region, p, false), plain.plainInsideCount(p, false));
      ASSERT_EQ(RegionAccess::insideCount(region, p, true), plain.plainInsideCount(p, true));
    }
  }
}

TEST(RegionContainmentFastPaths, InsideCountMatchesThePlainCountNextToFineOutlines) {
  // The direction and the crossings are searched through the runs of segments: points next to
  // segments and vertices at distances around the tolerance (where the ray drops segments
  // passing near its start), inside, outside and out of the box, on a fine outline and on a
  // crowded star, must count as the plain passes count.
  std::mt19937_64 rng(17);
  std::uniform_real_distribution<double> u(0, 1);
  const double distances[] = {0.0, 0.5e-6, 0.99e-6, 1e-6, 1.01e-6, 2e-6, 1e-3};
  std::size_t inside = 0;
  for (const bool spiky : {false, true}) {
    const std::size_t n = spiky ? 1500 : 3000;
    std::vector<gkVector<2>> v;
    for (std::size_t k = 0; k < n; ++k) {
      const double t = 6.283185307179586 * static_cast<double>(k) / static_cast<double>(n);
      const double r =
          spiky ? 100 * (1 + 3 * u(rng)) : 100 * (1 + 0.2 * std::sin(3 * t)) + 0.02 * u(rng);
      v.emplace_back(r * std::cos(t), r * std::sin(t));
    }
    const gkRegion region(v, gkContourDefs::eIgnore);
    const gk::test::PlainRegion plain(region);
    for (int q = 0; q < 300; ++q) {
      const std::size_t i = static_cast<std::size_t>(u(rng) * static_cast<double>(n - 1));
      const gkVector<2> along = v[i + 1] - v[i];
      const gkVector<2> normal = gkVector<2>(-along.y(), along.x()) / along.len();
      const double d = distances[q % 7] * (u(rng) < 0.5 ? 1.0 : -1.0);
      gkVector<2> p;
      switch (q % 3) {
        case 0:
          p = v[i] + along * u(rng) + normal * d;
          break;
        case 1:
          p = v[i] + normal * d;
          break;
        default:
          p = gkVector<2>(500 * u(rng) - 250, 500 * u(rng) - 250);
          break;
      }
      for (const bool both : {false, true}) {
        const long fast = RegionAccess::insideCount(region, p, both);
        ASSERT_EQ(fast, plain.plainInsideCount(p, both))
            << (spiky ? "star" : "outline") << " query " << q << " both " << both;
        inside += fast % 2 == 1 ? 1 : 0;
      }
      ASSERT_EQ(region.inside(p, true), plain.plainInside(p, true)) << "query " << q;
    }
  }
  EXPECT_GT(inside, 300u);
  EXPECT_LT(inside, 1000u);
}
