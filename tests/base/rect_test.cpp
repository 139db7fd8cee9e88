#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gk/base/rect.h>
#include <gk/base/vector.h>

namespace {

using V = gkVector<2>;

double up(double v) {
  return std::nextafter(v, std::numeric_limits<double>::infinity());
}
double down(double v) {
  return std::nextafter(v, -std::numeric_limits<double>::infinity());
}

}  // namespace

// ---- construction ----------------------------------------------------------------------------

TEST(Rect, DefaultIsThePointBoxAtTheOrigin) {
  const gkRect r;
  EXPECT_EQ(r.ul(), V());
  EXPECT_EQ(r.lr(), V());
  EXPECT_EQ(r.width(), 0.0);
  EXPECT_EQ(r.height(), 0.0);
}

TEST(Rect, CornersAreTheOriginAndTheOriginPlusSize) {
  const gkRect r(V(0.1, 0.2), V(0.3, 0.4));
  EXPECT_EQ(r.ul(), V(0.1, 0.2));
  EXPECT_EQ(r.lr(), V(0.1 + 0.3, 0.2 + 0.4));
}

TEST(Rect, WidthHeightAndSizeAreTheCornerDifferences) {
  const gkRect r(V(1.0, 2.0), V(3.0, 0.5));
  EXPECT_EQ(r.width(), 3.0);
  EXPECT_EQ(r.height(), 0.5);
  EXPECT_EQ(r.size(), V(3.0, 0.5));
}

TEST(Rect, NegativeSizeExtendsTheOtherWay) {
  const gkRect r(V(5.0, 5.0), V(-2.0, -3.0));
  EXPECT_EQ(r.ul(), V(3.0, 2.0));
  EXPECT_EQ(r.lr(), V(5.0, 5.0));
  EXPECT_EQ(r.size(), V(2.0, 3.0));
}

TEST(Rect, NegativeSizeKeepsTheOriginAsTheLargerCornerExactly) {
  const gkRect r(V(0.1, 0.2), V(-0.3, -0.4));
  EXPECT_EQ(r.lr(), V(0.1, 0.2));
  EXPECT_EQ(r.ul(), V(0.1 - 0.3, 0.2 - 0.4));
}

TEST(Rect, MixedSignSizeSortsEachAxisOnItsOwn) {
  const gkRect r(V(1.0, 1.0), V(-4.0, 2.0));
  EXPECT_EQ(r.ul(), V(-3.0, 1.0));
  EXPECT_EQ(r.lr(), V(1.0, 3.0));
}

TEST(Rect, ZeroSizeIsAPointBoxWithBothCornersExactlyTheOrigin) {
  for (const V& p : {V(0.1, 0.7), V(1e15, -1e-300), V(-0.0, 0.0), V(-123.456, 1e308)}) {
    const gkRect r(p, V(0.0, 0.0));
    EXPECT_EQ(r.ul(), p);
    EXPECT_EQ(r.lr(), p);
    EXPECT_EQ(r.width(), 0.0);
    EXPECT_EQ(r.height(), 0.0);
  }
}

TEST(Rect, EqualityComparesBothCorners) {
  const gkRect r(V(0.0, 0.0), V(2.0, 3.0));
  EXPECT_EQ(r, gkRect(V(2.0, 3.0), V(-2.0, -3.0)));
  EXPECT_NE(r, gkRect(V(0.0, 0.0), V(2.0, 3.5)));
  EXPECT_NE(r, gkRect(V(0.5, 0.0), V(1.5, 3.0)));
}

// ---- enclose ---------------------------------------------------------------------------------

TEST(RectEnclose, SmallestBoxHoldingBoth) {
  const gkRect a(V(0.0, 0.0), V(2.0, 1.0));
  const gkRect b(V(-1.0, 0.5), V(1.0, 3.0));
  const gkRect e = a.enclose(b);
  EXPECT_EQ(e.ul(), V(-1.0, 0.0));
  EXPECT_EQ(e.lr(), V(2.0, 3.5));
  EXPECT_EQ(b.enclose(a), e);
}

TEST(RectEnclose, EnclosingAContainedBoxChangesNothing) {
  const gkRect outer(V(0.1, 0.1), V(10.0, 10.0));
  const gkRect inner(V(1.0, 1.0), V(1.0, 1.0));
  EXPECT_EQ(outer.enclose(inner), outer);
  EXPECT_EQ(inner.enclose(outer), outer);
}

TEST(RectEnclose, CornersAreTakenFromTheInputsWithoutArithmetic) {
  const gkRect a(V(0.1, 1e15), V(0.0, 0.0));
  const gkRect b(V(-1e-300, 0.7), V(0.0, 0.0));
  const gkRect e = a.enclose(b);
  EXPECT_EQ(e.ul(), V(-1e-300, 0.7));
  EXPECT_EQ(e.lr(), V(0.1, 1e15));
}

TEST(RectEnclose, BoxGrownFromPointBoxesContainsEveryPoint) {
  std::mt19937_64 rng(99);
  std::uniform_real_distribution<double> mantissa(-1.0, 1.0);
  std::uniform_int_distribution<int> exponent(-320, 300);
  std::uniform_int_distribution<int> pickAwkward(0, 9);
  const double awkward[] = {0.1, 1e15, -1e-300, 0.7, -0.3, 1e-300, -1e15, 0.0, -0.0, 1e300};
  for (int round = 0; round < 200; ++round) {
    std::vector<V> points;
    for (int i = 0; i < 50; ++i) {
      const auto coord = [&]() {
        return pickAwkward(rng) < 3 ? awkward[pickAwkward(rng)]
                                    : std::ldexp(mantissa(rng), exponent(rng));
      };
      const double x = coord();
      const double y = coord();
      points.emplace_back(x, y);
    }
    gkRect box(points.front(), V(0.0, 0.0));
    for (const V& p : points) {
      box = box.enclose(gkRect(p, V(0.0, 0.0)));
    }
    for (const V& p : points) {
      ASSERT_TRUE(box.within(p)) << p.x() << ", " << p.y();
    }
    // ... and is the tightest such box: each side touches a point.
    double minX = points.front().x();
    double minY = points.front().y();
    double maxX = minX;
    double maxY = minY;
    for (const V& p : points) {
      minX = std::fmin(minX, p.x());
      minY = std::fmin(minY, p.y());
      maxX = std::fmax(maxX, p.x());
      maxY = std::fmax(maxY, p.y());
    }
    EXPECT_EQ(box.ul(), V(minX, minY));
    EXPECT_EQ(box.lr(), V(maxX, maxY));
  }
}

// ---- within ----------------------------------------------------------------------------------

TEST(RectWithin, InteriorPointIsWithin) {
  EXPECT_TRUE(gkRect(V(0.0, 0.0), V(4.0, 2.0)).within(V(1.0, 1.0)));
}

TEST(RectWithin, BoundaryIsInside) {
  const gkRect r(V(0.1, 0.2), V(0.5, 0.25));
  const V ul = r.ul();
  const V lr = r.lr();
  for (const V& p : {ul, lr, V(ul.x(), lr.y()), V(lr.x(), ul.y()), V(ul.x(), 0.3), V(lr.x(), 0.3),
                     V(0.3, ul.y()), V(0.3, lr.y())}) {
    EXPECT_TRUE(r.within(p)) << p.x() << ", " << p.y();
  }
}

TEST(RectWithin, PointsJustOutsideAreNotWithin) {
  const gkRect r(V(0.1, 0.2), V(0.5, 0.25));
  const V ul = r.ul();
  const V lr = r.lr();
  EXPECT_FALSE(r.within(V(down(ul.x()), 0.3)));
  EXPECT_FALSE(r.within(V(up(lr.x()), 0.3)));
  EXPECT_FALSE(r.within(V(0.3, down(ul.y()))));
  EXPECT_FALSE(r.within(V(0.3, up(lr.y()))));
}

TEST(RectWithin, PointBoxHoldsOnlyItsPoint) {
  const gkRect r(V(0.1, 0.7), V(0.0, 0.0));
  EXPECT_TRUE(r.within(V(0.1, 0.7)));
  EXPECT_FALSE(r.within(V(up(0.1), 0.7)));
  EXPECT_FALSE(r.within(V(0.1, down(0.7))));
}

TEST(RectWithin, NaNPointIsNotWithin) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const gkRect r(V(-1.0, -1.0), V(2.0, 2.0));
  EXPECT_FALSE(r.within(V(nan, 0.0)));
  EXPECT_FALSE(r.within(V(0.0, nan)));
}

// ---- overlaps --------------------------------------------------------------------------------

TEST(RectOverlaps, OverlappingBoxesOverlap) {
  const gkRect a(V(0.0, 0.0), V(2.0, 2.0));
  const gkRect b(V(1.0, 1.0), V(2.0, 2.0));
  EXPECT_TRUE(a.overlaps(b));
  EXPECT_TRUE(b.overlaps(a));
}

TEST(RectOverlaps, ContainedBoxOverlaps) {
  const gkRect outer(V(0.0, 0.0), V(10.0, 10.0));
  const gkRect inner(V(4.0, 4.0), V(1.0, 1.0));
  EXPECT_TRUE(outer.overlaps(inner));
  EXPECT_TRUE(inner.overlaps(outer));
}

TEST(RectOverlaps, TouchingEdgesCount) {
  const gkRect a(V(0.0, 0.0), V(2.0, 2.0));
  EXPECT_TRUE(a.overlaps(gkRect(V(2.0, 0.5), V(1.0, 1.0))));   // right edge
  EXPECT_TRUE(a.overlaps(gkRect(V(-1.0, 0.5), V(1.0, 1.0))));  // left edge
  EXPECT_TRUE(a.overlaps(gkRect(V(0.5, 2.0), V(1.0, 1.0))));   // top edge
  EXPECT_TRUE(a.overlaps(gkRect(V(0.5, -1.0), V(1.0, 1.0))));  // bottom edge
}

TEST(RectOverlaps, TouchingCornersCount) {
  const gkRect a(V(0.0, 0.0), V(2.0, 2.0));
  EXPECT_TRUE(a.overlaps(gkRect(V(2.0, 2.0), V(1.0, 1.0))));
  EXPECT_TRUE(a.overlaps(gkRect(V(-1.0, -1.0), V(1.0, 1.0))));
  EXPECT_TRUE(a.overlaps(gkRect(V(2.0, -1.0), V(1.0, 1.0))));
  EXPECT_TRUE(a.overlaps(gkRect(V(-1.0, 2.0), V(1.0, 1.0))));
}

TEST(RectOverlaps, PointBoxOnTheBoundaryOverlaps) {
  const gkRect a(V(0.0, 0.0), V(2.0, 2.0));
  EXPECT_TRUE(a.overlaps(gkRect(V(2.0, 1.0), V(0.0, 0.0))));
  EXPECT_TRUE(gkRect(V(2.0, 1.0), V(0.0, 0.0)).overlaps(a));
  EXPECT_TRUE(gkRect(V(0.1, 0.1), V(0.0, 0.0)).overlaps(gkRect(V(0.1, 0.1), V(0.0, 0.0))));
}

TEST(RectOverlaps, BoxesSeparatedByTheSmallestGapDoNotOverlap) {
  const gkRect a(V(0.1, 0.1), V(0.2, 0.2));
  const double right = a.lr().x();
  const double top = a.lr().y();
  EXPECT_FALSE(a.overlaps(gkRect(V(up(right), 0.1), V(1.0, 0.1))));
  EXPECT_FALSE(a.overlaps(gkRect(V(0.1, up(top)), V(0.1, 1.0))));
  EXPECT_FALSE(gkRect(V(up(right), 0.1), V(1.0, 0.1)).overlaps(a));
  EXPECT_FALSE(a.overlaps(gkRect(V(up(right), up(top)), V(1.0, 1.0))));
}

TEST(RectOverlaps, BoxesApartOnOneAxisOnlyDoNotOverlap) {
  const gkRect a(V(0.0, 0.0), V(2.0, 2.0));
  EXPECT_FALSE(a.overlaps(gkRect(V(0.5, 3.0), V(1.0, 1.0))));
  EXPECT_FALSE(a.overlaps(gkRect(V(3.0, 0.5), V(1.0, 1.0))));
  EXPECT_FALSE(a.overlaps(gkRect(V(-5.0, 0.5), V(1.0, 1.0))));
}
