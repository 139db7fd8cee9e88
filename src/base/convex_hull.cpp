#include <gk/base/convex_hull.h>

#include <algorithm>
#include <cmath>

namespace {

bool lexLess(const gkVector<2>& a, const gkVector<2>& b) {
  return a.x() < b.x() || (a.x() == b.x() && a.y() < b.y());
}

/// > 0 when o -> a -> b turns left (counter-clockwise).
double turn(const gkVector<2>& o, const gkVector<2>& a, const gkVector<2>& b) {
  return (a - o).cross(b - o);
}

}  // namespace

void gwConvexHull(const std::vector<gkVector<2>>& points, std::vector<gkVector<2>>& hull) {
  std::vector<gkVector<2>> p;
  p.reserve(points.size());
  for (const gkVector<2>& v : points) {
    // Non-finite points have no place in the order (NaN would break the sort outright).
    if (std::isfinite(v.x()) && std::isfinite(v.y())) {
      p.push_back(v);
    }
  }
  std::sort(p.begin(), p.end(), lexLess);
  p.erase(std::unique(p.begin(), p.end()), p.end());

  std::vector<gkVector<2>> h;
  if (p.size() < 3) {
    h = p;
  } else {
    // Andrew's monotone chain: the lower hull left to right, then the upper hull right to
    // left. `<= 0` pops collinear points as well as right turns, so only strict corners stay.
    h.resize(2 * p.size());
    std::size_t k = 0;
    for (const gkVector<2>& v : p) {
      while (k >= 2 && turn(h[k - 2], h[k - 1], v) <= 0.0) {
        --k;
      }
      h[k++] = v;
    }
    const std::size_t lowerEnd = k + 1;
    for (std::size_t i = p.size() - 1; i-- > 0;) {
      while (k >= lowerEnd && turn(h[k - 2], h[k - 1], p[i]) <= 0.0) {
        --k;
      }
      h[k++] = p[i];
    }
    // The last point repeats the first.
    h.resize(k - 1);
    // All points on one line leave the two extremes.
  }
  hull.swap(h);
}
