#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include <gk/base/circle.h>
#include <gk/base/circle_fit.h>
#include <gk/base/math_error.h>
#include <gk/base/vector.h>

namespace {

using V = gkVector<2>;
constexpr double kPi = 3.14159265358979323846;

// The plain fit, as the library calls it.
gkCircleFitParams plainParams() {
  return gkCircleFitParams(gkCircleFitParams::eLeastSquares, 1.0, 0, DBL_MAX);
}

std::vector<V> pointsOn(const V& center, double radius, int count, double t0 = 0.0,
                        double span = 2.0 * kPi) {
  std::vector<V> points;
  for (int i = 0; i < count; ++i) {
    points.push_back(center + V(radius, gkRadian(t0 + span * i / count)));
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

// The plain Kasa fit: least squares on x^2 + y^2 + D x + E y + F = 0 (centred coordinates,
// 3x3 normal equations by Cramer's rule). It is known to shrink circles fitted to short arcs.
double kasaRadius(const std::vector<V>& points) {
  double mx = 0.0;
  double my = 0.0;
  for (const V& p : points) {
    mx += p.x();
    my += p.y();
  }
  const double n = static_cast<double>(points.size());
  mx /= n;
  my /= n;
  double sxx = 0.0, sxy = 0.0, syy = 0.0, sxz = 0.0, syz = 0.0, sz = 0.0;
  for (const V& p : points) {
    const double x = p.x() - mx;
    const double y = p.y() - my;
    const double z = x * x + y * y;
    sxx += x * x;
    sxy += x * y;
    syy += y * y;
    sxz += x * z;
    syz += y * z;
    sz += z;
  }
  // With centred data the normal equations decouple: [sxx sxy; sxy syy] (D, E) = -(sxz, syz),
  // and F = -sz / n.
  const double det = sxx * syy - sxy * sxy;
  const double d = (-sxz * syy + syz * sxy) / det;
  const double e = (-syz * sxx + sxz * sxy) / det;
  const double f = -sz / n;
  return std::sqrt(d * d / 4.0 + e * e / 4.0 - f);
}

}  // namespace

// ---- exact and noisy shapes ------------------------------------------------------------------

TEST(CircleFit, ExactPointsRecoverTheCircleWhereverItIs) {
  const V centres[] = {V(0.0, 0.0), V(1000.0, -500.0), V(-7.5, 3.25)};
  const double radii[] = {0.5, 20.0, 400.0};
  for (const V& c : centres) {
    for (double r : radii) {
      gkCircleFitResults results;
      gwCircleFit(plainParams(), pointsOn(c, r, 17, 0.3), results);
      EXPECT_NEAR(results.circle().center().x(), c.x(), 1e-9);
      EXPECT_NEAR(results.circle().center().y(), c.y(), 1e-9);
      EXPECT_NEAR(results.circle().radius(), r, 1e-9);
      EXPECT_LT(results.error(), 1e-9);
    }
  }
}

TEST(CircleFit, ThreePointsDetermineTheCircle) {
  gkCircleFitResults results;
  gwCircleFit(plainParams(), {V(1010.0, -500.0), V(1000.0, -490.0), V(990.0, -500.0)}, results);
  EXPECT_NEAR(results.circle().center().x(), 1000.0, 1e-9);
  EXPECT_NEAR(results.circle().center().y(), -500.0, 1e-9);
  EXPECT_NEAR(results.circle().radius(), 10.0, 1e-9);
}

TEST(CircleFit, ExactPointsOnAShallowArcOfAHugeCircleRecoverIt) {
  // A 100-unit chord of a circle of radius 1e5: the sagitta is only 0.0125.
  const double radius = 1e5;
  gkCircleFitResults results;
  gwCircleFit(plainParams(), pointsOn(V(0.0, -radius), radius, 50, kPi / 2.0 - 5e-4, 1e-3),
              results);
  EXPECT_NEAR(results.circle().radius(), radius, 1e-6 * radius);
  EXPECT_NEAR(results.circle().center().y(), -radius, 1e-6 * radius);
}

TEST(CircleFit, NoisyShortArcIsFittedBetterThanByKasa) {
  const double radius = 100.0;
  const V center(40.0, -20.0);
  std::mt19937_64 rng(424242);
  double errorTaubin = 0.0;
  double errorKasa = 0.0;
  constexpr int kTrials = 50;
  for (int trial = 0; trial < kTrials; ++trial) {
    std::vector<V> points;
    for (int i = 0; i < 200; ++i) {
      const double t = (kPi / 3.0) * i / 199.0;
      const double dx = 0.5 * gaussian(rng);
      const double dy = 0.5 * gaussian(rng);
      points.push_back(center + V(radius, gkRadian(t)) + V(dx, dy));
    }
    gkCircleFitResults results;
    gwCircleFit(plainParams(), points, results);
    errorTaubin += std::fabs(results.circle().radius() - radius) / kTrials;
    errorKasa += std::fabs(kasaRadius(points) - radius) / kTrials;
  }
  EXPECT_LT(errorTaubin, 0.02 * radius);
  EXPECT_LT(errorTaubin, errorKasa);
}

TEST(CircleFit, FitsAtTheEndsOfTheDoubleRange) {
  for (int exponent : {-900, 900}) {
    const double s = std::ldexp(1.0, exponent);
    std::vector<V> points = pointsOn(V(3.0 * s, s), 2.0 * s, 12);
    points.push_back(V(3.0 * s, 3.5 * s));  // half a radius off, so error() is not zero
    gkCircleFitResults results;
    gwCircleFit(plainParams(), points, results);
    EXPECT_NEAR(results.circle().center().x() / s, 3.0, 0.1);
    EXPECT_NEAR(results.circle().radius() / s, 2.0, 0.1);
    EXPECT_GT(results.error() / s, 0.01);
    EXPECT_LT(results.error() / s, 0.5);
  }
}

// ---- error() -------------------------------------------------------------------------------

TEST(CircleFit, ErrorIsTheRootMeanSquareDistanceOfSymmetricPoints) {
  // Radius 3 at the axes, radius 5 on the diagonals: by symmetry the centre is the origin, and
  // the fit's radius is the root-mean-square radius sqrt((9 + 25) / 2) = sqrt(17).
  std::vector<V> points;
  for (int i = 0; i < 8; ++i) {
    points.push_back(V(i % 2 == 0 ? 3.0 : 5.0, gkRadian(kPi / 4.0 * i)));
  }
  gkCircleFitResults results;
  gwCircleFit(plainParams(), points, results);
  const double r = std::sqrt(17.0);
  EXPECT_NEAR(results.circle().center().x(), 0.0, 1e-12);
  EXPECT_NEAR(results.circle().center().y(), 0.0, 1e-12);
  EXPECT_NEAR(results.circle().radius(), r, 1e-12);
  const double expected = std::sqrt(((r - 3.0) * (r - 3.0) + (5.0 - r) * (5.0 - r)) / 2.0);
  EXPECT_NEAR(results.error(), expected, 1e-12);
}

// ---- outlier rejection -----------------------------------------------------------------------

TEST(CircleFit, OneRejectionRoundDropsAPlantedOutlier) {
  const V center(1000.0, -500.0);
  std::vector<V> points = pointsOn(center, 50.0, 40);
  points.push_back(center + V(5.0, 5.0));
  gkCircleFitResults plain;
  gwCircleFit(plainParams(), points, plain);
  EXPECT_GT(plain.error(), 1.0);

  gkCircleFitResults rejected;
  gwCircleFit(gkCircleFitParams(gkCircleFitParams::eLeastSquares, 1.0, 1, 10.0), points, rejected);
  EXPECT_NEAR(rejected.circle().center().x(), center.x(), 1e-9);
  EXPECT_NEAR(rejected.circle().center().y(), center.y(), 1e-9);
  EXPECT_NEAR(rejected.circle().radius(), 50.0, 1e-9);
  EXPECT_LT(rejected.error(), 1e-9);
}

TEST(CircleFit, ScaleConvertsDistancesToTheUnitsOfTheLimit) {
  // The planted point lies about 2 units off the circle. With a limit of 5 it stays at scale 1
  // and goes at scale 10 (2 units are then 20 limit units).
  const V center(0.0, 0.0);
  std::vector<V> points = pointsOn(center, 50.0, 40);
  points.push_back(V(52.0, 1.0));
  gkCircleFitResults kept;
  gwCircleFit(gkCircleFitParams(gkCircleFitParams::eLeastSquares, 1.0, 1, 5.0), points, kept);
  EXPECT_GT(kept.error(), 0.1);
  gkCircleFitResults dropped;
  gwCircleFit(gkCircleFitParams(gkCircleFitParams::eLeastSquares, 10.0, 1, 5.0), points, dropped);
  EXPECT_LT(dropped.error(), 1e-9);
  EXPECT_NEAR(dropped.circle().radius(), 50.0, 1e-9);
}

TEST(CircleFit, RejectingTooManyPointsThrows) {
  std::vector<V> points = pointsOn(V(0.0, 0.0), 50.0, 20);
  for (std::size_t i = 0; i < points.size(); ++i) {
    points[i] = points[i] * (i % 2 == 0 ? 1.02 : 0.98);
  }
  gkCircleFitResults results;
  EXPECT_THROW(gwCircleFit(gkCircleFitParams(gkCircleFitParams::eLeastSquares, 1.0, 1, 0.1), points,
                           results),
               gkMathError::Singular);
}

// ---- failures --------------------------------------------------------------------------------

TEST(CircleFit, TwoPointsThrow) {
  gkCircleFitResults results;
  EXPECT_THROW(gwCircleFit(plainParams(), {V(0.0, 0.0), V(1.0, 1.0)}, results),
               gkMathError::Singular);
  EXPECT_THROW(gwCircleFit(plainParams(), {}, results), gkMathError::Singular);
}

TEST(CircleFit, RepeatsOfTwoPointsThrow) {
  gkCircleFitResults results;
  EXPECT_THROW(
      gwCircleFit(plainParams(), {V(0.0, 0.0), V(1.0, 1.0), V(0.0, 0.0), V(1.0, 1.0), V(1.0, 1.0)},
                  results),
      gkMathError::Singular);
}

TEST(CircleFit, CollinearPointsThrow) {
  std::vector<V> points;
  for (int i = 0; i < 10; ++i) {
    points.push_back(V(1000.0 + 0.1 * i, -500.0 - 0.7 * i));
  }
  gkCircleFitResults results;
  EXPECT_THROW(gwCircleFit(plainParams(), points, results), gkMathError::Singular);
}

TEST(CircleFit, CollinearityToleranceIsRelativeToTheSpread) {
  // (-1, 0), (0, h), (1, 0): the spread across the best line is h / sqrt(3) times the spread
  // about the centroid, so the threshold of 1e-10 falls between h = 1e-11 and h = 1e-9, at any
  // scale and offset.
  for (double scale : {1e-3, 1.0, 1e4}) {
    const V offset(1000.0, -500.0);
    gkCircleFitResults results;
    EXPECT_THROW(gwCircleFit(plainParams(),
                             {offset + V(-scale, 0.0), offset + V(0.0, 1e-11 * scale),
                              offset + V(scale, 0.0)},
                             results),
                 gkMathError::Singular);
    gwCircleFit(plainParams(), {V(-scale, 0.0), V(0.0, 1e-9 * scale), V(scale, 0.0)}, results);
    EXPECT_NEAR(results.circle().radius(), scale * 0.5e9, 1e-3 * scale * 0.5e9);
    gwCircleFit(plainParams(), {V(-scale, 0.0), V(0.0, 1e-4 * scale), V(scale, 0.0)}, results);
    EXPECT_NEAR(results.circle().radius(), scale * (1.0 + 1e-8) / 2e-4, 1e-9 * scale / 2e-4);
  }
}

TEST(CircleFit, NonFiniteCoordinatesThrow) {
  gkCircleFitResults results;
  for (double bad :
       {std::numeric_limits<double>::quiet_NaN(), -std::numeric_limits<double>::infinity()}) {
    std::vector<V> points = pointsOn(V(0.0, 0.0), 5.0, 8);
    points[2] = V(1.0, bad);
    EXPECT_THROW(gwCircleFit(plainParams(), points, results), gkMathError::Singular);
  }
}

TEST(CircleFit, InvalidParametersThrow) {
  const std::vector<V> points = pointsOn(V(0.0, 0.0), 5.0, 8);
  gkCircleFitResults results;
  for (double scale : {0.0, -1.0, std::numeric_limits<double>::infinity()}) {
    EXPECT_THROW(gwCircleFit(gkCircleFitParams(gkCircleFitParams::eLeastSquares, scale, 1, 1.0),
                             points, results),
                 gkMathError::Singular);
  }
  EXPECT_THROW(gwCircleFit(gkCircleFitParams(gkCircleFitParams::eLeastSquares, 1.0, 1,
                                             std::numeric_limits<double>::quiet_NaN()),
                           points, results),
               gkMathError::Singular);
}
