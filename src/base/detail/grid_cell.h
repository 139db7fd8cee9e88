#pragma once

#include <algorithm>
#include <cmath>

namespace gk::detail {

/// The grid cell of coordinate c for cell size t: c / t rounded to nearest, halves away from
/// zero, so cells are centred on multiples of t (not floored). Defined for every input: a NaN
/// quotient goes to cell 0 (its vertex can never be within a tolerance anyway), and quotients
/// beyond +-2^62 are clamped there, which keeps the +-1 neighbourhood of any cell inside long.
/// Clamping is monotone, so two coordinates less than one cell apart stay in neighbouring cells.
inline long gridCell(double c, double t) {
  const double q = c / t;
  if (std::isnan(q)) {
    return 0;
  }
  constexpr double kLimit = 4611686018427387904.0;  // 2^62
  double r = q >= 0.0 ? std::trunc(q + 0.5) : -std::trunc(-q + 0.5);
  r = std::min(std::max(r, -kLimit), kLimit);
  return static_cast<long>(r);
}

}  // namespace gk::detail
