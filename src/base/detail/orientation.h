#pragma once

#include <cmath>

#include <gk/base/vector.h>

namespace gk::detail {

/// The exact sign of (a - o) x (b - o) for finite coordinates: 1 when o -> a -> b turns left
/// (counter-clockwise in a y-up frame), -1 when it turns right, 0 when the three points are on
/// one line. The rounded determinant decides when it is farther from zero than its error bound
/// can reach (almost always); otherwise exactOrientation() works it out without rounding.
/// A NaN or infinite coordinate gives an unspecified sign.
inline int orientation(const gkVector<2>& o, const gkVector<2>& a, const gkVector<2>& b);

/// The exact sign of (a - o) x (b - o) = a x b + o x a + b x o, a sum of six products of
/// coordinates, for finite coordinates. When every coordinate is zero or of magnitude in
/// [2^-480, 2^480) (every real image coordinate), each product splits into a rounded part and
/// its exact error, and the twelve are summed as a non-overlapping expansion
/// (orientationByExpansion). Otherwise the products are summed as integers
/// (orientationByIntegers), which no range limits.
int exactOrientation(const gkVector<2>& o, const gkVector<2>& a, const gkVector<2>& b);

/// The expansion sum alone; every coordinate in the range above. For tests.
int orientationByExpansion(const gkVector<2>& o, const gkVector<2>& a, const gkVector<2>& b);

/// The integer sum alone: every coordinate is an integer mantissa times a power of two, so
/// each product is one too, and their sum is formed in a fixed-point integer of 4352 bits, wide
/// enough for products from 2^-2148 to 2^2048. Any finite coordinates. For tests.
int orientationByIntegers(const gkVector<2>& o, const gkVector<2>& a, const gkVector<2>& b);

/// Error bound of the rounded determinant relative to the sum of its two products' magnitudes,
/// (3 + 16e)e with e = 2^-53 (Shewchuk's first orientation bound), for operands that neither
/// overflow nor underflow.
constexpr double kRoundedOrientationBound = (3.0 + 16.0 * 0x1p-53) * 0x1p-53;
/// Covers every rounding into the subnormal range (each at most 2^-1075) in a rounded
/// determinant. An overflow makes the determinant or its bound infinite or NaN, which fails
/// both comparisons below and goes to the exact sum.
constexpr double kOrientationUnderflowSlack = 0x1p-1000;

inline int orientation(const gkVector<2>& o, const gkVector<2>& a, const gkVector<2>& b) {
  const double left = (a.x() - o.x()) * (b.y() - o.y());
  const double right = (a.y() - o.y()) * (b.x() - o.x());
  const double det = left - right;
  const double bound =
      kRoundedOrientationBound * (std::fabs(left) + std::fabs(right)) + kOrientationUnderflowSlack;
  if (det > bound) {
    return 1;
  }
  if (det < -bound) {
    return -1;
  }
  return exactOrientation(o, a, b);
}

}  // namespace gk::detail
