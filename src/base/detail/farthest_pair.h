#pragma once

#include <cstddef>
#include <vector>

#include <gk/base/vector.h>

namespace gk::detail {

/// Two vertices at the greatest distance of all pairs, as the plain double loop finds them.
struct FarthestPair {
  bool found = false;  ///< false when no pair has a distance greater than 0
  std::size_t i = 0;
  std::size_t j = 0;
  double distance = 0;  ///< v[i].distance(v[j])
};

/// The result of the plain loop over every ordered pair (i, j), rows first, that keeps a pair
/// whenever its distance v[i].distance(v[j]) is strictly greater than the best so far (starting
/// from 0): the first pair, in that order, that reaches the greatest distance.
///
/// Found in O(n log n) for ordinary input with a k-d tree that visits only the pairs that could
/// reach the greatest distance; the distances it compares are computed exactly as the loop
/// computes them, so the pair and its distance are identical. Coordinates that are infinite or
/// beyond 1e150 (distances may overflow), and sets spread over less than 1e-140 (squares may
/// underflow), take the loop itself. Below 160 vertices a loop over each unordered pair once,
/// which finds the same pair, is faster than building the tree.
FarthestPair firstFarthestPair(const std::vector<gkVector<2>>& v);

/// The plain loop, kept for the cases above and as the reference for tests.
FarthestPair firstFarthestPairPlain(const std::vector<gkVector<2>>& v);

}  // namespace gk::detail
