#pragma once

#include <cmath>

namespace gk::detail {

/// a < b as a strict weak order over all doubles: numbers in their usual order, every NaN after
/// every number and equivalent to every other NaN. Ordered containers keyed by user-supplied
/// doubles use it, since plain < on a NaN key is undefined behaviour for std::map.
inline bool lessNaNLast(double a, double b) {
  if (std::isnan(a)) {
    return false;
  }
  return std::isnan(b) || a < b;
}

}  // namespace gk::detail
