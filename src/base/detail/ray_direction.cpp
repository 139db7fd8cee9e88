#include "base/detail/ray_direction.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <queue>
#include <utility>

#include <gk/base/angle.h>
#include <gk/base/tolerances.h>

#include "base/detail/chain_bounds.h"
#include "base/detail/total_order.h"

namespace gk::detail {

namespace {

/// pi as the containment ray's gap threshold uses it.
constexpr double kPi = 3.141592653589793;

/// A squared length above this has a square root above gkTolProximity (sqrt is correctly
/// rounded, hence monotone), so only shorter vectors need their length taken.
constexpr double kOnVertexSquared = 1e-11;

/// How far past the chosen key the candidates reach, in key units. It dwarfs the rounding of a
/// key (under 1e-15), so every direction left out is known to lie beyond the bound below.
constexpr double kKeyMargin = 1e-9;

/// A cheap stand-in for the angle of v normalised to [0, 2 pi): the quadrant plus a fraction
/// that grows with the angle inside it (the "diamond angle"), in [0, 4]. Mathematically it
/// orders directions exactly as the angle does. quadrantOf gives the quadrant (its integer
/// part, but for the end value) without a division, or kNoQuadrant when a coordinate is NaN or
/// both are infinite: then the caller sorts every angle. A direction a hair below the +x axis
/// counts as quadrant 0 with key 0, because its normalised angle may round to one full turn,
/// which norm() makes 0.
constexpr int kNoQuadrant = 4;

int quadrantOf(double x, double y) {
  if (x > 0 && y >= 0) {
    return 0;
  }
  if (x <= 0 && y > 0) {
    return 1;
  }
  if (x < 0 && y <= 0) {
    return 2;
  }
  if (x >= 0 && y < 0) {
    return -y <= x * 1e-15 ? 0 : 3;
  }
  return kNoQuadrant;
}

/// The diamond key of (x, y) in quadrant q = quadrantOf(x, y) < kNoQuadrant.
double keyIn(int q, double x, double y) {
  switch (q) {
    case 0:
      return y < 0 ? 0.0 : y / (x + y);
    case 1:
      return 1.0 + -x / (y - x);
    case 2:
      return 2.0 + -y / (-x - y);
    default:
      return 3.0 + x / (x - y);
  }
}

/// The quadrant a key lies in, for comparing with quadrantOf: every key of a direction in a
/// later quadrant is at least that quadrant's number, so it is above key.
int quadrantOfKey(double key) {
  return static_cast<int>(std::min(3.0, std::floor(key)));
}

/// The angle (within about 1e-15) of the direction whose diamond key is key.
double angleOfKey(double key) {
  const double quadrant = std::min(3.0, std::floor(key));
  const double t = key - quadrant;
  return quadrant * (kPi / 2.0) + std::atan2(t, 1.0 - t);
}

/// The gap rule every search applies to two neighbouring angles low <= high of the ascending
/// order (high is the first angle when the gap wraps round): when the gap between them is wider
/// than threshold, sets direction to its bisector and returns true.
bool bisectIfWide(double low, double high, double threshold, gkVector<2>& direction) {
  const double gap = gkRadian(high - low).norm().toDouble();
  if (gap > threshold) {
    direction = gkVector<2>(1.0, gkRadian(low + gap / 2.0));
    return true;
  }
  return false;
}

/// The containment ray's direction from the ascending order of every vertex direction (NaN
/// last). Only a growing prefix of the order is sorted: a prefix holds the same values as the
/// fully sorted list does there, so the first wide gap is the same.
gkVector<2> directionFromAllAngles(const std::vector<gkVector<2>>& vertices, const gkVector<2>& pt,
                                   double threshold) {
  const std::size_t n = vertices.size();
  std::vector<double> angles;
  angles.reserve(n);
  for (const gkVector<2>& vertex : vertices) {
    angles.push_back((vertex - pt).angle().norm().toDouble());
  }
  const auto nanLast = [](double a, double b) { return gk::detail::lessNaNLast(a, b); };
  std::size_t checked = 0;  // gaps (i, i + 1) for i < checked are known to be narrow
  for (std::size_t prefix = std::min<std::size_t>(n, 16);; prefix = std::min(n, prefix * 8)) {
    // Sorting the whole list is a plain sort: partial_sort would heap-sort it, several times
    // slower.
    if (prefix == n) {
      std::sort(angles.begin() + static_cast<std::ptrdiff_t>(checked), angles.end(), nanLast);
    } else {
      std::partial_sort(angles.begin() + static_cast<std::ptrdiff_t>(checked),
                        angles.begin() + static_cast<std::ptrdiff_t>(prefix), angles.end(),
                        nanLast);
    }
    // The gap after the last sorted direction is known only once everything is sorted; the
    // gap after the very last direction wraps round to the first.
    const std::size_t last = prefix == n ? n : prefix - 1;
    for (std::size_t i = checked; i < last; ++i) {
      const std::size_t j = i + 1 == n ? 0 : i + 1;
      gkVector<2> direction;
      if (bisectIfWide(angles[i], angles[j], threshold, direction)) {
        return direction;
      }
    }
    checked = last;
    if (prefix == n) {
      return gkVector<2>(1.0, 0.0);
    }
  }
}

/// How many of the smallest directions the first round takes.
constexpr std::size_t kFirstRound = 16;

/// A vertex and the diamond key of its direction from the query point.
struct KeyedVertex {
  double key;
  std::size_t index;
};

/// Appends (key, index) field by field: a braced temporary goes through the stack first, which
/// made the passes below a few per cent slower.
void append(std::vector<KeyedVertex>& entries, double key, std::size_t index) {
  entries.emplace_back();
  entries.back().key = key;
  entries.back().index = index;
}

/// Whether v (a vertex less the query point) points a hair below the +x axis, where its key is
/// 0 but its normalised angle may be a full turn less a hair.
/// q is v's quadrant.
bool hairBelowAxis(int q, const gkVector<2>& v) {
  return q == 0 && v.y() < 0;
}

/// The containment ray's direction found from the smallest directions only. The ray runs
/// through the first gap wider than threshold in the ascending order of the normalised vertex
/// directions; that gap nearly always comes among the first few. The directions whose key is at
/// most k (plus a margin) are the candidates; their true angles, sorted, are the start of the
/// full order for every value below a bound that no direction left out can reach. Only gaps
/// between two such values are trusted. Returns false when that is not enough (the caller
/// tries more directions, or sorts everything), so the answer is always the full sort's.
///
/// Most candidates need no angle. In key order they are in angle order but for near-ties, and
/// within a quadrant the angle grows between once and twice as fast as the key, so where two
/// neighbours in key order differ by less than (threshold - kKeyMargin) / 2 in key, every gap of
/// the angle order between them is narrow. Only at a larger jump is a gap measured: the largest
/// angle up to the jump against the smallest after it, each taken among the candidates whose
/// key is within the margin of the jump's ends (no other can be the largest or smallest there,
/// and the two sides cannot interleave). A gap found that way lies below every direction left
/// out, so it is the full order's first wide gap even where the plain sort of the candidates
/// would not yet have trusted it. Candidates a hair below the axis, or a threshold the margin
/// could swallow, take the plain sort of the candidates' angles.
bool directionFromKeys(const std::vector<gkVector<2>>& vertices, const gkVector<2>& pt,
                       const std::vector<KeyedVertex>& entries, double k, double threshold,
                       gkVector<2>& direction) {
  const double reach = k + kKeyMargin;
  // Every direction whose key is above reach has an angle above this: the in-quadrant angle
  // grows at least as fast as the key, and the roundings of key and angle are under 1e-14.
  const double bound = angleOfKey(k) + kKeyMargin / 2.0;
  std::vector<KeyedVertex> chosen;
  chosen.reserve(entries.size());
  bool hair = false;
  for (const KeyedVertex& e : entries) {
    if (e.key <= reach) {
      chosen.push_back(e);
      const gkVector<2> v = vertices[e.index] - pt;
      hair = hair || hairBelowAxis(quadrantOf(v.x(), v.y()), v);
    }
  }
  const auto angleOf = [&](const KeyedVertex& e) {
    return (vertices[e.index] - pt).angle().norm().toDouble();
  };
  const auto wide = [&](double low, double high) {
    return bisectIfWide(low, high, threshold, direction);
  };
  if (hair || !(threshold > 8.0 * kKeyMargin)) {
    std::vector<double> angles;
    angles.reserve(chosen.size());
    for (const KeyedVertex& e : chosen) {
      angles.push_back(angleOf(e));
    }
    std::sort(angles.begin(), angles.end());
    for (std::size_t i = 0; i + 1 < angles.size() && angles[i + 1] < bound; ++i) {
      if (wide(angles[i], angles[i + 1])) {
        return true;
      }
    }
    return false;
  }
  std::sort(chosen.begin(), chosen.end(),
            [](const KeyedVertex& a, const KeyedVertex& b) { return a.key < b.key; });
  const std::size_t m = chosen.size();
  for (std::size_t i = 0; i + 1 < m; ++i) {
    if (2.0 * (chosen[i + 1].key - chosen[i].key) + kKeyMargin < threshold) {
      continue;
    }
    double low = angleOf(chosen[i]);
    for (std::size_t j = i; j-- > 0 && chosen[j].key >= chosen[i].key - kKeyMargin;) {
      low = std::max(low, angleOf(chosen[j]));
    }
    double high = angleOf(chosen[i + 1]);
    for (std::size_t j = i + 2; j < m && chosen[j].key <= chosen[i + 1].key + kKeyMargin; ++j) {
      high = std::min(high, angleOf(chosen[j]));
    }
    if (!(high < bound)) {
      return false;
    }
    if (wide(low, high)) {
      return true;
    }
  }
  return false;
}

/// The later rounds, rarely needed: the m-th smallest key for m = 8 kFirstRound, 64
/// kFirstRound, ... while m is below the vertex count, then every direction. Returns false (the
/// sort of every angle decides) only for a NaN key or a direction a hair below the +x axis.
bool directionFromSmallestAngles(const std::vector<gkVector<2>>& vertices, const gkVector<2>& pt,
                                 double threshold, gkVector<2>& direction) {
  // The keys go to a plain array, and each round lists only its candidates as key-and-number
  // pairs: listing every vertex as a pair cost a third of a slow query.
  const std::size_t n = vertices.size();
  std::vector<double> keys(n);
  bool allKeysSound = true;  // no NaN key, and no direction a hair below the +x axis
  for (std::size_t i = 0; i < n; ++i) {
    const gkVector<2> v = vertices[i] - pt;
    const int q = quadrantOf(v.x(), v.y());
    keys[i] = keyIn(q, v.x(), v.y());
    allKeysSound = allKeysSound && !std::isnan(keys[i]) && !hairBelowAxis(q, v);
  }
  std::vector<double> order(keys);
  std::vector<KeyedVertex> entries;
  for (std::size_t m = 8 * kFirstRound; m < n; m *= 8) {
    std::nth_element(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(m - 1),
                     order.end());
    const double km = order[m - 1];
    const double reach = km + kKeyMargin;
    entries.clear();
    for (std::size_t i = 0; i < n; ++i) {
      if (keys[i] <= reach) {
        append(entries, keys[i], i);
      }
    }
    if (directionFromKeys(vertices, pt, entries, km, threshold, direction)) {
      return true;
    }
  }
  if (!allKeysSound || n < 2) {
    return false;
  }
  // The last round takes every direction. Its bound lies above every angle, so the keys' walk
  // trusts every gap but the one that wraps round from the largest angle to the smallest; that
  // one is measured here, each end among the directions whose key is within the margin of the
  // largest or smallest key.
  const auto [smallestKey, largestKey] = std::minmax_element(keys.begin(), keys.end());
  const double kMin = *smallestKey;
  const double kMax = *largestKey;
  entries.clear();
  for (std::size_t i = 0; i < n; ++i) {
    append(entries, keys[i], i);
  }
  if (directionFromKeys(vertices, pt, entries, kMax, threshold, direction)) {
    return true;
  }
  double low = -std::numeric_limits<double>::infinity();
  double high = std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < n; ++i) {
    if (keys[i] >= kMax - kKeyMargin) {
      low = std::max(low, (vertices[i] - pt).angle().norm().toDouble());
    }
    if (keys[i] <= kMin + kKeyMargin) {
      high = std::min(high, (vertices[i] - pt).angle().norm().toDouble());
    }
  }
  if (!bisectIfWide(low, high, threshold, direction)) {
    direction = gkVector<2>(1.0, 0.0);
  }
  return true;
}

/// The tree search gives up (and the pass over every vertex answers) after expanding one run
/// for every direction it must find plus one for every kVerticesPerRunBudget vertices. A run
/// costs about as much as a dozen vertices of the pass: a point that sees much of the outline
/// edge-on, or a dense star whose spikes crowd its +x ray, may need many runs, and the pass is
/// then the cheaper.
constexpr std::size_t kVerticesPerRunBudget = 32;

/// The search through the runs of segments: the on-vertex test, then, round by round, the
/// smallest directions by best-first search. Answers as the pass over every vertex would, or
/// returns false (nothing decided) when the search gets too long.
class RunSearch {
 public:
  RunSearch(const std::vector<gkVector<2>>& vertices, const gkVector<2>& pt,
            const ChainBounds& chains)
      : vertices_(vertices), pt_(pt), chains_(chains) {
    const double m = std::max({chains.magnitude(), std::abs(pt.x()), std::abs(pt.y())});
    // A corner of a run's rectangle, less pt, is off by at most this; a run this much farther
    // from pt than that sees each corner within 2^-27 radians of its true direction.
    cornerError_ = chains.cornerError() + 4.0 * std::numeric_limits<double>::epsilon() * m;
    nearRadius_ = cornerError_ * 134217728.0;
  }

  /// Whether some vertex is within gkTolProximity of pt by the pass's own test: a vertex that
  /// close ends a segment within that distance (give or take the rounding of the test).
  bool onVertex() const {
    const double m = std::max({chains_.magnitude(), std::abs(pt_.x()), std::abs(pt_.y())});
    const double reach =
        gkTolProximity * (1.0 + 1e-12) + 8.0 * std::numeric_limits<double>::epsilon() * m;
    std::vector<std::size_t> segments;
    segments.reserve(16);  // a point comes near a handful of segments
    chains_.candidates(pt_, pt_, reach, segments);
    const std::size_t n = vertices_.size();
    for (const std::size_t k : segments) {
      // Closed walk: segment k runs from vertex k - 1 (n - 1 for k = 0) to vertex k.
      for (const std::size_t i : {k == 0 ? n - 1 : k - 1, k}) {
        const gkVector<2> v = vertices_[i] - pt_;
        if (!(v.x() * v.x() + v.y() * v.y() > kOnVertexSquared) && v.len() <= gkTolProximity) {
          return true;
        }
      }
    }
    return false;
  }

  /// Makes entries every vertex whose key is at most the m-th smallest key plus the key margin
  /// (and maybe more), and sets km to that key; false when the search ran out of budget. Runs
  /// are opened in the order of their bounds; the vertices of the leaves opened are all
  /// entries, and the m smallest of their keys are kept in a small heap. Once no run left has a
  /// bound within the margin of the m-th smallest key so far, every vertex not listed lies
  /// beyond it, so the m smallest keys and every key within the margin of the m-th are among the
  /// entries.
  ///
  /// A later call with a larger m goes on where the last one stopped, with the same entries:
  /// a search for the larger m from the start would open the same runs in the same order up to
  /// there (it cannot stop sooner, its m-th key being no smaller), so it is the same search,
  /// with the same budget of runs, without opening those runs again.
  bool smallestKeys(std::size_t m, std::vector<KeyedVertex>& entries, double& km) {
    if (!started_) {
      started_ = true;
      entries.clear();
      entries.reserve(4 * m);
      std::vector<Run> runStore;
      runStore.reserve(64);
      runs_ = decltype(runs_)(std::greater<Run>(), std::move(runStore));
      const std::size_t top = chains_.levelCount() - 1;
      runs_.push({keyBound(top, 0), top, 0});
    }
    std::vector<double> heapStore;
    heapStore.reserve(m);
    // the m smallest keys so far, largest on top
    std::priority_queue<double> smallest(std::less<double>(), std::move(heapStore));
    for (const KeyedVertex& e : entries) {
      keepIfSmallest(smallest, m, e.key);
    }
    const std::size_t budget = m + vertices_.size() / kVerticesPerRunBudget;
    while (!runs_.empty()) {
      const Run run = runs_.top();
      if (smallest.size() == m && run.bound > smallest.top() + kKeyMargin) {
        break;
      }
      runs_.pop();
      if (opened_++ >= budget) {
        return false;
      }
      if (run.level == 0) {
        std::size_t begin = 0;
        std::size_t end = 0;
        chains_.leafVertices(run.index, begin, end);
        for (std::size_t i = begin; i < end; ++i) {
          const gkVector<2> v = vertices_[i] - pt_;
          const double key = keyIn(quadrantOf(v.x(), v.y()), v.x(), v.y());
          append(entries, key, i);
          keepIfSmallest(smallest, m, key);
        }
        continue;
      }
      for (const std::size_t child : {2 * run.index, 2 * run.index + 1}) {
        if (child < chains_.nodeCount(run.level - 1)) {
          runs_.push({keyBound(run.level - 1, child), run.level - 1, child});
        }
      }
    }
    if (smallest.size() < m) {
      return false;
    }
    km = smallest.top();
    return true;
  }

 private:
  /// A lower bound on the keys of the directions from pt to every point of a run's rectangle:
  /// 0 when the rectangle comes near pt, or near the +x ray from it or a hair below (where
  /// keys start again from 0). Otherwise the directions to the rectangle span less than a half
  /// turn without the start of the keys in it, so the smallest key is at a corner; a computed
  /// corner's direction is within 2^-27 radians of the true one, and a key changes no faster
  /// than its angle.
  double keyBound(std::size_t level, std::size_t j) const {
    if (chains_.near(level, j, pt_, nearRadius_)) {
      return 0.0;
    }
    gkVector<2> c[4];
    chains_.corners(level, j, c);
    double lowY = std::numeric_limits<double>::infinity();
    double highY = -lowY;
    double highX = -lowY;
    for (gkVector<2>& corner : c) {
      corner = corner - pt_;
      lowY = std::min(lowY, corner.y());
      highY = std::max(highY, corner.y());
      highX = std::max(highX, corner.x());
    }
    if (highX > -cornerError_ && lowY <= cornerError_ &&
        highY >= -(cornerError_ + 1e-14 * std::max(highX, 0.0))) {
      return 0.0;
    }
    double best = std::numeric_limits<double>::infinity();
    for (const gkVector<2>& corner : c) {
      const int q = quadrantOf(corner.x(), corner.y());
      if (q == kNoQuadrant) {
        return 0.0;
      }
      best = std::min(best, keyIn(q, corner.x(), corner.y()));
    }
    return best - 1e-8;
  }

  /// Adds key to the m smallest keys in heap when it is one of them.
  static void keepIfSmallest(std::priority_queue<double>& heap, std::size_t m, double key) {
    if (heap.size() < m) {
      heap.push(key);
    } else if (key < heap.top()) {
      heap.pop();
      heap.push(key);
    }
  }

  struct Run {
    double bound;
    std::size_t level;
    std::size_t index;
    bool operator>(const Run& o) const { return bound > o.bound; }
  };

  const std::vector<gkVector<2>>& vertices_;
  gkVector<2> pt_;
  const ChainBounds& chains_;
  double cornerError_ = 0;
  double nearRadius_ = 0;
  /// The search's state between rounds: the runs not yet opened, and how many were opened.
  bool started_ = false;
  std::priority_queue<Run, std::vector<Run>, std::greater<Run>> runs_;
  std::size_t opened_ = 0;
};

/// The pass's rounds through the runs of segments. Returns 1 with the direction, 0 for a
/// point on a vertex, -1 when the pass must decide.
int directionThroughRuns(const std::vector<gkVector<2>>& vertices, const gkVector<2>& pt,
                         const ChainBounds& chains, double threshold, gkVector<2>& direction) {
  RunSearch search(vertices, pt, chains);
  if (search.onVertex()) {
    return 0;
  }
  std::vector<KeyedVertex> entries;
  double km = 0;
  // Rounds of 16, 64, 256, ... directions while they stay within a quarter of n. A point
  // beside the outline that sees it edge-on often needs a few hundred directions, and the runs
  // find them along the stretch near the tangent without the pass over every vertex. Every
  // round answers exactly or not at all, so the steps only set the cost; these measured
  // fastest (x8 steps, or rounds up to n/16: a fifth slower on the 1024-vertex blob).
  for (std::size_t m = kFirstRound;
       m < vertices.size() && (m == kFirstRound || 4 * m <= vertices.size()); m *= 4) {
    if (!search.smallestKeys(m, entries, km)) {
      return -1;
    }
    if (directionFromKeys(vertices, pt, entries, km, threshold, direction)) {
      return 1;
    }
  }
  return -1;
}

}  // namespace

bool containmentRayDirection(const std::vector<gkVector<2>>& vertices, const gkVector<2>& pt,
                             gkVector<2>& direction, const ChainBounds* chains) {
  const std::size_t n = vertices.size();
  const double threshold = kPi / static_cast<double>(n);
  // The runs answer for finite coordinates within 1e-100 only, as do their bounds, and the
  // pass's first round needs more than kFirstRound vertices.
  if (chains != nullptr && chains->on() && chains->segmentCount() == n && n > kFirstRound &&
      std::abs(pt.x()) <= 1e100 && std::abs(pt.y()) <= 1e100) {
    const int found = directionThroughRuns(vertices, pt, *chains, threshold, direction);
    if (found >= 0) {
      return found == 1;
    }
  }
  // One pass: the on-vertex test and the kFirstRound smallest keys. It also logs every vertex
  // whose key comes within the margin of the largest key kept so far: since that only falls,
  // the log holds every candidate of the first round. A direction in a quadrant after the one
  // of that key (plus the margin) cannot qualify, and needs no division.
  std::array<double, kFirstRound> window{};
  std::size_t filled = 0;
  int worstQuadrant = kNoQuadrant;
  std::vector<KeyedVertex> log;
  bool keysUsable = true;
  for (std::size_t i = 0; i < n; ++i) {
    const gkVector<2> v = vertices[i] - pt;
    // NaN fails the first comparison and takes the exact test.
    if (!(v.x() * v.x() + v.y() * v.y() > kOnVertexSquared) && v.len() <= gkTolProximity) {
      return false;
    }
    const int q = quadrantOf(v.x(), v.y());
    if (q == kNoQuadrant) {
      keysUsable = false;
      continue;
    }
    if (q > worstQuadrant) {
      continue;
    }
    const double key = keyIn(q, v.x(), v.y());
    if (filled == kFirstRound && !(key <= window[kFirstRound - 1] + kKeyMargin)) {
      continue;
    }
    append(log, key, i);
    if (filled == kFirstRound && !(key < window[kFirstRound - 1])) {
      continue;
    }
    std::size_t at = filled < kFirstRound ? filled++ : kFirstRound - 1;
    for (; at > 0 && key < window[at - 1]; --at) {
      window[at] = window[at - 1];
    }
    window[at] = key;
    if (filled == kFirstRound) {
      worstQuadrant = quadrantOfKey(window[kFirstRound - 1] + kKeyMargin);
    }
  }
  direction = gkVector<2>(1.0, 0.0);
  if (keysUsable && n > kFirstRound &&
      directionFromKeys(vertices, pt, log, window[kFirstRound - 1], threshold, direction)) {
    return true;
  }
  if (keysUsable && directionFromSmallestAngles(vertices, pt, threshold, direction)) {
    return true;
  }
  direction = directionFromAllAngles(vertices, pt, threshold);
  return true;
}

}  // namespace gk::detail
