#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include <gk/base/angle.h>
#include <gk/base/assert.h>
#include <gk/base/line_seg.h>
#include <gk/base/tolerances.h>
#include <gk/base/vector.h>
#include <gk/base/xform.h>
#include <gk/cntr/errors/contour_errors.h>
#include <gk/cntr/region.h>

#include "base/detail/total_order.h"

/// The plain region algorithms behind the library's faster containment and boundary walks:
/// the containment ray aimed after a full sort of the vertex directions, and the outer hull
/// that starts every scan over from the first loop. Tests require identical answers.
namespace gk::test {

/// The containment ray's direction as it is written: every vertex direction's angle, all of
/// them sorted (NaN last), the first gap wider than pi/n, the last gap wrapping round to the
/// first; false when pt is within the proximity tolerance of a vertex (no ray).
inline bool plainRayDirection(const std::vector<gkVector<2>>& vertices, const gkVector<2>& pt,
                              gkVector<2>& direction) {
  const std::size_t n = vertices.size();
  std::vector<double> angles;
  for (const gkVector<2>& vertex : vertices) {
    const gkVector<2> v = vertex - pt;
    if (v.len() <= gkTolProximity) {
      return false;
    }
    angles.push_back(v.angle().norm().toDouble());
  }
  std::sort(angles.begin(), angles.end(), gk::detail::lessNaNLast);
  const double threshold = 3.141592653589793 / static_cast<double>(n);
  direction = gkVector<2>(1.0, 0.0);
  for (std::size_t i = 0; i < n; ++i) {
    const std::size_t j = i + 1 == n ? 0 : i + 1;
    const double gap = gkRadian(angles[j] - angles[i]).norm().toDouble();
    if (gap > threshold) {
      direction = gkVector<2>(1.0, gkRadian(angles[i] + gap / 2.0));
      break;
    }
  }
  return true;
}

class PlainRegion : public gkRegion {
 public:
  using Points = std::vector<gkVector<2>>;

  explicit PlainRegion(const gkRegion& r) : gkRegion(r.points(), gkContourDefs::eIgnore) {
    holes(r.holes());
  }

  long plainInsideCount(const gkVector<2>& pt, bool bothDirections) const {
    if (!encloseRect(gkXform<2>()).within(pt)) {
      return 0;
    }
    gkVector<2> direction;
    if (!plainRayDirection(points(), pt, direction)) {
      return 1;
    }
    const double length = diameter(gkContourDefs::eFirstVertexCentered);
    long count = static_cast<long>(
        intersections(gkLineSeg(pt, pt + direction * length), false, false).size());
    if (bothDirections) {
      const long back = static_cast<long>(
          intersections(gkLineSeg(pt, pt - direction * length), false, false).size());
      count = std::min(count, back);
    }
    return count;
  }

  bool plainInside(const gkVector<2>& pt, bool considerHoles) const {
    if (plainInsideCount(pt, false) % 2 == 0) {
      return false;
    }
    if (!considerHoles) {
      return true;
    }
    for (const gkPtrHandle_const<gkRegion>& hole : holes()) {
      if (PlainRegion(*hole).plainInside(pt, true)) {
        return false;
      }
    }
    return true;
  }

  /// The walk and, for the outer hull, the loop splitting, dropping and merging, each scan
  /// starting over from the first loop after every change.
  void plainOuterHullRegularize(gkRegion& result, bool hullOnly) const {
    checkEmptyContour();
    const Points& v = points();
    const std::size_t n = v.size();
    const double eps = medianFeatureSize() / kProbeDivisor;

    // Start edge: the first edge v[i] -> v[i+1] (the closing edge is never a candidate) that a
    // short probe across its midpoint crosses alone, that meets the rest of the boundary only at
    // its two ends, and that has the outside on one side.
    long start = -1;
    for (std::size_t i = 0; i + 1 < n && start < 0; ++i) {
      const gkVector<2> mid = (v[i] + v[i + 1]) / 2.0;
      const gkVector<2> u = (v[i] - v[i + 1]).unit();
      const gkVector<2> w = gkVector<2>(-u.y(), u.x()) * eps;
      const gkVector<2> a = mid + w;
      const gkVector<2> b = mid - w;
      const std::size_t c1 = intersections(gkLineSeg(a, b), true, false).size();
      const std::size_t c2 = intersections(gkLineSeg(v[i], v[i + 1]), true, false).size();
      const bool outside = plainInsideCount(a, true) == 0 || plainInsideCount(b, true) == 0;
      if (c1 == 1 && c2 == 2 && outside) {
        start = static_cast<long>(i);
      }
    }
    if (start < 0) {
      throw gkContourDefs::BadParams(L"invalid contour");
    }

    // A walk that has not come back after this many steps never will: every step ends on a
    // vertex or on a crossing, and a walk that returns visits each of those at most a few times
    // (a crossing twice, once per branch). Counting the crossings with ends included over every
    // segment over-counts them, which only makes the bound safer.
    std::size_t crossings = 0;
    for (std::size_t k = 0; k < lineSegs().size(); ++k) {
      if (validLine()[k]) {
        crossings += gkContour::intersections(gkLineSeg(lineSegs()[k]), true).size();
      }
    }
    const std::size_t maxSteps = 4 * (n + crossings) + 4;

    Points walked;
    const gkVector<2> home = v[static_cast<std::size_t>(start)];
    gkVector<2> p = home;
    long cursor = start + 1;
    bool forward = true;
    std::vector<int> segIndices;
    for (std::size_t step = 0;; ++step) {
      if (step > 0 && p == home) {
        break;
      }
      if (step >= maxSteps) {
        throw gkContourDefs::BadParams(L"invalid contour");
      }
      const gkVector<2> target = forward ? v[wrapIndex(cursor, n)] : v[wrapIndex(cursor - 1, n)];
      const Points crossed = gkContour::intersections(gkLineSeg(p, target), segIndices, false);
      if (!crossed.empty()) {
        // Turn onto the crossed segment k (from v[k-1] to v[k]) and reverse: forward now heads
        // for v[k], backward for v[k-1].
        p = crossed.front();
        cursor = segIndices.front();
        forward = !forward;
      } else {
        p = target;
        cursor = static_cast<long>(wrapIndex(forward ? cursor + 1 : cursor - 1, n));
      }
      walked.push_back(p);
    }

    if (!hullOnly) {
      result = gkRegion(walked, gkContourDefs::eIgnore);
      return;
    }

    // Split the walked boundary into simple loops at every repeated vertex.
    std::vector<gkRegion> loops;
    loops.emplace_back(walked, gkContourDefs::eIgnore);
    for (bool split = true; split;) {
      split = false;
      for (std::size_t r = 0; r < loops.size() && !split; ++r) {
        const Points lv = loops[r].points();
        const long m = static_cast<long>(lv.size());
        for (long j = 0; j < m && !split; ++j) {
          for (const int found :
               loops[r].vertexIndex(lv[static_cast<std::size_t>(j)], kVertexCoincidence)) {
            long q = found;
            if (q == j) {
              continue;
            }
            if (q < j) {
              q += m;
            }
            loops[r] = gkRegion(loopRun(lv, j, q - 1), gkContourDefs::eIgnore);
            loops.emplace_back(loopRun(lv, q, j + m - 1), gkContourDefs::eIgnore);
            split = true;
            break;
          }
        }
      }
    }

    // Drop every loop that lies inside another (tested at the midpoint of its first edge).
    std::vector<gkRegion> kept = loops;
    for (bool removed = true; removed;) {
      removed = false;
      for (std::size_t a = 0; a < kept.size() && !removed; ++a) {
        const Points& av = kept[a].points();
        GK_ASSERT(av.size() >= 2);
        const gkVector<2> mid = (av[1] + av[0]) / 2.0;
        for (std::size_t b = 0; b < kept.size(); ++b) {
          if (b != a && PlainRegion(kept[b]).plainInside(mid, true)) {
            kept[a] = kept.back();
            kept.pop_back();
            removed = true;
            break;
          }
        }
      }
    }
    loops = kept;

    // Merge loops that share a vertex into one boundary through that vertex.
    for (bool merged = true; merged;) {
      merged = false;
      for (std::size_t a = 0; a + 1 < loops.size() && !merged; ++a) {
        for (std::size_t b = a + 1; b < loops.size() && !merged; ++b) {
          const Points av = loops[a].points();
          const long ma = static_cast<long>(av.size());
          for (long j = 0; j < ma; ++j) {
            const std::vector<int> shared =
                loops[b].vertexIndex(av[static_cast<std::size_t>(j)], kVertexCoincidence);
            if (shared.empty()) {
              continue;
            }
            const Points bv = loops[b].points();
            const long q = shared.front();
            Points joined = loopRun(av, j, j + ma - 1);
            const Points tail = loopRun(bv, q, q + static_cast<long>(bv.size()) - 1);
            joined.insert(joined.end(), tail.begin(), tail.end());
            loops[a] = gkRegion(joined, gkContourDefs::eIgnore);
            loops[b] = loops.back();
            loops.pop_back();
            merged = true;
            break;
          }
        }
      }
    }

    if (loops.size() != 1) {
      gwAssertFailed("cntr/region", 618, "exactly one loop remains after merging");
    }
    result = loops.front();
  }

 private:
  static constexpr double kProbeDivisor = 100.0;
  static constexpr double kVertexCoincidence = 1e-6;

  static std::size_t wrapIndex(long k, std::size_t n) {
    const long m = static_cast<long>(n);
    return static_cast<std::size_t>(k < 0 ? k + m : (k >= m ? k - m : k));
  }

  static Points loopRun(const Points& v, long from, long to) {
    Points run;
    for (long i = from; i <= to; ++i) {
      run.push_back(v[wrapIndex(i, v.size())]);
    }
    return run;
  }
};

}  // namespace gk::test
