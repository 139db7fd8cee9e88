#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include <gk/base/angle.h>
#include <gk/base/ellipse.h>
#include <gk/base/ellipse_fit.h>
#include <gk/base/math_error.h>
#include <gk/base/vector.h>

#include "base/detail/ellipse_distance.h"

namespace {

using V = gkVector<2>;
constexpr double kPi = 3.14159265358979323846;

// The plain fit, as the library calls it.
gkEllipseFitParams plainParams() {
  return gkEllipseFitParams(gkEllipseFitParams::eLeastSquares, gkRadian(0), 0, DBL_MAX);
}

gkEllipse makeEllipse(const V& center, double r0, double r1, double rotation) {
  return gkEllipse(gkEllipse::gkEllipseGeom{center, V(r0, r1), gkRadian(rotation), false, false});
}

V pointOn(const gkEllipse& e, double t) {
  const double c = std::cos(e.rotation().toDouble());
  const double s = std::sin(e.rotation().toDouble());
  const double a = e.radii().x() * std::cos(t);
  const double b = e.radii().y() * std::sin(t);
  return e.center() + V(a * c - b * s, a * s + b * c);
}

std::vector<V> pointsOn(const gkEllipse& e, int count, double t0 = 0.0, double span = 2.0 * kPi) {
  std::vector<V> points;
  for (int i = 0; i < count; ++i) {
    points.push_back(pointOn(e, t0 + span * i / count));
  }
  return points;
}

// A uniform double in (0, 1] from the top 53 bits, and a normal deviate by Box-Muller: the same
// sequence on every platform, unlike std::normal_distribution.
double uniform(std::mt19937_64& rng) {
  return static_cast<double>((rng() >> 11) + 1) * 0x1.0p-53;
}

double gaussian(std::mt19937_64& rng) {
  const double u1 = uniform(rng);
  const double u2 = uniform(rng);
  return std::sqrt(-2.0 * std::log(u1)) * std::cos(2.0 * kPi * u2);
}

// The difference of two axis directions, which are the same modulo a half turn.
double axisAngleDifference(double a, double b) {
  double d = std::fmod(a - b, kPi);
  if (d < 0.0) {
    d += kPi;
  }
  return std::fmin(d, kPi - d);
}

// The distance to the ellipse by dense sampling of its parameter, then golden-section search in
// the bracket round the best sample.
double bruteForceDistance(const gkEllipse& e, const V& p) {
  constexpr int kSamples = 2048;
  int best = 0;
  double bestDistance = std::numeric_limits<double>::infinity();
  for (int i = 0; i < kSamples; ++i) {
    const double d = p.distance(pointOn(e, 2.0 * kPi * i / kSamples));
    if (d < bestDistance) {
      bestDistance = d;
      best = i;
    }
  }
  double lo = 2.0 * kPi * (best - 1) / kSamples;
  double hi = 2.0 * kPi * (best + 1) / kSamples;
  const double ratio = (std::sqrt(5.0) - 1.0) / 2.0;
  for (int i = 0; i < 80; ++i) {
    const double m1 = hi - ratio * (hi - lo);
    const double m2 = lo + ratio * (hi - lo);
    if (p.distance(pointOn(e, m1)) < p.distance(pointOn(e, m2))) {
      hi = m2;
    } else {
      lo = m1;
    }
  }
  return std::fmin(bestDistance, p.distance(pointOn(e, 0.5 * (lo + hi))));
}

void expectSameEllipse(const gkEllipse& expected, const gkEllipse& actual, double tol) {
  EXPECT_NEAR(actual.center().x(), expected.center().x(), tol);
  EXPECT_NEAR(actual.center().y(), expected.center().y(), tol);
  EXPECT_NEAR(actual.radii().x(), expected.radii().x(), tol);
  EXPECT_NEAR(actual.radii().y(), expected.radii().y(), tol);
  EXPECT_LT(axisAngleDifference(actual.rotation().toDouble(), expected.rotation().toDouble()), tol);
}

}  // namespace

// ---- exact and noisy shapes ------------------------------------------------------------------

TEST(EllipseFit, ExactPointsRecoverTheShapeForAnyRotationCentreAndAxisRatio) {
  const V centres[] = {V(0.0, 0.0), V(1000.0, -500.0), V(-3.5, 7.25)};
  const double ratios[] = {1.5, 3.0, 10.0};
  const double rotations[] = {0.0, 0.3, 1.2, 2.0, 3.0};
  for (const V& c : centres) {
    for (double ratio : ratios) {
      for (double rotation : rotations) {
        const gkEllipse truth = makeEllipse(c, 90.0, 90.0 / ratio, rotation);
        gkEllipseFitResults results;
        gwEllipseFit(plainParams(), pointsOn(truth, 40, 0.1), results);
        SCOPED_TRACE(testing::Message() << "ratio " << ratio << " rotation " << rotation);
        expectSameEllipse(truth, results.ellipse(), 1e-9);
        EXPECT_LT(results.error(), 1e-9);
      }
    }
  }
}

TEST(EllipseFit, ReportsTheMajorSemiAxisFirstAlongTheRotationInAHalfTurn) {
  // Built with the minor radius first and a rotation outside [0, pi).
  const gkEllipse truth = makeEllipse(V(5.0, 6.0), 20.0, 50.0, -0.4);
  gkEllipseFitResults results;
  gwEllipseFit(plainParams(), pointsOn(truth, 30), results);
  EXPECT_NEAR(results.ellipse().radii().x(), 50.0, 1e-9);
  EXPECT_NEAR(results.ellipse().radii().y(), 20.0, 1e-9);
  EXPECT_NEAR(results.ellipse().rotation().toDouble(), -0.4 + kPi / 2.0, 1e-9);
}

TEST(EllipseFit, AngleSetsTheHalfTurnTheRotationIsReportedIn) {
  const gkEllipse truth = makeEllipse(V(0.0, 0.0), 50.0, 20.0, 0.5);
  gkEllipseFitResults results;
  gwEllipseFit(gkEllipseFitParams(gkEllipseFitParams::eLeastSquares, gkRadian(2.0), 0, DBL_MAX),
               pointsOn(truth, 30), results);
  EXPECT_NEAR(results.ellipse().rotation().toDouble(), 0.5 + kPi, 1e-9);
  gwEllipseFit(gkEllipseFitParams(gkEllipseFitParams::eLeastSquares, gkRadian(-kPi), 0, DBL_MAX),
               pointsOn(truth, 30), results);
  EXPECT_NEAR(results.ellipse().rotation().toDouble(), 0.5 - kPi, 1e-9);
}

TEST(EllipseFit, CirclePointsGiveEqualRadii) {
  const gkEllipse truth = makeEllipse(V(1000.0, -500.0), 30.0, 30.0, 0.0);
  gkEllipseFitResults results;
  gwEllipseFit(plainParams(), pointsOn(truth, 12), results);
  EXPECT_NEAR(results.ellipse().center().x(), 1000.0, 1e-9);
  EXPECT_NEAR(results.ellipse().center().y(), -500.0, 1e-9);
  EXPECT_NEAR(results.ellipse().radii().x(), 30.0, 1e-9);
  EXPECT_NEAR(results.ellipse().radii().y(), 30.0, 1e-9);
}

TEST(EllipseFit, FiveDistinctPointsOnAnEllipseDetermineIt) {
  const gkEllipse truth = makeEllipse(V(10.0, 20.0), 40.0, 15.0, 0.7);
  std::vector<V> points = pointsOn(truth, 5, 0.2);
  points.push_back(points[0]);  // a repeat adds weight, not a constraint
  gkEllipseFitResults results;
  gwEllipseFit(plainParams(), points, results);
  expectSameEllipse(truth, results.ellipse(), 1e-9);
}

TEST(EllipseFit, NoisyPointsRoundAnEllipseRecoverItsShape) {
  const gkEllipse truth = makeEllipse(V(300.0, 200.0), 120.0, 60.0, 0.5);
  std::mt19937_64 rng(20240611);
  std::vector<V> points;
  for (int i = 0; i < 256; ++i) {
    const V p = pointOn(truth, 2.0 * kPi * i / 256);
    const double dx = 0.5 * gaussian(rng);
    const double dy = 0.5 * gaussian(rng);
    points.push_back(p + V(dx, dy));
  }
  gkEllipseFitResults results;
  gwEllipseFit(plainParams(), points, results);
  const gkEllipse& e = results.ellipse();
  EXPECT_NEAR(e.center().x(), 300.0, 0.2);
  EXPECT_NEAR(e.center().y(), 200.0, 0.2);
  EXPECT_NEAR(e.radii().x(), 120.0, 0.2);
  EXPECT_NEAR(e.radii().y(), 60.0, 0.2);
  EXPECT_LT(axisAngleDifference(e.rotation().toDouble(), 0.5), 0.01);
  // Isotropic noise of sigma 0.5 is about 0.5 across the curve.
  EXPECT_GT(results.error(), 0.3);
  EXPECT_LT(results.error(), 0.7);
}

TEST(EllipseFit, ShortArcOfHyperbolaLikeDataStillGivesAnEllipse) {
  // Points on one branch of a hyperbola: the best free conic is a hyperbola, the direct fit is
  // constrained to return an ellipse.
  std::vector<V> points;
  for (int i = -10; i <= 10; ++i) {
    const double t = 0.1 * i;
    points.push_back(V(std::cosh(t) * 10.0, std::sinh(t) * 10.0));
  }
  gkEllipseFitResults results;
  gwEllipseFit(plainParams(), points, results);
  EXPECT_GT(results.ellipse().radii().y(), 0.0);
  EXPECT_TRUE(std::isfinite(results.ellipse().radii().x()));
}

// ---- error() -------------------------------------------------------------------------------

TEST(EllipseFit, ErrorIsTheRootMeanSquareOrthogonalDistance) {
  const gkEllipse truth = makeEllipse(V(-20.0, 40.0), 80.0, 30.0, 1.0);
  std::mt19937_64 rng(7);
  std::vector<V> points;
  for (int i = 0; i < 24; ++i) {
    const double dx = 2.0 * gaussian(rng);
    const double dy = 2.0 * gaussian(rng);
    points.push_back(pointOn(truth, 2.0 * kPi * i / 24) + V(dx, dy));
  }
  gkEllipseFitResults results;
  gwEllipseFit(plainParams(), points, results);
  double sum = 0.0;
  for (const V& p : points) {
    const double d = bruteForceDistance(results.ellipse(), p);
    sum += d * d;
  }
  EXPECT_NEAR(results.error(), std::sqrt(sum / 24.0), 1e-9);
}

TEST(EllipseFit, DistanceToAnEllipseIsTheSampledMinimum) {
  std::mt19937_64 rng(99);
  const gkEllipse shapes[] = {
      makeEllipse(V(0.0, 0.0), 50.0, 20.0, 0.0), makeEllipse(V(10.0, -5.0), 30.0, 29.0, 2.5),
      makeEllipse(V(3.0, 4.0), 10.0, 40.0, 0.8), makeEllipse(V(0.0, 0.0), 25.0, 25.0, 0.0)};
  for (const gkEllipse& e : shapes) {
    for (int i = 0; i < 40; ++i) {
      const V p(e.center().x() + 120.0 * (uniform(rng) - 0.5),
                e.center().y() + 120.0 * (uniform(rng) - 0.5));
      const double expected = bruteForceDistance(e, p);
      EXPECT_NEAR(gk::detail::ellipseDistance(e, p), expected, 1e-9 * (1.0 + expected));
    }
  }
}

namespace {

/// The root of the distance function by plain bisection to the last pair of neighbouring
/// doubles: slow and sure, the reference for the bracketed Newton and chord steps.
double bisectedRoot(double rm1, double n0, double z1, double g) {
  double t0 = z1;
  double t1 = 1.0;
  if (g >= 0.0) {
    const double m = std::max(n0, z1);
    t1 = m * std::sqrt((n0 / m) * (n0 / m) + (z1 / m) * (z1 / m));
  }
  for (int i = 0; i < 5000; ++i) {
    const double t = 0.5 * (t0 + t1);
    if (t == t0 || t == t1) {
      return t;
    }
    const double value = (n0 / (t + rm1)) * (n0 / (t + rm1)) + (z1 / t) * (z1 / t) - 1.0;
    if (value > 0.0) {
      t0 = t;
    } else if (value < 0.0) {
      t1 = t;
    } else {
      return t;
    }
  }
  return 0.5 * (t0 + t1);
}

}  // namespace

TEST(EllipseFit, DistanceRootAgreesWithPlainBisectionOverEveryScale) {
  // Semi-axes from nearly equal to 1e6 apart, points from a hair off the axes to far outside:
  // the bracketed steps find the root bisection finds. Where the function is flat next to its
  // rounding (very elongated ellipses, points near the major axis) any double in a band of a
  // few dozen units in the last place is a root of the computed function; 1e-12 relative is
  // far inside what the distance needs and far outside that band.
  std::mt19937_64 rng(2026);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  int compared = 0;
  for (int trial = 0; trial < 20000; ++trial) {
    const double e0 = 1.0;
    const double e1 = std::pow(10.0, -6.0 * u(rng));  // minor semi-axis, e0 >= e1
    const double scale = std::pow(10.0, 8.0 * u(rng) - 4.0);
    const double y0 = scale * u(rng) + (trial % 7 == 0 ? 0.0 : 1e-300);
    const double y1 = trial % 5 == 0 ? scale * 1e-12 * u(rng) + 5e-324 : scale * u(rng) + 1e-300;
    const double z0 = y0 / e0;
    const double z1 = y1 / e1;
    const double g = z0 * z0 + z1 * z1 - 1.0;
    if (g == 0.0 || !std::isfinite(g)) {
      continue;
    }
    const double ratio = e0 / e1;
    const double r0 = ratio * ratio;
    const double rm1 = ((e0 - e1) / e1) * ((e0 + e1) / e1);
    if (!std::isfinite(r0 * z0) || !std::isfinite(rm1)) {
      continue;
    }
    const double fast = gk::detail::ellipseDistanceRoot(rm1, r0 * z0, z1, g);
    const double plain = bisectedRoot(rm1, r0 * z0, z1, g);
    ASSERT_NEAR(fast, plain, 1e-12 * plain) << "trial " << trial;
    ++compared;
  }
  EXPECT_GT(compared, 15000);
}

TEST(EllipseFit, DistanceFromPointsOnTheAxesIsExact) {
  const gkEllipse e = makeEllipse(V(0.0, 0.0), 50.0, 20.0, 0.0);
  EXPECT_DOUBLE_EQ(gk::detail::ellipseDistance(e, V(0.0, 0.0)), 20.0);
  EXPECT_DOUBLE_EQ(gk::detail::ellipseDistance(e, V(0.0, -35.0)), 15.0);
  EXPECT_DOUBLE_EQ(gk::detail::ellipseDistance(e, V(70.0, 0.0)), 20.0);
  // Inside the centre of curvature of the major vertex (at 50 - 20^2/50 = 42) the nearest point
  // is off the axis.
  const double inner = gk::detail::ellipseDistance(e, V(30.0, 0.0));
  EXPECT_LT(inner, 20.0);
  EXPECT_NEAR(inner, bruteForceDistance(e, V(30.0, 0.0)), 1e-9);
}

TEST(EllipseFit, DistanceFromPointsAHairOffTheMajorAxisStaysAccurate) {
  // Inside the centre of curvature of the vertex the nearest point is off the axis; a point a
  // rounding error off the axis must still find it rather than divide by a vanishing term.
  const gkEllipse e = makeEllipse(V(0.0, 0.0), 50.0, 20.0, 0.0);
  const double onAxis = bruteForceDistance(e, V(30.0, 0.0));
  for (double across : {1e-17, -1e-200, 5e-324}) {
    EXPECT_NEAR(gk::detail::ellipseDistance(e, V(30.0, across)), onAxis, 1e-9);
  }
  const gkEllipse turned = makeEllipse(V(0.936776, 0.936776), 1.29558, 0.682304, kPi / 4.0);
  for (const V& p : {V(0.0, 0.0), V(2.0, 2.0), V(1.2, 1.2)}) {
    EXPECT_NEAR(gk::detail::ellipseDistance(turned, p), bruteForceDistance(turned, p), 1e-9);
  }
}

TEST(EllipseFit, FitsAtTheEndsOfTheDoubleRange) {
  for (int exponent : {-900, 900}) {
    const double s = std::ldexp(1.0, exponent);
    const gkEllipse truth = makeEllipse(V(3.0 * s, s), 2.0 * s, s, 0.25);
    gkEllipseFitResults results;
    gwEllipseFit(plainParams(), pointsOn(truth, 20), results);
    EXPECT_NEAR(results.ellipse().center().x() / s, 3.0, 1e-12);
    EXPECT_NEAR(results.ellipse().radii().x() / s, 2.0, 1e-12);
    EXPECT_NEAR(results.ellipse().radii().y() / s, 1.0, 1e-12);
    EXPECT_LT(results.error() / s, 1e-12);
  }
}

// ---- outlier rejection -----------------------------------------------------------------------

TEST(EllipseFit, OneRejectionRoundDropsAPlantedOutlier) {
  const gkEllipse truth = makeEllipse(V(1000.0, -500.0), 100.0, 40.0, 0.3);
  std::vector<V> points = pointsOn(truth, 60);
  points.push_back(truth.center() + V(0.0, 70.0));
  gkEllipseFitResults plain;
  gwEllipseFit(plainParams(), points, plain);
  EXPECT_GT(plain.error(), 1.0);

  gkEllipseFitResults rejected;
  gwEllipseFit(gkEllipseFitParams(gkEllipseFitParams::eLeastSquares, gkRadian(0), 1, 10.0), points,
               rejected);
  expectSameEllipse(truth, rejected.ellipse(), 1e-9);
  EXPECT_LT(rejected.error(), 1e-9);
}

TEST(EllipseFit, RejectionStopsWhenARoundDropsNothing) {
  const gkEllipse truth = makeEllipse(V(0.0, 0.0), 100.0, 40.0, 0.3);
  gkEllipseFitResults results;
  gwEllipseFit(gkEllipseFitParams(gkEllipseFitParams::eLeastSquares, gkRadian(0), 1000, 1e-6),
               pointsOn(truth, 30), results);
  expectSameEllipse(truth, results.ellipse(), 1e-9);
}

TEST(EllipseFit, RejectingTooManyPointsThrows) {
  const gkEllipse truth = makeEllipse(V(0.0, 0.0), 100.0, 40.0, 0.3);
  std::vector<V> points = pointsOn(truth, 20);
  for (std::size_t i = 0; i < points.size(); ++i) {
    points[i] = points[i] + V(i % 2 == 0 ? 1.0 : -1.0, 0.0);
  }
  gkEllipseFitResults results;
  EXPECT_THROW(
      gwEllipseFit(gkEllipseFitParams(gkEllipseFitParams::eLeastSquares, gkRadian(0), 1, 1e-3),
                   points, results),
      gkMathError::Singular);
}

// ---- failures --------------------------------------------------------------------------------

TEST(EllipseFit, FourPointsThrow) {
  const std::vector<V> points{V(1.0, 0.0), V(0.0, 2.0), V(-1.0, 0.0), V(0.0, -2.0)};
  gkEllipseFitResults results;
  EXPECT_THROW(gwEllipseFit(plainParams(), points, results), gkMathError::Singular);
  EXPECT_THROW(gwEllipseFit(plainParams(), {}, results), gkMathError::Singular);
}

TEST(EllipseFit, RepeatsOfFourPointsThrow) {
  std::vector<V> points;
  for (int k = 0; k < 5; ++k) {
    for (const V& p : {V(1.0, 0.0), V(0.0, 2.0), V(-1.0, 0.0), V(0.0, -2.0)}) {
      points.push_back(p);
    }
  }
  gkEllipseFitResults results;
  EXPECT_THROW(gwEllipseFit(plainParams(), points, results), gkMathError::Singular);
}

TEST(EllipseFit, CollinearPointsThrow) {
  std::vector<V> points;
  for (int i = 0; i < 10; ++i) {
    points.push_back(V(1000.0 + 3.0 * i, -500.0 + 1.5 * i));
  }
  gkEllipseFitResults results;
  EXPECT_THROW(gwEllipseFit(plainParams(), points, results), gkMathError::Singular);
  // Steps that doubles cannot hold exactly: collinear up to rounding.
  points.clear();
  for (int i = 0; i < 10; ++i) {
    points.push_back(V(1000.0 + 0.1 * i, -500.0 - 0.7 * i));
  }
  EXPECT_THROW(gwEllipseFit(plainParams(), points, results), gkMathError::Singular);
}

TEST(EllipseFit, NonFiniteCoordinatesThrow) {
  const gkEllipse truth = makeEllipse(V(0.0, 0.0), 10.0, 5.0, 0.0);
  gkEllipseFitResults results;
  for (double bad :
       {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    std::vector<V> points = pointsOn(truth, 10);
    points[3] = V(bad, 1.0);
    EXPECT_THROW(gwEllipseFit(plainParams(), points, results), gkMathError::Singular);
  }
}

TEST(EllipseFit, InvalidParametersThrow) {
  const std::vector<V> points = pointsOn(makeEllipse(V(0.0, 0.0), 10.0, 5.0, 0.0), 10);
  gkEllipseFitResults results;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_THROW(
      gwEllipseFit(gkEllipseFitParams(gkEllipseFitParams::eLeastSquares, gkRadian(nan), 0, 1.0),
                   points, results),
      gkMathError::Singular);
  EXPECT_THROW(
      gwEllipseFit(gkEllipseFitParams(gkEllipseFitParams::eLeastSquares, gkRadian(0), 1, nan),
                   points, results),
      gkMathError::Singular);
  EXPECT_THROW(
      gwEllipseFit(gkEllipseFitParams(gkEllipseFitParams::eLeastSquares, gkRadian(0), 1, -1.0),
                   points, results),
      gkMathError::Singular);
}
