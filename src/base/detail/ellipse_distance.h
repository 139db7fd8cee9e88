#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include <gk/base/ellipse.h>
#include <gk/base/vector.h>

// The orthogonal distance from a point to an ellipse, by D. Eberly's robust method ("Distance
// from a Point to an Ellipse, an Ellipsoid, or a Hyperellipsoid"): the nearest point comes from
// the one root of a monotone function, kept in a bracket that shrinks every step, so the search
// cannot fail to converge or jump to the wrong branch the way a plain Newton iteration can near
// the evolute. The function is also convex, so Newton's step from the left end of the bracket
// and the chord's zero fall on either side of the root: each step takes both (quadratic and
// superlinear convergence), and a bisection when they did not halve the bracket.
namespace gk::detail {

/// Every step at least halves an interval of doubles until its midpoint equals an end. The
/// interval is at most as wide as the largest double and the root may be as small as the
/// smallest denormal, so this many steps always get there; the count only guards against a loop
/// that never ends.
inline constexpr int kEllipseDistanceMaxBisections = std::numeric_limits<double>::max_exponent -
                                                     std::numeric_limits<double>::min_exponent +
                                                     std::numeric_limits<double>::digits;

/// The root t > 0 of (n0 / (t + rm1))^2 + (z1 / t)^2 = 1 for n0, z1 > 0 and rm1 >= 0, with g the
/// value of the function at t = 1 (its sign tells on which side of 1 the root lies). This is
/// Eberly's variable s shifted by one (t = s + 1): for a point close to the major axis the root
/// is close to t = 0, where doubles still resolve it, whereas s = t - 1 would round it to -1 and
/// the nearest point's second coordinate y1 / t would blow up. The answer is the root to within
/// rounding: where Newton's step from below no longer moves, or where the bracket closes on two
/// neighbouring doubles.
inline double ellipseDistanceRoot(double rm1, double n0, double z1, double g) {
  // The function at t, and its slope there (negative: the function falls).
  const auto value = [rm1, n0, z1](double t, double& slope) {
    const double inverse0 = 1.0 / (t + rm1);
    const double inverse1 = 1.0 / t;
    const double ratio0 = n0 * inverse0;
    const double ratio1 = z1 * inverse1;
    slope = -2.0 * (ratio0 * ratio0 * inverse0 + ratio1 * ratio1 * inverse1);
    return ratio0 * ratio0 + ratio1 * ratio1 - 1.0;
  };
  // The function is >= 0 at z1 and <= 0 at the upper end.
  // The function is g at 1, so outside the ellipse (g >= 0) the root is at least 1 too.
  double lo = g >= 0.0 ? std::max(z1, 1.0) : z1;
  double hi = 1.0;
  if (g >= 0.0) {
    // |(n0, z1)|, scaled so that the squares cannot overflow.
    const double m = std::max(n0, z1);
    const double a = n0 / m;
    const double b = z1 / m;
    hi = m * std::sqrt(a * a + b * b);
  }
  double slopeLo = 0.0;
  double valueLo = value(lo, slopeLo);
  double slopeHi = 0.0;
  double valueHi = value(hi, slopeHi);
  if (valueLo == 0.0) {
    return lo;
  }
  if (valueHi == 0.0) {
    return hi;
  }
  // Moves the end of the bracket on the side of t's value; true when t is the root itself.
  const auto narrow = [&](double t) {
    double slope = 0.0;
    const double v = value(t, slope);
    if (v > 0.0) {
      lo = t;
      valueLo = v;
      slopeLo = slope;
    } else if (v < 0.0) {
      hi = t;
      valueHi = v;
      slopeHi = slope;
    } else {
      return true;
    }
    return false;
  };
  for (int i = 0; i < kEllipseDistanceMaxBisections; ++i) {
    const double mid = 0.5 * (lo + hi);
    if (mid == lo || mid == hi) {
      return mid;
    }
    const double width = hi - lo;
    // Newton's step from the end nearer the root (by value). For a falling convex function
    // both land left of the root, and the chord's zero right of it.
    double newton = 0.0;
    if (-valueHi < valueLo) {
      newton = hi - valueHi / slopeHi;
    } else {
      newton = lo - valueLo / slopeLo;
      if (newton == lo) {
        // The step from the left is below the spacing of doubles at lo: lo is the root to within
        // rounding (the step shrinks quadratically there), and closing the bracket from the
        // right would only cost more steps.
        return lo;
      }
    }
    if (!(newton > lo && newton < hi)) {
      newton = mid;
    }
    if (narrow(newton)) {
      return newton;
    }
    double chord = lo + (hi - lo) * (valueLo / (valueLo - valueHi));
    if (chord > lo && chord < hi && narrow(chord)) {
      return chord;
    }
    if (hi - lo > 0.5 * width) {
      const double half = 0.5 * (lo + hi);
      if (half == lo || half == hi) {
        return half;
      }
      if (narrow(half)) {
        return half;
      }
    }
  }
  return 0.5 * (lo + hi);
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
