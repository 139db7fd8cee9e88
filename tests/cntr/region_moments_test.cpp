#include <cmath>
#include <string>
#include <vector>

#include <gk/cntr/errors/contour_errors.h>
#include <gk/cntr/moments/inertia_data.h>
#include <gk/cntr/moments/polygon_moments.h>
#include <gk/cntr/region.h>
#include <gk/cntr/region_set.h>
#include <gtest/gtest.h>

#include "shapes.h"

using gk::test::Points;

namespace {

Points rect(double x0, double y0, double w, double h) {
  return {{x0, y0}, {x0 + w, y0}, {x0 + w, y0 + h}, {x0, y0 + h}};
}

Points reversed(Points p) {
  return Points(p.rbegin(), p.rend());
}

gkPtrHandle_const<gkRegion> region(const Points& pts) {
  return gkPtrHandle_const<gkRegion>(new gkRegion(pts));
}

gkPtrHandle_const<gkRegion> regionWithHoles(const Points& pts, const gkRegion::Holes& holes) {
  gkRegion* r = new gkRegion(pts);
  gkPtrHandle_const<gkRegion> handle(r);
  r->holes(holes);
  return handle;
}

/// A 10 x 10 square at the origin with a 2 x 2 hole at (6, 6): area 96, and centre
/// (100 * 5 - 4 * 7) / 96 = 472 / 96 in both coordinates.
gkRegion squareWithOffCentreHole() {
  gkRegion r(rect(0, 0, 10, 10));
  r.holes(gkRegion::Holes{region(rect(6, 6, 2, 2))});
  return r;
}

/// The error number of what f throws as a contour error, or 0 when it throws nothing.
template <typename F>
int errorNumberOf(F&& f) {
  try {
    f();
  } catch (const gkContourDefs::Errors& e) {
    return e.errorNumber();
  }
  return 0;
}

void expectMatrixNear(const gkMatrix<2>& actual, const gkMatrix<2>& expected, double tol) {
  for (int r = 0; r < 2; ++r) {
    for (int c = 0; c < 2; ++c) {
      EXPECT_NEAR(actual.element(r, c), expected.element(r, c), tol) << "(" << r << "," << c << ")";
    }
  }
}

constexpr int kEmptyContour = 0x10004680;
constexpr int kEmptyRegionSet = 268453506;  // 0x10004682
constexpr int kBadParams = 0x10004683;

}  // namespace

// --- gkRegion: area
// -------------------------------------------------------------------------------

TEST(RegionMomentsArea, WithoutHolesIsTheOuterBoundarysAbsoluteArea) {
  EXPECT_EQ(gkRegion(rect(0, 0, 10, 10)).area(false), 100.0);
  EXPECT_EQ(gkRegion(reversed(rect(0, 0, 10, 10))).area(false), 100.0);
  EXPECT_EQ(gkRegion(gk::test::triangle()).area(false), 6.0);
}

TEST(RegionMomentsArea, WithHolesSubtractsEachHolesArea) {
  const gkRegion r = squareWithOffCentreHole();
  EXPECT_EQ(r.area(false), 100.0);
  EXPECT_EQ(r.area(true), 96.0);

  gkRegion two(rect(0, 0, 10, 10));
  // A clockwise hole counts by its absolute area like any other.
  two.holes(gkRegion::Holes{region(rect(6, 6, 2, 2)), region(reversed(rect(1, 1, 1, 1)))});
  EXPECT_EQ(two.area(true), 95.0);
  EXPECT_EQ(two.area(false), 100.0);
}

TEST(RegionMomentsArea, WithHolesOnARegionWithoutHolesIsTheSame) {
  const gkRegion r(rect(2, 3, 4, 5));
  EXPECT_EQ(r.area(true), 20.0);
  EXPECT_EQ(r.area(true), r.area(false));
}

TEST(RegionMomentsArea, AHoleCountsWithItsOuterAreaNotWithItsOwnHoles) {
  // The hole (area 16) has an island (area 4) of its own: the island does not give area back.
  const auto hole = regionWithHoles(rect(2, 2, 4, 4), gkRegion::Holes{region(rect(3, 3, 2, 2))});
  EXPECT_EQ(hole->area(true), 12.0);
  gkRegion r(rect(0, 0, 10, 10));
  r.holes(gkRegion::Holes{hole});
  EXPECT_EQ(r.area(true), 84.0);
}

// --- gkRegion: centre of mass
// ---------------------------------------------------------------------

TEST(RegionMomentsCenterOfMass, WithoutHolesIsTheOuterCentroid) {
  const gkRegion r = squareWithOffCentreHole();
  const gkVector<2> c = r.centerOfMass(false);
  EXPECT_DOUBLE_EQ(c.x(), 5.0);
  EXPECT_DOUBLE_EQ(c.y(), 5.0);
  EXPECT_EQ(c, gw_CenterOfMass(rect(0, 0, 10, 10)));
}

TEST(RegionMomentsCenterOfMass, WithHolesTakesEachHolesAreaAwayAtItsCentre) {
  const gkRegion r = squareWithOffCentreHole();
  const gkVector<2> c = r.centerOfMass(true);
  EXPECT_NEAR(c.x(), 472.0 / 96.0, 1e-13);
  EXPECT_NEAR(c.y(), 472.0 / 96.0, 1e-13);

  gkRegion two(rect(0, 0, 10, 10));
  two.holes(gkRegion::Holes{region(rect(6, 6, 2, 2)), region(rect(1, 2, 1, 1))});
  // (500 - 4 * 7 - 1 * 1.5) / 95 and (500 - 4 * 7 - 1 * 2.5) / 95.
  const gkVector<2> c2 = two.centerOfMass(true);
  EXPECT_NEAR(c2.x(), 470.5 / 95.0, 1e-13);
  EXPECT_NEAR(c2.y(), 469.5 / 95.0, 1e-13);
}

TEST(RegionMomentsCenterOfMass, WithHolesOnARegionWithoutHolesIsTheSame) {
  const gkRegion r(gk::test::triangle());
  EXPECT_EQ(r.centerOfMass(true), r.centerOfMass(false));
  EXPECT_DOUBLE_EQ(r.centerOfMass(true).x(), 4.0 / 3.0);
  EXPECT_DOUBLE_EQ(r.centerOfMass(true).y(), 1.0);
}

TEST(RegionMomentsCenterOfMass, HolesThatTakeAllTheAreaLeaveTheOrigin) {
  // Whether a hole lies inside is the caller's business: here a disjoint hole of the same area
  // leaves nothing, and the centre of nothing is (0, 0).
  gkRegion r(rect(10, 10, 1, 1));
  r.holes(gkRegion::Holes{region(rect(20, 20, 1, 1))});
  EXPECT_EQ(r.area(true), 0.0);
  EXPECT_EQ(r.centerOfMass(true), gkVector<2>(0.0, 0.0));
}

TEST(RegionMomentsCenterOfMass, ADegenerateOutlineHasItsCentreAtTheOrigin) {
  const gkRegion r(Points{{1, 0}, {2, 1}, {3, 2}});
  EXPECT_EQ(r.area(false), 0.0);
  EXPECT_EQ(r.centerOfMass(false), gkVector<2>(0.0, 0.0));
}

// --- gkRegion: inertia matrix
// ---------------------------------------------------------------------

TEST(RegionMomentsInertiaMatrix, WithoutHolesIsThePolygonsMatrix) {
  const Points pts = gk::test::triangle();
  const gkRegion r(pts);
  EXPECT_EQ(r.inertiaMatrix(false), gw_InertiaDataPolygon(pts).inertiaMatrix());
  expectMatrixNear(r.inertiaMatrix(false), gkMatrix<2>(16.0 / 3.0, -2.0, -2.0, 3.0), 1e-13);
}

TEST(RegionMomentsInertiaMatrix, ClockwiseRectangleHasThePointSetsMatrix) {
  const gkRegion r(reversed(rect(0, 0, 4, 2)));
  expectMatrixNear(r.inertiaMatrix(false), gkMatrix<2>(32.0 / 3.0, 0.0, 0.0, 8.0 / 3.0), 1e-13);
}

TEST(RegionMomentsInertiaMatrix, BothFlagsAgreeWithoutHoles) {
  const gkRegion r(rect(1, 2, 4, 2));
  EXPECT_EQ(r.inertiaMatrix(true), r.inertiaMatrix(false));
  expectMatrixNear(r.inertiaMatrix(true), gkMatrix<2>(32.0 / 3.0, 0.0, 0.0, 8.0 / 3.0), 1e-13);
}

TEST(RegionMomentsInertiaMatrix, WithoutConsideringHolesIsTheOuterBoundarysMatrix) {
  const gkRegion r = squareWithOffCentreHole();
  EXPECT_EQ(r.inertiaMatrix(false), gw_InertiaDataPolygon(rect(0, 0, 10, 10)).inertiaMatrix());
  expectMatrixNear(r.inertiaMatrix(false), gkMatrix<2>(10000.0 / 12.0, 0, 0, 10000.0 / 12.0),
                   1e-11);
}

TEST(RegionMomentsInertiaMatrix, ConsideringHolesOnARegionWithHolesIsNotImplemented) {
  const gkRegion r = squareWithOffCentreHole();
  try {
    (void)r.inertiaMatrix(true);
    FAIL() << "expected BadParams";
  } catch (const gkContourDefs::BadParams& e) {
    EXPECT_EQ(e.message(), std::wstring(L"inertiaMatrix(considerHoles) is not implemented"));
    EXPECT_EQ(e.errorNumber(), kBadParams);
  }
}

// --- gkRegion: empty outlines
// -----------------------------------------------------------------------

TEST(RegionMomentsEmpty, FewerThanThreeVerticesThrowEmptyContourForEveryGetter) {
  const gkRegion empty;
  const gkRegion two(Points{{0, 0}, {10, 0}});
  for (const gkRegion* r : {&empty, &two}) {
    for (const bool holes : {false, true}) {
      EXPECT_THROW((void)r->area(holes), gkContourDefs::EmptyContour);
      EXPECT_THROW((void)r->centerOfMass(holes), gkContourDefs::EmptyContour);
      EXPECT_THROW((void)r->inertiaMatrix(holes), gkContourDefs::EmptyContour);
    }
  }
  EXPECT_EQ(errorNumberOf([&] { (void)two.area(false); }), kEmptyContour);
}

TEST(RegionMomentsEmpty, TheEmptyCheckComesBeforeTheHolesCheck) {
  gkRegion two(Points{{0, 0}, {10, 0}});
  two.holes(gkRegion::Holes{region(rect(2, 2, 1, 1))});
  ASSERT_EQ(two.holes().size(), 1u);
  EXPECT_EQ(errorNumberOf([&] { (void)two.inertiaMatrix(true); }), kEmptyContour);
}

// --- gkRegion: caches
// --------------------------------------------------------------------------------

TEST(RegionMomentsCache, RepeatedQueriesGiveTheSameResults) {
  const gkRegion r = squareWithOffCentreHole();
  for (const bool holes : {false, true}) {
    const double a = r.area(holes);
    const gkVector<2> c = r.centerOfMass(holes);
    EXPECT_EQ(r.area(holes), a);
    EXPECT_EQ(r.centerOfMass(holes), c);
  }
  const gkMatrix<2> m = r.inertiaMatrix(false);
  EXPECT_EQ(r.inertiaMatrix(false), m);
}

TEST(RegionMomentsCache, NewPointsAreSeenByEveryGetter) {
  gkRegion r(rect(0, 0, 1, 1));
  EXPECT_EQ(r.area(false), 1.0);
  EXPECT_EQ(r.area(true), 1.0);
  (void)r.centerOfMass(false);
  (void)r.centerOfMass(true);
  (void)r.inertiaMatrix(false);
  (void)r.inertiaMatrix(true);

  r.points(rect(2, 0, 4, 2));
  EXPECT_EQ(r.area(false), 8.0);
  EXPECT_EQ(r.area(true), 8.0);
  EXPECT_DOUBLE_EQ(r.centerOfMass(false).x(), 4.0);
  EXPECT_DOUBLE_EQ(r.centerOfMass(false).y(), 1.0);
  EXPECT_EQ(r.centerOfMass(true), r.centerOfMass(false));
  expectMatrixNear(r.inertiaMatrix(false), gkMatrix<2>(32.0 / 3.0, 0.0, 0.0, 8.0 / 3.0), 1e-13);
  EXPECT_EQ(r.inertiaMatrix(true), r.inertiaMatrix(false));
}

TEST(RegionMomentsCache, NewHolesAreSeenByTheHoleAwareGetters) {
  gkRegion r(rect(0, 0, 10, 10));
  EXPECT_EQ(r.area(true), 100.0);
  EXPECT_DOUBLE_EQ(r.centerOfMass(true).x(), 5.0);
  (void)r.inertiaMatrix(true);

  r.holes(gkRegion::Holes{region(rect(6, 6, 2, 2))});
  EXPECT_EQ(r.area(true), 96.0);
  EXPECT_NEAR(r.centerOfMass(true).x(), 472.0 / 96.0, 1e-13);
  EXPECT_THROW((void)r.inertiaMatrix(true), gkContourDefs::BadParams);

  r.holes(gkRegion::Holes{});
  EXPECT_EQ(r.area(true), 100.0);
  EXPECT_DOUBLE_EQ(r.centerOfMass(true).x(), 5.0);
  EXPECT_EQ(r.inertiaMatrix(true), r.inertiaMatrix(false));
}

TEST(RegionMomentsCache, ACopyAnswersLikeTheOriginal) {
  const gkRegion r = squareWithOffCentreHole();
  const double a = r.area(true);
  const gkVector<2> c = r.centerOfMass(true);
  const gkMatrix<2> m = r.inertiaMatrix(false);
  const gkRegion copy(r);
  EXPECT_EQ(copy.area(true), a);
  EXPECT_EQ(copy.centerOfMass(true), c);
  EXPECT_EQ(copy.inertiaMatrix(false), m);
}

// --- gkRegionSet
// ---------------------------------------------------------------------------------------

TEST(RegionSetMomentsArea, IsTheSumOfTheMembersAreas) {
  const auto a = regionWithHoles(rect(0, 0, 10, 10), gkRegion::Holes{region(rect(6, 6, 2, 2))});
  const auto b = region(rect(20, 0, 4, 2));
  const auto c = region(reversed(gk::test::triangle()));
  const gkRegionSet s(gkRegionSet::Regions{a, b, c});
  EXPECT_EQ(s.area(false), 100.0 + 8.0 + 6.0);
  EXPECT_EQ(s.area(true), 96.0 + 8.0 + 6.0);
  EXPECT_EQ(s.area(false), a->area(false) + b->area(false) + c->area(false));
  EXPECT_EQ(s.area(true), a->area(true) + b->area(true) + c->area(true));
}

TEST(RegionSetMomentsArea, OverlappingMembersCountEachTime) {
  const auto a = region(rect(0, 0, 2, 2));
  const gkRegionSet s(gkRegionSet::Regions{a, a});
  EXPECT_EQ(s.area(false), 8.0);
}

TEST(RegionSetMomentsArea, EmptySetHasAreaZero) {
  const gkRegionSet s;
  EXPECT_EQ(s.area(false), 0.0);
  EXPECT_EQ(s.area(true), 0.0);
}

TEST(RegionSetMomentsArea, ATwoVertexMemberThrowsEmptyContour) {
  const gkRegionSet s(
      gkRegionSet::Regions{region(rect(0, 0, 1, 1)), region(Points{{0, 0}, {1, 0}})});
  EXPECT_EQ(errorNumberOf([&] { (void)s.area(false); }), kEmptyContour);
  EXPECT_THROW((void)s.area(true), gkContourDefs::EmptyContour);
}

TEST(RegionSetMomentsCenterOfMass, IsTheAreaWeightedMeanOfTheMembersCentres) {
  const auto a = regionWithHoles(rect(0, 0, 10, 10), gkRegion::Holes{region(rect(6, 6, 2, 2))});
  const auto b = region(rect(20, 0, 4, 2));
  const gkRegionSet s(gkRegionSet::Regions{a, b});

  const gkVector<2> withoutHoles = s.centerOfMass(false);
  EXPECT_NEAR(withoutHoles.x(), (100.0 * 5.0 + 8.0 * 22.0) / 108.0, 1e-13);
  EXPECT_NEAR(withoutHoles.y(), (100.0 * 5.0 + 8.0 * 1.0) / 108.0, 1e-13);

  // With holes: the first member weighs 96 at 472 / 96.
  const gkVector<2> withHoles = s.centerOfMass(true);
  EXPECT_NEAR(withHoles.x(), (472.0 + 8.0 * 22.0) / 104.0, 1e-13);
  EXPECT_NEAR(withHoles.y(), (472.0 + 8.0 * 1.0) / 104.0, 1e-13);

  const gkVector<2> sum =
      a->centerOfMass(true) * a->area(true) + b->centerOfMass(true) * b->area(true);
  const gkVector<2> expected = sum / (a->area(true) + b->area(true));
  EXPECT_NEAR(withHoles.x(), expected.x(), 1e-13);
  EXPECT_NEAR(withHoles.y(), expected.y(), 1e-13);
}

TEST(RegionSetMomentsCenterOfMass, AZeroTotalAreaGivesTheOrigin) {
  // A member whose disjoint hole takes all of its area, and a degenerate member.
  const auto cancelled =
      regionWithHoles(rect(10, 10, 1, 1), gkRegion::Holes{region(rect(20, 20, 1, 1))});
  const gkRegionSet s(gkRegionSet::Regions{cancelled});
  EXPECT_EQ(s.area(true), 0.0);
  EXPECT_EQ(s.centerOfMass(true), gkVector<2>(0.0, 0.0));
  const gkRegionSet flat(gkRegionSet::Regions{region(Points{{1, 0}, {2, 1}, {3, 2}})});
  EXPECT_EQ(flat.centerOfMass(false), gkVector<2>(0.0, 0.0));
}

TEST(RegionSetMomentsCenterOfMass, EmptySetThrowsEmptyRegionSet) {
  const gkRegionSet s;
  for (const bool holes : {false, true}) {
    EXPECT_THROW((void)s.centerOfMass(holes), gkContourDefs::EmptyRegionSet);
    EXPECT_EQ(errorNumberOf([&] { (void)s.centerOfMass(holes); }), kEmptyRegionSet);
  }
}

TEST(RegionSetMomentsInertiaMatrix, IsTheParallelAxisSumOfTheMembers) {
  const Points pa = rect(0, 0, 4, 2);
  const Points pb = gk::test::triangle();
  const Points pc = reversed(rect(-3, 5, 1, 3));
  const gkRegionSet s(gkRegionSet::Regions{region(pa), region(pb), region(pc)});

  // Independently: each member's central matrix moved to the common centre and summed.
  double area = 0.0;
  gkVector<2> weighted;
  for (const Points* p : {&pa, &pb, &pc}) {
    area += gw_Area(*p);
    weighted = weighted + gw_CenterOfMass(*p) * gw_Area(*p);
  }
  const gkVector<2> centre = weighted / area;
  double m00 = 0.0;
  double m01 = 0.0;
  double m11 = 0.0;
  for (const Points* p : {&pa, &pb, &pc}) {
    const gkMatrix<2> m = gw_InertiaDataPolygon(*p).inertiaMatrix();
    const gkVector<2> d = centre - gw_CenterOfMass(*p);
    const double a = gw_Area(*p);
    m00 += m.element(0, 0) + a * d.x() * d.x();
    m01 += m.element(0, 1) + a * d.x() * d.y();
    m11 += m.element(1, 1) + a * d.y() * d.y();
  }
  expectMatrixNear(s.inertiaMatrix(false), gkMatrix<2>(m00, m01, m01, m11), 1e-11);
  EXPECT_EQ(s.inertiaMatrix(true), s.inertiaMatrix(false));
}

TEST(RegionSetMomentsInertiaMatrix, TwoSideBySideSquaresGiveTheRectanglesMatrix) {
  const gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 2, 2)), region(rect(2, 0, 2, 2))});
  expectMatrixNear(s.inertiaMatrix(false),
                   gkMatrix<2>(64.0 / 12.0 * 2.0, 0.0, 0.0, 4.0 * 8.0 / 12.0), 1e-12);
}

TEST(RegionSetMomentsInertiaMatrix, ASingleMemberGivesItsOwnMatrix) {
  const auto a = region(gk::test::triangle());
  const gkRegionSet s(gkRegionSet::Regions{a});
  EXPECT_EQ(s.inertiaMatrix(false), a->inertiaMatrix(false));
}

TEST(RegionSetMomentsInertiaMatrix, AMemberWithHolesFailsOnlyWhenHolesAreConsidered) {
  const auto holed = regionWithHoles(rect(0, 0, 10, 10), gkRegion::Holes{region(rect(6, 6, 2, 2))});
  const gkRegionSet s(gkRegionSet::Regions{region(rect(20, 0, 1, 1)), holed});
  EXPECT_NO_THROW((void)s.inertiaMatrix(false));
  try {
    (void)s.inertiaMatrix(true);
    FAIL() << "expected BadParams";
  } catch (const gkContourDefs::BadParams& e) {
    EXPECT_EQ(e.message(), std::wstring(L"inertiaMatrix(considerHoles) is not implemented"));
  }
}

TEST(RegionSetMomentsInertiaMatrix, EmptySetThrowsEmptyRegionSet) {
  const gkRegionSet s;
  for (const bool holes : {false, true}) {
    EXPECT_THROW((void)s.inertiaMatrix(holes), gkContourDefs::EmptyRegionSet);
    EXPECT_EQ(errorNumberOf([&] { (void)s.inertiaMatrix(holes); }), kEmptyRegionSet);
  }
}

TEST(RegionSetMomentsCache, RepeatedQueriesGiveTheSameResults) {
  const gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 4, 2)), region(gk::test::triangle())});
  for (const bool holes : {false, true}) {
    const double a = s.area(holes);
    const gkVector<2> c = s.centerOfMass(holes);
    const gkMatrix<2> m = s.inertiaMatrix(holes);
    EXPECT_EQ(s.area(holes), a);
    EXPECT_EQ(s.centerOfMass(holes), c);
    EXPECT_EQ(s.inertiaMatrix(holes), m);
  }
}

TEST(RegionSetMomentsCache, AddingAMemberIsSeenByEveryGetter) {
  gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 2, 2))});
  EXPECT_EQ(s.area(false), 4.0);
  EXPECT_DOUBLE_EQ(s.centerOfMass(false).x(), 1.0);
  const gkMatrix<2> before = s.inertiaMatrix(false);

  s.add(region(rect(2, 0, 2, 2)));
  EXPECT_EQ(s.area(false), 8.0);
  EXPECT_DOUBLE_EQ(s.centerOfMass(false).x(), 2.0);
  EXPECT_NE(s.inertiaMatrix(false), before);
  EXPECT_NEAR(s.inertiaMatrix(false).element(0, 0), 128.0 / 12.0, 1e-12);

  s.regions(gkRegionSet::Regions{});
  EXPECT_EQ(s.area(false), 0.0);
  EXPECT_THROW((void)s.centerOfMass(false), gkContourDefs::EmptyRegionSet);
}
