#include <gk/cntr/region.h>

#include <vector>

#include <gk/cntr/errors/contour_errors.h>
#include <gtest/gtest.h>

#include "contour_test_access.h"
#include "region_test_access.h"
#include "shapes.h"

using gk::test::Points;
using RegionAccess = gkRegionTestAccess;

namespace {

Points square(double x0, double y0, double side) {
  return {{x0, y0}, {x0 + side, y0}, {x0 + side, y0 + side}, {x0, y0 + side}};
}

gkPtrHandle_const<gkRegion> holeAt(double x0, double y0, double side) {
  return gkPtrHandle_const<gkRegion>(new gkRegion(square(x0, y0, side)));
}

}  // namespace

// --- construction -------------------------------------------------------------------------

TEST(RegionConstruction, FromPointsKeepsTheVerticesWithNoHolesAndLabelZero) {
  const gkRegion r(gk::test::unitSquare());
  EXPECT_EQ(r.points(), gk::test::unitSquare());
  EXPECT_TRUE(r.holes().empty());
  EXPECT_EQ(r.label(), 0u);
  EXPECT_TRUE(r.isClosed());
  EXPECT_EQ(r.cachedVectorSize(), 3);
}

TEST(RegionConstruction, FromAnOpenContourIsClosedAndItsGeometryJoinsTheEnds) {
  const gkContour open(gk::test::unitSquare(), false, 9);
  const gkRegion r(open);
  EXPECT_TRUE(r.isClosed());
  EXPECT_EQ(r.label(), 9u);
  EXPECT_EQ(r.segmentCount(), 4);
  EXPECT_EQ(r.length(), 4.0);
  EXPECT_EQ(r.polygon().size(), 5u);
}

TEST(RegionConstruction, FromAContourStartsWithoutTheContoursCaches) {
  const gkContour open(gk::test::unitSquare(), false, 0);
  EXPECT_EQ(open.length(), 3.0);
  const gkRegion r(open);
  EXPECT_EQ(r.length(), 4.0);
}

TEST(RegionConstruction, FromAPolygonKeepsARepeatedLastVertex) {
  const gkRegion r(gkPolygon({{0, 0}, {1, 0}, {0, 1}, {0, 0}}, gkPolygon::eEvenOdd));
  EXPECT_EQ(r.points().size(), 4u);
  EXPECT_TRUE(r.isClosed());
}

TEST(RegionConstruction, AnyVertexCountIsAcceptedAtConstruction) {
  EXPECT_NO_THROW(gkRegion(Points{}));
  EXPECT_NO_THROW(gkRegion(Points{{1, 1}}));
  EXPECT_NO_THROW(gkRegion(Points{{1, 1}, {2, 2}}));
  EXPECT_TRUE(gkRegion().points().empty());
}

TEST(RegionConstruction, OuterHullAndRegularizeModesLeaveASimpleBoundaryUnchanged) {
  const gkRegion plain(gk::test::unitSquare(), gkContourDefs::eIgnore);
  const gkRegion hulled(gk::test::unitSquare(), gkContourDefs::eOuterHull);
  const gkRegion regular(gk::test::unitSquare(), gkContourDefs::eRegularize);
  EXPECT_EQ(hulled.points(), plain.points());
  EXPECT_EQ(regular.points(), plain.points());
}

TEST(RegionConstruction, UnknownModeValuesActAsIgnore) {
  const gkRegion r(gk::test::bowTie(), static_cast<gkContourDefs::IntersectionMode>(7));
  EXPECT_EQ(r.points(), gk::test::bowTie());
}

TEST(RegionConstruction, RegularizeModeReplacesASelfIntersectingBoundary) {
  const gkRegion r(gk::test::bowTie(), gkContourDefs::eRegularize);
  EXPECT_EQ(r.points().size(), 6u);
  EXPECT_FALSE(r.isSelfIntersecting() && r.points() == gk::test::bowTie());
}

TEST(RegionConstruction, MakeGivesAnEmptyRegion) {
  gkPersistent* p = gkRegion::make();
  auto* r = dynamic_cast<gkRegion*>(p);
  ASSERT_NE(r, nullptr);
  EXPECT_TRUE(r->points().empty());
  EXPECT_TRUE(r->holes().empty());
  delete p;
}

// --- closedness ---------------------------------------------------------------------------

TEST(RegionClosedness, SettingOpenThrowsRegionCannotBeSetOpenAndTheRegionStaysClosed) {
  gkRegion r(gk::test::unitSquare());
  try {
    r.isClosed(false);
    FAIL() << "no throw";
  } catch (const gkContourDefs::RegionCannotBeSetOpen& e) {
    EXPECT_EQ(e.errorNumber(), 268453508);
    EXPECT_TRUE(e.message().empty());
  }
  EXPECT_TRUE(r.isClosed());
}

TEST(RegionClosedness, SettingClosedDoesNothing) {
  gkRegion r(gk::test::unitSquare());
  r.length();
  const unsigned long changes = r.changeCount();
  r.isClosed(true);
  EXPECT_TRUE(r.isClosed());
  EXPECT_EQ(r.changeCount(), changes);
}

TEST(RegionClosedness, SettingOpenThroughTheContourInterfaceIsRefusedToo) {
  gkRegion r(gk::test::unitSquare());
  gkContour& c = r;
  EXPECT_THROW(c.isClosed(false), gkContourDefs::RegionCannotBeSetOpen);
  EXPECT_TRUE(c.isClosed());
}

// --- emptiness ----------------------------------------------------------------------------

TEST(RegionEmptiness, FewerThanThreeVerticesFailTheRegionCheck) {
  for (const Points& pts : {Points(), Points{{0, 0}}, Points{{0, 0}, {1, 0}}}) {
    try {
      RegionAccess::checkEmptyContour(gkRegion(pts));
      FAIL() << pts.size() << " vertices passed";
    } catch (const gkContourDefs::EmptyContour& e) {
      EXPECT_EQ(e.errorNumber(), 268453504);
    }
  }
  EXPECT_NO_THROW(RegionAccess::checkEmptyContour(gkRegion(Points{{0, 0}, {1, 0}, {0, 1}})));
}

TEST(RegionEmptiness, ATwoVertexRegionStillPassesTheContoursOwnQueries) {
  // The contour's queries keep the two-vertex rule; only region operations ask for three.
  const gkRegion r(Points{{0, 0}, {2, 0}});
  EXPECT_EQ(r.meanPosition(), gkVector<2>(1, 0));
}

// --- holes --------------------------------------------------------------------------------

TEST(RegionHoles, HolesInsideAreAcceptedAndShared) {
  gkRegion r(square(0, 0, 10));
  const auto h1 = holeAt(1, 1, 2);
  const auto h2 = holeAt(5, 5, 2);
  r.holes(gkRegion::Holes{h1, h2});
  ASSERT_EQ(r.holes().size(), 2u);
  EXPECT_EQ(r.holes()[0].get(), h1.get());
  EXPECT_EQ(r.holes()[1].get(), h2.get());
  EXPECT_EQ(h1->refCount(), 2);
}

TEST(RegionHoles, MutableHandlesAreConvertedInOrder) {
  gkRegion r(square(0, 0, 10));
  const gkPtrHandle<gkRegion> h(new gkRegion(square(1, 1, 2)));
  r.holes(std::vector<gkPtrHandle<gkRegion>>{h});
  ASSERT_EQ(r.holes().size(), 1u);
  EXPECT_EQ(r.holes()[0].get(), h.get());
}

TEST(RegionHoles, AHoleCrossingTheBoundaryThrowsAndThePreviousHolesRemain) {
  gkRegion r(square(0, 0, 10));
  const auto kept = holeAt(1, 1, 2);
  r.holes(gkRegion::Holes{kept});
  try {
    r.holes(gkRegion::Holes{holeAt(5, 5, 2), holeAt(8, 8, 4)});
    FAIL() << "no throw";
  } catch (const gkContourDefs::BadParams& e) {
    EXPECT_EQ(e.message(), L"holes cannot intersect region");
  }
  ASSERT_EQ(r.holes().size(), 1u);
  EXPECT_EQ(r.holes()[0].get(), kept.get());
}

TEST(RegionHoles, ARejectedHoleListStillLeavesTheEarlierCachesDropped) {
  gkRegion r(gk::test::bowTie());
  r.length();
  gkRegion regular;
  r.regularize(regular);
  ASSERT_TRUE(gkContourTestAccess::lengthValid(r));
  ASSERT_TRUE(RegionAccess::regularizedValid(r));
  // (The check itself fills the caches it needs, for the same vertices.)
  EXPECT_THROW(r.holes(gkRegion::Holes{holeAt(1, 1, 4)}), gkContourDefs::BadParams);
  EXPECT_FALSE(gkContourTestAccess::lengthValid(r));
  EXPECT_FALSE(RegionAccess::regularizedValid(r));
}

TEST(RegionHoles, HolesAfterTheFirstCrossingOneAreNotExamined) {
  // An empty handle would be refused with its own message if it were looked at.
  gkRegion r(square(0, 0, 10));
  try {
    r.holes(gkRegion::Holes{holeAt(8, 8, 4), gkPtrHandle_const<gkRegion>()});
    FAIL() << "no throw";
  } catch (const gkContourDefs::BadParams& e) {
    EXPECT_EQ(e.message(), L"holes cannot intersect region");
  }
}

TEST(RegionHoles, AnEmptyHoleHandleIsRefused) {
  gkRegion r(square(0, 0, 10));
  try {
    r.holes(gkRegion::Holes{gkPtrHandle_const<gkRegion>()});
    FAIL() << "no throw";
  } catch (const gkContourDefs::BadParams& e) {
    EXPECT_EQ(e.message(), L"a hole handle is empty");
  }
  EXPECT_TRUE(r.holes().empty());
}

TEST(RegionHoles, AHoleWhollyOutsideIsAccepted) {
  gkRegion r(square(0, 0, 10));
  EXPECT_NO_THROW(r.holes(gkRegion::Holes{holeAt(20, 20, 2)}));
  EXPECT_EQ(r.holes().size(), 1u);
}

TEST(RegionHoles, TwoOverlappingHolesAreAccepted) {
  gkRegion r(square(0, 0, 10));
  EXPECT_NO_THROW(r.holes(gkRegion::Holes{holeAt(2, 2, 4), holeAt(3, 3, 4)}));
  EXPECT_EQ(r.holes().size(), 2u);
}

TEST(RegionHoles, AnEmptyListRemovesTheHoles) {
  gkRegion r(square(0, 0, 10));
  r.holes(gkRegion::Holes{holeAt(2, 2, 4)});
  r.holes(gkRegion::Holes());
  EXPECT_TRUE(r.holes().empty());
}

// --- copy, map, equality, drawing ---------------------------------------------------------

TEST(RegionCopy, CopySharesHolesAndCachedDerivedRegions) {
  gkRegion r(gk::test::bowTie());
  gkRegion regular;
  r.regularize(regular);
  gkRegion withHole(square(0, 0, 10));
  withHole.holes(gkRegion::Holes{holeAt(1, 1, 2)});
  const gkRegion copy(r);
  EXPECT_EQ(RegionAccess::regularized(copy), RegionAccess::regularized(r));
  EXPECT_TRUE(RegionAccess::regularizedValid(copy));
  gkRegion assigned;
  assigned = withHole;
  ASSERT_EQ(assigned.holes().size(), 1u);
  EXPECT_EQ(assigned.holes()[0].get(), withHole.holes()[0].get());
}

TEST(RegionCopy, SelfAssignmentKeepsEverything) {
  gkRegion r(square(0, 0, 10));
  r.holes(gkRegion::Holes{holeAt(1, 1, 2)});
  gkRegion& alias = r;
  r = alias;
  EXPECT_EQ(r.holes().size(), 1u);
  EXPECT_EQ(r.points(), square(0, 0, 10));
}

TEST(RegionMap, MappedRegionHasNoHolesButKeepsTheLabel) {
  gkRegion r(square(0, 0, 10));
  r.label(17);
  r.holes(gkRegion::Holes{holeAt(1, 1, 2)});
  gkRegion out;
  r.map(gkXform<2>(gkMatrix<2>::identity(), gkVector<2>(1, 2)), out);
  EXPECT_TRUE(out.holes().empty());
  EXPECT_EQ(out.label(), 17u);
  EXPECT_EQ(out.points(), square(1, 2, 10));
  EXPECT_TRUE(out.isClosed());
}

TEST(RegionEquality, SameBoundaryDifferentHolesCompareEqual) {
  gkRegion a(square(0, 0, 10));
  gkRegion b(square(0, 0, 10));
  b.holes(gkRegion::Holes{holeAt(1, 1, 2)});
  EXPECT_EQ(a, b);
  EXPECT_NE(a, gkRegion(square(0, 0, 11)));
}

TEST(RegionDraw, TheRegionsOwnDrawDrawsNothingButTheContourFormDrawsTheBoundary) {
  struct Counter : gkUITablet {
    int calls = 0;
    void drawLineSeg(const gkPair<double>&, const gkPair<double>&, const gkColor&,
                     const Layers&) override {
      ++calls;
    }
  } tablet;
  const gkRegion r(gk::test::unitSquare());
  r.draw(tablet, gkColor(), gkUITablet::Layers());
  EXPECT_EQ(tablet.calls, 0);
  r.draw(tablet, gkContourDefs::eDrawOutline, gkColor(), gkUITablet::Layers());
  EXPECT_EQ(tablet.calls, 4);
}

// --- convex hull of a contour -------------------------------------------------------------

TEST(ContourConvexHull, HullIsACachedRegionOfTheStrictCorners) {
  const gkContour c({{0, 0}, {1, 1}, {2, 0}, {2, 2}, {1, 2}, {0, 2}}, false, 0);
  gkRegion hull;
  c.convexHull(hull);
  EXPECT_EQ(hull.points(), Points({{0, 0}, {2, 0}, {2, 2}, {0, 2}}));
  EXPECT_TRUE(gkContourTestAccess::hullValid(c));
  const gkContour copy(c);
  EXPECT_EQ(gkContourTestAccess::hull(copy), gkContourTestAccess::hull(c));
}

TEST(ContourConvexHull, OneVertexThrowsEmptyContour) {
  gkRegion hull;
  EXPECT_THROW(gkContour({{1, 1}}, true, 0).convexHull(hull), gkContourDefs::EmptyContour);
}

TEST(ContourConvexHull, ARegionCanTakeItsOwnHull) {
  gkRegion r({{0, 0}, {1, 1}, {2, 0}, {2, 2}, {0, 2}});
  r.convexHull(r);
  EXPECT_EQ(r.points(), Points({{0, 0}, {2, 0}, {2, 2}, {0, 2}}));
}

TEST(RegionConstruction, AClassDerivedFromRegionGetsTheBoundaryItsConstructorWasGiven) {
  // The contour part is a virtual base that the most derived class builds (here: empty), so
  // the region constructors must install the boundary themselves.
  struct Derived : gkRegion {
    explicit Derived(const Points& pts) : gkRegion(pts) {}
  };
  const Derived d(gk::test::unitSquare());
  EXPECT_EQ(d.points(), gk::test::unitSquare());
  EXPECT_TRUE(d.inside(gkVector<2>(0.5, 0.5), true));
  const Derived copy(d);
  EXPECT_EQ(copy.points(), gk::test::unitSquare());
}
