#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <memory>
#include <utility>

#include <gk/base/tolerances.h>
#include <gk/cntr/contour.h>
#include <gk/cntr/errors/contour_errors.h>

#include "base/detail/box_index.h"
#include "base/detail/chain_bounds.h"
#include "base/detail/clearance_sweep.h"
#include "base/detail/grid_cell.h"
#include "base/detail/segment_walk.h"
#include "base/detail/star_clearance.h"
#include "base/detail/total_order.h"
#include "cntr/detail/segment_entry.h"

namespace {

/// The largest magnitude among a box's corners and more values, or NaN when any of them is NaN,
/// so that a bound on it (m <= limit) fails for NaN as it does for infinity. The filters below
/// size their rounding margins by it and switch themselves off when it is not bounded.
double largestMagnitude(const gkRect& box, std::initializer_list<double> more) {
  double m = 0;
  bool nan = false;
  for (const double c : {box.ul().x(), box.ul().y(), box.lr().x(), box.lr().y()}) {
    m = std::max(m, std::abs(c));
    nan = nan || std::isnan(c);
  }
  for (const double c : more) {
    m = std::max(m, std::abs(c));
    nan = nan || std::isnan(c);
  }
  return nan ? std::numeric_limits<double>::quiet_NaN() : m;
}

/// A cheap, exact rejection for segment queries. A crossing is kept only when the point found is
/// within gkTolProximity of both segments, which needs the segments within 2 gkTolProximity of
/// each other, give or take the rounding of the distances (a few units in the last place of
/// the largest coordinate). When one segment lies wholly on one side of the other's line and
/// farther than that, with a margin of 64 units of rounding, the full test would fail: the
/// query skips it. Cross products only, no square roots or line intersections. Off (never
/// rejecting) when a coordinate is not finite or beyond 1e100, where the margin is not known.
class SeparationTest {
 public:
  SeparationTest(const gkRect& contourBox, const gkLineSeg& query) : query_(query) {
    const double m = largestMagnitude(
        contourBox, {query.p1().x(), query.p1().y(), query.p2().x(), query.p2().y()});
    on_ = m <= 1e100;
    reach_ = 2.0 * gkTolProximity + 64.0 * std::numeric_limits<double>::epsilon() * m;
    // The query's side of the test is the same for every segment: worked out once.
    queryDirection_ = query_.p2() - query_.p1();
    queryLimit_ = limitAlong(queryDirection_);
  }

  bool on() const { return on_; }

  /// How far apart two segments the crossing test accepts can be, at most (when on()).
  double reach() const { return reach_; }

  /// Which side of the query's line v lies on beyond the reach (1 left, -1 right), or 0 within
  /// it. A segment whose two ends share a non-zero side fails the first check below.
  int side(const gkVector<2>& v) const {
    const double c = queryDirection_.cross(v - query_.p1());
    return c > queryLimit_ ? 1 : (c < -queryLimit_ ? -1 : 0);
  }

  bool operator()(const gkLineSeg& s) const {
    if (!on_) {
      return false;
    }
    if (beyond(query_.p1(), queryDirection_, queryLimit_, s)) {
      return true;
    }
    const gkVector<2> d = s.p2() - s.p1();
    return beyond(s.p1(), d, limitAlong(d), query_);
  }

 private:
  double limitAlong(const gkVector<2>& d) const { return reach_ * d.len() * 1.001; }

  /// Both ends of b farther than the reach from the line through origin along d, on the same
  /// side (limit is limitAlong(d)).
  static bool beyond(const gkVector<2>& origin, const gkVector<2>& d, double limit,
                     const gkLineSeg& b) {
    const double c1 = d.cross(b.p1() - origin);
    const double c2 = d.cross(b.p2() - origin);
    return (c1 > limit && c2 > limit) || (c1 < -limit && c2 < -limit);
  }

  gkLineSeg query_;
  bool on_ = false;
  double reach_ = 0;
  gkVector<2> queryDirection_;
  double queryLimit_ = 0;
};

/// A cheap, exact rejection for the nearest-point walk. A segment is no nearer than its box, so
/// when the box lies farther from the point than a distance some segment is known to reach, the
/// segment cannot be the first of the walk at the least distance, which is the one whose point
/// the walk returns: the walk may pass it over. Two such distances serve: the best found so far,
/// and from the start the distance to the nearest vertex (each vertex ends a segment, which is no
/// farther). The distances the walk computes are to a foot point rounded by a few units in the
/// last place of the largest coordinate: the margin covers 16 such units, and the squares are
/// compared with room for their own rounding. Off (never rejecting) when a coordinate is not
/// finite or beyond 1e100.
class NearBoxTest {
 public:
  NearBoxTest(const std::vector<gkVector<2>>& vertices, const gkVector<2>& pt) : pt_(pt) {
    // One pass finds the nearest vertex and the largest coordinate (the box's largest corner
    // magnitude, without asking the box cache). Two running minima and maxima, in registers,
    // so that the loop is not one long chain of dependent steps. A NaN vertex turns the test
    // off: a segment ending there may measure NaN, so the vertex bound would not hold.
    const double inf = std::numeric_limits<double>::infinity();
    double nearest0 = inf;
    double nearest1 = inf;
    double m0 = std::max(std::abs(pt.x()), std::abs(pt.y()));
    double m1 = 0.0;
    bool noNaN = !std::isnan(pt.x()) && !std::isnan(pt.y());
    const std::size_t n = vertices.size();
    std::size_t i = 0;
    for (; i + 1 < n; i += 2) {
      const gkVector<2>& a = vertices[i];
      const gkVector<2>& b = vertices[i + 1];
      const double ax = a.x() - pt.x();
      const double ay = a.y() - pt.y();
      const double bx = b.x() - pt.x();
      const double by = b.y() - pt.y();
      const double da = ax * ax + ay * ay;
      const double db = bx * bx + by * by;
      noNaN = noNaN && da == da && db == db;
      nearest0 = std::min(nearest0, da);
      nearest1 = std::min(nearest1, db);
      m0 = std::max(m0, std::max(std::abs(a.x()), std::abs(a.y())));
      m1 = std::max(m1, std::max(std::abs(b.x()), std::abs(b.y())));
    }
    if (i < n) {
      const gkVector<2>& a = vertices[i];
      const double ax = a.x() - pt.x();
      const double ay = a.y() - pt.y();
      const double da = ax * ax + ay * ay;
      noNaN = noNaN && da == da;
      nearest0 = std::min(nearest0, da);
      m0 = std::max(m0, std::max(std::abs(a.x()), std::abs(a.y())));
    }
    const double m = std::max(m0, m1);
    on_ = m <= 1e100 && noNaN;
    margin_ = 16.0 * std::numeric_limits<double>::epsilon() * m;
    vertexBound_ = std::sqrt(std::min(nearest0, nearest1)) * (1.0 + 1e-12);
  }

  /// False when the segment p1 -> p2 is certainly not the walk's answer, best being the least
  /// distance found so far.
  bool operator()(const gkVector<2>& p1, const gkVector<2>& p2, double best) const {
    if (!on_) {
      return true;
    }
    const double reach = std::min(best, vertexBound_) + margin_;
    // Both ends beyond the reach on one side: a box that far on one axis alone. Most segments
    // of a large contour leave here.
    const double x1 = p1.x() - pt_.x();
    const double x2 = p2.x() - pt_.x();
    const double y1 = p1.y() - pt_.y();
    const double y2 = p2.y() - pt_.y();
    if ((x1 > reach && x2 > reach) || (x1 < -reach && x2 < -reach) || (y1 > reach && y2 > reach) ||
        (y1 < -reach && y2 < -reach)) {
      return false;
    }
    const double dx = std::max({std::min(x1, x2), -std::max(x1, x2), 0.0});
    const double dy = std::max({std::min(y1, y2), -std::max(y1, y2), 0.0});
    return !(dx * dx + dy * dy > reach * reach * (1.0 + 1e-12));
  }

 private:
  gkVector<2> pt_;
  bool on_ = false;
  double margin_ = 0;
  double vertexBound_ = 0;
};

/// True when query spans at least half of box's width or height: a query the segment index
/// cannot narrow much.
bool coversMuchOf(const gkRect& query, const gkRect& box) {
  return query.width() >= box.width() / 2.0 || query.height() >= box.height() / 2.0;
}

/// One segment query against a contour's segment caches: the tests every candidate contour
/// segment goes through, cheapest first, in the one order every query uses.
class SegmentQuery {
 public:
  SegmentQuery(const gkLineSeg& seg, const gkRect& contourBox, bool includeEnds)
      : seg_(seg),
        line_(seg.line()),
        box_(gkRect(seg.p2(), gkVector<2>()).enclose(gkRect(seg.p1(), gkVector<2>()))),
        apart_(contourBox, seg),
        includeEnds_(includeEnds) {}

  const gkLineSeg& seg() const { return seg_; }
  const gkRect& box() const { return box_; }
  const SeparationTest& apart() const { return apart_; }

  /// True when the contour segment s (with its cached line, box and validity) crosses the query,
  /// with p the crossing point.
  bool crosses(const gkLineSeg& s, const gkLine& line, const gkRect& box, bool valid,
               gkVector<2>& p) const {
    // Cheapest rejections first: degenerate, boxes apart, parallel.
    if (!valid || !box.overlaps(box_) || apart_(s) || line.isParallel(line_)) {
      return false;
    }
    // Without ends, a contour segment passing near either end of seg is dropped whole (even a
    // crossing elsewhere on it), so that a segment starting on the contour does not see the
    // contour where it starts.
    if (!includeEnds_ &&
        !(s.distToPoint(seg_.p1()) > gkTolProximity && s.distToPoint(seg_.p2()) > gkTolProximity)) {
      return false;
    }
    p = line.intersect(line_);
    return s.distToPoint(p) < gkTolProximity && seg_.distToPoint(p) < gkTolProximity;
  }

 private:
  gkLineSeg seg_;
  gkLine line_;
  gkRect box_;
  SeparationTest apart_;
  bool includeEnds_;
};

/// Replaces out by the numbers, in increasing order, of the segments a query must test: every
/// segment the query's tests could accept, and maybe more. chains, when not null, are the
/// contour's rectangles of runs of segments, for an index too crowded to narrow the search.
///
/// The index and the runs come from `indexOf()` and `chainsOf()`, asked only on the paths that
/// use them: a contour that only ever meets containment rays (the small loops of an outer hull,
/// asked whether they hold a point) never builds either.
template <class IndexOf, class ChainsOf>
void gatherCandidates(const SegmentQuery& query, const std::vector<gkVector<2>>& points,
                      bool closed, const gkRect& contourBox, IndexOf indexOf, ChainsOf chainsOf,
                      std::vector<std::size_t>& out) {
  if (query.apart().on() && coversMuchOf(query.box(), contourBox)) {
    // A query as wide as the contour (a containment ray) meets most boxes, and the index saves
    // nothing. The side of the query's line is worked out once per vertex instead, and a
    // segment with both ends beyond the reach on one side, which the separation test would
    // reject, is not a candidate.
    out.clear();
    const std::size_t n = points.size();
    // Segment k runs from vertex k - 1 (closed; n - 1 for k = 0) or k (open) to the next one.
    int previous = query.apart().side(points[closed ? n - 1 : 0]);
    for (std::size_t i = closed ? 0 : 1, k = 0; i < n; ++i, ++k) {
      const int current = query.apart().side(points[i]);
      if (previous == 0 || previous != current) {
        out.push_back(k);
      }
      previous = current;
    }
    return;
  }
  const gk::detail::BoxIndex& index = indexOf();
  const gk::detail::ChainBounds* chains = chainsOf();
  if (chains != nullptr && query.apart().on()) {
    // A dense star's boxes each overlap thousands of others, while the runs of consecutive
    // segments that pass near a query are few. The crossing test accepts no segment farther
    // from the query than the separation test's reach, and the runs list every segment within
    // it.
    chains->candidates(query.seg().p1(), query.seg().p2(), query.apart().reach(), out);
    return;
  }
  // The index hands over, in increasing number, every segment whose box may meet the query's
  // box; the ones it leaves out would fail the box test, so the result is that of a full scan.
  index.candidates(query.box(), out);
}

/// Self-intersection asks the pairs of segments listed together in a cell of the segment index,
/// rather than one query per segment, while the index lists at most this many pairs per
/// segment (listing one costs a nanosecond or two)...
constexpr std::size_t kListedPairsPerSegment = 64;

/// ...and while it has tested no more than this many pairs per segment whose boxes overlap
/// (each about as costly as a query's test of one candidate).
constexpr std::size_t kTestedPairsPerSegment = 2;

/// Beyond this many listed pairs per segment, the queries would cost more than a plane sweep
/// (about 20 ns a pair against about 500 ns a vertex, measured): self-intersection tries the
/// sweep first.
constexpr std::size_t kSweepPairsPerSegment = 32;

/// Segment queries search the rectangles of runs of consecutive segments instead of the index
/// when the index lists more than this many pairs a segment: its cells are then crowded by
/// boxes larger than the spacing of the segments. Measured on fine outlines and stars: below
/// about that the index is as fast or faster (and costs nothing more to keep); a dense star
/// lists hundreds, and the runs make its queries ten to eighty times faster.
constexpr std::size_t kChainPairsPerSegment = 16;

/// How far apart two segments that self-intersection's crossing test accepts can be, at most:
/// an accepted crossing lies within gkTolProximity of both segments, as measured with a few
/// units of rounding of the largest coordinate, so the two segments lie within twice that of
/// each other. The rounding is allowed for generously.
constexpr double kCrossingGap = 2.0 * gkTolProximity;
constexpr double kCrossingGapPerMagnitude = 1024.0 * std::numeric_limits<double>::epsilon();

/// A contour that crosses itself mostly does so within a few segments (a fold, two vertices out
/// of order) and somewhere early in its walk. Self-intersection first asks the first
/// 1/kLocalShare of the segments, each queried without ends as the full test queries it,
/// against the two segments after its neighbour, before any segment cache or index is built: a
/// crossing found there is the answer, at the cost of a few tests. A contour that does not
/// cross there pays about one test per sixteen vertices more.
constexpr std::size_t kLocalShare = 32;

/// Whether one of the first segments (by the share above), queried without ends, finds a
/// crossing on segment k + 2 or k + 3. The entries of both segments are made as the caches
/// make them, and the test is the query's own, so a true answer is one the full test gives.
bool crossesNearStart(const std::vector<gkVector<2>>& points, bool closed,
                      const gkRect& contourBox) {
  const std::size_t n = points.size();
  const std::size_t count = closed ? n : n - 1;
  const auto ends = [&](std::size_t k) {
    return std::pair<const gkVector<2>&, const gkVector<2>&>(
        points[closed ? (k == 0 ? n - 1 : k - 1) : k], points[closed ? k : k + 1]);
  };
  for (std::size_t k = 0; k < count / kLocalShare; ++k) {
    gkLineSeg seg;
    gkLine line;
    gkRect box;
    const auto [p, q] = ends(k);
    if (!gk::detail::segmentEntry(p, q, seg, line, box)) {
      continue;
    }
    const SegmentQuery query(seg, contourBox, false);
    if (!contourBox.overlaps(query.box())) {
      continue;
    }
    for (std::size_t j = k + 2; j <= k + 3 && j < count; ++j) {
      const auto [a, b] = ends(j);
      gkVector<2> crossing;
      if (gk::detail::segmentEntry(a, b, seg, line, box) &&
          query.crosses(seg, line, box, true, crossing)) {
        return true;
      }
    }
  }
  return false;
}

/// Orders the crossings found along a query segment as an exchange sort does: position i takes,
/// in turn, every later record with a strictly smaller key. That exact order (it is not a
/// stable sort, and a NaN key never moves) is the one callers see. With distinct keys and no
/// NaN it is simply the ascending order, which any sort finds in O(m log m); ties and NaN keys
/// are rare and few, and take the exchange sort itself.
void orderAlongSegment(std::vector<double>& keys, std::vector<gkVector<2>>& points,
                       std::vector<int>& segIndices) {
  const std::size_t m = keys.size();
  if (m < 2) {
    return;
  }
  const bool anyNaN = std::any_of(keys.begin(), keys.end(), [](double k) { return std::isnan(k); });
  if (!anyNaN) {
    std::vector<std::size_t> order(m);
    for (std::size_t i = 0; i < m; ++i) {
      order[i] = i;
    }
    std::sort(order.begin(), order.end(),
              [&keys](std::size_t a, std::size_t b) { return keys[a] < keys[b]; });
    bool distinct = true;
    for (std::size_t i = 0; i + 1 < m && distinct; ++i) {
      distinct = keys[order[i]] < keys[order[i + 1]];
    }
    if (distinct) {
      std::vector<double> sortedKeys(m);
      std::vector<gkVector<2>> sortedPoints(m);
      std::vector<int> sortedIndices(m);
      for (std::size_t i = 0; i < m; ++i) {
        sortedKeys[i] = keys[order[i]];
        sortedPoints[i] = points[order[i]];
        sortedIndices[i] = segIndices[order[i]];
      }
      keys.swap(sortedKeys);
      points.swap(sortedPoints);
      segIndices.swap(sortedIndices);
      return;
    }
  }
  for (std::size_t i = 0; i + 1 < m; ++i) {
    for (std::size_t j = i + 1; j < m; ++j) {
      if (keys[i] > keys[j]) {
        std::swap(keys[i], keys[j]);
        std::swap(points[i], points[j]);
        std::swap(segIndices[i], segIndices[j]);
      }
    }
  }
}

/// A contour's segment caches, as the crossing tests read them.
struct SegmentCaches {
  const std::vector<gkLineSeg>& segs;
  const std::vector<gkLine>& lines;
  const std::vector<gkRect>& boxes;
  const std::vector<bool>& valid;
};

/// The crossings of the query with the candidate segments (numbers in increasing order), in
/// their order along the query, and the number of the segment each lies on.
void crossingsAmong(const SegmentQuery& query, const std::vector<std::size_t>& candidates,
                    const SegmentCaches& caches, std::vector<gkVector<2>>& points,
                    std::vector<int>& segIndices) {
  points.clear();
  std::vector<double> keys;
  const gkVector<2> along = query.seg().p2() - query.seg().p1();
  for (const std::size_t k : candidates) {
    gkVector<2> p;
    if (query.crosses(caches.segs[k], caches.lines[k], caches.boxes[k], caches.valid[k], p)) {
      points.push_back(p);
      segIndices.push_back(static_cast<int>(k));
      keys.push_back((p - query.seg().p1()).dot(along));
    }
  }
  orderAlongSegment(keys, points, segIndices);
}

}  // namespace

const gk::detail::BoxIndex& gkContour::segmentIndex() const {
  computeLineSegs();
  if (!segIndex_) {
    segIndex_ = std::make_shared<const gk::detail::BoxIndex>(segRects_, validLine_);
  }
  return *segIndex_;
}

const gk::detail::ChainBounds* gkContour::chainBounds() const {
  if (!chainsBuilt_) {
    auto chains = std::make_shared<const gk::detail::ChainBounds>(points_, isClosed());
    if (chains->on()) {
      chains_ = std::move(chains);
    }
    chainsBuilt_ = true;
  }
  return chains_.get();
}

const gk::detail::ChainBounds* gkContour::crowdedChains() const {
  const gk::detail::BoxIndex& index = segmentIndex();
  if (crowded_ == 0) {
    crowded_ = index.pairCount() > kChainPairsPerSegment * lineSegs_.size() ? 1 : 2;
  }
  return crowded_ == 1 ? chainBounds() : nullptr;
}

long gkContour::closestVertexIndex(const gkVector<2>& pt) const {
  checkEmptyContour();
  double best = std::numeric_limits<double>::infinity();
  long index = 0;
  for (std::size_t i = 0; i < points_.size(); ++i) {
    const double d = pt.distance(points_[i]);
    // Strictly smaller: the lowest vertex number wins a tie.
    if (d < best) {
      best = d;
      index = static_cast<long>(i);
    }
  }
  return index;
}

gkVector<2> gkContour::closestPoint(const gkVector<2>& pt, bool verticesOnly) const {
  if (verticesOnly) {
    return points_[static_cast<std::size_t>(closestVertexIndex(pt))];
  }
  checkEmptyContour();
  gkVector<2> candidate;
  double best = std::numeric_limits<double>::infinity();
  const NearBoxTest near(points_, pt);
  // Degenerate segments take part; strictly smaller keeps the earlier segment of the walk on a
  // tie, so on a closed contour the closing segment wins.
  gk::detail::forEachSegment(points_, isClosed(),
                             [&](std::size_t, const gkVector<2>& p1, const gkVector<2>& p2) {
                               if (!near(p1, p2, best)) {
                                 return;
                               }
                               const double d = gkLineSeg(p1, p2).distToPoint(pt);
                               if (d < best) {
                                 best = d;
                                 const gkVector<2> dir = p2 - p1;
                                 const double t = (pt - p1).dot(dir) / dir.dot(dir);
                                 // `!(t > 0)` also sends the NaN parameter of a zero-length segment
                                 // to p1.
                                 if (!(t > 0.0)) {
                                   candidate = p1;
                                 } else if (t >= 1.0) {
                                   candidate = p2;
                                 } else {
                                   candidate = gkLine(p1, p2).proj(pt);
                                 }
                               }
                             });
  return candidate;
}

double gkContour::distToPoint(const gkVector<2>& pt, bool verticesOnly) const {
  return pt.distance(closestPoint(pt, verticesOnly));
}

std::vector<int> gkContour::vertexIndex(const gkVector<2>& pt, double tolerance) const {
  checkEmptyContour();
  if (!(tolerance > 0.0) || !std::isfinite(tolerance)) {
    throw gkContourDefs::BadParams(L"vertexIndex: the tolerance must be a positive finite number");
  }
  if (!vertexGrid_) {
    vertexGrid_.reset(new VertexGrids);
  }
  // Grids are matched by exact tolerance: a tolerance one bit different builds its own grid.
  auto grid = std::find_if(vertexGrid_->begin(), vertexGrid_->end(),
                           [tolerance](const auto& g) { return g.first == tolerance; });
  if (grid == vertexGrid_->end()) {
    vertexGrid_->emplace_back(tolerance, VertexGrids::value_type::second_type());
    grid = vertexGrid_->end() - 1;
    for (std::size_t j = 0; j < points_.size(); ++j) {
      const gkPair<long> cell(gk::detail::gridCell(points_[j].x(), tolerance),
                              gk::detail::gridCell(points_[j].y(), tolerance));
      grid->second[cell].push_back(static_cast<int>(j));
    }
  }
  const long cx = gk::detail::gridCell(pt.x(), tolerance);
  const long cy = gk::detail::gridCell(pt.y(), tolerance);
  // The 3x3 neighbourhood of the query's cell, widened where rounding demands it.
  long aFirst = 0;
  long aLast = 0;
  long bFirst = 0;
  long bLast = 0;
  gk::detail::gridCellSpan(pt.x(), cx, tolerance, aFirst, aLast);
  gk::detail::gridCellSpan(pt.y(), cy, tolerance, bFirst, bLast);
  std::vector<int> result;
  for (long a = aFirst; a <= aLast; ++a) {
    for (long b = bFirst; b <= bLast; ++b) {
      const auto cell = grid->second.find(gkPair<long>(a, b));
      if (cell == grid->second.end()) {
        continue;
      }
      for (const int j : cell->second) {
        if (pt.distance(points_[static_cast<std::size_t>(j)]) < tolerance) {
          result.push_back(j);
        }
      }
    }
  }
  return result;
}

std::vector<gkVector<2>> gkContour::intersections(const gkLineSeg& seg,
                                                  std::vector<int>& segIndices,
                                                  bool includeEnds) const {
  checkEmptyContour();
  std::vector<gkVector<2>> points;
  std::vector<std::size_t> candidates;
  intersectionsInto(seg, includeEnds, encloseRect(gkXform<2>()), points, segIndices, candidates);
  return points;
}

void gkContour::intersectionsInto(const gkLineSeg& seg, bool includeEnds, const gkRect& contourBox,
                                  std::vector<gkVector<2>>& points, std::vector<int>& segIndices,
                                  std::vector<std::size_t>& candidates) const {
  points.clear();
  segIndices.clear();
  const SegmentQuery query(seg, contourBox, includeEnds);
  if (!contourBox.overlaps(query.box())) {
    return;
  }
  computeLineSegs();
  gatherCandidates(
      query, points_, isClosed(), contourBox,
      [this]() -> const gk::detail::BoxIndex& { return segmentIndex(); },
      [this] { return crowdedChains(); }, candidates);
  crossingsAmong(query, candidates, {lineSegs_, lines_, segRects_, validLine_}, points, segIndices);
}

std::size_t gkContour::crossingCount(const gkLineSeg& seg, bool includeEnds,
                                     const gk::detail::ChainBounds* runs) const {
  checkEmptyContour();
  const gkRect contourBox = encloseRect(gkXform<2>());
  const SegmentQuery query(seg, contourBox, includeEnds);
  if (!contourBox.overlaps(query.box())) {
    return 0;
  }
  computeLineSegs();
  std::vector<std::size_t> candidates;
  candidates.reserve(64);  // a ray passes near a few runs of segments; growing costs allocations
  if (runs != nullptr && query.apart().on()) {
    // As in gatherCandidates: every segment the crossing test can accept is within the reach.
    runs->candidates(seg.p1(), seg.p2(), query.apart().reach(), candidates);
  } else {
    gatherCandidates(
        query, points_, isClosed(), contourBox,
        [this]() -> const gk::detail::BoxIndex& { return segmentIndex(); },
        [this] { return crowdedChains(); }, candidates);
  }
  std::size_t count = 0;
  for (const std::size_t k : candidates) {
    gkVector<2> p;
    count += query.crosses(lineSegs_[k], lines_[k], segRects_[k], validLine_[k], p) ? 1 : 0;
  }
  return count;
}

std::vector<gkVector<2>> gkContour::intersections(const gkLineSeg& seg, bool includeEnds) const {
  std::vector<int> segIndices;
  return intersections(seg, segIndices, includeEnds);
}

std::vector<gkVector<2>> gkContour::intersections(const gkContour& other) const {
  checkEmptyContour();
  // Each segment of other is queried with ends, in order, as intersections(seg, true) is.
  const gkRect contourBox = encloseRect(gkXform<2>());
  std::vector<gkVector<2>> result;
  std::vector<gkVector<2>> found;
  std::vector<std::size_t> candidates;
  std::vector<int> segIndices;
  gk::detail::forEachSegment(other.points_, other.isClosed(),
                             [&](std::size_t, const gkVector<2>& p, const gkVector<2>& q) {
                               intersectionsInto(gkLineSeg(p, q), true, contourBox, found,
                                                 segIndices, candidates);
                               result.insert(result.end(), found.begin(), found.end());
                             });
  return result;
}

bool gkContour::isSelfIntersecting() const {
  if (points_.size() < 2) {
    return false;
  }
  if (selfIntersectingValid_) {
    return selfIntersecting_;
  }
  // The contour crosses itself when some valid segment k, queried without ends as
  // intersections(lineSegs_[k], false) does, finds a crossing on some segment j. The query's
  // first test after validity is that the two boxes overlap, so only pairs whose boxes may
  // overlap need asking, in both roles: the segment index hands over each such pair (some more
  // than once) without a query per segment.
  //
  // A star-shaped outline (a traced blob, a wheel, a convex shape) whose segments sharing no
  // vertex keep farther apart than the crossing test's reach answers no in one pass, before
  // any cache is built. It needs the neighbours skipped as below, which its bound on the
  // coordinates ensures. Seen from the mean of a few vertices, an outline that crosses itself
  // fails it within a few vertices of its first fold.
  const auto starShapedAbout = [this](const gkVector<2>& centre,
                                      gk::detail::StarDistances distances) {
    return gk::detail::starShapedKeepsClear(points_, centre, kCrossingGap, kCrossingGapPerMagnitude,
                                            distances);
  };
  if (starShapedAbout(gk::detail::sampledCentre(points_), gk::detail::StarDistances::kLinesFirst)) {
    selfIntersecting_ = false;
    selfIntersectingValid_ = true;
    return selfIntersecting_;
  }
  const gkRect contourBox = encloseRect(gkXform<2>());
  const bool closed = isClosed();
  if (crossesNearStart(points_, closed, contourBox)) {
    selfIntersecting_ = true;
    selfIntersectingValid_ = true;
    return selfIntersecting_;
  }
  // A dense star's kernel (where every spike is seen whole) can be smaller than the sampled
  // mean's distance from it; the mean of every vertex lands in it. Asked only once the quick
  // look for a crossing near the start has found none, so that outlines which cross there do
  // not pay the extra pass; by the segments' distances at once, as the outlines that get here
  // are mostly spiky.
  if (starShapedAbout(gk::detail::vertexCentre(points_), gk::detail::StarDistances::kSegments)) {
    selfIntersecting_ = false;
    selfIntersectingValid_ = true;
    return selfIntersecting_;
  }
  const gk::detail::BoxIndex& segIndex = segmentIndex();
  const std::size_t count = lineSegs_.size();
  // Segments sharing a vertex hold an end of each other exactly, at distance 0, so the query
  // without ends drops them: they are skipped untested. That needs the squared length of a
  // segment finite (an end then measures exactly 0), which holds within the separation test's
  // bound on the coordinates.
  const double magnitude = largestMagnitude(contourBox, {});
  const bool skipNeighbours = magnitude <= 1e100;
  const auto neighbours = [count, closed](std::size_t a, std::size_t b) {
    return b == a + 1 || (closed && a == 0 && b + 1 == count);
  };
  // Whether segment k, queried without ends, finds a crossing on segment j.
  const auto finds = [&](std::size_t k, std::size_t j) {
    const SegmentQuery query(lineSegs_[k], contourBox, false);
    gkVector<2> p;
    return validLine_[k] && contourBox.overlaps(query.box()) &&
           query.crosses(lineSegs_[j], lines_[j], segRects_[j], validLine_[j], p);
  };
  if (segIndex.pairCount() <= kListedPairsPerSegment * count) {
    // Few boxes share a cell (a smooth outline): ask the pairs, each query set up on demand.
    // Listing a pair costs little, testing one that overlaps much more; when too many overlap
    // (dense spikes), the search is abandoned for the ones below.
    std::size_t tested = 0;
    bool abandoned = false;
    const bool found = segIndex.anyPair(segRects_, [&](std::size_t a, std::size_t b) {
      if (!segRects_[a].overlaps(segRects_[b]) || (skipNeighbours && neighbours(a, b))) {
        return false;
      }
      if (++tested > kTestedPairsPerSegment * count) {
        abandoned = true;
        return true;
      }
      return finds(a, b) || finds(b, a);
    });
    if (!abandoned) {
      selfIntersecting_ = found;
      selfIntersectingValid_ = true;
      return selfIntersecting_;
    }
  }
  // Crowded cells (dense spikes, noise finer than the vertex spacing), where the pairs sharing
  // a cell grow with the square of the crowding. One query per segment, set up once for all its
  // candidates, runs until it finds a crossing or, when given one, until it has tested a budget
  // of candidates; it returns the segment to resume at.
  std::vector<std::size_t> candidates;
  selfIntersecting_ = false;
  const auto queryFrom = [&](std::size_t first, std::size_t budget) {
    std::size_t tested = 0;
    for (std::size_t k = first; k < count; ++k) {
      if (tested > budget) {
        return k;
      }
      if (!validLine_[k]) {
        continue;
      }
      const SegmentQuery query(lineSegs_[k], contourBox, false);
      if (!contourBox.overlaps(query.box())) {
        continue;
      }
      // Not through the runs of segments: building them costs more than the few queries
      // before an early crossing, and the sweep settles the rest.
      gatherCandidates(
          query, points_, closed, contourBox,
          [&segIndex]() -> const gk::detail::BoxIndex& { return segIndex; },
          []() -> const gk::detail::ChainBounds* { return nullptr; }, candidates);
      tested += candidates.size();
      for (const std::size_t j : candidates) {
        if (j == k || (skipNeighbours && neighbours(std::min(j, k), std::max(j, k)))) {
          continue;
        }
        gkVector<2> p;
        if (query.crosses(lineSegs_[j], lines_[j], segRects_[j], validLine_[j], p)) {
          selfIntersecting_ = true;
          return count;
        }
      }
    }
    return count;
  };
  if (segIndex.pairCount() <= kSweepPairsPerSegment * count) {
    queryFrom(0, std::numeric_limits<std::size_t>::max());
    selfIntersectingValid_ = true;
    return selfIntersecting_;
  }
  // A contour that crosses itself often does so early in the walk: a short search first.
  const std::size_t resume = queryFrom(0, count);
  if (resume == count) {
    selfIntersectingValid_ = true;
    return selfIntersecting_;
  }
  // An accepted crossing is between segments sharing no vertex, within the reach of each
  // other. When a plane sweep shows every two segments sharing no vertex farther apart than
  // that, no query can find anything; when it stops at a pair that close, that pair is asked
  // next, as it usually crosses.
  const double reach = kCrossingGap + kCrossingGapPerMagnitude * magnitude;
  std::pair<std::size_t, std::size_t> close;
  if (gk::detail::segmentsKeepClear(points_, closed, reach, &close)) {
    selfIntersecting_ = false;
  } else if (close.first != gk::detail::kNoSegment &&
             (finds(close.first, close.second) || finds(close.second, close.first))) {
    selfIntersecting_ = true;
  } else {
    queryFrom(resume, std::numeric_limits<std::size_t>::max());
  }
  selfIntersectingValid_ = true;
  return selfIntersecting_;
}

std::vector<bool> gkContour::segmentsClearOfOthers() const {
  const std::size_t count = lineSegs().size();
  std::vector<bool> clear(count, false);
  const bool allFinite = std::all_of(points_.begin(), points_.end(), [](const gkVector<2>& p) {
    return std::isfinite(p.x()) && std::isfinite(p.y());
  });
  const gk::detail::BoxIndex& index = segmentIndex();
  if (!allFinite || !(largestMagnitude(encloseRect(gkXform<2>()), {}) <= 1e100) ||
      index.pairCount() > kListedPairsPerSegment * count) {
    // Not finite, or beyond the bound the neighbours' drop needs; or crowded cells (dense
    // spikes), where listing the pairs would cost more than the queries it saves.
    return clear;
  }
  // A query's first test of a candidate, after validity, is that the boxes overlap. A query
  // along segment k, from one end to the other, has k's own box; so only segments whose boxes
  // overlap k's can be found, and of those, k itself (parallel to the query) and the segments
  // holding its ends (at distance 0 from the query's ends, within 1e100) are dropped. The
  // index lists every overlapping pair.
  const bool closed = isClosed();
  const auto shareAnEnd = [count, closed](std::size_t a, std::size_t b) {
    return b == a + 1 || (closed && a == 0 && b + 1 == count);
  };
  for (std::size_t k = 0; k < count; ++k) {
    clear[k] = validLine_[k];
  }
  index.anyPair(segRects_, [&](std::size_t a, std::size_t b) {
    if (segRects_[a].overlaps(segRects_[b]) && !shareAnEnd(a, b)) {
      clear[a] = false;
      clear[b] = false;
    }
    return false;
  });
  return clear;
}

double gkContour::medianFeatureSize() const {
  checkEmptyContour();
  if (!medianValid_) {
    // A length is sqrt(dx * dx + dy * dy), as distance() computes it. The square root is
    // correctly rounded, so it never reverses two sums: the sums sorted give the lengths
    // sorted, and the length at the middle is the square root of the sum at the middle. The
    // sums are selected and one root taken, instead of a root per segment.
    std::vector<double> squares;
    squares.reserve(static_cast<std::size_t>(segmentCount()));
    gk::detail::forEachSegment(points_, isClosed(),
                               [&squares](std::size_t, const gkVector<2>& p, const gkVector<2>& q) {
                                 const double dx = p.x() - q.x();
                                 const double dy = p.y() - q.y();
                                 squares.push_back(dx * dx + dy * dy);
                               });
    // The element at the middle of the sorted sums, found by selection: the same value as a
    // full sort puts there. NaN sums would break a plain < order; the NaN-aware order puts them
    // last (as their lengths are NaN), so the median is defined whatever the vertices hold.
    const auto middle = squares.begin() + static_cast<std::ptrdiff_t>(squares.size() / 2);
    std::nth_element(squares.begin(), middle, squares.end(),
                     [](double a, double b) { return gk::detail::lessNaNLast(a, b); });
    medianFeatureSize_ = std::sqrt(*middle);
    medianValid_ = true;
  }
  return medianFeatureSize_;
}
