#include <gk/cntr/moments/polygon_moments.h>

#include <cmath>
#include <cstddef>

#include <gk/base/line.h>
#include <gk/base/line_seg.h>
#include <gk/base/numeric.h>
#include <gk/base/tolerances.h>

#include "base/detail/segment_walk.h"

namespace {

using Points = std::vector<gkVector<2>>;

/// An edge whose cross product with the origin is within this of 0 has no area to weigh.
constexpr double kZeroCross = 1e-15;
/// A weight sum within this of 0 marks a degenerate polygon, whose centre is (0, 0).
constexpr double kZeroWeight = 1e-6;
/// The foot of an altitude counts as off its base when the point is nearer the base's line than
/// the base segment by more than this.
constexpr double kFootOffBase = 1e-10;
/// Triangles smaller than this (in absolute area) are summed last.
constexpr double kSmallTriangle = 1e-6;

/// Calls f(previous, current) for every edge of the closed polygon, the closing edge first.
template <typename F>
void forEachEdge(const Points& points, F&& f) {
  gk::detail::forEachSegment(
      points, true, [&f](std::size_t, const gkVector<2>& p, const gkVector<2>& q) { f(p, q); });
}

Points positions(const std::vector<gkEdgelet>& edgelets) {
  Points points;
  points.reserve(edgelets.size());
  for (const gkEdgelet& e : edgelets) {
    points.push_back(e.position());
  }
  return points;
}

/// The centroid of triangle (a, b, c) as the crossing of the medians from a and from b.
gkVector<2> triangleCentroid(const gkVector<2>& a, const gkVector<2>& b, const gkVector<2>& c) {
  const gkLine fromA(a, (b + c) / 2.0);
  const gkLine fromB(b, (a + c) / 2.0);
  return fromA.intersect(fromB);
}

/// The moment record of triangle (a, b, c), through the canonical triangle (-d1, 0), (d2, 0),
/// (0, h) on the base a -> b with the foot f of the altitude from c at the origin.
gk_InertiaData triangleMoments(gkVector<2> a, gkVector<2> b, gkVector<2> c) {
  // Rotate the vertices until the foot of the altitude lies on the base (at most twice: some
  // side of every triangle has its altitude's foot on it).
  for (int turn = 0; turn < 2; ++turn) {
    const double toLine = gkLine(a, b).distToPoint(c);
    const double toSegment = gkLineSeg(a, b).distToPoint(c);
    if (!(toLine < toSegment - kFootOffBase)) {
      break;
    }
    const gkVector<2> first = a;
    a = b;
    b = c;
    c = first;
  }
  const gkVector<2> f = gkLine(a, b).proj(c);
  const double d1 = f.distance(a);
  const double d2 = f.distance(b);
  const double h = f.distance(c);

  const double area = (d1 + d2) * h / 2.0;
  double cx = (d2 - d1) / 3.0;
  double cy = h / 3.0;
  const double jyy = (d1 + d2) * h * h * h / 12.0;
  const double jxy = (d2 * d2 - d1 * d1) * h * h / 24.0;
  const double jxx = (d1 * d1 * d1 + d2 * d2 * d2) * h / 12.0;
  // The canonical matrix holds the y-moment first; the rotation below puts it in the record's
  // convention.
  const double myy = jyy - area * cy * cy;
  double mxy = jxy - area * cx * cy;
  const double mxx = jxx - area * cx * cx;

  double signedArea = area;
  if ((b - a).cross(c - a) < 0.0) {
    // Clockwise: the mirror image of the canonical triangle, with negative area.
    signedArea = -area;
    cy = -cy;
    mxy = -mxy;
  }

  const double theta = (b - a).angle().toDouble();
  const double s = std::sin(theta);
  const double k = std::cos(theta);
  const double p = mxx;
  const double q = mxy;
  const double r = myy;
  const double n00 = p * k * k - 2.0 * q * s * k + r * s * s;
  const double n11 = p * s * s + 2.0 * q * s * k + r * k * k;
  const double n01 = p * s * k + q * (k * k - s * s) - r * s * k;
  const gkVector<2> centre = f + gkVector<2>(k * cx - s * cy, s * cx + k * cy);
  return gk_InertiaData(signedArea, centre, gkMatrix<2>(n00, n01, n01, n11));
}

}  // namespace

double gw_Area(const Points& points) {
  double sum = 0.0;
  forEachEdge(points, [&sum](const gkVector<2>& p, const gkVector<2>& q) { sum += p.cross(q); });
  return std::fabs(sum / 2.0);
}

double gw_Area(const std::vector<gkEdgelet>& edgelets) {
  if (edgelets.size() < 3) {
    return 0.0;
  }
  return gw_Area(positions(edgelets));
}

gkVector<2> gyContour::centerOfMass(const Points& points) {
  if (points.size() <= 2) {
    return gkVector<2>();
  }
  double sx = 0.0;
  double sy = 0.0;
  double s = 0.0;
  forEachEdge(points, [&](const gkVector<2>& p, const gkVector<2>& q) {
    const double c = p.cross(q);
    if (gwRealEq(c, 0.0, kZeroCross)) {
      return;
    }
    const gkVector<2> g = triangleCentroid(gkVector<2>(), p, q);
    sx += c * g.x();
    sy += c * g.y();
    s += c;
  });
  if (gwRealEq(s, 0.0, kZeroWeight)) {
    return gkVector<2>();
  }
  return gkVector<2>(sx / s, sy / s);
}

gkVector<2> gw_CenterOfMass(const Points& points) {
  return gyContour::centerOfMass(points);
}

gkVector<2> gw_CenterOfMass(const std::vector<gkEdgelet>& edgelets) {
  return gyContour::centerOfMass(positions(edgelets));
}

gk_InertiaData gw_InertiaDataPolygon(const Points& points) {
  if (points.size() < 3) {
    return gk_InertiaData();
  }
  const gkVector<2> g = gyContour::centerOfMass(points);
  std::vector<gk_InertiaData> triangles;
  triangles.reserve(points.size());
  double sum = 0.0;
  forEachEdge(points, [&](const gkVector<2>& previous, const gkVector<2>& current) {
    triangles.push_back(triangleMoments(g, previous, current));
    sum += triangles.back().area();
  });
  const double mean = sum / static_cast<double>(points.size());

  // Sum the big triangles first, then the clearly non-degenerate ones, then the rest, so that
  // slivers are added to an already large total.
  gk_InertiaData total;
  std::vector<bool> used(triangles.size(), false);
  for (std::size_t i = 0; i < triangles.size(); ++i) {
    const double a = triangles[i].area();
    if (a > mean || (mean < 0.0 && a < mean)) {
      total = total + triangles[i];
      used[i] = true;
    }
  }
  const double t = mean > 0.0 ? kSmallTriangle : -kSmallTriangle;
  for (std::size_t i = 0; i < triangles.size(); ++i) {
    const double a = triangles[i].area();
    if (!used[i] && (a > t || (t < 0.0 && a < t))) {
      total = total + triangles[i];
      used[i] = true;
    }
  }
  for (std::size_t i = 0; i < triangles.size(); ++i) {
    if (!used[i]) {
      total = total + triangles[i];
    }
  }
  return total;
}

double gw_StdDev(const std::vector<double>& values) {
  if (values.empty()) {
    return 0.0;
  }
  const double n = static_cast<double>(values.size());
  double sum = 0.0;
  for (const double v : values) {
    sum += v;
  }
  const double m = sum / n;
  double squares = 0.0;
  for (const double v : values) {
    squares += (v - m) * (v - m);
  }
  return std::sqrt(squares / n);
}
