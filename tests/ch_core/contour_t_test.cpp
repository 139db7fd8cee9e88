#include <gk/ch_core/contour_t.h>

#include <cmath>
#include <vector>

#include <gk/base/math_error.h>
#include <gk/base/pel_errors.h>
#include <gk/ch_core/region_t.h>
#include <gtest/gtest.h>

namespace {

using Edgelets = std::vector<gkEdgelet>;
using Points = std::vector<gkVector<2>>;
using EdgeletContour = gkContourT<gkEdgelet>;

gkEdgelet edgelet(double x, double y, unsigned short magnitude = 7, unsigned char angle = 9) {
  return gkEdgelet(gkVector<2>(x, y), magnitude, gkAngle8(angle));
}

Edgelets squareEdgelets() {
  return {edgelet(0, 0), edgelet(1, 0), edgelet(1, 1), edgelet(0, 1)};
}

gkPtrHandle_const<gk2XformBase> similarity() {
  // Scale 2, rotation 0.3 rad, translation (5, -3).
  const gkMatrix<2> m(gkRadian(0.3), gkRadian(0.3), 2.0, 2.0);
  return gkPtrHandle_const<gk2XformBase>(new gk2XformLinear(gkXform<2>(m, gkVector<2>(5, -3))));
}

/// The invariant every public operation keeps: one datum per vertex.
void expectOneDatumPerVertex(const EdgeletContour& c) {
  EXPECT_EQ(c.data().size(), c.points().size());
}

}  // namespace

TEST(EdgeletContour, BuiltFromEdgeletsWithTheIdentityHasTheirPositionsAsVertices) {
  const EdgeletContour c(squareEdgelets());
  ASSERT_EQ(c.points().size(), 4u);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(c.points()[i], squareEdgelets()[i].position());
  }
  EXPECT_TRUE(c.isClosed());
  EXPECT_EQ(c.label(), 0u);
  // The data keep their measurements.
  EXPECT_EQ(c.data()[2].magnitude(), 7);
  EXPECT_EQ(c.data()[2].angle(), gkAngle8(9));
}

TEST(EdgeletContour, DefaultHasNoDataNoVertexAndAnIdentityTransform) {
  const EdgeletContour c;
  EXPECT_TRUE(c.data().empty());
  EXPECT_TRUE(c.points().empty());
  ASSERT_TRUE(c.dataFromPointsXform());
  EXPECT_TRUE(c.dataFromPointsXform()->isLinear());
  EXPECT_EQ(c.dataFromPointsXform()->map(gkVector<2>(3, 4)), gkVector<2>(3, 4));
}

TEST(EdgeletContour, AnEmptyTransformHandleMeansANewIdentity) {
  const EdgeletContour c(squareEdgelets(), gkPtrHandle_const<gk2XformBase>());
  ASSERT_TRUE(c.dataFromPointsXform());
  EXPECT_EQ(c.points()[1], gkVector<2>(1, 0));
}

TEST(EdgeletContour, SettingPointsRebuildsEveryEdgeletWithMagnitudeAndAngleZero) {
  EdgeletContour c(squareEdgelets());
  const Points moved = {{2, 2}, {3, 2}, {3, 3}};
  c.points(moved);
  ASSERT_EQ(c.data().size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(c.data()[i].position(), moved[i]);
    EXPECT_EQ(c.data()[i].magnitude(), 0);
    EXPECT_EQ(c.data()[i].angle(), gkAngle8(0));
  }
}

TEST(EdgeletContour, SettingDataRebuildsTheVertices) {
  EdgeletContour c(squareEdgelets());
  c.data({edgelet(5, 5), edgelet(6, 5)});
  EXPECT_EQ(c.points(), Points({{5, 5}, {6, 5}}));
  EXPECT_EQ(c.length(), 2.0);
}

TEST(EdgeletContour, ANonIdentityTransformRoundTripsPointsThroughDataAndBack) {
  EdgeletContour c(Edgelets(), similarity());
  const Points pts = {{0.25, 0.5}, {10, -3}, {-7.5, 4}, {1e3, 2e3}};
  c.points(pts);
  // The data live in the transform's space...
  const gkVector<2> mapped = similarity()->map(pts[1]);
  EXPECT_NEAR(c.data()[1].position().x(), mapped.x(), 1e-12);
  // ...and setting them back gives the points again.
  const Edgelets data = c.data();
  c.data(data);
  ASSERT_EQ(c.points().size(), pts.size());
  for (std::size_t i = 0; i < pts.size(); ++i) {
    EXPECT_NEAR(c.points()[i].x(), pts[i].x(), 1e-12 * (1 + std::fabs(pts[i].x())));
    EXPECT_NEAR(c.points()[i].y(), pts[i].y(), 1e-12 * (1 + std::fabs(pts[i].y())));
  }
}

TEST(EdgeletContour, DatumIsAtTheTransformedPositionWithNoMeasurement) {
  const EdgeletContour c(Edgelets(), similarity());
  const gkEdgelet d = c.datum(gkVector<2>(1, 0));
  EXPECT_EQ(d.position(), similarity()->map(gkVector<2>(1, 0)));
  EXPECT_EQ(d.magnitude(), 0);
  EXPECT_EQ(d.angle(), gkAngle8(0));
}

TEST(EdgeletContour, ASingularTransformIsReportedWhenPointsAreDerived) {
  const gkPtrHandle_const<gk2XformBase> flat(
      new gk2XformLinear(gkXform<2>(gkMatrix<2>(1, 0, 0, 0), gkVector<2>())));
  EXPECT_THROW(EdgeletContour(squareEdgelets(), flat), gkMathError::Singular);
  const EdgeletContour empty(Edgelets(), flat);
  EXPECT_THROW(empty.point(edgelet(1, 1)), gkMathError::Singular);
}

TEST(EdgeletContour, EqualityNeedsTheVerySameTransformObject) {
  const auto shared = similarity();
  const EdgeletContour a(squareEdgelets(), shared);
  const EdgeletContour b(squareEdgelets(), shared);
  const EdgeletContour c(squareEdgelets(), similarity());
  EXPECT_EQ(a, b);
  EXPECT_NE(a, c);
  // Data, closed flag and label are not compared.
  EdgeletContour d(b);
  d.label(5);
  d.isClosed(false);
  EXPECT_EQ(a, d);
}

TEST(EdgeletContour, CopiesShareTheTransformAndKeepTheData) {
  const EdgeletContour a(squareEdgelets(), similarity());
  const EdgeletContour copy(a);
  EXPECT_EQ(copy.dataFromPointsXform().get(), a.dataFromPointsXform().get());
  EXPECT_EQ(copy.data(), a.data());
  EXPECT_EQ(copy, a);
}

TEST(EdgeletContour, UnimplementedOperationsThrowBadWindow) {
  const EdgeletContour c(squareEdgelets());
  gkRegionT<gkEdgelet> region;
  EdgeletContour out;
  EXPECT_THROW(c.convexHullT(region), gkPel::BadWindow);
  EXPECT_THROW(c.mapT(gkXform<2>(), out), gkPel::BadWindow);
  EXPECT_THROW(EdgeletContour().mapT(gkXform<2>(), out), gkPel::BadWindow);
}

TEST(EdgeletContour, EveryPublicOperationKeepsOneDatumPerVertex) {
  EdgeletContour c(squareEdgelets(), similarity());
  expectOneDatumPerVertex(c);
  c.points({{0, 0}, {4, 0}, {4, 3}});
  expectOneDatumPerVertex(c);
  c.data({edgelet(1, 1), edgelet(2, 2)});
  expectOneDatumPerVertex(c);
  c.isClosed(false);
  expectOneDatumPerVertex(c);
  c.label(3);
  expectOneDatumPerVertex(c);
  c.cachedVectorSize(5);
  expectOneDatumPerVertex(c);
  EdgeletContour d;
  d = c;
  expectOneDatumPerVertex(d);
  c.points({});
  expectOneDatumPerVertex(c);
  c.data({});
  expectOneDatumPerVertex(c);
}

TEST(EdgeletContour, ContourQueriesWorkUnchanged) {
  const EdgeletContour c(squareEdgelets());
  EXPECT_EQ(c.length(), 4.0);
  EXPECT_EQ(c.meanPosition(), gkVector<2>(0.5, 0.5));
  EXPECT_EQ(c.closestVertexIndex(gkVector<2>(0.9, 1.2)), 2);
  EXPECT_FALSE(c.isSelfIntersecting());
}

TEST(EdgeletContour, MakeGivesADefaultObject) {
  gkPersistent* p = EdgeletContour::make();
  auto* c = dynamic_cast<EdgeletContour*>(p);
  ASSERT_NE(c, nullptr);
  EXPECT_TRUE(c->data().empty());
  delete p;
}
