#include <gk/ch_core/region_t.h>

#include <vector>

#include <gk/base/pel_errors.h>
#include <gk/cntr/errors/contour_errors.h>
#include <gtest/gtest.h>

namespace {

using Edgelets = std::vector<gkEdgelet>;
using Points = std::vector<gkVector<2>>;
using EdgeletContour = gkContourT<gkEdgelet>;
using EdgeletRegion = gkRegionT<gkEdgelet>;

gkEdgelet edgelet(double x, double y) {
  return gkEdgelet(gkVector<2>(x, y), 5, gkAngle8(3));
}

Edgelets square(double x0, double y0, double side) {
  return {edgelet(x0, y0), edgelet(x0 + side, y0), edgelet(x0 + side, y0 + side),
          edgelet(x0, y0 + side)};
}

}  // namespace

TEST(EdgeletRegion, BuiltFromAnEdgeletContourHoldsItsEdgeletsAndNoVertexUntilMadeConsistent) {
  const EdgeletContour c(square(0, 0, 2));
  EdgeletRegion r(c, 12);
  EXPECT_EQ(r.data().size(), 4u);
  EXPECT_TRUE(r.points().empty());
  EXPECT_EQ(r.label(), 12u);
  EXPECT_TRUE(r.holes().empty());
  EXPECT_EQ(r.dataFromPointsXform().get(), c.dataFromPointsXform().get());
  // Setting the data (here: the same data) makes the points follow.
  r.data(r.data());
  EXPECT_EQ(r.points().size(), 4u);
  EXPECT_EQ(r.points()[1], gkVector<2>(2, 0));
  EXPECT_EQ(r.data().size(), r.points().size());
}

TEST(EdgeletRegion, BuiltFromEdgeletsAndALabelDerivesItsVertices) {
  const EdgeletRegion r(square(1, 1, 3), 4);
  EXPECT_EQ(r.points(), Points({{1, 1}, {4, 1}, {4, 4}, {1, 4}}));
  EXPECT_EQ(r.label(), 4u);
  EXPECT_TRUE(r.isClosed());
}

TEST(EdgeletRegion, RegionQueriesWorkUnchanged) {
  const EdgeletRegion r(square(0, 0, 4), 0);
  EXPECT_EQ(r.area(false), 16.0);
  EXPECT_TRUE(r.inside(gkVector<2>(2, 2), true));
  EXPECT_FALSE(r.inside(gkVector<2>(5, 2), true));
  EXPECT_EQ(r.length(), 16.0);
  gkRegion regular;
  r.regularize(regular);
  EXPECT_EQ(regular.points(), r.points());
}

TEST(EdgeletRegion, RegionsAreAlwaysClosed) {
  EdgeletRegion r(square(0, 0, 4), 0);
  EXPECT_THROW(r.isClosed(false), gkContourDefs::RegionCannotBeSetOpen);
  EXPECT_TRUE(r.isClosed());
}

TEST(EdgeletRegion, SettingPointsRebuildsTheEdgelets) {
  EdgeletRegion r(square(0, 0, 4), 0);
  r.points({{0, 0}, {1, 0}, {0, 1}});
  ASSERT_EQ(r.data().size(), 3u);
  EXPECT_EQ(r.data()[1].position(), gkVector<2>(1, 0));
  EXPECT_EQ(r.data()[1].magnitude(), 0);
}

TEST(EdgeletRegion, HolesAreEdgeletRegionsAndAreChecked) {
  EdgeletRegion r(square(0, 0, 10), 0);
  const gkPtrHandle<EdgeletRegion> hole(new EdgeletRegion(square(2, 2, 2), 0));
  r.holes(std::vector<gkPtrHandle<EdgeletRegion>>{hole});
  ASSERT_EQ(r.holes().size(), 1u);
  EXPECT_EQ(r.holes()[0].get(), hole.get());
  EXPECT_FALSE(r.inside(gkVector<2>(3, 3), true));
  const EdgeletRegion::HolesT crossing{
      gkPtrHandle_const<EdgeletRegion>(new EdgeletRegion(square(8, 8, 4), 0))};
  EXPECT_THROW(r.holes(crossing), gkContourDefs::BadParams);
  EXPECT_EQ(r.holes().size(), 1u);
}

TEST(EdgeletRegion, EqualityComparesTheEdgeletContourPartsOnly) {
  const gkPtrHandle_const<gk2XformBase> shared(new gk2XformLinear());
  EdgeletRegion a(square(0, 0, 4), shared, 1);
  const EdgeletRegion b(square(0, 0, 4), shared, 2);
  EXPECT_EQ(a, b);
  a.holes(EdgeletRegion::HolesT{
      gkPtrHandle_const<EdgeletRegion>(new EdgeletRegion(square(1, 1, 1), shared, 0))});
  EXPECT_EQ(a, b);
  EXPECT_NE(a, EdgeletRegion(square(0, 0, 4), 1));
}

TEST(EdgeletRegion, CopyKeepsDataTransformAndHoles) {
  EdgeletRegion a(square(0, 0, 10), 3);
  a.holes(EdgeletRegion::HolesT{
      gkPtrHandle_const<EdgeletRegion>(new EdgeletRegion(square(1, 1, 1), 0))});
  const EdgeletRegion copy(a);
  EXPECT_EQ(copy.points(), a.points());
  EXPECT_EQ(copy.data(), a.data());
  EXPECT_EQ(copy.label(), 3u);
  EXPECT_EQ(copy.holes().size(), 1u);
  EXPECT_EQ(copy, a);
}

TEST(EdgeletRegion, UnimplementedOperationsThrowBadWindow) {
  const EdgeletRegion r(square(0, 0, 4), 0);
  EdgeletRegion out;
  EXPECT_THROW(r.regularizeT(out), gkPel::BadWindow);
  EXPECT_THROW(r.mapT(gkXform<2>(), out), gkPel::BadWindow);
  EXPECT_THROW(r.convexHullT(out), gkPel::BadWindow);
}

TEST(EdgeletRegion, DrawDrawsTheBoundaryAndTheHoles) {
  struct Counter : gkUITablet {
    int calls = 0;
    void drawLineSeg(const gkPair<double>&, const gkPair<double>&, const gkColor&,
                     const Layers&) override {
      ++calls;
    }
  } tablet;
  EdgeletRegion r(square(0, 0, 10), 0);
  r.holes(EdgeletRegion::HolesT{
      gkPtrHandle_const<EdgeletRegion>(new EdgeletRegion(square(1, 1, 1), 0))});
  r.draw(tablet, gkColor(), gkUITablet::Layers());
  EXPECT_EQ(tablet.calls, 8);
}

TEST(EdgeletRegion, MakeGivesADefaultObject) {
  gkPersistent* p = EdgeletRegion::make();
  ASSERT_NE(dynamic_cast<EdgeletRegion*>(p), nullptr);
  delete p;
}
