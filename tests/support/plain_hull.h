#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include <gk/base/vector.h>

#include "base/detail/orientation.h"

/// The plain convex hull: what gwConvexHull's answer is checked against by its tests and by
/// its fuzzer.
namespace gk::test {

/// Andrew's monotone chain over a comparison sort of every finite point, with the same exact
/// turns: the plain form of the library's hull, which drops points certified inside a sample's
/// hull and sorts large inputs through buckets first.
inline std::vector<gkVector<2>> plainConvexHull(const std::vector<gkVector<2>>& input) {
  using V = gkVector<2>;
  std::vector<V> p;
  for (const V& v : input) {
    if (std::isfinite(v.x()) && std::isfinite(v.y())) {
      p.push_back(v);
    }
  }
  std::sort(p.begin(), p.end(), [](const V& a, const V& b) {
    return a.x() < b.x() || (a.x() == b.x() && a.y() < b.y());
  });
  p.erase(std::unique(p.begin(), p.end()), p.end());
  if (p.size() < 3) {
    return p;
  }
  const auto turn = [](const V& o, const V& a, const V& b) {
    return gk::detail::orientation(o, a, b);
  };
  std::vector<V> h(2 * p.size());
  std::size_t k = 0;
  for (const V& v : p) {
    while (k >= 2 && turn(h[k - 2], h[k - 1], v) <= 0) {
      --k;
    }
    h[k++] = v;
  }
  const std::size_t lowerEnd = k + 1;
  for (std::size_t i = p.size() - 1; i-- > 0;) {
    while (k >= lowerEnd && turn(h[k - 2], h[k - 1], p[i]) <= 0) {
      --k;
    }
    h[k++] = p[i];
  }
  h.resize(k - 1);
  return h;
}

}  // namespace gk::test
