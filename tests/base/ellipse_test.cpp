#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <gk/base/angle.h>
#include <gk/base/circle.h>
#include <gk/base/ellipse.h>
#include <gk/base/point.h>
#include <gk/base/vector.h>

namespace {

using V = gkVector<2>;
using Geom = gkEllipse::gkEllipseGeom;
constexpr double kPi = 3.14159265358979323846;

Geom makeGeom(const V& center, const V& radii, double rotation, bool majorFirst,
              bool normalizeRotation) {
  Geom g;
  g.center = center;
  g.radii = radii;
  g.rotation = gkRadian(rotation);
  g.majorFirst = majorFirst;
  g.normalizeRotation = normalizeRotation;
  return g;
}

}  // namespace

// ---- gkCircle --------------------------------------------------------------------------------

TEST(Circle, DefaultIsThePointAtTheOrigin) {
  const gkCircle c;
  EXPECT_EQ(c.center(), V());
  EXPECT_EQ(c.radius(), 0.0);
}

TEST(Circle, KeepsCentreAndRadius) {
  const gkCircle c(V(0.1, -2.5), 0.7);
  EXPECT_EQ(c.center(), V(0.1, -2.5));
  EXPECT_EQ(c.radius(), 0.7);
}

TEST(Circle, EqualityComparesCentreAndRadius) {
  const gkCircle c(V(1.0, 2.0), 3.0);
  EXPECT_EQ(c, gkCircle(V(1.0, 2.0), 3.0));
  EXPECT_NE(c, gkCircle(V(1.0, 2.5), 3.0));
  EXPECT_NE(c, gkCircle(V(1.0, 2.0), 3.5));
}

// ---- gkEllipse -------------------------------------------------------------------------------

TEST(Ellipse, DefaultIsThePointAtTheOrigin) {
  const gkEllipse e;
  EXPECT_EQ(e.center(), V());
  EXPECT_EQ(e.radii(), V());
  EXPECT_EQ(e.rotation().toDouble(), 0.0);
}

TEST(Ellipse, FromACircleHasEqualRadiiAndNoRotation) {
  const gkEllipse e(gkCircle(V(0.1, 0.2), 0.3));
  EXPECT_EQ(e.center(), V(0.1, 0.2));
  EXPECT_EQ(e.radii(), V(0.3, 0.3));
  EXPECT_EQ(e.rotation().toDouble(), 0.0);
}

TEST(Ellipse, GeomRecordDefaultsLeaveBothFlagsOff) {
  const Geom g;
  EXPECT_FALSE(g.majorFirst);
  EXPECT_FALSE(g.normalizeRotation);
  EXPECT_EQ(gkEllipse(g), gkEllipse());
}

TEST(Ellipse, WithoutFlagsTheRecordIsKeptExactly) {
  // Minor radius first and a rotation far outside [0, pi): neither is touched.
  const Geom g = makeGeom(V(0.1, -0.7), V(0.3, 5.5), -7.25, false, false);
  const gkEllipse e(g);
  EXPECT_EQ(e.center(), V(0.1, -0.7));
  EXPECT_EQ(e.radii(), V(0.3, 5.5));
  EXPECT_EQ(e.rotation().toDouble(), -7.25);
}

TEST(Ellipse, MajorFirstSwapsTheRadiiAndTurnsTheRotationAQuarterTurn) {
  const gkEllipse e(makeGeom(V(1.0, 2.0), V(2.0, 5.0), 0.25, true, false));
  EXPECT_EQ(e.center(), V(1.0, 2.0));
  EXPECT_EQ(e.radii(), V(5.0, 2.0));
  EXPECT_EQ(e.rotation().toDouble(), 0.25 + kPi / 2.0);
}

TEST(Ellipse, MajorFirstKeepsRadiiThatAreAlreadyOrdered) {
  const gkEllipse e(makeGeom(V(), V(5.0, 2.0), 0.25, true, false));
  EXPECT_EQ(e.radii(), V(5.0, 2.0));
  EXPECT_EQ(e.rotation().toDouble(), 0.25);
}

TEST(Ellipse, MajorFirstKeepsEqualRadiiAndTheirRotation) {
  const gkEllipse e(makeGeom(V(), V(3.0, 3.0), 1.0, true, false));
  EXPECT_EQ(e.radii(), V(3.0, 3.0));
  EXPECT_EQ(e.rotation().toDouble(), 1.0);
}

TEST(Ellipse, MajorFirstDescribesTheSameEllipse) {
  // The end of the major axis is the same point before and after the swap.
  const gkEllipse raw(makeGeom(V(), V(2.0, 5.0), 0.4, false, false));
  const gkEllipse ordered(makeGeom(V(), V(2.0, 5.0), 0.4, true, false));
  const double a = raw.rotation().toDouble();
  const V majorEndRaw(-raw.radii().y() * std::sin(a), raw.radii().y() * std::cos(a));
  const V majorEndOrdered(ordered.radii().x(), ordered.rotation());
  EXPECT_NEAR(majorEndRaw.x(), majorEndOrdered.x(), 1e-15);
  EXPECT_NEAR(majorEndRaw.y(), majorEndOrdered.y(), 1e-15);
}

TEST(Ellipse, NormalizeRotationLeavesARotationInRangeAlone) {
  for (double r : {0.0, 0.5, 3.0, std::nextafter(kPi, 0.0)}) {
    const gkEllipse e(makeGeom(V(), V(2.0, 1.0), r, false, true));
    EXPECT_EQ(e.rotation().toDouble(), r) << r;
  }
}

TEST(Ellipse, NormalizeRotationBringsAHalfTurnAndItsMultiplesToZero) {
  for (double r : {kPi, 2.0 * kPi, 4.0 * kPi, -kPi, -2.0 * kPi}) {
    const gkEllipse e(makeGeom(V(), V(2.0, 1.0), r, false, true));
    EXPECT_EQ(e.rotation().toDouble(), 0.0) << r;
  }
}

TEST(Ellipse, NormalizeRotationRemovesWholeHalfTurns) {
  // fmod is exact and (pi + 0.5) - pi is exact, so the result is that difference bit for bit.
  const gkEllipse e(makeGeom(V(), V(2.0, 1.0), kPi + 0.5, false, true));
  EXPECT_EQ(e.rotation().toDouble(), (kPi + 0.5) - kPi);
}

TEST(Ellipse, NormalizeRotationAddsAHalfTurnToNegativeRotations) {
  const gkEllipse e(makeGeom(V(), V(2.0, 1.0), -0.5, false, true));
  EXPECT_EQ(e.rotation().toDouble(), kPi - 0.5);
}

TEST(Ellipse, NormalizeRotationSendsTinyNegativesToZeroNotToAHalfTurn) {
  for (double r : {-1e-300, -1e-17}) {
    const gkEllipse e(makeGeom(V(), V(2.0, 1.0), r, false, true));
    EXPECT_EQ(e.rotation().toDouble(), 0.0) << r;
  }
}

TEST(Ellipse, NormalizeRotationAlwaysLandsInTheHalfOpenRange) {
  for (double r = -20.0; r <= 20.0; r += 0.0625) {
    const double got = gkEllipse(makeGeom(V(), V(2.0, 1.0), r, false, true)).rotation().toDouble();
    ASSERT_GE(got, 0.0) << r;
    ASSERT_LT(got, kPi) << r;
    // Same axis: the rotations differ by whole half turns.
    const double halfTurns = (r - got) / kPi;
    EXPECT_NEAR(halfTurns, std::round(halfTurns), 1e-12) << r;
  }
}

TEST(Ellipse, BothFlagsSwapFirstThenNormalize) {
  // 3 + pi/2 is beyond pi, so the swapped rotation comes back by a half turn.
  const gkEllipse e(makeGeom(V(), V(1.0, 4.0), 3.0, true, true));
  EXPECT_EQ(e.radii(), V(4.0, 1.0));
  const double turned = 3.0 + kPi / 2.0;
  EXPECT_EQ(e.rotation().toDouble(), std::fmod(turned, kPi));
  EXPECT_NEAR(e.rotation().toDouble(), 3.0 - kPi / 2.0, 1e-15);
}

TEST(Ellipse, EqualityComparesCentreRadiiAndRotation) {
  const gkEllipse e(makeGeom(V(1.0, 2.0), V(3.0, 4.0), 0.5, false, false));
  EXPECT_EQ(e, gkEllipse(makeGeom(V(1.0, 2.0), V(3.0, 4.0), 0.5, false, false)));
  EXPECT_NE(e, gkEllipse(makeGeom(V(1.5, 2.0), V(3.0, 4.0), 0.5, false, false)));
  EXPECT_NE(e, gkEllipse(makeGeom(V(1.0, 2.0), V(3.0, 4.5), 0.5, false, false)));
  EXPECT_NE(e, gkEllipse(makeGeom(V(1.0, 2.0), V(3.0, 4.0), 0.75, false, false)));
}
