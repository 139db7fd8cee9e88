#include <gk/cntr/region_set.h>

#include <cmath>
#include <random>
#include <vector>

#include <gk/cntr/errors/contour_errors.h>
#include <gtest/gtest.h>

#include "region_set_test_access.h"
#include "region_test_access.h"
#include "shapes.h"

using gk::test::Points;
using SetAccess = gkRegionSetTestAccess;

namespace {

Points rect(double x0, double y0, double w, double h) {
  return {{x0, y0}, {x0 + w, y0}, {x0 + w, y0 + h}, {x0, y0 + h}};
}

gkPtrHandle_const<gkRegion> region(const Points& pts) {
  return gkPtrHandle_const<gkRegion>(new gkRegion(pts));
}

gkXform<2> shift(double x) {
  return gkXform<2>(gkMatrix<2>::identity(), gkVector<2>(x, 0));
}

/// Counts the draw calls a set makes on its members.
class DrawCountingRegion : public gkRegion {
 public:
  explicit DrawCountingRegion(const Points& pts, int* counter) : gkRegion(pts), counter_(counter) {}
  using gkRegion::draw;
  void draw(gkUITablet& /*tablet*/, const gkColor& /*color*/,
            const gkUITablet::Layers& /*layer*/) const override {
    ++*counter_;
  }

 private:
  int* counter_;
};

class NullTablet : public gkUITablet {
 public:
  void drawLineSeg(const gkPair<double>&, const gkPair<double>&, const gkColor&,
                   const Layers&) override {}
};

}  // namespace

// --- construction and setters -------------------------------------------------------------

TEST(RegionSetConstruction, StoresTheMembersSharedWithTheDefaultBound) {
  const auto a = region(rect(0, 0, 1, 1));
  const gkRegionSet s(gkRegionSet::Regions{a});
  ASSERT_EQ(s.regions().size(), 1u);
  EXPECT_EQ(s.regions()[0].get(), a.get());
  EXPECT_EQ(s.cachedVectorSize(), 3);
  EXPECT_FALSE(SetAccess::rectCacheAllocated(s));
}

TEST(RegionSetConstruction, MutableHandlesAreConvertedInOrder) {
  const gkPtrHandle<gkRegion> a(new gkRegion(rect(0, 0, 1, 1)));
  const gkPtrHandle<gkRegion> b(new gkRegion(rect(5, 0, 1, 1)));
  const gkRegionSet s(std::vector<gkPtrHandle<gkRegion>>{a, b});
  ASSERT_EQ(s.regions().size(), 2u);
  EXPECT_EQ(s.regions()[0].get(), a.get());
  EXPECT_EQ(s.regions()[1].get(), b.get());
}

TEST(RegionSetConstruction, RegularizeModeMergesOverlappingMembers) {
  const gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 2, 2)), region(rect(1, 1, 2, 2))},
                      gkContourDefs::eRegularize);
  EXPECT_EQ(s.regions().size(), 1u);
}

TEST(RegionSetConstruction, MakeGivesAnEmptySet) {
  gkPersistent* p = gkRegionSet::make();
  auto* s = dynamic_cast<gkRegionSet*>(p);
  ASSERT_NE(s, nullptr);
  EXPECT_TRUE(s->regions().empty());
  delete p;
}

TEST(RegionSetSetters, AddAppendsAndDropsTheCaches) {
  gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 1, 1))});
  s.encloseRect();
  s.add(region(rect(5, 5, 1, 1)));
  EXPECT_EQ(s.regions().size(), 2u);
  EXPECT_FALSE(SetAccess::rectCacheAllocated(s));
  EXPECT_EQ(s.encloseRect(), gkRect(gkVector<2>(0, 0), gkVector<2>(6, 6)));
}

TEST(RegionSetSetters, RegionsSetterReplacesTheList) {
  gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 1, 1))});
  s.regions(gkRegionSet::Regions{region(rect(2, 2, 1, 1)), region(rect(4, 4, 1, 1))});
  EXPECT_EQ(s.regions().size(), 2u);
  s.regions(std::vector<gkPtrHandle<gkRegion>>{});
  EXPECT_TRUE(s.regions().empty());
}

TEST(RegionSetSetters, SetRegionsTouchesNoCache) {
  gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 1, 1))});
  s.encloseRect();
  SetAccess::setRegions(s, gkRegionSet::Regions{region(rect(9, 9, 1, 1))});
  EXPECT_EQ(SetAccess::rectCacheSize(s), 1u);
  EXPECT_EQ(s.encloseRect(), gkRect(gkVector<2>(0, 0), gkVector<2>(1, 1)));
}

TEST(RegionSetSetters, NegativeBoundThrowsBadParamsAndKeepsTheBound) {
  gkRegionSet s;
  try {
    s.cachedVectorSize(-1);
    FAIL() << "no throw";
  } catch (const gkContourDefs::BadParams& e) {
    EXPECT_TRUE(e.message().empty());
  }
  EXPECT_EQ(s.cachedVectorSize(), 3);
}

// --- emptiness ----------------------------------------------------------------------------

TEST(RegionSetEmptiness, EmptySetEncloseRectThrowsEmptyRegionSet) {
  try {
    gkRegionSet().encloseRect();
    FAIL() << "no throw";
  } catch (const gkContourDefs::EmptyRegionSet& e) {
    EXPECT_EQ(e.errorNumber(), 268453506);
    EXPECT_TRUE(e.message().empty());
  }
}

TEST(RegionSetEmptiness, EmptySetIsNotInsideAnythingButDistanceThrows) {
  const gkRegionSet s;
  EXPECT_FALSE(s.inside(gkVector<2>(0, 0), true));
  EXPECT_THROW(s.distToPoint(gkVector<2>(0, 0), false, true, true), gkContourDefs::EmptyRegionSet);
}

TEST(RegionSetEmptiness, RegularizeAndOuterHullOfAnEmptySetGiveAnEmptySet) {
  const gkRegionSet s;
  gkRegionSet r(gkRegionSet::Regions{region(rect(0, 0, 1, 1))});
  gkRegionSet h(gkRegionSet::Regions{region(rect(0, 0, 1, 1))});
  EXPECT_NO_THROW(s.regularize(r));
  EXPECT_NO_THROW(s.outerHull(h));
  EXPECT_TRUE(r.regions().empty());
  EXPECT_TRUE(h.regions().empty());
}

// --- enclosing rectangle ------------------------------------------------------------------

TEST(RegionSetEncloseRect, BoxCoversTheMembersOuterBoundariesOnly) {
  gkRegion withHole(rect(0, 0, 10, 10));
  withHole.holes(gkRegion::Holes{region(rect(20, 20, 1, 1))});
  const gkRegionSet s(gkRegionSet::Regions{gkPtrHandle_const<gkRegion>(new gkRegion(withHole)),
                                           region(rect(-5, 2, 1, 1))});
  EXPECT_EQ(s.encloseRect(), gkRect(gkVector<2>(-5, 0), gkVector<2>(15, 10)));
}

TEST(RegionSetEncloseRect, FourTransformsFillTheCacheAndTheFifthReplacesOne) {
  const gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 1, 1))});
  for (int k = 0; k < 4; ++k) {
    s.encloseRect(shift(k));
  }
  EXPECT_EQ(SetAccess::rectCacheSize(s), 4u);
  s.encloseRect(shift(10));
  EXPECT_EQ(SetAccess::rectCacheSize(s), 4u);
}

TEST(RegionSetEncloseRect, BoundZeroAllowsOneCachedRectangle) {
  gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 1, 1))});
  s.cachedVectorSize(0);
  s.encloseRect(shift(1));
  s.encloseRect(shift(2));
  EXPECT_EQ(SetAccess::rectCacheSize(s), 1u);
  EXPECT_EQ(s.encloseRect(shift(2)), gkRect(gkVector<2>(2, 0), gkVector<2>(1, 1)));
}

TEST(RegionSetEncloseRect, StoringARectangleMarksTheSetChanged) {
  const gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 1, 1))});
  const unsigned long before = s.changeCount();
  s.encloseRect();
  EXPECT_EQ(s.changeCount(), before + 1);
  s.encloseRect();
  EXPECT_EQ(s.changeCount(), before + 1);
}

TEST(RegionSetEncloseRect, CopiesOwnSeparateRectangleCaches) {
  const gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 1, 1))});
  s.encloseRect();
  const gkRegionSet copy(s);
  EXPECT_EQ(SetAccess::rectCacheSize(copy), 1u);
  copy.encloseRect(shift(3));
  EXPECT_EQ(SetAccess::rectCacheSize(copy), 2u);
  EXPECT_EQ(SetAccess::rectCacheSize(s), 1u);
}

// --- self-intersection --------------------------------------------------------------------

TEST(RegionSetSelfIntersection, TwoDisjointSimpleRegionsDoNotSelfIntersect) {
  const gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 1, 1)), region(rect(3, 0, 1, 1))});
  EXPECT_FALSE(s.isSelfIntersecting());
  gkRegionSet r;
  gkRegionSet h;
  s.regularize(r);
  s.outerHull(h);
  EXPECT_EQ(r, s);
  EXPECT_EQ(h, s);
  EXPECT_EQ(r.regions()[0].get(), s.regions()[0].get());
}

TEST(RegionSetSelfIntersection, OverlappingMembersOrASelfIntersectingMemberIntersect) {
  EXPECT_TRUE(gkRegionSet(gkRegionSet::Regions{region(rect(0, 0, 2, 2)), region(rect(1, 1, 2, 2))})
                  .isSelfIntersecting());
  EXPECT_TRUE(gkRegionSet(gkRegionSet::Regions{region(gk::test::bowTie())}).isSelfIntersecting());
}

TEST(RegionSetSelfIntersection, HolesAreNotExamined) {
  gkRegion outer(rect(0, 0, 10, 10));
  outer.holes(gkRegion::Holes{region(rect(2, 2, 2, 2))});
  // The second member crosses the first one's hole but not its outer boundary.
  const gkRegionSet s(gkRegionSet::Regions{gkPtrHandle_const<gkRegion>(new gkRegion(outer)),
                                           region(rect(3, 3, 2, 2))});
  EXPECT_FALSE(s.isSelfIntersecting());
}

TEST(RegionSetSelfIntersection, AnswerIsCachedUntilTheMembersChange) {
  gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 2, 2))});
  EXPECT_FALSE(s.isSelfIntersecting());
  EXPECT_TRUE(SetAccess::selfIntersectingValid(s));
  s.add(region(rect(1, 1, 2, 2)));
  EXPECT_FALSE(SetAccess::selfIntersectingValid(s));
  EXPECT_TRUE(s.isSelfIntersecting());
}

TEST(RegionSetSelfIntersection, EmptySetIsFalseWithoutFillingTheCache) {
  const gkRegionSet s;
  EXPECT_FALSE(s.isSelfIntersecting());
  EXPECT_FALSE(SetAccess::selfIntersectingValid(s));
}

// --- regularize and outer hull ------------------------------------------------------------

TEST(RegionSetRegularize, TwoOverlappingSquaresBecomeOneRegionFromTheirSplice) {
  const auto a = region(rect(0, 0, 2, 2));
  const auto b = region(rect(1, 1, 2, 2));
  const gkRegionSet s(gkRegionSet::Regions{a, b});
  gkRegion spliced;
  gkRegionTestAccess::splice(*a, *b, spliced);
  gkRegion expectedRegular;
  spliced.regularize(expectedRegular);
  gkRegion expectedHull;
  spliced.outerHull(expectedHull);

  gkRegionSet r;
  s.regularize(r);
  ASSERT_EQ(r.regions().size(), 1u);
  EXPECT_EQ(r.regions()[0]->points(), expectedRegular.points());
  gkRegionSet h;
  s.outerHull(h);
  ASSERT_EQ(h.regions().size(), 1u);
  EXPECT_EQ(h.regions()[0]->points(), expectedHull.points());
}

TEST(RegionSetRegularize, ThreeMutuallyOverlappingRegionsLeaveTwoAfterTheSinglePass) {
  const gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 4, 4)), region(rect(2, 2, 4, 4)),
                                           region(rect(1, 3, 4, 4))});
  gkRegionSet r;
  s.regularize(r);
  EXPECT_EQ(r.regions().size(), 2u);
}

TEST(RegionSetRegularize, RegularizingIntoItselfResetsTheBoundToThree) {
  gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 2, 2)), region(rect(1, 1, 2, 2))});
  s.cachedVectorSize(7);
  s.regularize(s);
  EXPECT_EQ(s.cachedVectorSize(), 3);
  EXPECT_EQ(s.regions().size(), 1u);
  gkRegionSet t(gkRegionSet::Regions{region(rect(0, 0, 2, 2)), region(rect(1, 1, 2, 2))});
  t.cachedVectorSize(9);
  t.outerHull(t);
  EXPECT_EQ(t.cachedVectorSize(), 3);
}

TEST(RegionSetRegularize, ResultIsCachedAndSharedByCopies) {
  const gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 2, 2)), region(rect(1, 1, 2, 2))});
  gkRegionSet r;
  s.regularize(r);
  const gkRegionSet* cached = SetAccess::regularized(s);
  ASSERT_NE(cached, nullptr);
  s.regularize(r);
  EXPECT_EQ(SetAccess::regularized(s), cached);
  const gkRegionSet copy(s);
  EXPECT_EQ(SetAccess::regularized(copy), cached);
}

TEST(RegionSetRegularize, SimpleUnmergedMembersKeepTheirHoles) {
  gkRegion withHole(rect(10, 10, 10, 10));
  withHole.holes(gkRegion::Holes{region(rect(12, 12, 2, 2))});
  const gkRegionSet s(gkRegionSet::Regions{region(gk::test::bowTie()),
                                           gkPtrHandle_const<gkRegion>(new gkRegion(withHole))});
  gkRegionSet r;
  s.regularize(r);
  ASSERT_EQ(r.regions().size(), 2u);
  EXPECT_EQ(r.regions()[1]->holes().size(), 1u);
  EXPECT_EQ(r.regions()[0]->points().size(), 6u);
}

// --- equality and drawing -----------------------------------------------------------------

TEST(RegionSetEquality, EqualityIsOrderSensitive) {
  const auto a = region(rect(0, 0, 1, 1));
  const auto b = region(rect(3, 0, 1, 1));
  EXPECT_EQ(gkRegionSet(gkRegionSet::Regions{a, b}), gkRegionSet(gkRegionSet::Regions{a, b}));
  EXPECT_NE(gkRegionSet(gkRegionSet::Regions{a, b}), gkRegionSet(gkRegionSet::Regions{b, a}));
  EXPECT_NE(gkRegionSet(gkRegionSet::Regions{a}), gkRegionSet(gkRegionSet::Regions{a, b}));
}

TEST(RegionSetEquality, EqualityIgnoresHoles) {
  gkRegion withHole(rect(0, 0, 10, 10));
  withHole.holes(gkRegion::Holes{region(rect(2, 2, 1, 1))});
  EXPECT_EQ(gkRegionSet(gkRegionSet::Regions{gkPtrHandle_const<gkRegion>(new gkRegion(withHole))}),
            gkRegionSet(gkRegionSet::Regions{region(rect(0, 0, 10, 10))}));
}

TEST(RegionSetDraw, DrawCallsEachMemberInOrder) {
  int count = 0;
  const gkRegionSet s(gkRegionSet::Regions{
      gkPtrHandle_const<gkRegion>(new DrawCountingRegion(rect(0, 0, 1, 1), &count)),
      gkPtrHandle_const<gkRegion>(new DrawCountingRegion(rect(3, 0, 1, 1), &count))});
  NullTablet tablet;
  s.draw(tablet, gkColor(), gkUITablet::Layers());
  EXPECT_EQ(count, 2);
}

// --- containment and distance -------------------------------------------------------------

TEST(RegionSetInside, InsideAnyMemberIsInside) {
  const gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 1, 1)), region(rect(3, 0, 1, 1))});
  EXPECT_TRUE(s.inside(gkVector<2>(3.5, 0.5), true));
  EXPECT_FALSE(s.inside(gkVector<2>(2, 0.5), true));
}

TEST(RegionSetDistance, DistanceIsTheSmallestMemberDistance) {
  const gkRegionSet s(gkRegionSet::Regions{region(rect(0, 0, 1, 1)), region(rect(3, 0, 1, 1))});
  EXPECT_EQ(s.distToPoint(gkVector<2>(2.5, 0.5), false, true, true), 0.5);
  EXPECT_EQ(s.distToPoint(gkVector<2>(0.5, 0.5), false, true, true), 0.0);
  EXPECT_EQ(s.distToPoint(gkVector<2>(0.5, 0.5), false, true, false), 0.5);
}

// --- randomized ---------------------------------------------------------------------------

namespace {

double uniform(std::mt19937_64& g, double lo, double hi) {
  return lo + (hi - lo) * static_cast<double>(g() >> 11) * 0x1.0p-53;
}

Points randomStar(std::mt19937_64& g, double cx, double cy, double r) {
  const int n = 5 + static_cast<int>(g() % 8);
  Points pts;
  for (int k = 0; k < n; ++k) {
    const double angle = 2.0 * 3.141592653589793 * k / n;
    const double radius = r * uniform(g, 0.4, 1.0);
    pts.emplace_back(cx + radius * std::cos(angle), cy + radius * std::sin(angle));
  }
  return pts;
}

}  // namespace

TEST(RegionSetRandomized, RegularizeAndOuterHullNeverGrowTheSetOrFailUntyped) {
  std::mt19937_64 g(20261122);
  int typedErrors = 0;
  for (int trial = 0; trial < 120; ++trial) {
    gkRegionSet::Regions members;
    const int count = 1 + static_cast<int>(g() % 4);
    for (int m = 0; m < count; ++m) {
      const double x = uniform(g, 0, 20);
      const double y = uniform(g, 0, 20);
      members.push_back(region(g() % 2 == 0 ? rect(x, y, uniform(g, 1, 8), uniform(g, 1, 8))
                                            : randomStar(g, x, y, uniform(g, 1, 6))));
    }
    const gkRegionSet s(members);
    for (const bool hull : {false, true}) {
      gkRegionSet out;
      try {
        hull ? s.outerHull(out) : s.regularize(out);
        EXPECT_LE(out.regions().size(), members.size()) << "trial " << trial;
      } catch (const gkContourDefs::Errors&) {
        ++typedErrors;
      }
    }
  }
  // Most random sets go through; the count only documents how many the walk refused.
  EXPECT_LT(typedErrors, 120);
}

TEST(RegionSetRandomized, PairwiseDisjointSimpleRegionsComeBackEqual) {
  std::mt19937_64 g(7);
  for (int trial = 0; trial < 50; ++trial) {
    gkRegionSet::Regions members;
    const int count = 1 + static_cast<int>(g() % 5);
    for (int m = 0; m < count; ++m) {
      // One star per 20-unit column: disjoint by construction.
      members.push_back(region(randomStar(g, 20.0 * m + 10, 10, 8)));
    }
    const gkRegionSet s(members);
    ASSERT_FALSE(s.isSelfIntersecting());
    gkRegionSet r;
    gkRegionSet h;
    s.regularize(r);
    s.outerHull(h);
    EXPECT_EQ(r, s);
    EXPECT_EQ(h, s);
  }
}

// --- the indexed pair scan against the plain one ---------------------------------------------

namespace {

/// Every member asked, then every pair (i, j), i < j, in order until the first that meets; a
/// throw is reported as such. Returns 0 (no), 1 (yes) or 2 (threw EmptyContour).
int plainSetSelfIntersecting(const gkRegionSet& set) {
  const gkRegionSet::Regions regions = set.regions();
  bool any = false;
  for (const auto& r : regions) {
    any = r->gkContour::isSelfIntersecting() || any;
  }
  try {
    for (std::size_t i = 0; i + 1 < regions.size(); ++i) {
      for (std::size_t j = i + 1; j < regions.size(); ++j) {
        const gkContour& a = *regions[i];
        if (!a.intersections(static_cast<const gkContour&>(*regions[j])).empty()) {
          return 1;
        }
      }
    }
  } catch (const gkContourDefs::EmptyContour&) {
    return 2;
  }
  return any ? 1 : 0;
}

int fastSetSelfIntersecting(const gkRegionSet& set) {
  try {
    return set.isSelfIntersecting() ? 1 : 0;
  } catch (const gkContourDefs::EmptyContour&) {
    return 2;
  }
}

}  // namespace

TEST(RegionSetIndexedPairs, SelfIntersectionMatchesThePlainPairScanOnRandomSets) {
  std::mt19937_64 rng(404);
  std::uniform_real_distribution<double> u(0, 1);
  int answers[3] = {0, 0, 0};
  for (int trial = 0; trial < 1500; ++trial) {
    gkRegionSet::Regions members;
    const int count = 1 + static_cast<int>(rng() % 8);
    for (int m = 0; m < count; ++m) {
      Points v;
      const int kind = static_cast<int>(rng() % 20);
      const int n = kind == 0 ? static_cast<int>(rng() % 2) : 3 + static_cast<int>(rng() % 6);
      const double cx = 10 * u(rng);
      const double cy = 10 * u(rng);
      for (int k = 0; k < n; ++k) {
        const double a = 6.283185307179586 * k / n;
        const double r = 0.5 + 2 * u(rng);
        v.emplace_back(cx + r * std::cos(a), cy + r * std::sin(a));
      }
      if (kind == 1 && !v.empty()) {
        v[rng() % v.size()] = gkVector<2>(std::nan(""), 1);
      }
      members.push_back(gkPtrHandle_const<gkRegion>(new gkRegion(v, gkContourDefs::eIgnore)));
    }
    const gkRegionSet set(members, gkContourDefs::eIgnore);
    const gkRegionSet copy(members, gkContourDefs::eIgnore);
    const int expected = plainSetSelfIntersecting(copy);
    ASSERT_EQ(fastSetSelfIntersecting(set), expected) << "trial " << trial;
    ++answers[expected];
  }
  EXPECT_GT(answers[0], 100);
  EXPECT_GT(answers[1], 100);
  EXPECT_GT(answers[2], 10);
}
