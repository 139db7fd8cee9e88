#include <gk/cntr/moments/ellipse_from_moments.h>

#include <cmath>
#include <limits>

#include <gk/base/circle_fit.h>
#include <gk/base/ellipse_fit.h>
#include <gk/base/exception.h>
#include <gk/base/math_error.h>
#include <gk/base/numeric.h>

namespace {

/// A principal moment within this of 0 belongs to a line or a point: no ellipse has it.
constexpr double kSingularMoment = 1e-12;
/// pi squared, as a literal, so the semi-axes do not depend on how a platform rounds pi * pi.
constexpr double kPiSquared = 9.869604401089358;

/// x^(1/8) as three nested square roots.
double eighthRoot(double x) {
  return std::sqrt(std::sqrt(std::sqrt(x)));
}

}  // namespace

gkEllipse gw_EllipseFromInertiaData(const gk_InertiaData& data) {
  const gkMatrix<2>& m = data.inertiaMatrix();
  const gkRadian theta(std::atan2(2.0 * m.element(0, 1), m.element(0, 0) - m.element(1, 1)) / 2.0);
  const gkMatrix<2> r(theta, theta, 1.0, 1.0);
  const gkMatrix<2> rBack(-theta, -theta, 1.0, 1.0);
  const gkMatrix<2> d = rBack * m * r;
  const double l1 = std::fabs(d.element(0, 0));
  const double l2 = std::fabs(d.element(1, 1));
  if (gwRealEq(l1, 0.0, kSingularMoment) || gwRealEq(l2, 0.0, kSingularMoment)) {
    throw gkMathError::Singular();
  }
  // For semi-axes a, b the central moments are pi a^3 b / 4 and pi a b^3 / 4; these invert them.
  const double a = eighthRoot(16.0 * l1 * l1 * l1 / (kPiSquared * l2));
  const double b = eighthRoot(16.0 * l2 * l2 * l2 / (kPiSquared * l1));
  gkEllipse::gkEllipseGeom geom;
  geom.center = gkPoint(data.centerOfMass());
  geom.radii = gkVector<2>(a, b);
  geom.rotation = theta;
  geom.majorFirst = false;
  geom.normalizeRotation = false;
  return gkEllipse(geom);
}

void gw_FitEllipse(const std::vector<gkVector<2>>& points, gkEllipse& ellipse, double& error) {
  constexpr double kNoLimit = std::numeric_limits<double>::max();
  try {
    gkEllipseFitResults results;
    gwEllipseFit(gkEllipseFitParams(gkEllipseFitParams::eLeastSquares, gkRadian(0.0), 0, kNoLimit),
                 points, results);
    ellipse = results.ellipse();
    error = results.error();
  } catch (const gkException&) {
    try {
      gkCircleFitResults results;
      gwCircleFit(gkCircleFitParams(gkCircleFitParams::eLeastSquares, 1.0, 0, kNoLimit), points,
                  results);
      ellipse = gkEllipse(results.circle());
      error = results.error();
    } catch (const gkException&) {
      ellipse = gkEllipse();
      error = -1.0;
    }
  }
}

void gw_FitEllipse(const std::vector<gkEdgelet>& edgelets, gkEllipse& ellipse, double& error) {
  std::vector<gkVector<2>> points;
  points.reserve(edgelets.size());
  for (const gkEdgelet& e : edgelets) {
    points.push_back(e.position());
  }
  gw_FitEllipse(points, ellipse, error);
}
