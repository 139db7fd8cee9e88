#include "base/detail/chain_bounds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace gk::detail {

namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
/// More levels than any tree can have: 2^64 segments, eight to a leaf, pair up in 62.
constexpr std::size_t kMaxLevels = 64;

/// Beyond this magnitude the products of the bounds could overflow; NaN compares false.
bool bounded(double c) {
  return std::abs(c) <= 1e100;
}

/// sqrt(x^2 + y^2): plainly where the squares can neither overflow nor lose digits below the
/// normal range (within a few units in the last place, as hypot is), else by hypot, which is
/// several times slower. A run's axis is normalised by it, and its bounds allow the axis a
/// length off 1 by far more than that.
double length(double x, double y) {
  const double m = std::max(std::abs(x), std::abs(y));
  return m >= 1e-150 && m <= 1e150 ? std::sqrt(x * x + y * y) : std::hypot(x, y);
}

}  // namespace

ChainBounds::ChainBounds(const std::vector<gkVector<2>>& points, bool closed) : closed_(closed) {
  const std::size_t n = points.size();
  segments_ = n == 0 ? 0 : (closed ? n : n - 1);
  on_ = true;
  for (const gkVector<2>& v : points) {
    on_ = on_ && bounded(v.x()) && bounded(v.y());
    magnitude_ = std::max({magnitude_, std::abs(v.x()), std::abs(v.y())});
  }
  if (!on_ || segments_ == 0) {
    return;
  }
  // The second moments of each leaf's segment ends about the first vertex, summed upwards: a
  // parent's are its children's sums, as their ends do not overlap.
  const gkVector<2> centre = points[0];
  std::vector<Spread> spreads;
  spreads.reserve((segments_ + kLeafSegments - 1) / kLeafSegments);
  for (std::size_t s0 = 0; s0 < segments_; s0 += kLeafSegments) {
    const std::size_t s1 = std::min(segments_, s0 + kLeafSegments);
    Spread spread;
    for (std::size_t i = closed_ ? s0 : s0 + 1; i < (closed_ ? s1 : s1 + 1); ++i) {
      spread.add(points[i] - centre);
    }
    spreads.push_back(spread);
  }
  std::size_t perNode = kLeafSegments;
  buildLevel(points, perNode, spreads);
  while (levels_.back().size() > 1) {
    std::vector<Spread> parents((spreads.size() + 1) / 2);
    for (std::size_t j = 0; j < spreads.size(); ++j) {
      parents[j / 2].merge(spreads[j]);
    }
    spreads.swap(parents);
    perNode *= 2;
    buildLevel(points, perNode, spreads);
  }
}

void ChainBounds::buildLevel(const std::vector<gkVector<2>>& points, std::size_t segmentsPerNode,
                             const std::vector<Spread>& spreads) {
  const std::size_t n = points.size();
  std::vector<Node> level;
  level.reserve(spreads.size());
  for (std::size_t s0 = 0, j = 0; s0 < segments_; s0 += segmentsPerNode, ++j) {
    const std::size_t s1 = std::min(segments_, s0 + segmentsPerNode);
    // The run's vertices: the start of its first segment, then the end of each segment, which
    // for segments s0 .. s1 - 1 are vertices s0 .. s1 - 1 (closed) or s0 + 1 .. s1 (open).
    const std::size_t start = closed_ ? (s0 == 0 ? n - 1 : s0 - 1) : s0;
    const std::size_t endsBegin = closed_ ? s0 : s0 + 1;
    const std::size_t endsEnd = closed_ ? s1 : s1 + 1;
    double ax = 1.0;
    double ay = 0.0;
    spreads[j].majorAxis(ax, ay);
    const gkVector<2>& first = points[start];
    double a0 = ax * first.x() + ay * first.y();
    double a1 = a0;
    double b0 = ax * first.y() - ay * first.x();
    double b1 = b0;
    for (std::size_t i = endsBegin; i < endsEnd; ++i) {
      const gkVector<2>& v = points[i];
      const double a = ax * v.x() + ay * v.y();
      const double b = ax * v.y() - ay * v.x();
      a0 = std::min(a0, a);
      a1 = std::max(a1, a);
      b0 = std::min(b0, b);
      b1 = std::max(b1, b);
    }
    level.push_back(Node{ax, ay, a0, a1, b0, b1});
  }
  levels_.push_back(std::move(level));
}

void ChainBounds::Spread::add(const gkVector<2>& d) {
  count += 1;
  sx += d.x();
  sy += d.y();
  sxx += d.x() * d.x();
  sxy += d.x() * d.y();
  syy += d.y() * d.y();
}

void ChainBounds::Spread::merge(const Spread& o) {
  count += o.count;
  sx += o.sx;
  sy += o.sy;
  sxx += o.sxx;
  sxy += o.sxy;
  syy += o.syy;
}

void ChainBounds::Spread::majorAxis(double& ax, double& ay) const {
  // Any axis gives true bounds; the direction of greatest spread gives thin ones. Rounding (or
  // cancellation far from the centre) only makes them less thin.
  if (count < 2) {
    return;
  }
  const double mx = sx / count;
  const double my = sy / count;
  const double a = sxx / count - mx * mx;
  const double b = sxy / count - mx * my;
  const double c = syy / count - my * my;
  const double half = (a - c) / 2.0;
  const double lambda = (a + c) / 2.0 + length(half, b);
  // The eigenvector (b, lambda - a) or (lambda - c, b), whichever is the better conditioned.
  double x = b;
  double y = lambda - a;
  if (std::abs(lambda - c) > std::abs(y)) {
    x = lambda - c;
    y = b;
  }
  const double norm = length(x, y);
  if (norm > 0 && std::isfinite(norm)) {
    ax = x / norm;
    ay = y / norm;
  }
}

void ChainBounds::candidates(const gkVector<2>& p, const gkVector<2>& q, double reach,
                             std::vector<std::size_t>& out) const {
  out.clear();
  const bool usable = on_ && bounded(p.x()) && bounded(p.y()) && bounded(q.x()) && bounded(q.y()) &&
                      reach >= 0 && reach <= 1e100;
  if (!usable) {
    for (std::size_t k = 0; k < segments_; ++k) {
      out.push_back(k);
    }
    return;
  }
  if (segments_ == 0) {
    return;
  }
  // A point of a run lies within reach of a point of the query only if their projections on
  // either axis of the run's rectangle come within reach. A computed projection is off by at
  // most 2 sqrt(2) units of rounding of the largest coordinate (the axis being of length 1 give
  // or take 2 units), on each side of the comparison: 8 units cover both, and the factor
  // 1.001 the axis' own length.
  const double m =
      std::max({magnitude_, std::abs(p.x()), std::abs(p.y()), std::abs(q.x()), std::abs(q.y())});
  const double limit = (reach + 8.0 * kEpsilon * m) * 1.001 + 1e-300;
  // The two axes of a run's rectangle do not separate it from a long query that passes it
  // slantwise (a containment ray leaving the outline, whose own extent along both axes is
  // large): the query's line does. A rectangle whose four corners all lie farther than the
  // reach on one side of that line holds no vertex, and so no segment, within reach of the
  // query. The corners are taken in the rectangle's frame: with n the query's unit normal,
  // n . v is (n . axis) a + (n . perpendicular) b. The axis and the normal are of unit length
  // within a few units of rounding, the projections are off by a few units of rounding of
  // the largest coordinate, and the offset of the line by as much: 64 units of the largest
  // coordinate cover them all several times, and the factor 1.01 the reach's own share.
  const double qx = q.x() - p.x();
  const double qy = q.y() - p.y();
  const double span = std::sqrt(qx * qx + qy * qy);
  // Off for a point query, and for one so short that its squares lose digits below the normal
  // range (its normal would not be of unit length).
  const bool slantTest = span >= 1e-150;
  const double nx = slantTest ? -qy / span : 0.0;
  const double ny = slantTest ? qx / span : 0.0;
  const double offset = nx * p.x() + ny * p.y();
  const double lineLimit = (reach + 64.0 * kEpsilon * m) * 1.01 + 1e-300;
  // A depth-first walk holds at most one pending sibling per level besides the node at hand,
  // so a stack of twice the levels never fills; it lives on the call stack, as a query is too
  // short for an allocation to pay.
  std::array<std::pair<std::size_t, std::size_t>, 2 * kMaxLevels> stack;
  std::size_t depth = 0;
  stack[depth++] = {levels_.size() - 1, 0};
  while (depth > 0) {
    const auto [level, j] = stack[--depth];
    const Node& node = levels_[level][j];
    const double pa = node.ax * p.x() + node.ay * p.y();
    const double qa = node.ax * q.x() + node.ay * q.y();
    if (std::min(pa, qa) > node.a1 + limit || std::max(pa, qa) < node.a0 - limit) {
      continue;
    }
    const double pb = node.ax * p.y() - node.ay * p.x();
    const double qb = node.ax * q.y() - node.ay * q.x();
    if (std::min(pb, qb) > node.b1 + limit || std::max(pb, qb) < node.b0 - limit) {
      continue;
    }
    if (slantTest) {
      const double na = nx * node.ax + ny * node.ay;
      const double nb = ny * node.ax - nx * node.ay;
      const double low =
          std::min(na * node.a0, na * node.a1) + std::min(nb * node.b0, nb * node.b1);
      const double high =
          std::max(na * node.a0, na * node.a1) + std::max(nb * node.b0, nb * node.b1);
      if (low > offset + lineLimit || high < offset - lineLimit) {
        continue;
      }
    }
    if (level == 0) {
      const std::size_t s0 = j * kLeafSegments;
      const std::size_t s1 = std::min(segments_, s0 + kLeafSegments);
      for (std::size_t k = s0; k < s1; ++k) {
        out.push_back(k);
      }
      continue;
    }
    // The right child first, so that the left one is visited first and the segments come out
    // in increasing order.
    if (2 * j + 1 < levels_[level - 1].size()) {
      stack[depth++] = {level - 1, 2 * j + 1};
    }
    stack[depth++] = {level - 1, 2 * j};
  }
}

void ChainBounds::leafVertices(std::size_t j, std::size_t& begin, std::size_t& end) const {
  // Each segment's end, and for an open walk also vertex 0, which ends no segment.
  const std::size_t s0 = j * kLeafSegments;
  const std::size_t s1 = std::min(segments_, s0 + kLeafSegments);
  begin = closed_ || s0 == 0 ? s0 : s0 + 1;
  end = closed_ ? s1 : s1 + 1;
}

namespace {

/// How far the rectangles are grown so that they hold the vertices whatever the rounding of the
/// projections (under 3 units of rounding of the largest coordinate each), in such units.
constexpr double kGrowth = 16.0;

}  // namespace

void ChainBounds::corners(std::size_t level, std::size_t j, gkVector<2> (&out)[4]) const {
  const Node& node = levels_[level][j];
  const double grow = kGrowth * kEpsilon * magnitude_;
  const double a[2] = {node.a0 - grow, node.a1 + grow};
  const double b[2] = {node.b0 - grow, node.b1 + grow};
  // The axis is of unit length within a few units of rounding, so turning back by it is the
  // inverse of the projection within a few units of rounding of the largest coordinate.
  for (int i = 0; i < 4; ++i) {
    const double u = a[i / 2];
    const double w = b[(i / 2 + i) % 2];
    out[i] = gkVector<2>(u * node.ax - w * node.ay, u * node.ay + w * node.ax);
  }
}

double ChainBounds::cornerError() const {
  // The rectangle's own corner coordinates reach about 1.5 times the largest vertex coordinate
  // (more for a rectangle whose axis is turned against the run: grown by its width, which is at
  // most twice the spread): 16 units of that magnitude cover the rounding of turning back.
  return 64.0 * kEpsilon * magnitude_;
}

bool ChainBounds::near(std::size_t level, std::size_t j, const gkVector<2>& pt,
                       double radius) const {
  const Node& node = levels_[level][j];
  const double reach = radius + (kGrowth + 8.0) * kEpsilon *
                                    std::max({magnitude_, std::abs(pt.x()), std::abs(pt.y())});
  const double a = node.ax * pt.x() + node.ay * pt.y();
  const double b = node.ax * pt.y() - node.ay * pt.x();
  return !(a < node.a0 - reach || a > node.a1 + reach || b < node.b0 - reach ||
           b > node.b1 + reach);
}

std::size_t ChainBounds::bytes() const {
  std::size_t total = sizeof(*this) + levels_.capacity() * sizeof(std::vector<Node>);
  for (const std::vector<Node>& level : levels_) {
    total += level.capacity() * sizeof(Node);
  }
  return total;
}

}  // namespace gk::detail
