#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <gk/base/math_error.h>
#include <gk/base/matrix.h>
#include <gk/base/numeric.h>
#include <gk/base/vector.h>
#include <gk/base/xform.h>

namespace {

const gkMatrix<2> kQuarterTurn(0.0, -1.0, 1.0, 0.0);

gkXform<2> translation(double x, double y) {
  return gkXform<2>(gkMatrix<2>::identity(), gkVector<2>(x, y));
}

}  // namespace

TEST(Xform, DefaultIsTheIdentity) {
  const gkXform<2> x;
  EXPECT_EQ(x.matrix(), gkMatrix<2>::identity());
  EXPECT_EQ(x.trans(), gkVector<2>(0.0, 0.0));
}

TEST(Xform, StaticIdentityEqualsTheDefault) {
  EXPECT_EQ(gkXform<2>::I, gkXform<2>());
  EXPECT_EQ(gkXform<2>::I.matrix(), gkMatrix<2>::identity());
  EXPECT_EQ(gkXform<2>::I.trans(), gkVector<2>());
}

TEST(Xform, DefaultCanBeBuiltAtCompileTime) {
  constexpr gkXform<2> x;
  EXPECT_EQ(x, gkXform<2>::I);
}

TEST(Xform, KeepsItsMatrixAndTranslation) {
  const gkMatrix<2> m(0.1, 0.2, 0.3, 0.4);
  const gkXform<2> x(m, gkVector<2>(-1.5, 1e20));
  EXPECT_EQ(x.matrix(), m);
  EXPECT_EQ(x.trans(), gkVector<2>(-1.5, 1e20));
}

TEST(Xform, IdentityMapsEveryPointToItself) {
  for (const gkVector<2>& p : {gkVector<2>(0.1, -0.3), gkVector<2>(1e300, -1e-300)}) {
    EXPECT_EQ(gkXform<2>::I * p, p);
  }
}

TEST(Xform, MapsAPointByTheMatrixThenAddsTheTranslation) {
  const gkXform<2> x(gkMatrix<2>(1.0, 2.0, 3.0, 4.0), gkVector<2>(10.0, 20.0));
  EXPECT_EQ(x * gkVector<2>(5.0, 6.0), gkVector<2>(27.0, 59.0));
  EXPECT_EQ(x * gkVector<2>(0.0, 0.0), gkVector<2>(10.0, 20.0));
}

TEST(Xform, ProductMapsThroughTheRightFactorFirst) {
  const gkXform<2> turn(kQuarterTurn, gkVector<2>());
  const gkXform<2> shift = translation(1.0, 0.0);
  const gkVector<2> p(1.0, 2.0);
  // turn first: (1, 2) -> (-2, 1), then shift -> (-1, 1).
  EXPECT_EQ((shift * turn) * p, gkVector<2>(-1.0, 1.0));
  // shift first: (1, 2) -> (2, 2), then turn -> (-2, 2).
  EXPECT_EQ((turn * shift) * p, gkVector<2>(-2.0, 2.0));
}

TEST(Xform, ProductAgreesWithMappingTwice) {
  const gkXform<2> a(gkMatrix<2>(2.0, 1.0, -1.0, 3.0), gkVector<2>(0.5, -4.0));
  const gkXform<2> b(gkMatrix<2>(0.0, 4.0, 1.0, -2.0), gkVector<2>(3.0, 1.0));
  for (const gkVector<2>& p : {gkVector<2>(1.0, 2.0), gkVector<2>(-3.0, 0.25), gkVector<2>()}) {
    EXPECT_EQ((a * b) * p, a * (b * p));
    EXPECT_EQ((b * a) * p, b * (a * p));
  }
  EXPECT_NE(a * b, b * a);
}

TEST(Xform, ProductOfTranslationsAddsThem) {
  EXPECT_EQ(translation(1.0, 2.0) * translation(0.5, -4.0), translation(1.5, -2.0));
}

TEST(Xform, IdentityIsNeutralInProducts) {
  const gkXform<2> a(gkMatrix<2>(0.1, 0.7, -0.3, 2.0), gkVector<2>(0.2, 0.3));
  EXPECT_EQ(a * gkXform<2>::I, a);
  EXPECT_EQ(gkXform<2>::I * a, a);
}

TEST(Xform, InverseOfAnExactlyInvertibleTransform) {
  const gkXform<2> x(gkMatrix<2>(2.0, 0.0, 0.0, 4.0), gkVector<2>(1.0, 2.0));
  const gkXform<2> inv = x.inverse();
  EXPECT_EQ(inv.matrix(), gkMatrix<2>(0.5, 0.0, 0.0, 0.25));
  EXPECT_EQ(inv.trans(), gkVector<2>(-0.5, -0.5));
  EXPECT_EQ(inv * x, gkXform<2>::I);
  EXPECT_EQ(x * inv, gkXform<2>::I);
}

TEST(Xform, InverseUndoesTheMapping) {
  const gkXform<2> x(kQuarterTurn, gkVector<2>(3.0, -1.0));
  const gkXform<2> inv = x.inverse();
  const gkVector<2> p(5.0, 7.0);
  EXPECT_EQ(x * p, gkVector<2>(-4.0, 4.0));
  EXPECT_EQ(inv * (x * p), p);
}

TEST(Xform, InverseOfAGeneralTransformIsCloseToExact) {
  const gkXform<2> x(gkMatrix<2>(0.3, 1.7, -2.1, 0.9), gkVector<2>(12.5, -3.25));
  EXPECT_TRUE(gwRealEq(x.inverse() * x, gkXform<2>::I, 1e-14));
  EXPECT_TRUE(gwRealEq(x * x.inverse(), gkXform<2>::I, 1e-14));
  EXPECT_TRUE(gwRealEq(x.inverse().inverse(), x, 1e-14));
}

TEST(Xform, InverseOfASingularTransformThrowsSingular) {
  const gkXform<2> flat(gkMatrix<2>(1.0, 2.0, 0.5, 1.0), gkVector<2>(1.0, 1.0));
  EXPECT_THROW(flat.inverse(), gkMathError::Singular);
  EXPECT_THROW(gkXform<2>(gkMatrix<2>(), gkVector<2>()).inverse(), gkMathError::Singular);
}

TEST(Xform, InverseOfANonFiniteTransformThrowsSingular) {
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_THROW(gkXform<2>(gkMatrix<2>(inf, 0.0, 0.0, 1.0), gkVector<2>()).inverse(),
               gkMathError::Singular);
}

TEST(Xform, EqualityComparesAllSixNumbers) {
  const gkXform<2> x(gkMatrix<2>(1.0, 2.0, 3.0, 4.0), gkVector<2>(5.0, 6.0));
  EXPECT_EQ(x, gkXform<2>(gkMatrix<2>(1.0, 2.0, 3.0, 4.0), gkVector<2>(5.0, 6.0)));
  EXPECT_NE(x, gkXform<2>(gkMatrix<2>(1.0, 2.0, 3.0, 4.5), gkVector<2>(5.0, 6.0)));
  EXPECT_NE(x, gkXform<2>(gkMatrix<2>(1.0, 2.0, 3.0, 4.0), gkVector<2>(5.5, 6.0)));
  EXPECT_NE(x, gkXform<2>(gkMatrix<2>(1.0, 2.0, 3.0, 4.0), gkVector<2>(5.0, 6.5)));
}
