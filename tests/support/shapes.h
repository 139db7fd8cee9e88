#pragma once

#include <limits>
#include <vector>

#include <gk/base/vector.h>

/// Reusable test shapes, defined once.
namespace gk::test {

using Points = std::vector<gkVector<2>>;

/// (0,0), (1,0), (1,1), (0,1): counter-clockwise unit square.
inline Points unitSquare() {
  return {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
}

/// A closed outline whose two diagonals cross at (1, 1).
inline Points bowTie() {
  return {{0, 0}, {2, 2}, {2, 0}, {0, 2}};
}

/// A triangle with a repeated vertex in the middle (a zero-length segment between 1 and 2).
inline Points triangleWithRepeat() {
  return {{0, 0}, {4, 0}, {4, 0}, {0, 3}};
}

/// Vertices carrying NaN and infinities in every slot.
inline Points nonFinite() {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  return {{nan, 0}, {0, nan}, {inf, 1}, {1, -inf}, {nan, inf}};
}

}  // namespace gk::test
