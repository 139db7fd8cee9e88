#include <cmath>
#include <limits>
#include <vector>

#include <gk/cntr/contour.h>
#include <gk/cntr/errors/contour_errors.h>
#include <gtest/gtest.h>

#include "contour_test_access.h"
#include "recording_tablet.h"
#include "shapes.h"

using gk::test::Points;
using Access = gkContourTestAccess;

namespace {

constexpr double kPi = 3.14159265358979323846;
const double kNaN = std::numeric_limits<double>::quiet_NaN();

gkXform<2> translation(double x, double y) {
  return gkXform<2>(gkMatrix<2>::identity(), gkVector<2>(x, y));
}

}  // namespace

// --- length -------------------------------------------------------------------------------

TEST(ContourLength, ClosedUnitSquareHasLengthFourOpenHasThree) {
  EXPECT_EQ(gkContour(gk::test::unitSquare(), true, 0).length(), 4.0);
  EXPECT_EQ(gkContour(gk::test::unitSquare(), false, 0).length(), 3.0);
}

TEST(ContourLength, EmptyContourHasLengthZeroAndNeedsNoCheck) {
  const gkContour c(Points(), true, 0);
  EXPECT_EQ(c.length(), 0.0);
}

TEST(ContourLength, OneVertexHasLengthZero) {
  EXPECT_EQ(gkContour({{3, 4}}, true, 0).length(), 0.0);
  EXPECT_EQ(gkContour({{3, 4}}, false, 0).length(), 0.0);
}

TEST(ContourLength, LengthIsCachedUntilTheVerticesChange) {
  gkContour c(gk::test::unitSquare(), true, 0);
  EXPECT_EQ(c.length(), 4.0);
  c.points({{0, 0}, {3, 4}});
  EXPECT_EQ(c.length(), 10.0);
}

// --- mean position ------------------------------------------------------------------------

TEST(ContourMeanPosition, ClosedUnitSquareMeanIsItsCentre) {
  EXPECT_EQ(gkContour(gk::test::unitSquare(), true, 0).meanPosition(), gkVector<2>(0.5, 0.5));
}

TEST(ContourMeanPosition, OpenPolylineMeanIsLengthWeighted) {
  // Segments of length 2 (midpoint (1,0)) and 1 (midpoint (2,0.5)): (2*(1,0) + 1*(2,0.5)) / 3.
  const gkContour c({{0, 0}, {2, 0}, {2, 1}}, false, 0);
  const gkVector<2> m = c.meanPosition();
  EXPECT_DOUBLE_EQ(m.x(), 4.0 / 3.0);
  EXPECT_DOUBLE_EQ(m.y(), 0.5 / 3.0);
}

TEST(ContourMeanPosition, OneVertexThrowsEmptyContourTwoVerticesSucceed) {
  try {
    gkContour({{1, 1}}, true, 0).meanPosition();
    FAIL() << "no throw";
  } catch (const gkContourDefs::EmptyContour& e) {
    EXPECT_EQ(e.errorNumber(), 268453504);
    EXPECT_TRUE(e.message().empty());
  }
  EXPECT_EQ(gkContour({{0, 0}, {2, 0}}, false, 0).meanPosition(), gkVector<2>(1, 0));
}

TEST(ContourMeanPosition, CoincidentVerticesGiveThatVertexRatherThanNaN) {
  EXPECT_EQ(gkContour({{2, 3}, {2, 3}, {2, 3}}, true, 0).meanPosition(), gkVector<2>(2, 3));
}

// --- extremal vertex ----------------------------------------------------------------------

TEST(ContourExtremalVertex, AlongPlusXTheLowerOfTwoLevelVerticesWins) {
  EXPECT_EQ(gkContour(gk::test::unitSquare(), true, 0).extremalVertexIndex(gkRadian(0.0)), 1);
}

TEST(ContourExtremalVertex, AtHalfPiTheLowerOfTwoTopVerticesWins) {
  // cos(pi/2) is 6e-17, not 0: only the axis rule keeps vertices 2 and 3 level.
  EXPECT_EQ(gkContour(gk::test::unitSquare(), true, 0).extremalVertexIndex(gkRadian(kPi / 2)), 2);
}

TEST(ContourExtremalVertex, NegativeAxesScoreByNegatedCoordinates) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  EXPECT_EQ(c.extremalVertexIndex(gkRadian(kPi)), 0);
  EXPECT_EQ(c.extremalVertexIndex(gkRadian(-kPi / 2)), 0);
  EXPECT_EQ(c.extremalVertexIndex(gkRadian(3 * kPi / 2)), 0);
}

TEST(ContourExtremalVertex, OffAxisDirectionsScoreByTheDotProduct) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  EXPECT_EQ(c.extremalVertexIndex(gkRadian(kPi / 4)), 2);
  EXPECT_EQ(c.extremalVertexPosition(gkRadian(3 * kPi / 4)), gkVector<2>(0, 1));
}

TEST(ContourExtremalVertex, RepeatedAngleIsAnsweredFromTheCacheWithoutANewScan) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  EXPECT_EQ(c.extremalVertexIndex(gkRadian(0.0)), 1);
  ASSERT_NE(Access::extremalCache(c).find(gkRadian(0.0)), nullptr);
  // Plant a different answer in the cache: only a cache hit can return it.
  Access::extremalCache(c).clear();
  Access::extremalCache(c).insert(gkRadian(0.0), 3, c.cachedVectorSize());
  EXPECT_EQ(c.extremalVertexIndex(gkRadian(0.0)), 3);
}

TEST(ContourExtremalVertex, NewVerticesAreScannedAfresh) {
  gkContour c(gk::test::unitSquare(), true, 0);
  EXPECT_EQ(c.extremalVertexIndex(gkRadian(0.0)), 1);
  c.points({{5, 0}, {0, 0}, {1, 1}});
  EXPECT_EQ(c.extremalVertexIndex(gkRadian(0.0)), 0);
}

TEST(ContourExtremalVertex, AnAngleAndTheSameAnglePlusATurnAreDifferentKeys) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  c.extremalVertexIndex(gkRadian(0.0));
  c.extremalVertexIndex(gkRadian(2 * kPi));
  EXPECT_EQ(Access::extremalCache(c).size(), 2u);
}

TEST(ContourExtremalVertex, CacheHoldsAtMostBoundPlusOneAngles) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  for (int k = 0; k < 5; ++k) {
    c.extremalVertexIndex(gkRadian(0.1 * k));
  }
  EXPECT_EQ(Access::extremalCache(c).size(), 4u);
  EXPECT_NE(Access::extremalCache(c).find(gkRadian(0.4)), nullptr);
}

TEST(ContourExtremalVertex, OneVertexThrowsEmptyContour) {
  EXPECT_THROW(gkContour({{1, 1}}, true, 0).extremalVertexIndex(gkRadian(0.0)),
               gkContourDefs::EmptyContour);
  EXPECT_THROW(gkContour({{1, 1}}, true, 0).extremalVertexPosition(gkRadian(0.0)),
               gkContourDefs::EmptyContour);
}

TEST(ContourExtremalVertex, NonFiniteAngleThrowsBadParamsAndCachesNothing) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  EXPECT_THROW(c.extremalVertexIndex(gkRadian(kNaN)), gkContourDefs::BadParams);
  EXPECT_THROW(c.extremalVertexIndex(gkRadian(std::numeric_limits<double>::infinity())),
               gkContourDefs::BadParams);
  EXPECT_FALSE(Access::extremalCache(c).allocated());
}

TEST(ContourExtremalVertex, NaNVerticesNeverWin) {
  const gkContour c({{kNaN, 0}, {1, 0}, {kNaN, kNaN}, {0.5, 0}}, true, 0);
  EXPECT_EQ(c.extremalVertexIndex(gkRadian(0.0)), 1);
  EXPECT_EQ(c.extremalVertexIndex(gkRadian(0.3)), 1);
}

TEST(ContourExtremalVertex, WhenNoVertexScoresVertexZeroIsReturned) {
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(gkContour({{kNaN, kNaN}, {kNaN, 1}}, true, 0).extremalVertexIndex(gkRadian(0.0)), 0);
  EXPECT_EQ(gkContour({{-inf, 0}, {-inf, 1}}, true, 0).extremalVertexIndex(gkRadian(0.0)), 0);
}

// --- enclosing rectangle ------------------------------------------------------------------

TEST(ContourEncloseRect, IdentityBoxHoldsEveryVertexExactly) {
  const Points pts = {{0.1, -0.7}, {1e15, 3}, {-2.5, 1e-300}, {0.3, 0.2}};
  const gkContour c(pts, true, 0);
  const gkRect box = c.encloseRect(gkXform<2>());
  EXPECT_EQ(box.ul(), gkVector<2>(-2.5, -0.7));
  EXPECT_EQ(box.lr(), gkVector<2>(1e15, 3));
  for (const auto& p : pts) {
    EXPECT_TRUE(box.within(p));
  }
}

TEST(ContourEncloseRect, BoxIsOfTheTransformedVerticesNotTheTransformedBox) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  const gkMatrix<2> rotate45(gkRadian(kPi / 4), gkRadian(kPi / 4), 1, 1);
  const gkRect box = c.encloseRect(gkXform<2>(rotate45, gkVector<2>()));
  EXPECT_NEAR(box.width(), std::sqrt(2.0), 1e-15);
  EXPECT_NEAR(box.ul().x(), -std::sqrt(0.5), 1e-15);
}

TEST(ContourEncloseRect, IdentityAndATranslationAreCachedSeparately) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  EXPECT_EQ(c.encloseRect(gkXform<2>()), gkRect(gkVector<2>(0, 0), gkVector<2>(1, 1)));
  EXPECT_EQ(c.encloseRect(translation(5, 0)), gkRect(gkVector<2>(5, 0), gkVector<2>(1, 1)));
  EXPECT_EQ(Access::encloseRectCache(c).size(), 2u);
}

TEST(ContourEncloseRect, TransformsDifferingOnlyInElementOneOneShareOneEntry) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  const gkXform<2> a(gkMatrix<2>(1, 0, 0, 1), gkVector<2>());
  const gkXform<2> b(gkMatrix<2>(1, 0, 0, 3), gkVector<2>());
  const gkRect first = c.encloseRect(a);
  EXPECT_EQ(c.encloseRect(b), first);
  EXPECT_EQ(Access::encloseRectCache(c).size(), 1u);
}

TEST(ContourEncloseRect, OneVertexThrowsEmptyContour) {
  EXPECT_THROW(gkContour({{1, 1}}, true, 0).encloseRect(gkXform<2>()), gkContourDefs::EmptyContour);
}

TEST(ContourEncloseRect, CacheHoldsAtMostBoundPlusOneTransforms) {
  gkContour c(gk::test::unitSquare(), true, 0);
  c.cachedVectorSize(1);
  for (int k = 0; k < 4; ++k) {
    c.encloseRect(translation(k, 0));
  }
  EXPECT_EQ(Access::encloseRectCache(c).size(), 2u);
}

TEST(ContourEncloseRect, NaNTransformGivesADefinedCachedAnswer) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  c.encloseRect(translation(kNaN, 0));
  c.encloseRect(translation(kNaN, 0));
  EXPECT_EQ(Access::encloseRectCache(c).size(), 1u);
}

// --- enclosing circle and diameter --------------------------------------------------------

TEST(ContourEncloseCircle, FarthestPairOfTheSquareIsTheFirstDiagonalMet) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  const gkCircle circle = c.encloseCircle(gkContourDefs::eFarthestPair);
  EXPECT_EQ(circle.center(), gkVector<2>(0.5, 0.5));
  EXPECT_EQ(circle.radius(), std::sqrt(2.0) / 2.0);
  EXPECT_EQ(c.diameter(gkContourDefs::eFarthestPair), std::sqrt(2.0));
}

TEST(ContourEncloseCircle, FirstVertexCenteredDiameterOfTheSquareIsTwiceTheDiagonal) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  const gkCircle circle = c.encloseCircle(gkContourDefs::eFirstVertexCentered);
  EXPECT_EQ(circle.center(), gkVector<2>(0, 0));
  EXPECT_EQ(c.diameter(gkContourDefs::eFirstVertexCentered), 2.0 * std::sqrt(2.0));
}

TEST(ContourEncloseCircle, FarthestPairMayLeaveVerticesOutside) {
  // A near-equilateral triangle: the circle on its longest side (the base) misses the apex.
  const gkContour c({{0, 0}, {2, 0}, {1, 1.7}}, true, 0);
  const gkCircle circle = c.encloseCircle(gkContourDefs::eFarthestPair);
  EXPECT_EQ(circle, gkCircle(gkVector<2>(1, 0), 1.0));
  EXPECT_GT(circle.center().distance(gkVector<2>(1, 1.7)), circle.radius());
}

TEST(ContourEncloseCircle, ModeTwoThrowsBadParamsWithItsMessage) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  try {
    c.encloseCircle(static_cast<gkContourDefs::DiameterMode>(2));
    FAIL() << "no throw";
  } catch (const gkContourDefs::BadParams& e) {
    EXPECT_EQ(e.errorNumber(), 268453507);
    EXPECT_EQ(e.message(), L"diameterMode is not one of the valid enums");
  }
  EXPECT_THROW(c.diameter(static_cast<gkContourDefs::DiameterMode>(-1)), gkContourDefs::BadParams);
}

TEST(ContourEncloseCircle, CoincidentVerticesLeaveTheDefaultFarthestPairCircle) {
  const gkContour c({{3, 3}, {3, 3}}, true, 0);
  EXPECT_EQ(c.encloseCircle(gkContourDefs::eFarthestPair), gkCircle());
  EXPECT_EQ(gkContour(Points(), true, 0).diameter(gkContourDefs::eFarthestPair), 0.0);
}

TEST(ContourEncloseCircle, FirstVertexCenteredWithoutVerticesThrowsEmptyContour) {
  EXPECT_THROW(gkContour(Points(), true, 0).encloseCircle(gkContourDefs::eFirstVertexCentered),
               gkContourDefs::EmptyContour);
}

TEST(ContourEncloseCircle, OneVertexFirstVertexCenteredIsAZeroCircleThere) {
  EXPECT_EQ(gkContour({{4, 5}}, true, 0).encloseCircle(gkContourDefs::eFirstVertexCentered),
            gkCircle(gkVector<2>(4, 5), 0.0));
}

TEST(ContourEncloseCircle, CircleIsCachedPerModeUntilTheVerticesChange) {
  gkContour c(gk::test::unitSquare(), true, 0);
  EXPECT_EQ(c.diameter(gkContourDefs::eFarthestPair), std::sqrt(2.0));
  c.points({{0, 0}, {6, 8}});
  EXPECT_EQ(c.diameter(gkContourDefs::eFarthestPair), 10.0);
  EXPECT_EQ(c.diameter(gkContourDefs::eFirstVertexCentered), 20.0);
}

// --- drawing ------------------------------------------------------------------------------

TEST(ContourDraw, ClosedTriangleDrawsThreeSegmentsStartingWithTheClosingOne) {
  const gkContour c({{0, 0}, {4, 0}, {0, 3}}, true, 0);
  gk::test::RecordingTablet tablet;
  const gkColor red(255, 0, 0);
  c.draw(tablet, gkContourDefs::eDrawOutline, red, gkUITablet::eOverlayLayer);
  ASSERT_EQ(tablet.calls.size(), 3u);
  EXPECT_EQ(tablet.calls[0].from, gkPair<double>(0, 3));
  EXPECT_EQ(tablet.calls[0].to, gkPair<double>(0, 0));
  EXPECT_EQ(tablet.calls[1].from, gkPair<double>(0, 0));
  EXPECT_EQ(tablet.calls[1].to, gkPair<double>(4, 0));
  EXPECT_EQ(tablet.calls[2].from, gkPair<double>(4, 0));
  EXPECT_EQ(tablet.calls[2].to, gkPair<double>(0, 3));
  for (const auto& call : tablet.calls) {
    EXPECT_EQ(call.color, red);
    EXPECT_EQ(call.layer, gkUITablet::eOverlayLayer);
  }
}

TEST(ContourDraw, OpenContourDrawsOneSegmentFewerThanVertices) {
  gk::test::RecordingTablet tablet;
  gkContour(gk::test::unitSquare(), false, 0)
      .draw(tablet, gkContourDefs::eDrawOutline, gkColor(), gkUITablet::Layers());
  ASSERT_EQ(tablet.calls.size(), 3u);
  EXPECT_EQ(tablet.calls[0].from, gkPair<double>(0, 0));
}

TEST(ContourDraw, TheModeIsNotConsulted) {
  gk::test::RecordingTablet outline;
  gk::test::RecordingTablet vertices;
  const gkContour c(gk::test::unitSquare(), true, 0);
  c.draw(outline, gkContourDefs::eDrawOutline, gkColor(), gkUITablet::Layers());
  c.draw(vertices, gkContourDefs::eDrawVertices, gkColor(), gkUITablet::Layers());
  EXPECT_EQ(outline.calls, vertices.calls);
}

TEST(ContourDraw, EmptyAndOneVertexOpenContoursDrawNothing) {
  gk::test::RecordingTablet tablet;
  gkContour(Points(), true, 0)
      .draw(tablet, gkContourDefs::eDrawOutline, gkColor(), gkUITablet::Layers());
  gkContour({{1, 1}}, false, 0)
      .draw(tablet, gkContourDefs::eDrawOutline, gkColor(), gkUITablet::Layers());
  EXPECT_TRUE(tablet.calls.empty());
}

TEST(ContourDraw, OneVertexClosedContourDrawsOneZeroLengthSegment) {
  gk::test::RecordingTablet tablet;
  gkContour({{1, 2}}, true, 0)
      .draw(tablet, gkContourDefs::eDrawOutline, gkColor(), gkUITablet::Layers());
  ASSERT_EQ(tablet.calls.size(), 1u);
  EXPECT_EQ(tablet.calls[0].from, gkPair<double>(1, 2));
  EXPECT_EQ(tablet.calls[0].to, gkPair<double>(1, 2));
}
