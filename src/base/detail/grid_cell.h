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

/// The cells, [first, last], that hold every coordinate within t of c, whose own cell is cell.
/// The neighbours cell - 1 and cell + 1, widened where rounding demands it: c / t is rounded,
/// so a coordinate just inside t can land two cells away (4.55 / 1.3 is 3.4999999999999996,
/// cell 3, while 5.85 / 1.3 is exactly 4.5, cell 5). Every coordinate within t lies in
/// [c - t, c + t] and cells are monotone, so the cells of those two bounds hold them all.
/// Rounding moves a bound by at most one more cell, so the span is capped at cell +- 2, which
/// also keeps it to 5 cells when c +- t overflows to an infinity.
inline void gridCellSpan(double c, long cell, double t, long& first, long& last) {
  first = std::min(cell - 1, std::max(gridCell(c - t, t), cell - 2));
  last = std::max(cell + 1, std::min(gridCell(c + t, t), cell + 2));
}

}  // namespace gk::detail
