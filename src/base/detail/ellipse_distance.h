#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include <gk/base/ellipse.h>
#include <gk/base/vector.h>

// The orthogonal distance from a point to an ellipse, by D. Eberly's robust method ("Distance
// from a Point to an Ellipse, an Ellipsoid, or a Hyperellipsoid"): the nearest point is found by
// bisection on the one root of a monotone function, which cannot fail to converge or jump to the
// wrong branch the way a plain Newton iteration can near the evolute.
namespace gk::detail {

/// Bisection halves an interval of doubles until its midpoint equals an end. The interval is at
/// most as wide as the largest double and the root may be as small as the smallest denormal, so
/// this many halvings always get there; the count only guards against a loop that never ends.
inline constexpr int kEllipseDistanceMaxBisections = std::numeric_limits<double>::max_exponent -
                                                     std::numeric_limits<double>::min_exponent +
                                                     std::numeric_limits<double>::digits;

/// The root t > 0 of (n0 / (t + rm1))^2 + (z1 / t)^2 = 1 for n0, z1 > 0 and rm1 >= 0, with g the
/// value of the function at t = 1 (its sign tells on which side of 1 the root lies). This is
/// Eberly's variable s shifted by one (t = s + 1): for a point close to the major axis the root
/// is close to t = 0, where doubles still resolve it, whereas s = t - 1 would round it to -1 and
/// the nearest point's second coordinate y1 / t would blow up.
inline double ellipseDistanceRoot(double rm1, double n0, double z1, double g) {
  double t0 = z1;
  double t1 = 1.0;
  if (g >= 0.0) {
    // |(n0, z1)|, scaled so that the squares cannot overflow.
    const double m = std::max(n0, z1);
    const double a = n0 / m;
    const double b = z1 / m;
    t1 = m * std::sqrt(a * a + b * b);
  }
  double t = 0.0;
  for (int i = 0; i < kEllipseDistanceMaxBisections; ++i) {
    t = 0.5 * (t0 + t1);
    if (t == t0 || t == t1) {
      break;
    }
    const double ratio0 = n0 / (t + rm1);
    const double ratio1 = z1 / t;
    const double value = ratio0 * ratio0 + ratio1 * ratio1 - 1.0;
    if (value > 0.0) {
      t0 = t;
    } else if (value < 0.0) {
      t1 = t;
    } else {
      break;
    }
  }
  return t;
}

/// The distance from (y0, y1) to the ellipse x0^2/e0^2 + x1^2/e1^2 = 1 (semi-axes e0, e1 > 0,
/// finite; coordinates finite). Works in the first quadrant with the major axis first, which the
/// ellipse's symmetry allows.
inline double axisEllipseDistance(double e0, double e1, double y0, double y1) {
  y0 = std::fabs(y0);
  y1 = std::fabs(y1);
  if (e0 < e1) {
    std::swap(e0, e1);
    std::swap(y0, y1);
  }
  double x0 = 0.0;
  double x1 = 0.0;
  if (y1 > 0.0) {
    if (y0 > 0.0) {
      const double z0 = y0 / e0;
      const double z1 = y1 / e1;
      const double g = z0 * z0 + z1 * z1 - 1.0;
      if (g == 0.0) {
        return 0.0;
      }
      const double ratio = e0 / e1;
      const double r0 = ratio * ratio;
      // r0 - 1 from the factored form, exact to rounding even for a near circle.
      const double rm1 = ((e0 - e1) / e1) * ((e0 + e1) / e1);
      const double t = ellipseDistanceRoot(rm1, r0 * z0, z1, g);
      x0 = r0 * y0 / (t + rm1);
      x1 = y1 / t;
    } else {
      // On the minor axis: the nearest point is the end of the minor axis.
      return std::fabs(y1 - e1);
    }
  } else {
    // On the major axis: inside the centre of curvature of its end, the nearest point lies off
    // the axis; beyond it, the nearest point is the end itself.
    const double numer0 = e0 * y0;
    const double denom0 = e0 * e0 - e1 * e1;
    if (numer0 < denom0) {
      const double xde0 = numer0 / denom0;
      x0 = e0 * xde0;
      x1 = e1 * std::sqrt(1.0 - xde0 * xde0);
    } else {
      return std::fabs(y0 - e0);
    }
  }
  const double d0 = x0 - y0;
  const double d1 = x1 - y1;
  return std::sqrt(d0 * d0 + d1 * d1);
}

/// The orthogonal distance from p to the ellipse e (radii positive and finite). Works in units
/// of a power of two near the larger radius (an exact scaling), so that the squares inside
/// neither overflow nor underflow for ellipses at the ends of the double range.
inline double ellipseDistance(const gkEllipse& e, const gkVector<2>& p) {
  const double c = std::cos(e.rotation().toDouble());
  const double s = std::sin(e.rotation().toDouble());
  const gkVector<2> d = p - e.center();
  const double along = d.x() * c + d.y() * s;
  const double across = d.y() * c - d.x() * s;
  int exponent = 0;
  std::frexp(std::max(e.radii().x(), e.radii().y()), &exponent);
  return std::ldexp(axisEllipseDistance(
                        std::ldexp(e.radii().x(), -exponent), std::ldexp(e.radii().y(), -exponent),
                        std::ldexp(along, -exponent), std::ldexp(across, -exponent)),
                    exponent);
}

}  // namespace gk::detail
