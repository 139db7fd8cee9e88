#pragma once

#include <cstddef>
#include <vector>

#include <gk/base/vector.h>

namespace gk::detail {

/// The segment walk every segment-based query uses: calls f(k, p, q) for segment k from p to q.
/// A closed contour walks (n-1, 0), (0, 1), ..., (n-2, n-1), so that segment k ends at vertex k
/// and the closing segment comes first; an open one walks (0, 1), ..., (n-2, n-1), so that
/// segment k starts at vertex k. One vertex closed gives one zero-length segment; one vertex
/// open, or none, gives no segment.
template <typename F>
void forEachSegment(const std::vector<gkVector<2>>& points, bool closed, F&& f) {
  const std::size_t n = points.size();
  if (n == 0) {
    return;
  }
  std::size_t previous = closed ? n - 1 : 0;
  std::size_t k = 0;
  for (std::size_t i = closed ? 0 : 1; i < n; ++i, ++k) {
    f(k, points[previous], points[i]);
    previous = i;
  }
}

}  // namespace gk::detail
