#include <gk/ch_core/region_set_t.h>

#include <vector>

#include <gk/base/pel_errors.h>
#include <gtest/gtest.h>

namespace {

using Edgelets = std::vector<gkEdgelet>;
using EdgeletRegion = gkRegionT<gkEdgelet>;
using EdgeletRegionSet = gkRegionSetT<gkEdgelet>;

Edgelets square(double x0, double y0, double side) {
  const auto e = [](double x, double y) { return gkEdgelet(gkVector<2>(x, y), 1, gkAngle8(2)); };
  return {e(x0, y0), e(x0 + side, y0), e(x0 + side, y0 + side), e(x0, y0 + side)};
}

gkPtrHandle_const<EdgeletRegion> region(double x0, double y0, double side) {
  return gkPtrHandle_const<EdgeletRegion>(new EdgeletRegion(square(x0, y0, side), 0));
}

}  // namespace

TEST(EdgeletRegionSet, MembersAreTheSameObjectsInBothLists) {
  const auto a = region(0, 0, 1);
  const auto b = region(3, 0, 1);
  const EdgeletRegionSet s(EdgeletRegionSet::RegionsT{a, b});
  ASSERT_EQ(s.regionsT().size(), 2u);
  ASSERT_EQ(s.regions().size(), 2u);
  EXPECT_EQ(s.regionsT()[1].get(), b.get());
  EXPECT_EQ(s.regions()[1].get(), b.get());
}

TEST(EdgeletRegionSet, SetQueriesWorkUnchanged) {
  const EdgeletRegionSet s(EdgeletRegionSet::RegionsT{region(0, 0, 2), region(5, 0, 2)});
  EXPECT_EQ(s.area(false), 8.0);
  EXPECT_TRUE(s.inside(gkVector<2>(6, 1), true));
  EXPECT_EQ(s.encloseRect(), gkRect(gkVector<2>(0, 0), gkVector<2>(7, 2)));
  EXPECT_FALSE(s.isSelfIntersecting());
}

TEST(EdgeletRegionSet, APlainRegionAddedThroughTheSetInterfaceBecomesAnEdgeletRegion) {
  EdgeletRegionSet s(EdgeletRegionSet::RegionsT{region(0, 0, 1)});
  s.add(gkPtrHandle_const<gkRegion>(new gkRegion({{5, 5}, {6, 5}, {6, 6}})));
  ASSERT_EQ(s.regionsT().size(), 2u);
  EXPECT_EQ(s.regionsT()[1]->points().size(), 3u);
  EXPECT_EQ(s.regionsT()[1]->data().size(), 3u);
  EXPECT_EQ(s.regions()[1].get(), s.regionsT()[1].get());
}

TEST(EdgeletRegionSet, MutableHandlesAreAccepted) {
  const gkPtrHandle<EdgeletRegion> a(new EdgeletRegion(square(0, 0, 1), 0));
  const EdgeletRegionSet s(std::vector<gkPtrHandle<EdgeletRegion>>{a});
  EXPECT_EQ(s.regionsT()[0].get(), a.get());
}

TEST(EdgeletRegionSet, CopiesShareTheMembers) {
  const EdgeletRegionSet s(EdgeletRegionSet::RegionsT{region(0, 0, 1)});
  const EdgeletRegionSet copy(s);
  EXPECT_EQ(copy.regionsT()[0].get(), s.regionsT()[0].get());
  EXPECT_EQ(copy, s);
}

TEST(EdgeletRegionSet, UnimplementedOperationsThrowBadWindow) {
  const EdgeletRegionSet s(EdgeletRegionSet::RegionsT{region(0, 0, 1)});
  EdgeletRegionSet out;
  EXPECT_THROW(s.regularizeT(out), gkPel::BadWindow);
  EXPECT_THROW(s.mapT(gkXform<2>(), out), gkPel::BadWindow);
}

TEST(EdgeletRegionSet, MakeGivesADefaultObject) {
  gkPersistent* p = EdgeletRegionSet::make();
  ASSERT_NE(dynamic_cast<EdgeletRegionSet*>(p), nullptr);
  delete p;
}
