#include <gk/base/convex_hull.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/detail/orientation.h"

namespace {

/// The order of the chain: by x, then by y. A function object, so that the sorts inline it.
struct LexLess {
  bool operator()(const gkVector<2>& a, const gkVector<2>& b) const {
    return a.x() < b.x() || (a.x() == b.x() && a.y() < b.y());
  }
};
constexpr LexLess lexLess{};

/// Below this many points a plain comparison sort is as fast as the bucket pass.
constexpr std::size_t kBucketMinimum = 256;
/// Points per bucket, on average.
constexpr std::size_t kPointsPerBucket = 4;

/// Sorts finite points by lexLess through `buckets` buckets, given the bucket of each point as
/// a function of x that never decreases (so every bucket's points come before the next
/// bucket's in the order): counts, places each point in its bucket, and sorts each bucket, by
/// insertion while it holds a handful.
template <class BucketOf>
void sortThroughBuckets(std::vector<gkVector<2>>& p, std::size_t buckets, BucketOf bucketOf) {
  const std::size_t n = p.size();
  std::vector<std::size_t> start(buckets + 1, 0);
  for (const gkVector<2>& v : p) {
    ++start[bucketOf(v) + 1];
  }
  for (std::size_t b = 0; b < buckets; ++b) {
    start[b + 1] += start[b];
  }
  std::vector<std::size_t> next(start.begin(), start.end() - 1);
  std::vector<gkVector<2>> sorted(n);
  for (const gkVector<2>& v : p) {
    sorted[next[bucketOf(v)]++] = v;
  }
  for (std::size_t b = 0; b < buckets; ++b) {
    const auto first = sorted.begin() + static_cast<std::ptrdiff_t>(start[b]);
    const auto last = sorted.begin() + static_cast<std::ptrdiff_t>(start[b + 1]);
    if (last - first > 16) {
      std::sort(first, last, lexLess);
      continue;
    }
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
  sortThroughBuckets(p, buckets, [&](const gkVector<2>& v) {
    return std::min(buckets - 1, static_cast<std::size_t>((v.x() - low) * scale));
  });
}

/// Andrew's monotone chain over points sorted by lexLess without repeats: the lower hull left
/// to right, then the upper hull right to left. A point that does not make a strict left turn
/// is popped, collinear ones included, so only strict corners stay. The turns are exact, so
/// the result is the set of strict corners of the points' hull whatever else the points hold.
void monotoneChain(const std::vector<gkVector<2>>& p, std::vector<gkVector<2>>& h) {
  const auto turnsLeft = [](const gkVector<2>& o, const gkVector<2>& a, const gkVector<2>& b) {
    return gk::detail::orientation(o, a, b) > 0;
  };
  if (p.size() < 3) {
    h = p;
    return;
  }
  h.resize(2 * p.size());
  std::size_t k = 0;
  for (const gkVector<2>& v : p) {
    while (k >= 2 && !turnsLeft(h[k - 2], h[k - 1], v)) {
      --k;
    }
    h[k++] = v;
  }
  const std::size_t lowerEnd = k + 1;
  for (std::size_t i = p.size() - 1; i-- > 0;) {
    while (k >= lowerEnd && !turnsLeft(h[k - 2], h[k - 1], p[i])) {
      --k;
    }
    h[k++] = p[i];
  }
  // The last point repeats the first; all points on one line leave the two extremes.
  h.resize(k - 1);
}

bool isFinite(const gkVector<2>& v) {
  return std::isfinite(v.x()) && std::isfinite(v.y());
}

/// Below this many points the sample and the filter save less than they cost.
constexpr std::size_t kFilterMinimum = 128;

/// Certifies points strictly inside a convex polygon whose corners are input points: such a
/// point is strictly inside the hull of the input, so no corner of it, and need not be sorted.
///
/// The polygon's x range is cut into slabs of equal width, and each slab holds a rectangle
/// strictly inside the polygon: its sides are the slab's, widened by `margin` for the rounding
/// of a point's slab number, and its height is where the polygon is above its lower chain and
/// below its upper chain across the whole widened slab. The lower chain is convex and the
/// upper one concave, so those extremes are at the slab's ends; they are interpolated there and
/// pulled in by far more than the interpolation's rounding (2^-40 of the largest |y| against a
/// few units of 2^-52). A point is then certified by two comparisons in its slab's rectangle,
/// with no division. Slabs whose widened sides reach the polygon's leftmost or rightmost x have
/// an empty rectangle.
class SlabFilter {
 public:
  /// `polygon`: strict corners, counter-clockwise from the smallest (x, y), at least three, as
  /// monotoneChain returns them (the lower chain left to right, then the upper one back).
  SlabFilter(const std::vector<gkVector<2>>& polygon, std::size_t slabs) {
    const std::size_t h = polygon.size();
    std::size_t right = 0;
    for (std::size_t i = 1; i < h; ++i) {
      if (lexLess(polygon[right], polygon[i])) {
        right = i;
      }
    }
    left_ = polygon[0].x();
    const double rightX = polygon[right].x();
    const double width = rightX - left_;
    double tallest = 0.0;
    for (const gkVector<2>& q : polygon) {
      tallest = std::max(tallest, std::fabs(q.y()));
    }
    // The absolute terms cover roundings into the subnormal range; an overflow gives
    // infinities or NaN, which certify nothing.
    const double slack = 0x1p-40 * tallest + 0x1p-1000;
    const double margin =
        0x1p-30 * width + 0x1p-40 * std::max(std::fabs(left_), std::fabs(rightX)) + 0x1p-1000;
    scale_ = static_cast<double>(slabs) / width;
    lastSlab_ = static_cast<double>(slabs - 1);
    const double slabWidth = width / static_cast<double>(slabs);
    low_.assign(slabs, 0.0);
    high_.assign(slabs, 0.0);
    // Walk both chains left to right with the slabs: the lower chain is polygon[0 … right],
    // the upper one polygon[right … h] (h being polygon[0] again) read backwards.
    const auto at = [&](std::size_t i) -> const gkVector<2>& { return polygon[i % h]; };
    std::size_t lower = 0;
    std::size_t upper = h;
    // NaN when a difference overflows: an infinite rise gives an infinite value at one end of
    // a slab, which the max or min below would pass over for the other end's, and the slab's
    // rectangle would leave the polygon. (A run that overflows makes the whole width infinite,
    // and then no slab certifies anything anyway.)
    const auto interpolate = [](const gkVector<2>& a, const gkVector<2>& b, double x) {
      const double rise = b.y() - a.y();
      const double run = b.x() - a.x();
      const double along = x - a.x();
      if (!(std::isfinite(rise) && std::isfinite(run) && std::isfinite(along))) {
        return std::numeric_limits<double>::quiet_NaN();
      }
      return a.y() + rise * (along / run);
    };
    const auto lowerAt = [&](double x) {
      while (at(lower + 1).x() < x) {
        ++lower;
      }
      return interpolate(at(lower), at(lower + 1), x);
    };
    const auto upperAt = [&](double x) {
      while (at(upper - 1).x() < x) {
        --upper;
      }
      return interpolate(at(upper), at(upper - 1), x);
    };
    for (std::size_t b = 0; b < slabs; ++b) {
      const double from = left_ + static_cast<double>(b) * slabWidth - margin;
      const double to = left_ + static_cast<double>(b + 1) * slabWidth + margin;
      if (!(from > left_ && to < rightX)) {
        // Nothing certified: no y is above this and below that.
        low_[b] = 1.0;
        high_[b] = -1.0;
        continue;
      }
      // Both chains are walked forward only, and `from` of the next slab may be below `to`
      // of this one: evaluate both ends before moving on.
      const std::size_t lowerStart = lower;
      const std::size_t upperStart = upper;
      const double lowFrom = lowerAt(from);
      const double highFrom = upperAt(from);
      const std::size_t lowerMid = lower;
      const std::size_t upperMid = upper;
      const double lowTo = lowerAt(to);
      const double highTo = upperAt(to);
      lower = std::max(lowerStart, lowerMid);
      upper = std::min(upperStart, upperMid);
      if (!(std::isfinite(lowFrom) && std::isfinite(lowTo) && std::isfinite(highFrom) &&
            std::isfinite(highTo))) {
        low_[b] = 1.0;
        high_[b] = -1.0;
        continue;
      }
      low_[b] = std::max(lowFrom, lowTo) + slack;
      high_[b] = std::min(highFrom, highTo) - slack;
    }
  }

  std::size_t slabs() const { return low_.size(); }

  /// The slab of a finite point, those left and right of the polygon in the first and last:
  /// a function of x that never decreases.
  std::size_t slabOf(const gkVector<2>& v) const {
    const double f = (v.x() - left_) * scale_;
    // NaN (0 times an infinite scale, when the x range is so narrow that slabs / width
    // overflows) goes to the first slab with the points left of it: still never decreasing.
    return static_cast<std::size_t>(f > 0.0 ? std::min(f, lastSlab_) : 0.0);
  }

  /// True when the point is certainly strictly inside the polygon; false for NaN.
  bool certainlyInside(const gkVector<2>& v) const {
    const double f = (v.x() - left_) * scale_;
    if (!(f >= 0.0 && f < static_cast<double>(low_.size()))) {
      return false;
    }
    const std::size_t b = static_cast<std::size_t>(f);
    // Both comparisons as integers: one branch on the answer, not two.
    return (static_cast<int>(v.y() > low_[b]) & static_cast<int>(v.y() < high_[b])) != 0;
  }

 private:
  double left_ = 0.0;
  double scale_ = 0.0;
  double lastSlab_ = 0.0;
  /// Per slab, the certified open interval of y: empty when low_ >= high_.
  std::vector<double> low_;
  std::vector<double> high_;
};

/// The points that may be corners of the hull, sorted by lexLess: every finite point except
/// points certified strictly inside the hull of a sample.
///
/// From kFilterMinimum points on, every s-th point (about 3 sqrt(n) of them) is taken, their
/// own hull is the polygon, and a SlabFilter over it drops the points it certifies. On outlines
/// and clouds alike that leaves a thin rim. The sample decides only how much is dropped, never
/// what the hull is.
void sortedHullCandidates(const std::vector<gkVector<2>>& points, std::vector<gkVector<2>>& kept) {
  kept.clear();
  const std::size_t n = points.size();
  const auto keepEveryFinite = [&] {
    for (const gkVector<2>& v : points) {
      if (isFinite(v)) {
        kept.push_back(v);
      }
    }
    sortLexicographic(kept);
  };
  if (n < kFilterMinimum) {
    keepEveryFinite();
    return;
  }
  const std::size_t wanted = 3 * static_cast<std::size_t>(std::sqrt(static_cast<double>(n)));
  const std::size_t step = std::max<std::size_t>(2, n / wanted);
  std::vector<gkVector<2>> sample;
  sample.reserve(n / step + 1);
  for (std::size_t i = 0; i < n; i += step) {
    if (isFinite(points[i])) {
      sample.push_back(points[i]);
    }
  }
  std::sort(sample.begin(), sample.end(), lexLess);
  sample.erase(std::unique(sample.begin(), sample.end()), sample.end());
  std::vector<gkVector<2>> polygon;
  monotoneChain(sample, polygon);
  if (polygon.size() < 3) {
    keepEveryFinite();
    return;
  }
  const SlabFilter filter(polygon, std::clamp<std::size_t>(n / 8, 8, 4096));
  // Every point is written after the kept ones and counted only if it stays: no branch on
  // the filter's unpredictable answer.
  kept.resize(n);
  std::size_t count = 0;
  for (const gkVector<2>& v : points) {
    kept[count] = v;
    count += static_cast<std::size_t>(static_cast<int>(!filter.certainlyInside(v)) &
                                      static_cast<int>(isFinite(v)));
  }
  kept.resize(count);
  // The slabs are buckets by x already.
  sortThroughBuckets(kept, filter.slabs(),
                     [&filter](const gkVector<2>& v) { return filter.slabOf(v); });
}

}  // namespace

void gwConvexHull(const std::vector<gkVector<2>>& points, std::vector<gkVector<2>>& hull) {
  std::vector<gkVector<2>> p;
  sortedHullCandidates(points, p);
  p.erase(std::unique(p.begin(), p.end()), p.end());
  std::vector<gkVector<2>> h;
  monotoneChain(p, h);
  hull.swap(h);
}
