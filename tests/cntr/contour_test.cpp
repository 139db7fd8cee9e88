#include <gk/cntr/contour.h>

#include <cmath>
#include <limits>
#include <vector>

#include <gk/base/ptr_handle.h>
#include <gk/cntr/errors/contour_errors.h>
#include <gtest/gtest.h>

#include "contour_test_access.h"
#include "shapes.h"

using gk::test::Points;
using Access = gkContourTestAccess;

namespace {

/// Counts the virtual cache cleans a contour performs, as a derived class would see them.
class CountingContour : public gkContour {
 public:
  using gkContour::gkContour;
  using gkContour::makePointsConsistentWithData;
  using gkContour::setPoints;
  int cleans = 0;
  int dataHooks = 0;

  void makeDataConsistentWithPoints() override {
    ++dataHooks;
    gkContour::makeDataConsistentWithPoints();
  }

 protected:
  void cleanCacheInfo() override {
    ++cleans;
    gkContour::cleanCacheInfo();
  }
};

bool sameBits(double a, double b) {
  return std::signbit(a) == std::signbit(b) && (a == b || (std::isnan(a) && std::isnan(b)));
}

}  // namespace

// --- construction -------------------------------------------------------------------------

TEST(ContourConstruction, PointListIsCopiedAsGivenWithFlagLabelAndDefaultBound) {
  const gkContour c(gk::test::unitSquare(), false, 42);
  EXPECT_EQ(c.points(), gk::test::unitSquare());
  EXPECT_FALSE(c.isClosed());
  EXPECT_EQ(c.label(), 42u);
  EXPECT_EQ(c.cachedVectorSize(), 3);
  EXPECT_TRUE(Access::noCache(c));
}

TEST(ContourConstruction, EmptyPointListIsAccepted) {
  const gkContour c(Points(), true, 0);
  EXPECT_TRUE(c.points().empty());
  EXPECT_EQ(c.segmentCount(), 0);
  EXPECT_TRUE(Access::lineSegs(c).empty());
}

TEST(ContourConstruction, OneVertexIsAcceptedAndHasNoOpenSegment) {
  const gkContour open({{3, 4}}, false, 0);
  const gkContour closed({{3, 4}}, true, 0);
  EXPECT_EQ(open.points().size(), 1u);
  EXPECT_EQ(open.segmentCount(), 0);
  EXPECT_TRUE(Access::lineSegs(open).empty());
  // A closed one-vertex contour has one (degenerate) closing segment from the vertex to itself.
  EXPECT_EQ(closed.segmentCount(), 1);
  ASSERT_EQ(Access::validLine(closed).size(), 1u);
  EXPECT_FALSE(Access::validLine(closed)[0]);
}

TEST(ContourConstruction, RepeatedVerticesAreKeptNotMerged) {
  const Points pts = {{1, 1}, {1, 1}, {1, 1}, {2, 2}, {2, 2}};
  const gkContour c(pts, true, 0);
  EXPECT_EQ(c.points(), pts);
}

TEST(ContourConstruction, NonFiniteVerticesAreStoredBitForBit) {
  const Points pts = gk::test::nonFinite();
  const gkContour c(pts, true, 0);
  ASSERT_EQ(c.points().size(), pts.size());
  for (std::size_t i = 0; i < pts.size(); ++i) {
    EXPECT_TRUE(sameBits(c.points()[i].x(), pts[i].x())) << i;
    EXPECT_TRUE(sameBits(c.points()[i].y(), pts[i].y())) << i;
  }
}

TEST(ContourConstruction, SegmentCacheOfNonFiniteVerticesIsBuiltWithoutFault) {
  const gkContour c(gk::test::nonFinite(), true, 0);
  EXPECT_EQ(Access::lineSegs(c).size(), 5u);
  EXPECT_EQ(Access::validLine(c).size(), 5u);
}

TEST(ContourConstruction, DefaultContourIsEmptyClosedWithLabelZero) {
  const gkContour c;
  EXPECT_TRUE(c.points().empty());
  EXPECT_TRUE(c.isClosed());
  EXPECT_EQ(c.label(), 0u);
  EXPECT_EQ(c.cachedVectorSize(), 3);
}

TEST(ContourConstruction, MakeGivesAClosedEmptyContourWithLabelZero) {
  gkPersistent* p = gkContour::make();
  auto* c = dynamic_cast<gkContour*>(p);
  ASSERT_NE(c, nullptr);
  EXPECT_TRUE(c->isClosed());
  EXPECT_TRUE(c->points().empty());
  EXPECT_EQ(c->label(), 0u);
  EXPECT_EQ(c->cachedVectorSize(), 3);
  delete p;
}

TEST(ContourConstruction, ConstructorRunsTheDataHookSoCachesStartEmpty) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  EXPECT_TRUE(Access::noCache(c));
}

// --- construction from a polygon ----------------------------------------------------------

TEST(ContourFromPolygon, EndsWithinOneEMinusFifteenGiveAClosedContourKeepingBothVertices) {
  const Points pts = {{0, 0}, {1, 0}, {1, 1}, {0.5e-15, -0.5e-15}};
  const gkContour c(gkPolygon(pts, gkPolygon::eEvenOdd), 5);
  EXPECT_TRUE(c.isClosed());
  EXPECT_EQ(c.points(), pts);
  EXPECT_EQ(c.label(), 5u);
  EXPECT_EQ(c.cachedVectorSize(), 3);
}

TEST(ContourFromPolygon, EndsExactlyEqualGiveAClosedContourWithTheRepeatKept) {
  const Points pts = {{0, 0}, {1, 0}, {1, 1}, {0, 0}};
  const gkContour c(gkPolygon(pts, gkPolygon::eEvenOdd), 0);
  EXPECT_TRUE(c.isClosed());
  EXPECT_EQ(c.points().size(), 4u);
}

TEST(ContourFromPolygon, EndsFartherApartThanTheToleranceGiveAnOpenContour) {
  const Points pts = {{0, 0}, {1, 0}, {1, 1}, {0, 3e-15}};
  const gkContour c(gkPolygon(pts, gkPolygon::eEvenOdd), 0);
  EXPECT_FALSE(c.isClosed());
  EXPECT_EQ(c.points(), pts);
}

TEST(ContourFromPolygon, EmptyPolygonGivesAnEmptyOpenContour) {
  const gkContour c(gkPolygon(Points(), gkPolygon::eEvenOdd), 0);
  EXPECT_TRUE(c.points().empty());
  EXPECT_FALSE(c.isClosed());
}

TEST(ContourFromPolygon, OneVertexPolygonIsClosedSinceItsEndsCoincide) {
  const gkContour c(gkPolygon({{2, 3}}, gkPolygon::eEvenOdd), 0);
  EXPECT_TRUE(c.isClosed());
}

TEST(ContourFromPolygon, NaNEndsGiveAnOpenContour) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const gkContour c(gkPolygon({{nan, 0}, {1, 1}, {nan, 0}}, gkPolygon::eEvenOdd), 0);
  EXPECT_FALSE(c.isClosed());
}

// --- accessors and setters ----------------------------------------------------------------

TEST(ContourSetters, PointsSetterDropsCachesStoresAndRunsTheDataHook) {
  CountingContour c(gk::test::unitSquare(), true, 0);
  Access::fillPlainCaches(c);
  const int cleansBefore = c.cleans;
  const int hooksBefore = c.dataHooks;
  const Points tri = {{0, 0}, {2, 0}, {0, 2}};
  c.points(tri);
  EXPECT_EQ(c.points(), tri);
  EXPECT_TRUE(Access::noCache(c));
  // One clean before the replacement and one from the data hook.
  EXPECT_EQ(c.cleans - cleansBefore, 2);
  EXPECT_EQ(c.dataHooks - hooksBefore, 1);
}

TEST(ContourSetters, SetPointsDropsCachesWithoutTheDataHook) {
  CountingContour c(gk::test::unitSquare(), true, 0);
  Access::fillPlainCaches(c);
  const int hooksBefore = c.dataHooks;
  const int cleansBefore = c.cleans;
  c.setPoints({{0, 0}, {5, 5}});
  EXPECT_EQ(c.points().size(), 2u);
  EXPECT_TRUE(Access::noCache(c));
  EXPECT_EQ(c.dataHooks, hooksBefore);
  EXPECT_EQ(c.cleans - cleansBefore, 1);
}

TEST(ContourSetters, BothConsistencyHooksReachAnOverriddenCacheClean) {
  CountingContour c(gk::test::unitSquare(), true, 0);
  const int before = c.cleans;
  c.makePointsConsistentWithData();
  EXPECT_EQ(c.cleans - before, 1);
  c.makeDataConsistentWithPoints();
  EXPECT_EQ(c.cleans - before, 2);
}

TEST(ContourSetters, SettingTheClosedFlagToItsOwnValueStillClearsAllCaches) {
  gkContour c(gk::test::unitSquare(), true, 0);
  Access::fillPlainCaches(c);
  Access::extremalCache(c).insert(gkRadian(0.0), 1, c.cachedVectorSize());
  ASSERT_FALSE(Access::noCache(c));
  c.isClosed(c.isClosed());
  EXPECT_TRUE(c.isClosed());
  EXPECT_TRUE(Access::noCache(c));
}

TEST(ContourSetters, ClosedFlagSetterStoresTheFlag) {
  gkContour c(gk::test::unitSquare(), true, 0);
  c.isClosed(false);
  EXPECT_FALSE(c.isClosed());
  EXPECT_EQ(c.segmentCount(), 3);
}

TEST(ContourSetters, LabelSetterMarksTheObjectChangedAndKeepsCaches) {
  gkContour c(gk::test::unitSquare(), true, 0);
  Access::fillPlainCaches(c);
  const unsigned long changes = c.changeCount();
  c.label(99);
  EXPECT_EQ(c.label(), 99u);
  EXPECT_EQ(c.changeCount(), changes + 1);
  EXPECT_TRUE(Access::lineSegsValid(c));
}

TEST(ContourSetters, NegativeCacheBoundThrowsBadParamsAndLeavesTheBound) {
  gkContour c(gk::test::unitSquare(), true, 0);
  c.cachedVectorSize(7);
  const unsigned long changes = c.changeCount();
  try {
    c.cachedVectorSize(-1);
    FAIL() << "cachedVectorSize(-1) did not throw";
  } catch (const gkContourDefs::BadParams& e) {
    EXPECT_EQ(e.errorNumber(), 268453507);
    EXPECT_TRUE(e.message().empty());
  }
  EXPECT_EQ(c.cachedVectorSize(), 7);
  EXPECT_EQ(c.changeCount(), changes);
}

TEST(ContourSetters, CacheBoundBeyondThirtyTwoBitsThrowsBadParams) {
  gkContour c(gk::test::unitSquare(), true, 0);
  EXPECT_THROW(c.cachedVectorSize(std::numeric_limits<long>::max()), gkContourDefs::BadParams);
  EXPECT_THROW(c.cachedVectorSize(std::numeric_limits<long>::min()), gkContourDefs::BadParams);
  EXPECT_EQ(c.cachedVectorSize(), 3);
}

TEST(ContourSetters, CacheBoundZeroIsAcceptedAndMarksTheObjectChanged) {
  gkContour c(gk::test::unitSquare(), true, 0);
  const unsigned long changes = c.changeCount();
  c.cachedVectorSize(0);
  EXPECT_EQ(c.cachedVectorSize(), 0);
  EXPECT_EQ(c.changeCount(), changes + 1);
}

TEST(ContourSetters, CacheBoundSetterDoesNotTouchCaches) {
  gkContour c(gk::test::unitSquare(), true, 0);
  Access::fillPlainCaches(c);
  c.cachedVectorSize(1);
  EXPECT_TRUE(Access::lineSegsValid(c));
}

// --- keyed caches -------------------------------------------------------------------------

TEST(ContourKeyedCaches, DefaultBoundHoldsFourEntriesAndTheFifthKeyReplacesOne) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  auto& cache = Access::extremalCache(c);
  for (int k = 0; k < 4; ++k) {
    cache.insert(gkRadian(k), k, c.cachedVectorSize());
  }
  EXPECT_EQ(cache.size(), 4u);
  cache.insert(gkRadian(10.0), 10, c.cachedVectorSize());
  EXPECT_EQ(cache.size(), 4u);
  ASSERT_NE(cache.find(gkRadian(10.0)), nullptr);
  EXPECT_EQ(*cache.find(gkRadian(10.0)), 10);
  int survivors = 0;
  for (int k = 0; k < 4; ++k) {
    survivors += cache.find(gkRadian(k)) != nullptr ? 1 : 0;
  }
  EXPECT_EQ(survivors, 3);
}

TEST(ContourKeyedCaches, BoundZeroHoldsOneEntry) {
  gkContour c(gk::test::unitSquare(), true, 0);
  c.cachedVectorSize(0);
  auto& cache = Access::encloseRectCache(c);
  cache.insert(gkXform<2>(), gkRect(), c.cachedVectorSize());
  cache.insert(gkXform<2>(gkMatrix<2>::identity(), gkVector<2>(5, 0)), gkRect(),
               c.cachedVectorSize());
  EXPECT_EQ(cache.size(), 1u);
  EXPECT_NE(cache.find(gkXform<2>(gkMatrix<2>::identity(), gkVector<2>(5, 0))), nullptr);
}

TEST(ContourKeyedCaches, TransformKeysIgnoreMatrixElementOneOne) {
  const gkContour::XformKeyLess less;
  const gkXform<2> a(gkMatrix<2>(1, 2, 3, 4), gkVector<2>(5, 6));
  const gkXform<2> b(gkMatrix<2>(1, 2, 3, 400), gkVector<2>(5, 6));
  EXPECT_FALSE(less(a, b));
  EXPECT_FALSE(less(b, a));
}

TEST(ContourKeyedCaches, TransformKeysCompareTranslationFirstThenMatrixInRowOrder) {
  const gkContour::XformKeyLess less;
  const auto x = [](double tx, double ty, double m00, double m01, double m10) {
    return gkXform<2>(gkMatrix<2>(m00, m01, m10, 1), gkVector<2>(tx, ty));
  };
  // Translation x decides before everything else.
  EXPECT_TRUE(less(x(0, 9, 9, 9, 9), x(1, 0, 0, 0, 0)));
  EXPECT_FALSE(less(x(1, 0, 0, 0, 0), x(0, 9, 9, 9, 9)));
  // Then translation y, then (0,0), (0,1), (1,0).
  EXPECT_TRUE(less(x(0, 0, 9, 9, 9), x(0, 1, 0, 0, 0)));
  EXPECT_TRUE(less(x(0, 0, 0, 9, 9), x(0, 0, 1, 0, 0)));
  EXPECT_TRUE(less(x(0, 0, 0, 0, 9), x(0, 0, 0, 1, 0)));
  EXPECT_TRUE(less(x(0, 0, 0, 0, 0), x(0, 0, 0, 0, 1)));
  EXPECT_FALSE(less(x(0, 0, 0, 0, 1), x(0, 0, 0, 0, 0)));
}

TEST(ContourKeyedCaches, NaNTransformKeysAreOrderedAfterNumbersAndEquivalentToEachOther) {
  const gkContour::XformKeyLess less;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const gkXform<2> n1(gkMatrix<2>::identity(), gkVector<2>(nan, 0));
  const gkXform<2> n2(gkMatrix<2>::identity(), gkVector<2>(nan, 0));
  const gkXform<2> big(gkMatrix<2>::identity(), gkVector<2>(1e308, 0));
  EXPECT_FALSE(less(n1, n2));
  EXPECT_FALSE(less(n2, n1));
  EXPECT_TRUE(less(big, n1));
  EXPECT_FALSE(less(n1, big));
}

// --- copy and assignment ------------------------------------------------------------------

TEST(ContourCopy, CopyCarriesEveryFilledCacheSoNothingIsRecomputed) {
  const gkContour src(gk::test::unitSquare(), true, 3);
  Access::fillPlainCaches(src);
  const gkContour copy(src);
  EXPECT_TRUE(Access::lineSegsValid(copy));
  EXPECT_EQ(Access::lineSegs(copy), Access::lineSegs(src));
  EXPECT_EQ(Access::validLine(copy), Access::validLine(src));
  EXPECT_EQ(Access::segRects(copy), Access::segRects(src));
  EXPECT_FALSE(Access::noCache(copy));
  EXPECT_EQ(copy.label(), 3u);
  EXPECT_EQ(copy, src);
}

TEST(ContourCopy, CopiedKeyedCachesAreSeparateObjectsWithEqualEntries) {
  const gkContour src(gk::test::unitSquare(), true, 0);
  Access::extremalCache(src).insert(gkRadian(0.0), 1, 3);
  Access::encloseRectCache(src).insert(gkXform<2>(), gkRect(gkVector<2>(0, 0), gkVector<2>(1, 1)),
                                       3);
  const gkContour copy(src);
  ASSERT_TRUE(Access::extremalCache(copy).allocated());
  ASSERT_TRUE(Access::encloseRectCache(copy).allocated());
  EXPECT_NE(Access::extremalCache(copy).map(), Access::extremalCache(src).map());
  EXPECT_NE(Access::encloseRectCache(copy).map(), Access::encloseRectCache(src).map());
  EXPECT_EQ(*Access::extremalCache(copy).map(), *Access::extremalCache(src).map());
  // Growing the copy's cache leaves the source's as it was.
  Access::extremalCache(copy).insert(gkRadian(1.0), 2, 3);
  EXPECT_EQ(Access::extremalCache(src).size(), 1u);
  EXPECT_EQ(Access::extremalCache(copy).size(), 2u);
}

TEST(ContourCopy, CopiedVertexGridIsASeparateEqualObject) {
  const gkContour src(gk::test::unitSquare(), true, 0);
  auto& grid = Access::vertexGrid(src);
  grid.reset(new gkContour::VertexGrids);
  grid->emplace_back(0.5, gkContour::VertexGrids::value_type::second_type());
  grid->back().second[gkPair<long>(0, 0)] = {0};
  gkContour copy(gk::test::unitSquare(), true, 0);
  copy = src;
  ASSERT_TRUE(Access::vertexGrid(copy));
  EXPECT_NE(Access::vertexGrid(copy).get(), grid.get());
  EXPECT_EQ(Access::vertexGrid(copy)->size(), 1u);
  EXPECT_EQ(Access::vertexGrid(copy)->front().first, 0.5);
}

TEST(ContourCopy, AssigningFromAContourWithoutKeyedCachesDropsTheTargets) {
  const gkContour src(gk::test::unitSquare(), true, 0);
  gkContour target(gk::test::bowTie(), true, 0);
  Access::extremalCache(target).insert(gkRadian(0.0), 1, 3);
  Access::vertexGrid(target).reset(new gkContour::VertexGrids);
  target = src;
  EXPECT_FALSE(Access::extremalCache(target).allocated());
  EXPECT_FALSE(Access::vertexGrid(target));
  EXPECT_EQ(target.points(), gk::test::unitSquare());
}

TEST(ContourCopy, SelfAssignmentChangesNothing) {
  gkContour c(gk::test::unitSquare(), false, 4);
  Access::fillPlainCaches(c);
  const unsigned long changes = c.changeCount();
  gkContour& alias = c;
  c = alias;
  EXPECT_EQ(c.points(), gk::test::unitSquare());
  EXPECT_FALSE(c.isClosed());
  EXPECT_TRUE(Access::lineSegsValid(c));
  EXPECT_EQ(c.changeCount(), changes);
}

TEST(ContourCopy, ReferenceCountIsNotCopied) {
  gkPtrHandle<gkContour> held(new gkContour(gk::test::unitSquare(), true, 0));
  const gkContour copy(*held);
  EXPECT_EQ(held->refCount(), 1);
  EXPECT_EQ(copy.refCount(), 0);
}

TEST(ContourCopy, CopyKeepsTheCacheBound) {
  gkContour src(gk::test::unitSquare(), true, 0);
  src.cachedVectorSize(11);
  const gkContour copy(src);
  EXPECT_EQ(copy.cachedVectorSize(), 11);
}

// --- equality -----------------------------------------------------------------------------

TEST(ContourEquality, ContoursDifferingOnlyInLabelAreEqual) {
  EXPECT_EQ(gkContour(gk::test::unitSquare(), true, 1), gkContour(gk::test::unitSquare(), true, 2));
}

TEST(ContourEquality, ContoursDifferingOnlyInCacheBoundAreUnequal) {
  const gkContour a(gk::test::unitSquare(), true, 0);
  gkContour b(gk::test::unitSquare(), true, 0);
  b.cachedVectorSize(4);
  EXPECT_NE(a, b);
  EXPECT_FALSE(a == b);
}

TEST(ContourEquality, ContoursDifferingInClosedFlagAreUnequal) {
  EXPECT_NE(gkContour(gk::test::unitSquare(), true, 0),
            gkContour(gk::test::unitSquare(), false, 0));
}

TEST(ContourEquality, VerticesAreComparedExactly) {
  Points moved = gk::test::unitSquare();
  moved[2] = gkVector<2>(1.0, std::nextafter(1.0, 2.0));
  EXPECT_NE(gkContour(gk::test::unitSquare(), true, 0), gkContour(moved, true, 0));
  Points shorter = gk::test::unitSquare();
  shorter.pop_back();
  EXPECT_NE(gkContour(gk::test::unitSquare(), true, 0), gkContour(shorter, true, 0));
}

// --- conversions --------------------------------------------------------------------------

TEST(ContourPolygon, ClosedContourPolygonRepeatsTheFirstVertexAtTheEnd) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  const gkPolygon p = c.polygon();
  ASSERT_EQ(p.size(), 5u);
  EXPECT_EQ(p[4], gkVector<2>(0, 0));
  EXPECT_EQ(p.fillMode(), 0);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(p[i], gk::test::unitSquare()[i]);
  }
}

TEST(ContourPolygon, OpenContourPolygonHasTheSameVertices) {
  const gkContour c(gk::test::unitSquare(), false, 0);
  EXPECT_EQ(c.polygon().vertices(), gk::test::unitSquare());
}

TEST(ContourPolygon, EmptyClosedContourGivesAnEmptyPolygon) {
  EXPECT_EQ(gkContour(Points(), true, 0).polygon().size(), 0u);
}

TEST(ContourPolygon, PolygonRoundTripsToAnEqualClosedContour) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  const gkContour back(c.polygon(), 0);
  EXPECT_TRUE(back.isClosed());
  EXPECT_EQ(back.points().size(), 5u);
}

TEST(ContourMap, MappedContourHasTransformedVerticesFlagAndLabel) {
  const gkContour c(gk::test::unitSquare(), false, 8);
  gkContour out(Points(), true, 0);
  c.map(gkXform<2>(gkMatrix<2>(2, 0, 0, 3), gkVector<2>(1, -1)), out);
  const Points expected = {{1, -1}, {3, -1}, {3, 2}, {1, 2}};
  EXPECT_EQ(out.points(), expected);
  EXPECT_FALSE(out.isClosed());
  EXPECT_EQ(out.label(), 8u);
  EXPECT_TRUE(Access::noCache(out));
}

TEST(ContourMap, MappedContourGetsTheDefaultBoundWhateverTheSourceBound) {
  gkContour c(gk::test::unitSquare(), true, 0);
  c.cachedVectorSize(10);
  gkContour out(Points(), true, 0);
  out.cachedVectorSize(6);
  c.map(gkXform<2>(), out);
  EXPECT_EQ(out.cachedVectorSize(), 3);
  EXPECT_EQ(out.points(), c.points());
}

TEST(ContourMap, MappingIntoItselfIsSafe) {
  gkContour c(gk::test::unitSquare(), true, 0);
  c.map(gkXform<2>(gkMatrix<2>::identity(), gkVector<2>(1, 1)), c);
  EXPECT_EQ(c.points()[0], gkVector<2>(1, 1));
}

// --- segment cache ------------------------------------------------------------------------

TEST(ContourSegments, ClosedContourHasOneSegmentPerVertexClosingSegmentFirst) {
  const gkContour c(gk::test::unitSquare(), true, 0);
  const auto& segs = Access::lineSegs(c);
  ASSERT_EQ(segs.size(), 4u);
  EXPECT_EQ(c.segmentCount(), 4);
  EXPECT_EQ(segs[0], gkLineSeg(gkVector<2>(0, 1), gkVector<2>(0, 0)));
  // Segment k ends at vertex k.
  for (std::size_t k = 0; k < 4; ++k) {
    EXPECT_EQ(segs[k].p2(), c.points()[k]) << k;
  }
  EXPECT_EQ(Access::validLine(c), std::vector<bool>(4, true));
}

TEST(ContourSegments, OpenContourHasOneSegmentFewerThanVerticesStartingAtVertexZero) {
  const gkContour c(gk::test::unitSquare(), false, 0);
  const auto& segs = Access::lineSegs(c);
  ASSERT_EQ(segs.size(), 3u);
  EXPECT_EQ(c.segmentCount(), 3);
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_EQ(segs[k].p1(), c.points()[k]) << k;
    EXPECT_EQ(segs[k].p2(), c.points()[k + 1]) << k;
  }
}

TEST(ContourSegments, EqualConsecutiveVerticesKeepASegmentFlaggedInvalidWithDefaults) {
  const gkContour c(gk::test::triangleWithRepeat(), true, 0);
  const auto& valid = Access::validLine(c);
  ASSERT_EQ(valid.size(), 4u);
  EXPECT_EQ(valid, std::vector<bool>({true, true, false, true}));
  EXPECT_EQ(Access::lineSegs(c)[2], gkLineSeg());
  EXPECT_TRUE(Access::lines(c)[2].isDegenerate());
  EXPECT_EQ(Access::segRects(c)[2], gkRect());
}

TEST(ContourSegments, VerticesWithinOneEMinusFifteenMakeADegenerateSegment) {
  const gkContour c({{0, 0}, {1, 1}, {1 + 1e-16, 1}}, false, 0);
  EXPECT_EQ(Access::validLine(c), std::vector<bool>({true, false}));
}

TEST(ContourSegments, LinesAndBoxesBelongToTheirSegments) {
  const gkContour c({{0, 0}, {4, 2}, {1, 5}}, true, 0);
  const auto& segs = Access::lineSegs(c);
  const auto& lines = Access::lines(c);
  const auto& boxes = Access::segRects(c);
  ASSERT_EQ(lines.size(), segs.size());
  ASSERT_EQ(boxes.size(), segs.size());
  for (std::size_t k = 0; k < segs.size(); ++k) {
    EXPECT_EQ(lines[k].point(), segs[k].p1()) << k;
    EXPECT_EQ(lines[k].direction(), segs[k].p2() - segs[k].p1()) << k;
    EXPECT_TRUE(boxes[k].within(segs[k].p1())) << k;
    EXPECT_TRUE(boxes[k].within(segs[k].p2())) << k;
  }
  EXPECT_EQ(boxes[1], gkRect(gkVector<2>(0, 0), gkVector<2>(4, 2)));
}

TEST(ContourSegments, SegmentCacheIsFilledOnceAndDroppedByAChange) {
  gkContour c(gk::test::unitSquare(), true, 0);
  EXPECT_FALSE(Access::lineSegsValid(c));
  const std::vector<gkLineSeg>* first = &Access::lineSegs(c);
  EXPECT_TRUE(Access::lineSegsValid(c));
  EXPECT_EQ(&Access::lineSegs(c), first);
  c.points({{0, 0}, {3, 0}});
  EXPECT_FALSE(Access::lineSegsValid(c));
  EXPECT_EQ(Access::lineSegs(c).size(), 2u);
}

// --- emptiness ----------------------------------------------------------------------------

TEST(ContourEmptiness, FewerThanTwoVerticesThrowEmptyContourWithAnEmptyMessage) {
  for (const Points& pts : {Points(), Points{{1, 1}}}) {
    const gkContour c(pts, true, 0);
    try {
      Access::checkEmptyContour(c);
      FAIL() << "no throw for " << pts.size() << " vertices";
    } catch (const gkContourDefs::EmptyContour& e) {
      EXPECT_EQ(e.errorNumber(), 268453504);
      EXPECT_TRUE(e.message().empty());
    }
  }
}

TEST(ContourEmptiness, TwoVerticesPassTheCheckOpenOrClosed) {
  EXPECT_NO_THROW(Access::checkEmptyContour(gkContour({{0, 0}, {1, 0}}, true, 0)));
  EXPECT_NO_THROW(Access::checkEmptyContour(gkContour({{0, 0}, {1, 0}}, false, 0)));
}

// --- cache clean --------------------------------------------------------------------------

TEST(ContourCacheClean, CleanDropsEveryCacheAndMarksTheObjectChanged) {
  gkContour c(gk::test::unitSquare(), true, 0);
  Access::fillPlainCaches(c);
  Access::extremalCache(c).insert(gkRadian(0.0), 1, 3);
  Access::encloseRectCache(c).insert(gkXform<2>(), gkRect(), 3);
  Access::vertexGrid(c).reset(new gkContour::VertexGrids);
  const unsigned long changes = c.changeCount();
  c.points(c.points());
  EXPECT_TRUE(Access::noCache(c));
  EXPECT_GT(c.changeCount(), changes);
}

TEST(ContourCacheClean, RunsOfSegmentsStayWhileTheSegmentCachesFillAndGoWithAChange) {
  // A containment query takes the runs before the segment caches exist; filling those must
  // not drop the runs it holds. A change of the vertices drops them with everything else.
  gkContour c(gk::test::unitSquare(), true, 0);
  const gk::detail::ChainBounds* runs = Access::runs(c);
  ASSERT_NE(runs, nullptr);
  Access::fillSegmentCaches(c);
  EXPECT_EQ(Access::runs(c), runs);
  gkContour copy(gk::test::bowTie(), true, 0);
  copy = c;
  EXPECT_EQ(Access::runs(copy), runs);  // shared: they never change once built
  c.points(gk::test::bowTie());
  EXPECT_TRUE(Access::noCache(c));
  EXPECT_FALSE(Access::runsBuilt(c));
  EXPECT_EQ(Access::runs(copy), runs);
}
