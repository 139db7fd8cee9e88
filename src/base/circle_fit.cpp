#include <gk/base/circle_fit.h>

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include <gk/base/math_error.h>

#include "base/detail/fit_points.h"

// Taubin's algebraic circle fit (G. Taubin, "Estimation of Planar Curves, Surfaces, and Nonplanar
// Space Curves Defined by Implicit Equations", 1991), solved as in N. Chernov, "Circular and
// Linear Regression: Fitting Circles and Lines by Least Squares" (2010): the smallest root of a
// cubic by Newton's method from zero, then the centre from a 2x2 system. Unlike the plain Kasa
// fit, which minimises sum (r_i^2 - R^2)^2 and so shrinks circles fitted to short arcs, Taubin's
// normalisation makes the fit nearly unbiased, close to the geometric fit. The points are
// centred at their centroid (the formulation needs it) and scaled to unit root-mean-square
// distance, so that the cubic's coefficients are of order one.

namespace {

constexpr const wchar_t* kWho = L"gwCircleFit";
/// Three points not on one line determine a circle.
constexpr std::size_t kMinDistinctPoints = 3;
/// Newton's method from zero decreases |P| monotonically to the wanted root and converges
/// quadratically; it stops when the step no longer helps, well before this many steps, which
/// only bounds a sequence that rounding keeps alive.
constexpr int kMaxNewtonSteps = 100;

/// | |p - centre| - radius |, in units of a power of two near the radius (an exact scaling), so
/// that the squares neither overflow nor underflow for circles at the ends of the double range.
double circleDistance(const gkCircle& c, const gkVector<2>& p) {
  int exponent = 0;
  std::frexp(c.radius(), &exponent);
  const gkVector<2> d = p - c.center();
  const gkVector<2> scaled(std::ldexp(d.x(), -exponent), std::ldexp(d.y(), -exponent));
  return std::ldexp(std::fabs(scaled.len() - std::ldexp(c.radius(), -exponent)), exponent);
}

gkCircle fitOnce(const std::vector<gkVector<2>>& points) {
  if (!gk::detail::hasDistinctPoints(points, kMinDistinctPoints)) {
    throw gkMathError::Singular(std::wstring(kWho) + L": fewer than 3 distinct points");
  }
  const gk::detail::FitFrame frame = gk::detail::fitFrame(points, kWho);
  const double n = static_cast<double>(points.size());
  std::vector<gkVector<2>> q;
  q.reserve(points.size());
  for (const gkVector<2>& p : points) {
    q.push_back(frame.toFrame(p));
  }
  gk::detail::requireNotCollinear(q, kWho);
  // The frame's origin is the centroid up to rounding; remove what is left of the mean so the
  // moments are exactly central, as the formulation assumes.
  double mu = 0.0;
  double mv = 0.0;
  for (const gkVector<2>& p : q) {
    mu += p.x() / n;
    mv += p.y() / n;
  }
  double mxx = 0.0;
  double myy = 0.0;
  double mxy = 0.0;
  double mxz = 0.0;
  double myz = 0.0;
  double mzz = 0.0;
  for (const gkVector<2>& p : q) {
    const double x = p.x() - mu;
    const double y = p.y() - mv;
    const double z = x * x + y * y;
    mxx += x * x / n;
    myy += y * y / n;
    mxy += x * y / n;
    mxz += x * z / n;
    myz += y * z / n;
    mzz += z * z / n;
  }

  const double mz = mxx + myy;
  const double covXY = mxx * myy - mxy * mxy;
  const double varZ = mzz - mz * mz;
  const double a3 = 4.0 * mz;
  const double a2 = -3.0 * mz * mz - mzz;
  const double a1 = varZ * mz + 4.0 * covXY * mz - mxz * mxz - myz * myz;
  const double a0 = mxz * (mxz * myy - myz * mxy) + myz * (myz * mxx - mxz * mxy) - varZ * covXY;
  double x = 0.0;
  double y = a0;
  for (int i = 0; i < kMaxNewtonSteps; ++i) {
    const double slope = a1 + x * (2.0 * a2 + 3.0 * a3 * x);
    const double next = x - y / slope;
    if (next == x || !std::isfinite(next)) {
      break;
    }
    const double value = a0 + next * (a1 + next * (a2 + next * a3));
    if (std::fabs(value) >= std::fabs(y)) {
      break;
    }
    x = next;
    y = value;
  }
  const double det = x * x - x * mz + covXY;
  const double cx = (mxz * (myy - x) - myz * mxy) / det / 2.0;
  const double cy = (myz * (mxx - x) - mxz * mxy) / det / 2.0;
  const double radius = std::sqrt(cx * cx + cy * cy + mz) * frame.unit;
  const gkVector<2> center = frame.fromFrame(gkVector<2>(cx + mu, cy + mv));
  if (!std::isfinite(center.x()) || !std::isfinite(center.y()) || !std::isfinite(radius) ||
      !(radius > 0.0)) {
    throw gkMathError::Singular(std::wstring(kWho) + L": singular system");
  }
  return gkCircle(center, radius);
}

}  // namespace

gkCircleFitParams::gkCircleFitParams(FitMode mode, double scale, long count, double residualLimit)
    : mode_(mode), scale_(scale), count_(count), residualLimit_(residualLimit) {}

void gwCircleFit(const gkCircleFitParams& params, const std::vector<gkVector<2>>& points,
                 gkCircleFitResults& results) {
  if (params.mode() != gkCircleFitParams::eLeastSquares) {
    throw gkMathError::Singular(std::wstring(kWho) + L": invalid mode");
  }
  gk::detail::requireRejectionParams(params.residualLimit(), params.scale(), kWho);
  gk::detail::requireFinitePoints(points, kWho);
  double rms = 0.0;
  const gkCircle circle = gk::detail::fitRejectingOutliers<gkCircle>(
      points, params.count(), params.residualLimit(), params.scale(), kMinDistinctPoints, kWho,
      [](const std::vector<gkVector<2>>& kept) { return fitOnce(kept); },
      [](const gkCircle& c, const gkVector<2>& p) { return circleDistance(c, p); }, rms);
  results.circle(circle);
  results.error(rms);
}
