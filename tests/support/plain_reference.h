#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include <gk/base/circle.h>
#include <gk/base/line.h>
#include <gk/base/line_seg.h>
#include <gk/base/rect.h>
#include <gk/base/tolerances.h>
#include <gk/base/vector.h>
#include <gk/base/xform.h>
#include <gk/cntr/contour.h>

#include "base/detail/segment_walk.h"

/// The plain, obviously-quadratic algorithms behind the library's indexed and sorted fast paths.
/// Tests run both on many inputs and require identical answers, bit for bit and in order.
namespace gk::test {

/// A contour whose segment queries scan every segment in order, as written first.
class PlainContour : public gkContour {
 public:
  explicit PlainContour(const gkContour& c) : gkContour(c.points(), c.isClosed(), 0) {}

  /// Every segment in number order, then an exchange sort by position along seg.
  std::vector<gkVector<2>> plainIntersections(const gkLineSeg& seg, std::vector<int>& segIndices,
                                              bool includeEnds) const {
    checkEmptyContour();
    segIndices.clear();
    const gkLine queryLine = seg.line();
    const gkRect queryBox =
        gkRect(seg.p2(), gkVector<2>()).enclose(gkRect(seg.p1(), gkVector<2>()));
    if (!encloseRect(gkXform<2>()).overlaps(queryBox)) {
      return {};
    }
    const std::vector<gkLineSeg>& segs = lineSegs();
    const std::vector<gkLine>& lns = lines();
    const std::vector<gkRect>& rects = segRects();
    const std::vector<bool>& valid = validLine();
    std::vector<gkVector<2>> points;
    std::vector<double> keys;
    const gkVector<2> along = seg.p2() - seg.p1();
    for (std::size_t k = 0; k < segs.size(); ++k) {
      if (!valid[k] || !rects[k].overlaps(queryBox) || lns[k].isParallel(queryLine)) {
        continue;
      }
      const gkLineSeg& s = segs[k];
      if (!includeEnds &&
          !(s.distToPoint(seg.p1()) > gkTolProximity && s.distToPoint(seg.p2()) > gkTolProximity)) {
        continue;
      }
      const gkVector<2> p = lns[k].intersect(queryLine);
      if (!(s.distToPoint(p) < gkTolProximity && seg.distToPoint(p) < gkTolProximity)) {
        continue;
      }
      points.push_back(p);
      segIndices.push_back(static_cast<int>(k));
      keys.push_back((p - seg.p1()).dot(along));
    }
    const std::size_t m = points.size();
    for (std::size_t i = 0; i + 1 < m; ++i) {
      for (std::size_t j = i + 1; j < m; ++j) {
        if (keys[i] > keys[j]) {
          std::swap(keys[i], keys[j]);
          std::swap(points[i], points[j]);
          std::swap(segIndices[i], segIndices[j]);
        }
      }
    }
    return points;
  }

  /// Each segment of other in walk order, queried with ends included.
  std::vector<gkVector<2>> plainIntersections(const gkContour& other) const {
    checkEmptyContour();
    std::vector<gkVector<2>> result;
    std::vector<int> ignored;
    gk::detail::forEachSegment(other.points(), other.isClosed(),
                               [&](std::size_t, const gkVector<2>& p, const gkVector<2>& q) {
                                 const std::vector<gkVector<2>> found =
                                     plainIntersections(gkLineSeg(p, q), ignored, true);
                                 result.insert(result.end(), found.begin(), found.end());
                               });
    return result;
  }

  /// Every valid segment queried without ends against every segment.
  bool plainIsSelfIntersecting() const {
    if (points().size() < 2) {
      return false;
    }
    std::vector<int> ignored;
    for (std::size_t k = 0; k < lineSegs().size(); ++k) {
      if (validLine()[k] && !plainIntersections(gkLineSeg(lineSegs()[k]), ignored, false).empty()) {
        return true;
      }
    }
    return false;
  }

  /// Every ordered pair; the first that reaches the greatest distance wins.
  gkCircle plainFarthestPairCircle() const {
    const std::vector<gkVector<2>>& v = points();
    gkCircle circle;
    double best = 0.0;
    for (std::size_t i = 0; i < v.size(); ++i) {
      for (std::size_t j = 0; j < v.size(); ++j) {
        const double d = v[i].distance(v[j]);
        if (d > best) {
          best = d;
          circle = gkCircle((v[i] + v[j]) / 2.0, d / 2.0);
        }
      }
    }
    return circle;
  }
};

/// Random vertex lists rich in the degenerate cases fast paths get wrong: vertices on a small
/// integer grid (so repeats, touching vertices, collinear overlaps and crossings exactly at
/// vertices are common), mixed with arbitrary reals and, on request, non-finite values.
class DegenerateShapes {
 public:
  explicit DegenerateShapes(std::uint64_t seed) : rng_(seed) {}

  std::vector<gkVector<2>> points(std::size_t n, bool nonFinite = false) {
    std::vector<gkVector<2>> v;
    const int grid = 2 + static_cast<int>(pick(8));
    for (std::size_t i = 0; i < n; ++i) {
      const std::uint64_t kind = pick(20);
      if (kind < 12) {
        v.emplace_back(static_cast<double>(pick(grid)), static_cast<double>(pick(grid)));
      } else if (kind < 15 && !v.empty()) {
        v.push_back(v[pick(v.size())]);  // a repeated vertex
      } else if (kind < 17 && v.size() >= 2) {
        // On the line through two earlier vertices: collinear overlaps.
        const gkVector<2> a = v[pick(v.size())];
        const gkVector<2> b = v[pick(v.size())];
        const double t = static_cast<double>(pick(5)) / 2.0 - 1.0;
        v.push_back(a + (b - a) * t);
      } else if (kind == 17 && nonFinite) {
        const double specials[] = {std::numeric_limits<double>::quiet_NaN(),
                                   std::numeric_limits<double>::infinity(),
                                   -std::numeric_limits<double>::infinity(), 1e300};
        v.emplace_back(specials[pick(4)], static_cast<double>(pick(grid)));
      } else {
        v.emplace_back(real(grid), real(grid));
      }
    }
    return v;
  }

  std::uint64_t pick(std::uint64_t n) { return rng_() % n; }
  double real(double range) { return static_cast<double>(rng_() >> 11) * 0x1.0p-53 * range; }

 private:
  std::mt19937_64 rng_;
};

}  // namespace gk::test
