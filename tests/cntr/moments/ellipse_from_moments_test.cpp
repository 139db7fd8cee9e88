#include <gk/cntr/moments/ellipse_from_moments.h>

#include <cmath>
#include <string>
#include <vector>

#include <gk/base/edgelet.h>
#include <gk/base/math_error.h>
#include <gk/cntr/moments/polygon_moments.h>
#include <gtest/gtest.h>

namespace {

using Points = std::vector<gkVector<2>>;

constexpr double kPi = 3.14159265358979323846;

/// The exact moment record of an ellipse of semi-axes a (along angle theta) and b, centred at c.
gk_InertiaData ellipseRecord(double a, double b, double theta, const gkVector<2>& c) {
  const double iu = kPi * a * a * a * b / 4.0;  // about the axis of b: integral of u^2
  const double iv = kPi * a * b * b * b / 4.0;  // integral of v^2
  const double k = std::cos(theta);
  const double s = std::sin(theta);
  const double m00 = k * k * iu + s * s * iv;
  const double m11 = s * s * iu + k * k * iv;
  const double m01 = s * k * (iu - iv);
  return gk_InertiaData(kPi * a * b, c, gkMatrix<2>(m00, m01, m01, m11));
}

/// Semi-axes from principal moments, as the closed form inverts pi a^3 b / 4, pi a b^3 / 4.
double semiAxis(double l1, double l2) {
  return std::pow(16.0 * l1 * l1 * l1 / (kPi * kPi * l2), 0.125);
}

gk_InertiaData diagonalRecord(double m00, double m11) {
  return gk_InertiaData(1.0, gkVector<2>(0.0, 0.0), gkMatrix<2>(m00, 0.0, 0.0, m11));
}

Points circlePoints(const gkVector<2>& c, double r, int n, double start) {
  Points p;
  for (int i = 0; i < n; ++i) {
    const double t = start + 2.0 * kPi * i / n;
    p.push_back(c + gkVector<2>(r * std::cos(t), r * std::sin(t)));
  }
  return p;
}

std::vector<gkEdgelet> edgeletsAt(const Points& p) {
  std::vector<gkEdgelet> e;
  for (std::size_t i = 0; i < p.size(); ++i) {
    e.emplace_back(p[i], static_cast<unsigned short>(100 + i),
                   gkAngle8(static_cast<unsigned char>(i * 5)));
  }
  return e;
}

}  // namespace

// --- gw_EllipseFromInertiaData ------------------------------------------------------------------

TEST(EllipseFromInertiaData, FourByTwoRectangleGivesRotationZeroAndTheLongerAxisFirst) {
  const gk_InertiaData d(8.0, gkVector<2>(2.0, 1.0), gkMatrix<2>(32.0 / 3.0, 0.0, 0.0, 8.0 / 3.0));
  const gkEllipse e = gw_EllipseFromInertiaData(d);
  EXPECT_EQ(e.rotation().toDouble(), 0.0);
  EXPECT_GT(e.radii().x(), e.radii().y());
  EXPECT_NEAR(e.radii().x(), semiAxis(32.0 / 3.0, 8.0 / 3.0), 1e-14);
  EXPECT_NEAR(e.radii().y(), semiAxis(8.0 / 3.0, 32.0 / 3.0), 1e-14);
  EXPECT_EQ(e.center(), gkVector<2>(2.0, 1.0));
}

TEST(EllipseFromInertiaData, TwoByFourRectangleGivesAQuarterTurnAndTheLongerAxisFirst) {
  const gk_InertiaData d(8.0, gkVector<2>(1.0, 2.0), gkMatrix<2>(8.0 / 3.0, 0.0, 0.0, 32.0 / 3.0));
  const gkEllipse e = gw_EllipseFromInertiaData(d);
  EXPECT_EQ(e.rotation().toDouble(), std::atan2(0.0, -8.0) / 2.0);
  EXPECT_DOUBLE_EQ(e.rotation().toDouble(), kPi / 2.0);
  EXPECT_GT(e.radii().x(), e.radii().y());
  EXPECT_NEAR(e.radii().x(), semiAxis(32.0 / 3.0, 8.0 / 3.0), 1e-14);
  EXPECT_NEAR(e.radii().y(), semiAxis(8.0 / 3.0, 32.0 / 3.0), 1e-14);
  EXPECT_EQ(e.center(), gkVector<2>(1.0, 2.0));
}

TEST(EllipseFromInertiaData, RectangleMomentsFromThePolygonGiveTheSameEllipse) {
  const gkEllipse e =
      gw_EllipseFromInertiaData(gw_InertiaDataPolygon(Points{{0, 0}, {4, 0}, {4, 2}, {0, 2}}));
  EXPECT_NEAR(e.rotation().toDouble(), 0.0, 1e-14);
  EXPECT_NEAR(e.radii().x(), semiAxis(32.0 / 3.0, 8.0 / 3.0), 1e-13);
  EXPECT_NEAR(e.radii().y(), semiAxis(8.0 / 3.0, 32.0 / 3.0), 1e-13);
  EXPECT_NEAR(e.center().x(), 2.0, 1e-14);
  EXPECT_NEAR(e.center().y(), 1.0, 1e-14);
}

TEST(EllipseFromInertiaData, EqualDiagonalMomentsGiveACircleWithRotationZero) {
  const gkEllipse e = gw_EllipseFromInertiaData(diagonalRecord(5.0, 5.0));
  EXPECT_EQ(e.rotation().toDouble(), 0.0);
  EXPECT_EQ(e.radii().x(), e.radii().y());
  // A disc of radius r has moments pi r^4 / 4.
  EXPECT_NEAR(e.radii().x(), std::pow(4.0 * 5.0 / kPi, 0.25), 1e-14);
}

TEST(EllipseFromInertiaData, ExactMomentsOfAnEllipseGiveItsAxesAndRotationBack) {
  struct Case {
    double a;
    double b;
    double theta;
  };
  const Case cases[] = {{3.0, 1.5, 0.4},   {5.0, 0.25, -1.2},  {2.0, 1.0, 0.0},
                        {7.5, 7.0, 1.5},   {1e-2, 4e-3, 0.7},  {120.0, 30.0, -0.3},
                        {1.0, 0.999, 1.0}, {4.0, 2.0, -0.785}, {2.5, 0.5, 1.2}};
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << "a " << c.a << " b " << c.b << " theta " << c.theta);
    const gkVector<2> centre(-3.0, 8.5);
    const gkEllipse e = gw_EllipseFromInertiaData(ellipseRecord(c.a, c.b, c.theta, centre));
    EXPECT_NEAR(e.radii().x(), c.a, 1e-12 * c.a);
    EXPECT_NEAR(e.radii().y(), c.b, 1e-12 * c.a);
    EXPECT_NEAR(e.rotation().toDouble(), c.theta, 1e-12 * (1.0 + std::fabs(c.theta)));
    EXPECT_EQ(e.center(), centre);
  }
}

TEST(EllipseFromInertiaData, ALargerMomentAboutYTurnsTheRotationAQuarterTurn) {
  // The moments of the ellipse with semi-axes 1 along x and 3 along y: M00 < M11, so the
  // rotation is atan2(0, negative) / 2 = pi / 2 and the first radius, along it, is the 3.
  const gkEllipse e = gw_EllipseFromInertiaData(diagonalRecord(kPi * 3.0 / 4.0, kPi * 27.0 / 4.0));
  EXPECT_EQ(e.rotation().toDouble(), std::atan2(0.0, -1.0) / 2.0);
  EXPECT_NEAR(e.radii().x(), 3.0, 1e-12);
  EXPECT_NEAR(e.radii().y(), 1.0, 1e-12);
}

TEST(EllipseFromInertiaData, TheRecordsAreaIsNotUsed) {
  const gkMatrix<2> m(4.0, 1.0, 1.0, 2.0);
  const gkEllipse e1 = gw_EllipseFromInertiaData(gk_InertiaData(1.0, gkVector<2>(1, 1), m));
  const gkEllipse e2 = gw_EllipseFromInertiaData(gk_InertiaData(100.0, gkVector<2>(1, 1), m));
  const gkEllipse e3 = gw_EllipseFromInertiaData(gk_InertiaData(-5.0, gkVector<2>(1, 1), m));
  EXPECT_EQ(e1, e2);
  EXPECT_EQ(e1, e3);
}

TEST(EllipseFromInertiaData, AFinePolygonOfAnEllipseGivesThatEllipse) {
  Points p;
  const int n = 4000;
  const double a = 5.0;
  const double b = 2.0;
  const double theta = 0.6;
  for (int i = 0; i < n; ++i) {
    const double t = 2.0 * kPi * i / n;
    const double u = a * std::cos(t);
    const double v = b * std::sin(t);
    p.push_back(gkVector<2>(10.0 + u * std::cos(theta) - v * std::sin(theta),
                            -4.0 + u * std::sin(theta) + v * std::cos(theta)));
  }
  const gkEllipse e = gw_EllipseFromInertiaData(gw_InertiaDataPolygon(p));
  EXPECT_NEAR(e.radii().x(), a, 1e-5);
  EXPECT_NEAR(e.radii().y(), b, 1e-5);
  EXPECT_NEAR(e.rotation().toDouble(), theta, 1e-9);
  EXPECT_NEAR(e.center().x(), 10.0, 1e-9);
  EXPECT_NEAR(e.center().y(), -4.0, 1e-9);
}

TEST(EllipseFromInertiaData, AZeroMatrixThrowsSingularWithAnEmptyMessage) {
  const gk_InertiaData d(1.0, gkVector<2>(3, 4), gkMatrix<2>());
  try {
    (void)gw_EllipseFromInertiaData(d);
    FAIL() << "expected gkMathError::Singular";
  } catch (const gkMathError::Singular& e) {
    EXPECT_EQ(e.message(), std::wstring());
  }
}

TEST(EllipseFromInertiaData, TheEmptyRecordThrowsSingular) {
  EXPECT_THROW((void)gw_EllipseFromInertiaData(gk_InertiaData()), gkMathError::Singular);
}

TEST(EllipseFromInertiaData, APrincipalMomentWithinTheToleranceOfZeroThrowsSingular) {
  EXPECT_THROW((void)gw_EllipseFromInertiaData(diagonalRecord(1.0, 1e-13)), gkMathError::Singular);
  EXPECT_THROW((void)gw_EllipseFromInertiaData(diagonalRecord(5e-13, 2.0)), gkMathError::Singular);
  // Just above the tolerance: a (very thin) ellipse.
  EXPECT_NO_THROW((void)gw_EllipseFromInertiaData(diagonalRecord(1.0, 1e-11)));
}

TEST(EllipseFromInertiaData, TheMomentsOfARotatedLineSegmentThrowSingular) {
  // All mass on the line at 30 degrees: M = L (cos^2, cos sin; cos sin, sin^2).
  const double k = std::cos(kPi / 6.0);
  const double s = std::sin(kPi / 6.0);
  const gk_InertiaData d(0.0, gkVector<2>(), gkMatrix<2>(k * k, k * s, k * s, s * s));
  EXPECT_THROW((void)gw_EllipseFromInertiaData(d), gkMathError::Singular);
}

// --- gw_FitEllipse
// --------------------------------------------------------------------------------

TEST(FitEllipse, PointsOnACircleGiveEqualRadii) {
  const Points p = circlePoints(gkVector<2>(3.0, -2.0), 4.0, 24, 0.1);
  gkEllipse e;
  double error = -2.0;
  gw_FitEllipse(p, e, error);
  EXPECT_NEAR(e.radii().x(), e.radii().y(), 1e-9);
  EXPECT_NEAR(e.radii().x(), 4.0, 1e-9);
  EXPECT_NEAR(e.center().x(), 3.0, 1e-9);
  EXPECT_NEAR(e.center().y(), -2.0, 1e-9);
  EXPECT_GE(error, 0.0);
  EXPECT_LT(error, 1e-9);
}

TEST(FitEllipse, PointsOnAnEllipseGiveThatEllipse) {
  Points p;
  const double a = 6.0;
  const double b = 2.0;
  const double theta = 0.5;
  for (int i = 0; i < 30; ++i) {
    const double t = 2.0 * kPi * i / 30.0;
    const double u = a * std::cos(t);
    const double v = b * std::sin(t);
    p.push_back(gkVector<2>(1.0 + u * std::cos(theta) - v * std::sin(theta),
                            2.0 + u * std::sin(theta) + v * std::cos(theta)));
  }
  gkEllipse e;
  double error = -2.0;
  gw_FitEllipse(p, e, error);
  const double major = std::fmax(e.radii().x(), e.radii().y());
  const double minor = std::fmin(e.radii().x(), e.radii().y());
  EXPECT_NEAR(major, a, 1e-7);
  EXPECT_NEAR(minor, b, 1e-7);
  EXPECT_NEAR(e.center().x(), 1.0, 1e-7);
  EXPECT_NEAR(e.center().y(), 2.0, 1e-7);
  EXPECT_GE(error, 0.0);
  EXPECT_LT(error, 1e-7);
}

TEST(FitEllipse, FourPointsOnACircleFallBackToTheCircleFit) {
  // Too few points for an ellipse; the circle through them stands in, as an ellipse with equal
  // radii and rotation 0.
  const Points p = circlePoints(gkVector<2>(-1.0, 5.0), 2.0, 4, 0.3);
  gkEllipse e;
  double error = -2.0;
  gw_FitEllipse(p, e, error);
  EXPECT_NE(error, -1.0);
  EXPECT_EQ(e.radii().x(), e.radii().y());
  EXPECT_NEAR(e.radii().x(), 2.0, 1e-9);
  EXPECT_EQ(e.rotation().toDouble(), 0.0);
  EXPECT_NEAR(e.center().x(), -1.0, 1e-9);
  EXPECT_NEAR(e.center().y(), 5.0, 1e-9);
  EXPECT_GE(error, 0.0);
  EXPECT_LT(error, 1e-9);
}

TEST(FitEllipse, TwoPointsGiveErrorMinusOneAndTheDefaultEllipse) {
  gkEllipse e(gkCircle(gkVector<2>(9, 9), 3.0));
  double error = 0.0;
  gw_FitEllipse(Points{{0, 0}, {1, 1}}, e, error);
  EXPECT_EQ(error, -1.0);
  EXPECT_EQ(e, gkEllipse());
}

TEST(FitEllipse, AllEqualPointsGiveErrorMinusOneAndTheDefaultEllipse) {
  gkEllipse e(gkCircle(gkVector<2>(9, 9), 3.0));
  double error = 0.0;
  gw_FitEllipse(Points(8, gkVector<2>(2.5, -1.5)), e, error);
  EXPECT_EQ(error, -1.0);
  EXPECT_EQ(e, gkEllipse());
}

TEST(FitEllipse, NoPointsGiveErrorMinusOneAndTheDefaultEllipse) {
  gkEllipse e(gkCircle(gkVector<2>(9, 9), 3.0));
  double error = 0.0;
  gw_FitEllipse(Points{}, e, error);
  EXPECT_EQ(error, -1.0);
  EXPECT_EQ(e, gkEllipse());
}

TEST(FitEllipse, EdgeletFormAgreesWithThePointForm) {
  const Points inputs[] = {circlePoints(gkVector<2>(3.0, -2.0), 4.0, 24, 0.1),
                           circlePoints(gkVector<2>(-1.0, 5.0), 2.0, 4, 0.3),
                           Points{{0, 0}, {1, 1}}};
  for (const Points& p : inputs) {
    gkEllipse fromPoints;
    double pointError = 0.0;
    gw_FitEllipse(p, fromPoints, pointError);
    gkEllipse fromEdgelets;
    double edgeletError = 0.0;
    gw_FitEllipse(edgeletsAt(p), fromEdgelets, edgeletError);
    EXPECT_EQ(fromEdgelets, fromPoints);
    EXPECT_EQ(edgeletError, pointError);
  }
}
