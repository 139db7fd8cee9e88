#include "base/detail/clearance_sweep.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <set>
#include <utility>

namespace gk::detail {

namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();
// Added to every rounding bound, so that results in the subnormal range, whose rounding is not
// relative, are never trusted.
constexpr double kTiny = std::numeric_limits<double>::min();
// The vertical extent of a segment no steeper than 45 degrees within reach of a point, per
// unit of reach: sqrt(2) rounded up.
constexpr double kAcross = 1.4143;

/// Thrown from the sweep's ordering when two segments cannot be told apart in floating point;
/// the sweep then answers false.
struct TooCloseToCall {};

struct Point {
  double x;
  double y;
};

/// (b - a) x (c - a) and a bound on its rounding error: the sign is known when
/// |value| > bound. Two differences, two products and a difference round by at most
/// 2 eps (|bx| + |by|)(|cx| + |cy|); the bound takes four times that.
struct Orientation {
  double value;
  double bound;
  bool positive() const { return value > bound; }
  bool negative() const { return value < -bound; }
};

Orientation orient(const Point& a, const Point& b, const Point& c) {
  const double bx = b.x - a.x;
  const double by = b.y - a.y;
  const double cx = c.x - a.x;
  const double cy = c.y - a.y;
  return {bx * cy - by * cx,
          8.0 * kEps * (std::abs(bx) + std::abs(by)) * (std::abs(cx) + std::abs(cy)) + kTiny};
}

/// The squared distance from p to the segment a b, measured as the library measures distances
/// (to the foot of the perpendicular, or to the nearer end).
double pointSegmentDistance2(const Point& p, const Point& a, const Point& b) {
  const double dx = b.x - a.x;
  const double dy = b.y - a.y;
  const double t = ((p.x - a.x) * dx + (p.y - a.y) * dy) / (dx * dx + dy * dy);
  const Point foot = !(t > 0.0) ? a : (t >= 1.0 ? b : Point{a.x + dx * t, a.y + dy * t});
  const double ex = p.x - foot.x;
  const double ey = p.y - foot.y;
  return ex * ex + ey * ey;
}

/// An unsigned key that orders finite doubles as < does, -0 and +0 alike.
std::uint64_t orderKey(double x) {
  x += 0.0;  // -0 becomes +0
  std::uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  return (bits >> 63) != 0 ? ~bits : bits | (std::uint64_t{1} << 63);
}

struct KeyedVertex {
  std::uint64_t key;
  std::uint32_t vertex;
};

/// Sorts by key, stably. A least-significant-digit radix sort: a contour's coordinates rise and
/// fall in long runs, a pattern on which comparison sorts with median-of-three pivots degrade.
void sortByKey(std::vector<KeyedVertex>& items) {
  if (items.size() < 1024) {
    std::stable_sort(items.begin(), items.end(),
                     [](const KeyedVertex& a, const KeyedVertex& b) { return a.key < b.key; });
    return;
  }
  constexpr int kDigitBits = 16;
  constexpr std::size_t kBuckets = std::size_t{1} << kDigitBits;
  std::vector<KeyedVertex> other(items.size());
  std::vector<std::uint32_t> count(kBuckets);
  for (int shift = 0; shift < 64; shift += kDigitBits) {
    const auto digit = [shift](const KeyedVertex& v) {
      return static_cast<std::size_t>((v.key >> shift) & (kBuckets - 1));
    };
    std::fill(count.begin(), count.end(), 0);
    for (const KeyedVertex& v : items) {
      ++count[digit(v)];
    }
    if (count[digit(items.front())] == items.size()) {
      continue;  // one digit throughout: nothing to move
    }
    std::uint32_t start = 0;
    for (std::uint32_t& c : count) {
      const std::uint32_t here = c;
      c = start;
      start += here;
    }
    for (const KeyedVertex& v : items) {
      other[count[digit(v)]++] = v;
    }
    items.swap(other);
  }
}

/// One sweep across the sweep x (the points' x, or their y when transposed), segments in the
/// status ordered by their sweep y at the sweep position. Segments with both ends at the same
/// sweep x are not in the status: they are measured against it where they stand.
class Sweep {
 public:
  Sweep(const std::vector<gkVector<2>>& points, bool closed, bool transposed, double reach)
      : points_(points),
        n_(static_cast<std::uint32_t>(points.size())),
        closed_(closed),
        transposed_(transposed),
        reach_(reach),
        reachAcross_(kAcross * reach),
        status_(Order{this}) {
    // Distances near() measures round by a few units of the largest coordinate; a margin of 64
    // of them, taken once for every pair.
    double m = 0;
    for (const gkVector<2>& p : points) {
      m = std::max({m, std::abs(p.x()), std::abs(p.y())});
    }
    limit_ = reach + 64.0 * kEps * m + kTiny;
  }

  /// The vertices in sweep order: by sweep x, then sweep y, then number.
  std::vector<std::uint32_t> order() const {
    std::vector<KeyedVertex> keyed(n_);
    for (std::uint32_t i = 0; i < n_; ++i) {
      keyed[i] = {orderKey(at(i).x), i};
    }
    sortByKey(keyed);
    // Equal sweep x: by sweep y, then number. Such runs are short.
    for (std::size_t first = 0; first < keyed.size();) {
      std::size_t last = first + 1;
      while (last < keyed.size() && keyed[last].key == keyed[first].key) {
        ++last;
      }
      if (last - first > 1) {
        std::sort(keyed.begin() + static_cast<std::ptrdiff_t>(first),
                  keyed.begin() + static_cast<std::ptrdiff_t>(last),
                  [this](const KeyedVertex& a, const KeyedVertex& b) {
                    const double ya = at(a.vertex).y;
                    const double yb = at(b.vertex).y;
                    return ya < yb || (ya == yb && a.vertex < b.vertex);
                  });
      }
      first = last;
    }
    std::vector<std::uint32_t> order(n_);
    for (std::uint32_t i = 0; i < n_; ++i) {
      order[i] = keyed[i].vertex;
    }
    return order;
  }

  /// False when two vertices lie within 2 reach of each other, or the check would take more
  /// than a few steps per vertex. order is order().
  bool verticesApart(const std::vector<std::uint32_t>& order) const {
    const double r = 2.0 * reach_;
    const auto xOf = [this, &order](std::size_t p) { return at(order[p]).x; };
    for (std::size_t p = 0; p < order.size(); ++p) {
      const Point v = at(order[p]);
      const double xLimit = v.x + 1.01 * r;
      std::size_t q = p + 1;
      for (int columns = 0; q < order.size() && xOf(q) <= xLimit; ++columns) {
        if (columns == 16) {
          return false;
        }
        // The vertices of one sweep x follow each other in increasing sweep y.
        const double column = xOf(q);
        const auto begin = order.begin() + static_cast<std::ptrdiff_t>(q);
        const auto end = std::upper_bound(
            begin, order.end(), column, [this](double x, std::uint32_t i) { return x < at(i).x; });
        auto near = std::lower_bound(begin, end, v.y - 1.01 * r,
                                     [this](std::uint32_t i, double y) { return at(i).y < y; });
        for (int seen = 0; near != end && at(*near).y <= v.y + 1.01 * r; ++near, ++seen) {
          const Point w = at(*near);
          const double dx = w.x - v.x;
          const double dy = w.y - v.y;
          if (seen == 16 || dx * dx + dy * dy <= 1.0001 * r * r) {
            return false;
          }
        }
        q = static_cast<std::size_t>(end - order.begin());
      }
    }
    return true;
  }

  /// The pair of segments that ended the last run, if two status neighbours did.
  bool closePair(std::pair<std::size_t, std::size_t>& pair) const {
    if (closePair_.first == kNone) {
      return false;
    }
    pair = {std::min(closePair_.first, closePair_.second),
            std::max(closePair_.first, closePair_.second)};
    return true;
  }

  /// True when no two segments sharing no vertex come within reach as far as this sweep can
  /// tell. order is order().
  bool run(const std::vector<std::uint32_t>& order) {
    // Each segment's ends in sweep coordinates, left first, read by every comparison: kept
    // together so that the ordering does not chase the vertices. Built here, after the order's
    // sorting buffers are gone, so that the two never take memory at once.
    const std::uint32_t count = segmentCount();
    ends_.resize(count);
    leftIsTo_.resize(count);
    for (std::uint32_t k = 0; k < count; ++k) {
      const Point a = at(from(k));
      const Point b = at(to(k));
      leftIsTo_[k] = b.x < a.x;
      ends_[k] = leftIsTo_[k] ? Ends{b, a} : Ends{a, b};
    }
    handles_.assign(count, status_.end());
    try {
      for (std::size_t first = 0; first < order.size();) {
        x_ = at(order[first]).x;
        std::size_t last = first;
        while (last < order.size() && at(order[last]).x == x_) {
          ++last;
        }
        // Everything spanning x_ is in the status while its vertices are measured: segments
        // starting here go in first, the ones ending here leave last.
        for (std::size_t p = first; p < last; ++p) {
          for (const std::uint32_t k : incident(order[p])) {
            if (k != kNone && !vertical(k) && left(k) == order[p] && !insert(k, order[p])) {
              return false;
            }
          }
        }
        for (std::size_t p = first; p < last; ++p) {
          if (!vertexClear(order[p])) {
            return false;
          }
          for (const std::uint32_t k : incident(order[p])) {
            if (k != kNone && vertical(k) && from(k) == order[p] && !verticalClear(k)) {
              return false;
            }
          }
        }
        for (std::size_t p = first; p < last; ++p) {
          for (const std::uint32_t k : incident(order[p])) {
            if (k != kNone && !vertical(k) && right(k) == order[p] && !remove(k)) {
              return false;
            }
          }
        }
        first = last;
      }
    } catch (const TooCloseToCall&) {
      return false;
    }
    return true;
  }

 private:
  static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

  /// The status order. Keys of type double are sweep y values at the sweep position.
  struct Order {
    using is_transparent = void;
    const Sweep* sweep;
    bool operator()(std::uint32_t a, std::uint32_t b) const { return sweep->below(a, b); }
    bool operator()(std::uint32_t a, double y) const {
      return sweep->yAt(a) < y - sweep->yError(a);
    }
    bool operator()(double y, std::uint32_t a) const {
      return y + sweep->yError(a) < sweep->yAt(a);
    }
  };
  using Status = std::set<std::uint32_t, Order>;

  Point at(std::uint32_t i) const {
    const gkVector<2>& p = points_[i];
    return transposed_ ? Point{p.y(), p.x()} : Point{p.x(), p.y()};
  }

  std::uint32_t segmentCount() const { return closed_ ? n_ : n_ - 1; }

  // The walk's numbering: a closed walk's segment k runs from vertex k - 1 (n - 1 for k = 0)
  // to vertex k, an open walk's from vertex k to k + 1.
  std::uint32_t from(std::uint32_t k) const { return closed_ ? (k == 0 ? n_ - 1 : k - 1) : k; }
  std::uint32_t to(std::uint32_t k) const { return closed_ ? k : k + 1; }

  /// The segments that end at vertex i (kNone where there is none).
  std::array<std::uint32_t, 2> incident(std::uint32_t i) const {
    if (closed_) {
      return {i, i + 1 == n_ ? 0 : i + 1};
    }
    return {i > 0 ? i - 1 : kNone, i + 1 < n_ ? i : kNone};
  }

  bool vertical(std::uint32_t k) const { return ends_[k].l.x == ends_[k].r.x; }
  std::uint32_t left(std::uint32_t k) const { return leftIsTo_[k] ? to(k) : from(k); }
  std::uint32_t right(std::uint32_t k) const { return leftIsTo_[k] ? from(k) : to(k); }
  bool touches(std::uint32_t k, std::uint32_t vertex) const {
    return from(k) == vertex || to(k) == vertex;
  }
  bool shareVertex(std::uint32_t a, std::uint32_t b) const {
    return touches(b, from(a)) || touches(b, to(a));
  }

  /// Segment k's sweep y at the sweep position, exact at its ends.
  double yAt(std::uint32_t k) const {
    const Point& l = ends_[k].l;
    const Point& r = ends_[k].r;
    if (x_ == l.x) {
      return l.y;
    }
    if (x_ == r.x) {
      return r.y;
    }
    return l.y + (x_ - l.x) / (r.x - l.x) * (r.y - l.y);
  }

  /// A bound on the rounding of yAt(k): the ratio, the product and the sum each round by
  /// about one unit of |l.y| + |r.y|.
  double yError(std::uint32_t k) const {
    return 8.0 * kEps * (std::abs(ends_[k].l.y) + std::abs(ends_[k].r.y)) + kTiny;
  }

  /// The status order of two segments at the sweep position. Segments through one vertex there
  /// are ordered by where they go next; any other pair too close to call ends the sweep.
  bool below(std::uint32_t a, std::uint32_t b) const {
    const double ya = yAt(a);
    const double yb = yAt(b);
    const double tolerance = yError(a) + yError(b);
    if (ya < yb - tolerance) {
      return true;
    }
    if (yb < ya - tolerance) {
      return false;
    }
    const std::uint32_t la = left(a);
    const std::uint32_t ra = right(a);
    const std::uint32_t lb = left(b);
    const std::uint32_t rb = right(b);
    const Ends& ea = ends_[a];
    const Ends& eb = ends_[b];
    if (la == lb && ea.l.x == x_) {
      // Both leave the vertex rightwards: the one turning clockwise from the other is below.
      const Orientation o = orient(ea.l, ea.r, eb.r);
      if (o.positive() || o.negative()) {
        return o.positive();
      }
    } else if (ra == rb && ea.r.x == x_) {
      // Both arrive from the left: looking back along a, b's far end to the left is below.
      const Orientation o = orient(ea.r, ea.l, eb.l);
      if (o.positive() || o.negative()) {
        return o.negative();
      }
    } else if (ra == lb && ea.r.x == x_) {
      return true;  // a ends where b starts; they share the status only here
    } else if (la == rb && ea.l.x == x_) {
      return false;
    }
    throw TooCloseToCall{};
  }

  /// True when two status neighbours sharing no vertex may come within reach: an end of one
  /// near the other, or a crossing. When every end is farther than reach from the other
  /// segment, an end nearly on the other's line lies beyond that segment's extent, and then the
  /// two cannot cross without an end of the other lying within rounding of the first: so an
  /// orientation too close to call means no crossing there.
  bool near(std::uint32_t a, std::uint32_t b) const {
    if (shareVertex(a, b)) {
      return false;
    }
    const Point& a1 = ends_[a].l;
    const Point& a2 = ends_[a].r;
    const Point& b1 = ends_[b].l;
    const Point& b2 = ends_[b].r;
    const double limit = limit_;
    if (std::min(b1.y, b2.y) - std::max(a1.y, a2.y) > limit ||
        std::min(a1.y, a2.y) - std::max(b1.y, b2.y) > limit) {
      return false;
    }
    const Orientation o1 = orient(a1, a2, b1);
    const Orientation o2 = orient(a1, a2, b2);
    const Orientation o3 = orient(b1, b2, a1);
    const Orientation o4 = orient(b1, b2, a2);
    // Each segment wholly on one side of the other's line, beyond the limit there: every end is
    // farther than the limit from the other segment and they cannot cross. |o| / length is the
    // distance from the line; the comparison is squared to spare the roots, and the factors
    // cover the rounding of the lengths and squares.
    const double lengthA2 = (a2.x - a1.x) * (a2.x - a1.x) + (a2.y - a1.y) * (a2.y - a1.y);
    const double lengthB2 = (b2.x - b1.x) * (b2.x - b1.x) + (b2.y - b1.y) * (b2.y - b1.y);
    const auto beside = [limit](const Orientation& p, const Orientation& q, double length2) {
      const double slack = p.bound + q.bound;
      const double pq = std::min(std::abs(p.value), std::abs(q.value)) / 1.001 - slack;
      const bool sameSide = (p.value > 0) == (q.value > 0);
      return sameSide && pq > 0 && pq * pq > limit * limit * length2 * (1.0 + 1e-9);
    };
    if (beside(o1, o2, lengthA2) && beside(o3, o4, lengthB2)) {
      return false;
    }
    const double limit2 = limit * limit * 1.001;
    if (pointSegmentDistance2(a1, b1, b2) <= limit2 ||
        pointSegmentDistance2(a2, b1, b2) <= limit2 ||
        pointSegmentDistance2(b1, a1, a2) <= limit2 ||
        pointSegmentDistance2(b2, a1, a2) <= limit2) {
      return true;
    }
    return ((o1.positive() && o2.negative()) || (o1.negative() && o2.positive())) &&
           ((o3.positive() && o4.negative()) || (o3.negative() && o4.positive()));
  }

  /// near(a, b), keeping the pair when it is.
  bool tooClose(std::uint32_t a, std::uint32_t b) {
    if (near(a, b)) {
      closePair_ = {a, b};
      return true;
    }
    return false;
  }

  /// Puts segment k, starting at vertex i, into the status. When i's other segment is there
  /// already, k goes right beside it (the set checks that with two comparisons), which saves
  /// the search from the root.
  bool insert(std::uint32_t k, std::uint32_t i) {
    const auto it = status_.emplace_hint(statusPlace(i), k);
    if (*it != k) {
      return false;  // not expected: the order separates every two segments or throws
    }
    handles_[k] = it;
    if (it != status_.begin() && tooClose(*std::prev(it), k)) {
      return false;
    }
    const auto next = std::next(it);
    return next == status_.end() || !tooClose(k, *next);
  }

  bool remove(std::uint32_t k) {
    const auto it = handles_[k];
    handles_[k] = status_.end();
    const auto next = status_.erase(it);
    return next == status_.begin() || next == status_.end() || !tooClose(*std::prev(next), *next);
  }

  /// True when the nearest segments above and below vertex i, other than its own, are farther
  /// than reachAcross_ at its sweep x.
  bool vertexClear(std::uint32_t i) const {
    const double y = at(i).y;
    auto start = statusPlace(i);
    if (start == status_.end()) {
      start = status_.lower_bound(y);
    }
    for (auto e = start; e != status_.end(); ++e) {
      if (!touches(*e, i)) {
        if (!(yAt(*e) - y > reachAcross_ + yError(*e))) {
          return false;
        }
        break;
      }
    }
    for (auto e = start; e != status_.begin();) {
      --e;
      if (!touches(*e, i)) {
        if (!(y - yAt(*e) > reachAcross_ + yError(*e))) {
          return false;
        }
        break;
      }
    }
    return true;
  }

  /// The place in the status of a segment through vertex i at the sweep position, or end().
  Status::const_iterator statusPlace(std::uint32_t i) const {
    for (const std::uint32_t k : incident(i)) {
      if (k != kNone && handles_[k] != status_.end()) {
        return handles_[k];
      }
    }
    return status_.end();
  }

  /// True when no segment other than vertical segment k's neighbours meets the sweep line
  /// within reachAcross_ of it.
  bool verticalClear(std::uint32_t k) const {
    const double low = std::min(ends_[k].l.y, ends_[k].r.y);
    const double high = std::max(ends_[k].l.y, ends_[k].r.y);
    const auto start = status_.lower_bound(low);
    for (auto e = start; e != status_.end(); ++e) {
      if (yAt(*e) - high > reachAcross_ + yError(*e)) {
        break;
      }
      if (!shareVertex(*e, k)) {
        return false;
      }
    }
    for (auto e = start; e != status_.begin();) {
      --e;
      if (!shareVertex(*e, k)) {
        if (!(low - yAt(*e) > reachAcross_ + yError(*e))) {
          return false;
        }
        break;
      }
    }
    return true;
  }

  struct Ends {
    Point l;
    Point r;
  };

  const std::vector<gkVector<2>>& points_;
  std::uint32_t n_;
  bool closed_;
  bool transposed_;
  double reach_;
  double reachAcross_;
  double limit_ = 0;
  // The sweep position: the ordering reads it, so the status stays ordered only while no two
  // of its segments cross left of it, which the neighbour checks make sure of.
  double x_ = 0;
  Status status_;
  // The last pair tooClose looked at: the pair found when it answers true.
  std::pair<std::uint32_t, std::uint32_t> closePair_{kNone, kNone};
  std::vector<Status::iterator> handles_;
  std::vector<Ends> ends_;
  // Whether segment k's left end is vertex to(k) rather than from(k).
  std::vector<bool> leftIsTo_;
};

/// False when two consecutive segments fold back onto each other (their far ends in the same
/// direction from the shared vertex, on one line as far as rounding can tell): the sweep's
/// order needs consecutive segments to meet only at their shared vertex.
bool noFoldBack(const std::vector<gkVector<2>>& points, bool closed) {
  const std::size_t n = points.size();
  for (std::size_t i = closed ? 0 : 1; i + (closed ? 0 : 1) < n; ++i) {
    const gkVector<2>& v = points[i];
    const gkVector<2>& u = points[i == 0 ? n - 1 : i - 1];
    const gkVector<2>& w = points[i + 1 == n ? 0 : i + 1];
    const Orientation o = orient({v.x(), v.y()}, {u.x(), u.y()}, {w.x(), w.y()});
    if (!o.positive() && !o.negative() && (u - v).dot(w - v) > 0) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool segmentsKeepClear(const std::vector<gkVector<2>>& points, bool closed, double reach,
                       std::pair<std::size_t, std::size_t>* closePair) {
  if (closePair != nullptr) {
    *closePair = {kNoSegment, kNoSegment};
  }
  if (!(reach > 0) || !std::isfinite(reach) ||
      points.size() >= std::numeric_limits<std::uint32_t>::max()) {
    return false;
  }
  for (const gkVector<2>& p : points) {
    if (!(std::abs(p.x()) <= 1e100) || !(std::abs(p.y()) <= 1e100)) {
      return false;
    }
  }
  if (points.size() <= 3) {
    return true;  // every two segments share a vertex
  }
  if (!noFoldBack(points, closed)) {
    return false;
  }
  for (const bool transposed : {false, true}) {
    Sweep sweep(points, closed, transposed, reach);
    const std::vector<std::uint32_t> order = sweep.order();
    if (!transposed && !sweep.verticesApart(order)) {
      return false;
    }
    if (!sweep.run(order)) {
      if (closePair != nullptr) {
        sweep.closePair(*closePair);
      }
      return false;
    }
  }
  return true;
}

}  // namespace gk::detail
