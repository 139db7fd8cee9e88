#include <algorithm>

#include <gk/cntr/region.h>

#include "base/detail/ray_direction.h"

namespace {

/// Below this many vertices, the passes over every vertex are as fast as searching the runs of
/// segments (measured: at 64 and 256 vertices the search costs half as much again, from 2048
/// on it wins).
constexpr std::size_t kRunsMinimum = 1024;

}  // namespace

long gkRegion::insideCount(const gkVector<2>& pt, bool bothDirections) const {
  if (!encloseRect(gkXform<2>()).within(pt)) {
    return 0;
  }
  // A point on a vertex counts as inside, deliberately: no ray can be aimed through it.
  // From kRunsMinimum vertices on, the bounds on runs of segments find the few directions and
  // the few crossings that matter without visiting every vertex; the answers are those of the
  // passes over every vertex.
  const gk::detail::ChainBounds* runs = points().size() >= kRunsMinimum ? chainBounds() : nullptr;
  gkVector<2> direction;
  if (!gk::detail::containmentRayDirection(points(), pt, direction, runs)) {
    return 1;
  }
  // Twice the greatest distance from vertex 0: a length meant to cross the whole boundary.
  // Crossings with the outer boundary only, as intersections(ray, false, false) counts them.
  const double length = diameter(gkContourDefs::eFirstVertexCentered);
  long count =
      static_cast<long>(crossingCount(gkLineSeg(pt, pt + direction * length), false, runs));
  if (bothDirections) {
    const long back =
        static_cast<long>(crossingCount(gkLineSeg(pt, pt - direction * length), false, runs));
    count = std::min(count, back);
  }
  return count;
}

bool gkRegion::inside(const gkVector<2>& pt, bool considerHoles) const {
  if (insideCount(pt, false) % 2 == 0) {
    return false;
  }
  if (!considerHoles) {
    return true;
  }
  for (const gkPtrHandle_const<gkRegion>& hole : holes_) {
    // The hole answers with its own holes, so an island inside a hole is inside the region.
    if (hole->inside(pt, true)) {
      return false;
    }
  }
  return true;
}

long gkRegion::closestVertexIndex(const gkVector<2>& pt, bool considerHoles,
                                  long& holeIndex) const {
  holeIndex = -1;
  long index = gkContour::closestVertexIndex(pt);
  if (!considerHoles || holes_.empty()) {
    return index;
  }
  double best = pt.distance(points()[static_cast<std::size_t>(index)]);
  for (std::size_t k = 0; k < holes_.size(); ++k) {
    const gkRegion& hole = *holes_[k];
    const long j = hole.gkContour::closestVertexIndex(pt);
    const double d = pt.distance(hole.points()[static_cast<std::size_t>(j)]);
    // Strictly smaller: ties keep the boundary, then the earlier hole.
    if (d < best) {
      holeIndex = static_cast<long>(k);
      best = d;
      index = j;
    }
  }
  return index;
}

gkVector<2> gkRegion::closestPoint(const gkVector<2>& pt, bool verticesOnly,
                                   bool considerHoles) const {
  if (verticesOnly) {
    long holeIndex = -1;
    const long index = closestVertexIndex(pt, considerHoles, holeIndex);
    const gkRegion& owner = holeIndex < 0 ? *this : *holes_[static_cast<std::size_t>(holeIndex)];
    return owner.points()[static_cast<std::size_t>(index)];
  }
  // Here the holes are searched whatever considerHoles says: the nearest boundary point is the
  // nearest point of any boundary, hole outlines included (kept asymmetric on purpose).
  gkVector<2> candidate = gkContour::closestPoint(pt, false);
  double best = pt.distance(candidate);
  for (const gkPtrHandle_const<gkRegion>& hole : holes_) {
    const gkVector<2> p = hole->gkContour::closestPoint(pt, false);
    const double d = pt.distance(p);
    if (d < best) {
      best = d;
      candidate = p;
    }
  }
  return candidate;
}

double gkRegion::distToPoint(const gkVector<2>& pt, bool verticesOnly, bool considerHoles,
                             bool zeroIfInside) const {
  if (zeroIfInside && inside(pt, considerHoles)) {
    return 0.0;
  }
  return pt.distance(closestPoint(pt, verticesOnly, considerHoles));
}

std::vector<gkVector<2>> gkRegion::intersections(const gkLineSeg& seg, bool includeEnds,
                                                 bool considerHoles) const {
  std::vector<gkVector<2>> result = gkContour::intersections(seg, includeEnds);
  if (considerHoles) {
    for (const gkPtrHandle_const<gkRegion>& hole : holes_) {
      const std::vector<gkVector<2>> more = hole->gkContour::intersections(seg, includeEnds);
      result.insert(result.end(), more.begin(), more.end());
    }
  }
  return result;
}

std::vector<gkVector<2>> gkRegion::intersections(const gkContour& c, bool considerHoles) const {
  std::vector<gkVector<2>> result = gkContour::intersections(c);
  if (considerHoles) {
    for (const gkPtrHandle_const<gkRegion>& hole : holes_) {
      const std::vector<gkVector<2>> more = hole->gkContour::intersections(c);
      result.insert(result.end(), more.begin(), more.end());
    }
  }
  return result;
}
