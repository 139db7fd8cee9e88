#include "base/detail/star_clearance.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace gk::detail {

namespace {

/// How many vertices the sampled centre is the mean of: enough to land inside a traced
/// outline's kernel.
constexpr std::size_t kCentreSamples = 64;

/// The least lower bound on a wedge's sine that the pass accepts. The cross products it rests
/// on carry rounding of at most 5 eps times the product of the two vectors' taxicab lengths,
/// so at this bound and above they are off by less than 1e-6 of their value, and the bound on
/// the clearance by less than 3e-6 of its own: the factor 2 asked of it covers that many times.
/// With gap at least 1e-100, every vector from the centre is at least that long when the
/// answer is true, which keeps the products that decide it far above the subnormal range.
constexpr double kLeastSine = 0x1p-30;

/// A little less than 1 / sqrt(2): a vector is at least this times its taxicab length long.
constexpr double kTaxicabToLength = 0.7071;

}  // namespace

gkVector<2> sampledCentre(const std::vector<gkVector<2>>& points) {
  const std::size_t n = points.size();
  const std::size_t samples = std::min(n, kCentreSamples);
  double cx = 0.0;
  double cy = 0.0;
  for (std::size_t s = 0; s < samples; ++s) {
    const gkVector<2>& p = points[s * n / samples];
    cx += p.x();
    cy += p.y();
  }
  return gkVector<2>(cx / static_cast<double>(samples), cy / static_cast<double>(samples));
}

gkVector<2> vertexCentre(const std::vector<gkVector<2>>& points) {
  double cx = 0.0;
  double cy = 0.0;
  for (const gkVector<2>& p : points) {
    cx += p.x();
    cy += p.y();
  }
  const double n = static_cast<double>(points.size());
  return gkVector<2>(cx / n, cy / n);
}

namespace {

/// What one pass found: a step that turns back (or NaN, or not one turn in all), segments not
/// shown far enough apart, or clearance shown.
enum class Pass { kNotStar, kTooClose, kClear };

/// The pass behind starShapedKeepsClear. It bounds each segment's distance from the centre by
/// its line's distance; with toSegments, by the segment's own distance, which a radial spike
/// (whose line passes near the centre, its ends far from it) needs, at about half as much
/// again per vertex.
template <bool toSegments>
Pass starPass(const std::vector<gkVector<2>>& points, double cx, double cy, double gap,
              double gapPerMagnitude) {
  const std::size_t n = points.size();
  // Clockwise outlines are mirrored in y about the centre (an exact negation), so that every
  // wedge must turn counter-clockwise. The closing segment, from the last vertex to the first,
  // sets the way.
  const gkVector<2>& last = points[n - 1];
  double px = last.x() - cx;
  double py = last.y() - cy;
  const double firstCross = px * (points[0].y() - cy) - py * (points[0].x() - cx);
  if (!(firstCross > 0.0 || firstCross < 0.0)) {
    return Pass::kNotStar;
  }
  const double mirror = firstCross > 0.0 ? 1.0 : -1.0;
  py *= mirror;
  double pl1 = std::abs(px) + std::abs(py);
  double prevX = last.x();
  double prevY = last.y();

  // Lower bounds on every wedge's sine and on every segment's distance from the centre. Each
  // vertex checks that it meets them (a product and a comparison, no division); one that does
  // not lowers its bound to half its own value, so that a slowly shrinking sequence lowers it
  // only every time it halves. The bounds end within a factor 2 of the least values. The
  // products round, so a vertex meeting a bound may miss it by a few units in the last place,
  // which the factor 2 at the end covers with room to spare. Both start at infinity, which the
  // first vertex misses.
  double sine = std::numeric_limits<double>::infinity();
  double nearest = std::numeric_limits<double>::infinity();
  double farthest = 0.0;  // the largest taxicab length from the centre
  std::size_t turns = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const double vx = points[i].x();
    const double vy = points[i].y();
    const double ax = vx - cx;
    const double ay = mirror * (vy - cy);
    const double cross = px * ay - py * ax;
    if (!(cross > 0.0)) {
      return Pass::kNotStar;
    }
    const double l1 = std::abs(ax) + std::abs(ay);
    // The sine of the wedge is cross / (|a| |b|), at least cross over the taxicab lengths'
    // product; beyond a quarter turn the bound asks only that it be at most 1, which it is.
    const double sineBelow = pl1 * l1;
    if (!(cross >= sine * sineBelow)) {
      sine = 0.5 * (cross / sineBelow);
    }
    // The distance from the centre to the segment's line, cross / |step|, is at least cross
    // over the step's taxicab length, and the segment is no nearer than its line.
    const double stepL1 = std::abs(vx - prevX) + std::abs(vy - prevY);
    if constexpr (toSegments) {
      const double dx = vx - prevX;
      const double dy = mirror * (vy - prevY);
      // When the step leads away from the centre at the first end or towards it at the
      // second, the segment's nearest point is an end, no nearer than the nearer end. A sign
      // misjudged within rounding means an angle of a hair more than a quarter turn at that
      // end, where the two distances agree to far better than the margin taken. No branch on
      // the case: on a noisy outline whose steps are shorter than the noise, it changes from
      // step to step.
      const bool atEnd = (px * dx + py * dy >= 0.0) | (ax * dx + ay * dy <= 0.0);
      const double endBelow = static_cast<double>(atEnd) * kTaxicabToLength * std::min(pl1, l1);
      if (!((cross >= nearest * stepL1) | (endBelow >= nearest))) {
        nearest = 0.5 * std::max(cross / stepL1, endBelow);
      }
    } else if (!(cross >= nearest * stepL1)) {
      nearest = 0.5 * (cross / stepL1);
    }
    // A counter-clockwise step of less than a half turn that climbs from below the centre's
    // horizontal to on or above it crosses that line to the right of the centre: counting
    // those counts the turns.
    turns += (py < 0.0 && ay >= 0.0) ? 1 : 0;
    farthest = std::max(farthest, l1);
    px = ax;
    py = ay;
    pl1 = l1;
    prevX = vx;
    prevY = vy;
  }
  // No coordinate is larger in magnitude than the centre's largest plus the farthest taxicab
  // length, the latter rounded by at most a unit in its last place: this bound stands for the
  // largest coordinate. A coordinate beyond 1e100 (or infinite) fails here; a NaN coordinate
  // has failed a cross product's test already.
  const double largest = (std::max(std::abs(cx), std::abs(cy)) + farthest) * (1.0 + 0x1p-50);
  if (turns != 1 || !(largest <= 1e100)) {
    return Pass::kNotStar;
  }
  return sine >= kLeastSine && sine * nearest > 2.0 * (gap + gapPerMagnitude * largest)
             ? Pass::kClear
             : Pass::kTooClose;
}

}  // namespace

bool starShapedKeepsClear(const std::vector<gkVector<2>>& points, const gkVector<2>& centre,
                          double gap, double gapPerMagnitude, StarDistances distances) {
  if (points.size() < 3) {
    return false;
  }
  const auto bySegments = [&] {
    return starPass<true>(points, centre.x(), centre.y(), gap, gapPerMagnitude) == Pass::kClear;
  };
  if (distances == StarDistances::kSegments) {
    return bySegments();
  }
  const Pass byLines = starPass<false>(points, centre.x(), centre.y(), gap, gapPerMagnitude);
  return byLines == Pass::kClear || (byLines == Pass::kTooClose && bySegments());
}

}  // namespace gk::detail
