#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include <gk/base/math_error.h>
#include <gk/base/tolerances.h>
#include <gk/base/vector.h>

// What the least-squares fitters (circle_fit.cpp, ellipse_fit.cpp) share: input checks, the
// centring and scaling that keeps their moment matrices well conditioned, the collinearity test
// and the outlier-rejection loop.
namespace gk::detail {

/// Points whose spread across their best line is at most this fraction of their spread about
/// their centroid (both root-mean-square) lie on one line: no circle or ellipse is determined.
/// In step with gkTolParallelSine, since the ratio is the sine-like slope of that thin band.
inline constexpr double kFitCollinearRatio = gkTolParallelSine;

/// Throws when any coordinate is NaN or infinite: such a point has no distance to any curve.
inline void requireFinitePoints(const std::vector<gkVector<2>>& points, const wchar_t* who) {
  for (const gkVector<2>& p : points) {
    if (!std::isfinite(p.x()) || !std::isfinite(p.y())) {
      throw gkMathError::Singular(std::wstring(who) + L": a point coordinate is NaN or infinite");
    }
  }
}

/// True when points holds at least minimum distinct points (exact coordinate comparison: a
/// repeated point adds weight to the fit but no new constraint). Stops at the minimum-th
/// distinct point, which in any real point set comes within the first few.
inline bool hasDistinctPoints(const std::vector<gkVector<2>>& points, std::size_t minimum) {
  std::vector<gkVector<2>> distinct;
  for (const gkVector<2>& p : points) {
    if (distinct.size() >= minimum) {
      break;
    }
    if (std::find(distinct.begin(), distinct.end(), p) == distinct.end()) {
      distinct.push_back(p);
    }
  }
  return distinct.size() >= minimum;
}

/// The frame the fitters work in: origin at the centroid, unit the root-mean-square distance of
/// the points from it. In that frame every coordinate is of order one whatever the image
/// position and size, so the fourth-order moments of the ellipse fit neither lose the shape to
/// the offset nor overflow.
struct FitFrame {
  gkVector<2> origin;
  double unit = 0.0;

  gkVector<2> toFrame(const gkVector<2>& p) const { return (p - origin) / unit; }
  gkVector<2> fromFrame(const gkVector<2>& q) const { return origin + q * unit; }
};

/// The frame of finite, non-empty points. Each term is divided by the count before summing and
/// the deviations are divided by the largest one before squaring, so neither the centroid nor the
/// unit overflows for coordinates near the end of the double range. Throws when the points have
/// no spread (all equal) or the frame cannot be represented.
inline FitFrame fitFrame(const std::vector<gkVector<2>>& points, const wchar_t* who) {
  const double n = static_cast<double>(points.size());
  double mx = 0.0;
  double my = 0.0;
  for (const gkVector<2>& p : points) {
    mx += p.x() / n;
    my += p.y() / n;
  }
  double largest = 0.0;
  for (const gkVector<2>& p : points) {
    largest = std::max(largest, std::max(std::fabs(p.x() - mx), std::fabs(p.y() - my)));
  }
  double sum = 0.0;
  if (largest > 0.0 && largest < std::numeric_limits<double>::infinity()) {
    for (const gkVector<2>& p : points) {
      const double dx = (p.x() - mx) / largest;
      const double dy = (p.y() - my) / largest;
      sum += dx * dx + dy * dy;
    }
  }
  FitFrame frame;
  frame.origin = gkVector<2>(mx, my);
  frame.unit = largest * std::sqrt(sum / n);
  if (!(frame.unit > 0.0) || !std::isfinite(frame.unit) || !std::isfinite(mx) ||
      !std::isfinite(my)) {
    throw gkMathError::Singular(std::wstring(who) + L": the points have no usable spread");
  }
  return frame;
}

/// Throws when points (in the fit frame) lie on one line, within kFitCollinearRatio. The
/// spread across the line is measured directly, as the mean squared distance from the principal
/// axis, rather than as the smaller eigenvalue of the moment matrix: that eigenvalue comes out of
/// a difference of nearly equal products and cannot resolve ratios below about 1e-8.
inline void requireNotCollinear(const std::vector<gkVector<2>>& q, const wchar_t* who) {
  const double n = static_cast<double>(q.size());
  double mu = 0.0;
  double mv = 0.0;
  for (const gkVector<2>& p : q) {
    mu += p.x() / n;
    mv += p.y() / n;
  }
  double suu = 0.0;
  double suv = 0.0;
  double svv = 0.0;
  for (const gkVector<2>& p : q) {
    const double u = p.x() - mu;
    const double v = p.y() - mv;
    suu += u * u / n;
    suv += u * v / n;
    svv += v * v / n;
  }
  // Normal of the principal axis, at half of atan2(2 suv, suu - svv) plus a quarter turn.
  const double axis = 0.5 * std::atan2(2.0 * suv, suu - svv);
  const double nu = -std::sin(axis);
  const double nv = std::cos(axis);
  double across = 0.0;
  for (const gkVector<2>& p : q) {
    const double d = (p.x() - mu) * nu + (p.y() - mv) * nv;
    across += d * d / n;
  }
  const double trace = suu + svv;
  if (!(trace > 0.0) || !(std::sqrt(across / trace) > kFitCollinearRatio)) {
    throw gkMathError::Singular(std::wstring(who) + L": the points lie on one line");
  }
}

/// Throws unless rounds, limit and the unit factor describe a valid rejection: limit NaN or
/// negative and a unit factor that is not positive and finite are refused.
inline void requireRejectionParams(double limit, double unitFactor, const wchar_t* who) {
  if (std::isnan(limit) || limit < 0.0 || !(unitFactor > 0.0) || !std::isfinite(unitFactor)) {
    throw gkMathError::Singular(std::wstring(who) + L": invalid residual limit or scale");
  }
}

/// The fit-and-reject loop both fitters use. fit(points) returns a model or throws;
/// distance(model, p) is the orthogonal distance of p from it. Up to rounds times, the points
/// whose distance times unitFactor exceeds limit are dropped from the kept set (for good) and the
/// rest refitted; the loop stops early when a round drops nothing. Rounds <= 0 or a limit of the
/// largest double mean no rejection. Throws when fewer than minDistinct distinct points remain.
/// On return, rms holds the root-mean-square distance of the points of the final fit from the
/// model.
template <typename Model, typename Fit, typename Distance>
Model fitRejectingOutliers(const std::vector<gkVector<2>>& points, long rounds, double limit,
                           double unitFactor, std::size_t minDistinct, const wchar_t* who,
                           Fit&& fit, Distance&& distance, double& rms) {
  std::vector<gkVector<2>> kept(points);
  Model model = fit(kept);
  const bool rejecting = rounds > 0 && limit < std::numeric_limits<double>::max();
  for (long round = 0; rejecting && round < rounds; ++round) {
    std::vector<gkVector<2>> next;
    next.reserve(kept.size());
    for (const gkVector<2>& p : kept) {
      if (!(distance(model, p) * unitFactor > limit)) {
        next.push_back(p);
      }
    }
    if (next.size() == kept.size()) {
      break;
    }
    if (!hasDistinctPoints(next, minDistinct)) {
      throw gkMathError::Singular(std::wstring(who) +
                                  L": too few points remain after outlier rejection");
    }
    kept.swap(next);
    model = fit(kept);
  }
  // Squares of distances beyond about 1e154 overflow: sum them in units of the largest one.
  std::vector<double> distances;
  distances.reserve(kept.size());
  double largest = 0.0;
  for (const gkVector<2>& p : kept) {
    distances.push_back(distance(model, p));
    largest = std::max(largest, distances.back());
  }
  double sum = 0.0;
  if (largest > 0.0) {
    for (double d : distances) {
      sum += (d / largest) * (d / largest);
    }
  }
  rms = largest * std::sqrt(sum / static_cast<double>(kept.size()));
  return model;
}

}  // namespace gk::detail
