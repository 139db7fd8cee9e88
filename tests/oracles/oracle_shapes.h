#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

// The whole of Boost.Geometry: its single-algorithm headers do not bring the default
// strategies they need.
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point_xy.hpp>

#include <gk/base/ptr_handle.h>
#include <gk/base/vector.h>
#include <gk/cntr/region.h>

/// Random shapes that are simple by construction, their Boost.Geometry twins, and closed-form
/// moments, for the tests that hold the library against an implementation it shares no code
/// with. Everything is driven by fixed seeds: a failure names its case number and reproduces.
namespace gk::oracle {

using Points = std::vector<gkVector<2>>;

namespace bg = boost::geometry;
using BPoint = bg::model::d2::point_xy<double>;
/// Counter-clockwise, closed: the library's own orientation, so correct() only closes rings.
using BPolygon = bg::model::polygon<BPoint, false, true>;
using BRing = bg::model::ring<BPoint, false, true>;
using BLinestring = bg::model::linestring<BPoint>;

constexpr double kPi = 3.141592653589793;

/// mt19937_64 with our own 53-bit conversion, so the cases are the same with every standard
/// library (std::uniform_real_distribution is not pinned down by the standard).
class Rng {
 public:
  explicit Rng(std::uint64_t seed) : engine_(seed) {}
  /// Uniform in [lo, hi).
  double uniform(double lo, double hi) {
    const double u = static_cast<double>(engine_() >> 11) * 0x1p-53;
    return lo + (hi - lo) * u;
  }
  /// Uniform integer in [lo, hi].
  int integer(int lo, int hi) {
    return lo + static_cast<int>(engine_() % static_cast<std::uint64_t>(hi - lo + 1));
  }

 private:
  std::mt19937_64 engine_;
};

/// A star polygon round centre: n vertices at increasing angles with radii in
/// [rMin, rMax]. The angles are jittered about equal spacing but every gap stays below half a
/// turn, so each edge sweeps only its own sector and the outline cannot cross itself.
/// Counter-clockwise; vertex 0 sits at a random angle.
inline Points starPolygon(Rng& rng, const gkVector<2>& centre, int n, double rMin, double rMax) {
  // A gap is at most (1 + jitter) * 2pi/n; below pi needs jitter < n/2 - 1.
  const double jitter = std::min(0.9, 0.9 * (n / 2.0 - 1.0));
  const double start = rng.uniform(0.0, 2.0 * kPi);
  Points pts;
  pts.reserve(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) {
    const double a = start + 2.0 * kPi * (i + jitter * rng.uniform(0.0, 1.0)) / n;
    const double r = rng.uniform(rMin, rMax);
    pts.emplace_back(centre.x() + r * std::cos(a), centre.y() + r * std::sin(a));
  }
  return pts;
}

/// Distance from p to the segment a-b, in long double so that the skip margins are not
/// themselves rounded away.
inline double distanceToSegment(const gkVector<2>& p, const gkVector<2>& a, const gkVector<2>& b) {
  const long double dx = static_cast<long double>(b.x()) - a.x();
  const long double dy = static_cast<long double>(b.y()) - a.y();
  const long double px = static_cast<long double>(p.x()) - a.x();
  const long double py = static_cast<long double>(p.y()) - a.y();
  const long double len2 = dx * dx + dy * dy;
  long double t = len2 > 0 ? (px * dx + py * dy) / len2 : 0;
  t = std::clamp(t, 0.0L, 1.0L);
  const long double ex = px - t * dx;
  const long double ey = py - t * dy;
  return static_cast<double>(std::sqrt(ex * ex + ey * ey));
}

/// The largest radius of a disc round centre that the closed outline leaves free.
inline double innerRadius(const Points& outline, const gkVector<2>& centre) {
  double r = INFINITY;
  for (std::size_t i = 0; i < outline.size(); ++i) {
    r = std::min(r, distanceToSegment(centre, outline[i], outline[(i + 1) % outline.size()]));
  }
  return r;
}

/// An outer star polygon with up to maxHoles star-shaped holes. The holes sit in disjoint
/// discs inside the outline's free disc, so they neither touch the outline nor one another.
struct StarWithHoles {
  Points outer;
  std::vector<Points> holes;
};

inline StarWithHoles starWithHoles(Rng& rng, int maxHoles) {
  StarWithHoles s;
  const gkVector<2> centre(rng.uniform(-20.0, 20.0), rng.uniform(-20.0, 20.0));
  const double scale = rng.uniform(1.0, 10.0);
  const int n = rng.integer(3, 40);
  s.outer = starPolygon(rng, centre, n, 0.3 * scale, scale);
  const int holeCount = rng.integer(0, maxHoles);
  if (holeCount == 0) {
    return s;
  }
  const double free = innerRadius(s.outer, centre);
  // k discs of radius rho on the circle of radius d round the centre: one central disc, or k
  // discs whose centres are spread round a circle of radius free/2.
  const double d = holeCount == 1 ? 0.0 : free / 2.0;
  const double rho = holeCount == 1 ? free : std::min(free / 2.0, d * std::sin(kPi / holeCount));
  const double phase = rng.uniform(0.0, 2.0 * kPi);
  for (int k = 0; k < holeCount; ++k) {
    const double a = phase + 2.0 * kPi * k / holeCount;
    const gkVector<2> c(centre.x() + d * std::cos(a), centre.y() + d * std::sin(a));
    Points hole = starPolygon(rng, c, rng.integer(3, 12), 0.2 * rho, 0.8 * rho);
    // Hole orientation must not matter to the library: list every other hole clockwise.
    if (k % 2 == 1) {
      std::reverse(hole.begin(), hole.end());
    }
    s.holes.push_back(std::move(hole));
  }
  return s;
}

inline gkRegion makeRegion(const StarWithHoles& s) {
  gkRegion r(s.outer);
  gkRegion::Holes holes;
  for (const Points& h : s.holes) {
    holes.emplace_back(new gkRegion(h));
  }
  r.holes(holes);
  return r;
}

inline BRing toRing(const Points& pts) {
  BRing ring;
  for (const gkVector<2>& p : pts) {
    ring.push_back(BPoint(p.x(), p.y()));
  }
  return ring;
}

/// The Boost polygon of the shape; correct() closes the rings and orients the holes.
inline BPolygon toBoost(const StarWithHoles& s, bool withHoles) {
  BPolygon poly;
  for (const gkVector<2>& p : s.outer) {
    poly.outer().push_back(BPoint(p.x(), p.y()));
  }
  if (withHoles) {
    for (const Points& h : s.holes) {
      poly.inners().push_back(toRing(h));
    }
  }
  bg::correct(poly);
  return poly;
}

/// Area moments of a polygon by Green's theorem, in long double, about a reference point near
/// the shape (so the central moments do not come from cancelling large raw moments).
struct ClosedFormMoments {
  long double area = 0;  // signed: positive counter-clockwise
  long double cx = 0, cy = 0;
  long double mxx = 0, mxy = 0, myy = 0;  // central, integrals of (x-cx)^2 etc.
};

/// Signed raw moments about ref: integral of 1, x, y, x^2, xy, y^2 over the polygon.
struct RawMoments {
  long double m00 = 0, m10 = 0, m01 = 0, m20 = 0, m11 = 0, m02 = 0;
};

inline RawMoments rawMoments(const Points& pts, long double refX, long double refY) {
  RawMoments m;
  const std::size_t n = pts.size();
  for (std::size_t i = 0; i < n; ++i) {
    const long double x0 = pts[i].x() - refX, y0 = pts[i].y() - refY;
    const long double x1 = pts[(i + 1) % n].x() - refX, y1 = pts[(i + 1) % n].y() - refY;
    const long double c = x0 * y1 - x1 * y0;
    m.m00 += c / 2;
    m.m10 += c * (x0 + x1) / 6;
    m.m01 += c * (y0 + y1) / 6;
    m.m20 += c * (x0 * x0 + x0 * x1 + x1 * x1) / 12;
    m.m02 += c * (y0 * y0 + y0 * y1 + y1 * y1) / 12;
    m.m11 += c * (x0 * y1 + 2 * x0 * y0 + 2 * x1 * y1 + x1 * y0) / 24;
  }
  return m;
}

/// The moments of the outline less its holes, each piece taken with its absolute orientation.
inline ClosedFormMoments closedFormMoments(const Points& outer, const std::vector<Points>& holes) {
  long double refX = 0, refY = 0;
  for (const gkVector<2>& p : outer) {
    refX += p.x();
    refY += p.y();
  }
  refX /= outer.size();
  refY /= outer.size();
  auto absolute = [](RawMoments m) {
    if (m.m00 < 0) {
      m = {-m.m00, -m.m10, -m.m01, -m.m20, -m.m11, -m.m02};
    }
    return m;
  };
  RawMoments total = absolute(rawMoments(outer, refX, refY));
  for (const Points& h : holes) {
    const RawMoments m = absolute(rawMoments(h, refX, refY));
    total = {total.m00 - m.m00, total.m10 - m.m10, total.m01 - m.m01,
             total.m20 - m.m20, total.m11 - m.m11, total.m02 - m.m02};
  }
  ClosedFormMoments r;
  r.area = total.m00;
  const long double cxr = total.m10 / total.m00;
  const long double cyr = total.m01 / total.m00;
  r.cx = cxr + refX;
  r.cy = cyr + refY;
  r.mxx = total.m20 - total.m00 * cxr * cxr;
  r.myy = total.m02 - total.m00 * cyr * cyr;
  r.mxy = total.m11 - total.m00 * cxr * cyr;
  return r;
}

}  // namespace gk::oracle
