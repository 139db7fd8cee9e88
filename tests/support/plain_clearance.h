#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include <gk/base/vector.h>

/// The plain clearance of a walk, in extended precision: what the clearance sweep's answer is
/// checked against by its tests and by its fuzzer.
namespace gk::test {

struct WidePoint {
  long double x;
  long double y;
};

inline long double wideCross(const WidePoint& a, const WidePoint& b, const WidePoint& c) {
  return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

inline long double widePointSegment(const WidePoint& p, const WidePoint& a, const WidePoint& b) {
  const long double dx = b.x - a.x;
  const long double dy = b.y - a.y;
  const long double dd = dx * dx + dy * dy;
  long double t = dd == 0 ? 0 : ((p.x - a.x) * dx + (p.y - a.y) * dy) / dd;
  t = std::max<long double>(0, std::min<long double>(1, t));
  const long double ex = p.x - (a.x + dx * t);
  const long double ey = p.y - (a.y + dy * t);
  return std::sqrt(ex * ex + ey * ey);
}

/// The distance between two segments: 0 when they cross or touch, else the least distance from
/// an end of one to the other. A crossing needs the boxes to meet as well: on segments of one
/// line the orientations are zeros that rounding may turn into opposite signs (where long
/// double is no wider than double, as under valgrind), and segments of one line far apart
/// would then seem to cross.
inline long double wideSegmentDistance(const WidePoint& a1, const WidePoint& a2,
                                       const WidePoint& b1, const WidePoint& b2) {
  const long double o1 = wideCross(a1, a2, b1);
  const long double o2 = wideCross(a1, a2, b2);
  const long double o3 = wideCross(b1, b2, a1);
  const long double o4 = wideCross(b1, b2, a2);
  const bool boxesMeet = std::max(a1.x, a2.x) >= std::min(b1.x, b2.x) &&
                         std::max(b1.x, b2.x) >= std::min(a1.x, a2.x) &&
                         std::max(a1.y, a2.y) >= std::min(b1.y, b2.y) &&
                         std::max(b1.y, b2.y) >= std::min(a1.y, a2.y);
  if (boxesMeet && ((o1 > 0 && o2 < 0) || (o1 < 0 && o2 > 0)) &&
      ((o3 > 0 && o4 < 0) || (o3 < 0 && o4 > 0))) {
    return 0;
  }
  return std::min({widePointSegment(a1, b1, b2), widePointSegment(a2, b1, b2),
                   widePointSegment(b1, a1, a2), widePointSegment(b2, a1, a2)});
}

/// The least distance between two segments of the walk through points (closed: segment k from
/// vertex k - 1, n - 1 for k = 0, to k; open: from k to k + 1) that share no vertex by number,
/// over every such pair; infinity when there is none.
inline long double plainClearance(const std::vector<gkVector<2>>& points, bool closed) {
  struct Seg {
    std::size_t from;
    std::size_t to;
  };
  std::vector<Seg> segs;
  const std::size_t n = points.size();
  const std::size_t count = closed ? n : (n > 0 ? n - 1 : 0);
  for (std::size_t k = 0; k < count; ++k) {
    segs.push_back(closed ? Seg{k == 0 ? n - 1 : k - 1, k} : Seg{k, k + 1});
  }
  const auto at = [&points](std::size_t i) { return WidePoint{points[i].x(), points[i].y()}; };
  long double best = std::numeric_limits<long double>::infinity();
  for (std::size_t a = 0; a < segs.size(); ++a) {
    for (std::size_t b = a + 1; b < segs.size(); ++b) {
      const Seg& s = segs[a];
      const Seg& t = segs[b];
      if (s.from == t.from || s.from == t.to || s.to == t.from || s.to == t.to) {
        continue;
      }
      best = std::min(best, wideSegmentDistance(at(s.from), at(s.to), at(t.from), at(t.to)));
    }
  }
  return best;
}

}  // namespace gk::test
