#include "base/detail/farthest_pair.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace gk::detail {

namespace {

/// Below this many vertices the loop over unordered pairs is faster than building a tree.
constexpr std::size_t kPlainBelow = 160;
/// Coordinates beyond this may overflow a squared distance.
constexpr double kHuge = 1e150;
/// Sets spread over less than this may underflow a squared distance.
constexpr double kTiny = 1e-140;
/// Points per leaf of the tree.
constexpr std::size_t kLeafSize = 8;
/// Relative slack on the pruning test, far above the few units of rounding in a squared
/// distance, so that the tree never skips a pair whose computed distance could reach the
/// greatest one.
constexpr double kSlack = 1e-9;

struct Node {
  double minX, minY, maxX, maxY;
  std::uint32_t begin, end;  // range in the permuted index list
  std::int32_t left, right;  // children, -1 for a leaf
};

class KdTree {
 public:
  KdTree(const std::vector<gkVector<2>>& v, std::vector<std::uint32_t> ids)
      : v_(v), ids_(std::move(ids)) {
    nodes_.reserve(2 * ids_.size() / kLeafSize + 2);
    build(0, static_cast<std::uint32_t>(ids_.size()));
  }

  /// Calls f(i, j) once for every unordered pair of points (i from one leaf, j from the same or
  /// another leaf, i != j) whose two leaf boxes may hold points at a distance of at least
  /// sqrt(reachSquared). Pairs of boxes are pruned together, so far apart parts of the set
  /// are matched without visiting each point's neighbourhood.
  template <typename F>
  void visitFarPairs(double reachSquared, F&& f) const {
    std::vector<std::pair<std::int32_t, std::int32_t>> stack{{0, 0}};
    while (!stack.empty()) {
      const auto [ia, ib] = stack.back();
      stack.pop_back();
      const Node& a = nodes_[static_cast<std::size_t>(ia)];
      const Node& b = nodes_[static_cast<std::size_t>(ib)];
      const double dx = std::max(std::abs(a.maxX - b.minX), std::abs(b.maxX - a.minX));
      const double dy = std::max(std::abs(a.maxY - b.minY), std::abs(b.maxY - a.minY));
      if ((dx * dx + dy * dy) * (1 + kSlack) < reachSquared) {
        continue;
      }
      const bool aLeaf = a.left < 0;
      const bool bLeaf = b.left < 0;
      if (aLeaf && bLeaf) {
        for (std::uint32_t k = a.begin; k < a.end; ++k) {
          for (std::uint32_t m = (ia == ib ? k + 1 : b.begin); m < b.end; ++m) {
            f(ids_[k], ids_[m]);
          }
        }
        continue;
      }
      if (ia == ib) {
        // A node against itself: its two children each against itself, and against each other.
        stack.emplace_back(a.left, a.left);
        stack.emplace_back(a.right, a.right);
        stack.emplace_back(a.left, a.right);
        continue;
      }
      // Split the larger node (a leaf is never split).
      const bool splitA = bLeaf || (!aLeaf && (a.end - a.begin) >= (b.end - b.begin));
      if (splitA) {
        stack.emplace_back(a.left, ib);
        stack.emplace_back(a.right, ib);
      } else {
        stack.emplace_back(ia, b.left);
        stack.emplace_back(ia, b.right);
      }
    }
  }

 private:
  std::int32_t build(std::uint32_t begin, std::uint32_t end) {
    Node node{v_[ids_[begin]].x(),
              v_[ids_[begin]].y(),
              v_[ids_[begin]].x(),
              v_[ids_[begin]].y(),
              begin,
              end,
              -1,
              -1};
    for (std::uint32_t k = begin + 1; k < end; ++k) {
      const gkVector<2>& q = v_[ids_[k]];
      node.minX = std::min(node.minX, q.x());
      node.maxX = std::max(node.maxX, q.x());
      node.minY = std::min(node.minY, q.y());
      node.maxY = std::max(node.maxY, q.y());
    }
    const std::int32_t at = static_cast<std::int32_t>(nodes_.size());
    nodes_.push_back(node);
    if (end - begin > kLeafSize) {
      // Split the longer side at the median; depth stays below 2 log2(n) + 2, well inside the
      // query stack for any vector that fits in memory.
      const bool byX = node.maxX - node.minX >= node.maxY - node.minY;
      const std::uint32_t mid = begin + (end - begin) / 2;
      std::nth_element(ids_.begin() + begin, ids_.begin() + mid, ids_.begin() + end,
                       [this, byX](std::uint32_t a, std::uint32_t b) {
                         return byX ? v_[a].x() < v_[b].x() : v_[a].y() < v_[b].y();
                       });
      const std::int32_t left = build(begin, mid);
      const std::int32_t right = build(mid, end);
      nodes_[static_cast<std::size_t>(at)].left = left;
      nodes_[static_cast<std::size_t>(at)].right = right;
    }
    return at;
  }

  const std::vector<gkVector<2>>& v_;
  std::vector<std::uint32_t> ids_;
  std::vector<Node> nodes_;
};

/// The vertex farthest from v[from] among ids (the first on a tie).
std::uint32_t farthestFrom(const std::vector<gkVector<2>>& v, const std::vector<std::uint32_t>& ids,
                           std::uint32_t from) {
  std::uint32_t best = from;
  double bestDistance = 0;
  for (const std::uint32_t k : ids) {
    const double d = v[from].distance(v[k]);
    if (d > bestDistance) {
      bestDistance = d;
      best = k;
    }
  }
  return best;
}

}  // namespace

FarthestPair firstFarthestPairPlain(const std::vector<gkVector<2>>& v) {
  FarthestPair best;
  for (std::size_t i = 0; i < v.size(); ++i) {
    for (std::size_t j = 0; j < v.size(); ++j) {
      const double d = v[i].distance(v[j]);
      if (d > best.distance) {
        best = {true, i, j, d};
        if (std::isinf(d)) {
          // Nothing is strictly greater than infinity, so the loop could not change it again.
          return best;
        }
      }
    }
  }
  return best;
}

namespace {

/// The loop for small sets, in half the work: a distance does not depend on the order of its two
/// vertices ((a - b) is exactly -(b - a)), and within row i the pairs (i, j), j < i, repeat
/// pairs of earlier rows, so the first pair in row order to reach the greatest distance is the
/// first pair i < j to reach it. The square root is taken only of a squared distance above the
/// best one's, the only kind whose root can be strictly greater.
FarthestPair firstFarthestPairSmall(const std::vector<gkVector<2>>& v) {
  FarthestPair best;
  double bestSquared = 0;
  for (std::size_t i = 0; i < v.size(); ++i) {
    for (std::size_t j = i + 1; j < v.size(); ++j) {
      const double dx = v[i].x() - v[j].x();
      const double dy = v[i].y() - v[j].y();
      const double squared = dx * dx + dy * dy;
      if (!(squared > bestSquared)) {
        continue;
      }
      const double d = v[i].distance(v[j]);
      if (d > best.distance) {
        best = {true, i, j, d};
        bestSquared = squared;
        if (std::isinf(d)) {
          return best;
        }
      }
    }
  }
  return best;
}

}  // namespace

FarthestPair firstFarthestPair(const std::vector<gkVector<2>>& v) {
  if (v.size() < kPlainBelow) {
    return firstFarthestPairSmall(v);
  }
  if (v.size() > UINT32_MAX) {
    return firstFarthestPairPlain(v);
  }
  // A vertex with a NaN coordinate is at a NaN distance from everything, which never wins;
  // leave it out of the tree.
  std::vector<std::uint32_t> ids;
  ids.reserve(v.size());
  for (std::size_t k = 0; k < v.size(); ++k) {
    const double x = v[k].x();
    const double y = v[k].y();
    if (std::isnan(x) || std::isnan(y)) {
      continue;
    }
    if (!(std::abs(x) <= kHuge) || !(std::abs(y) <= kHuge)) {
      return firstFarthestPairPlain(v);
    }
    ids.push_back(static_cast<std::uint32_t>(k));
  }
  if (ids.size() < 2) {
    return firstFarthestPairPlain(v);
  }

  // A lower bound on the greatest distance: the farthest from the farthest of the first vertex
  // is at least half of it, and usually all of it.
  const std::uint32_t a = farthestFrom(v, ids, farthestFrom(v, ids, ids.front()));
  const std::uint32_t b = farthestFrom(v, ids, a);
  const double lower = v[a].distance(v[b]);
  if (!(lower >= kTiny)) {
    return firstFarthestPairPlain(v);
  }

  // Every pair whose computed distance reaches `lower` has an exact distance above
  // lower * (1 - 1e-15) or so; a box that cannot hold such a partner is skipped. What is left
  // is compared exactly as the loop compares: the greatest distance, then the first pair in
  // row order.
  const double reachSquared = lower * lower * (1 - kSlack);
  const KdTree tree(v, ids);
  FarthestPair best{true, a, b, lower};
  if (b < a || (a == b)) {
    best.i = std::min(a, b);
    best.j = std::max(a, b);
  }
  // Each unordered pair is seen once; its first ordered form is (smaller, larger), and the
  // distance is the same both ways round (the differences only change sign).
  tree.visitFarPairs(reachSquared, [&](std::uint32_t p, std::uint32_t q) {
    const std::uint32_t i = std::min(p, q);
    const std::uint32_t j = std::max(p, q);
    const double d = v[i].distance(v[j]);
    if (d > best.distance || (d == best.distance && (i < best.i || (i == best.i && j < best.j)))) {
      best = {true, i, j, d};
    }
  });
  return best;
}

}  // namespace gk::detail
