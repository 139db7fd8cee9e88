#include <gk/base/convex_hull.h>

#include <algorithm>
#include <cmath>

namespace {

bool lexLess(const gkVector<2>& a, const gkVector<2>& b) {
  return a.x() < b.x() || (a.x() == b.x() && a.y() < b.y());
}

/// Below this many points a plain comparison sort is as fast as the bucket pass.
constexpr std::size_t kBucketMinimum = 256;
/// Points per bucket, on average.
constexpr std::size_t kPointsPerBucket = 4;

/// Sorts finite points by (x, y) as lexLess orders them. Large inputs are first spread over
/// buckets by x, through a map that rounding keeps monotone ((x - min) * scale, floored), so
/// that the buckets in turn, each sorted by lexLess, are the whole sorted list; for any real
/// spread of x that takes O(n) instead of O(n log n) comparisons, and at worst (every x in one
/// bucket) it is the plain sort. Points equal under lexLess (the same point, or +0 and -0 in a
/// coordinate) may come in any order, as with any sort.
void sortLexicographic(std::vector<gkVector<2>>& p) {
  const std::size_t n = p.size();
  if (n < kBucketMinimum) {
    std::sort(p.begin(), p.end(), lexLess);
    return;
  }
  double low = p[0].x();
  double high = p[0].x();
  for (const gkVector<2>& v : p) {
    low = std::min(low, v.x());
    high = std::max(high, v.x());
  }
  const std::size_t buckets = n / kPointsPerBucket;
  // An overflowing spread gives an infinite width and a zero scale: one bucket.
  const double scale = static_cast<double>(buckets) / (high - low);
  if (!(scale > 0.0) || !std::isfinite(scale)) {
    std::sort(p.begin(), p.end(), lexLess);
    return;
  }
  const auto bucketOf = [&](double x) {
    return std::min(buckets - 1, static_cast<std::size_t>((x - low) * scale));
  };
  std::vector<std::size_t> start(buckets + 1, 0);
  for (const gkVector<2>& v : p) {
    ++start[bucketOf(v.x()) + 1];
  }
  for (std::size_t b = 0; b < buckets; ++b) {
    start[b + 1] += start[b];
  }
  std::vector<std::size_t> next(start.begin(), start.end() - 1);
  std::vector<gkVector<2>> sorted(n);
  for (const gkVector<2>& v : p) {
    sorted[next[bucketOf(v.x())]++] = v;
  }
  for (std::size_t b = 0; b < buckets; ++b) {
    const auto first = sorted.begin() + static_cast<std::ptrdiff_t>(start[b]);
    const auto last = sorted.begin() + static_cast<std::ptrdiff_t>(start[b + 1]);
    if (last - first > 16) {
      std::sort(first, last, lexLess);
      continue;
    }
    // Buckets hold a handful of points: insertion sort without a call per bucket.
    for (auto i = first; i != last; ++i) {
      const gkVector<2> v = *i;
      auto j = i;
      for (; j != first && lexLess(v, *(j - 1)); --j) {
        *j = *(j - 1);
      }
      *j = v;
    }
  }
  p.swap(sorted);
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
  sortLexicographic(p);
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
