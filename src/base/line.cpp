#include <gk/base/line.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include <gk/base/tolerances.h>

namespace {

/// d scaled by a power of two so that its larger coordinate lies in [0.5, 1). Scaling by a power
/// of two is exact, so every ratio below comes out bit for bit as from d itself, but squares and
/// cross products of the scaled direction can neither overflow nor underflow, whatever the
/// extent of the line (a direction of length 1e-170 squares to 0, one of length 1e160 to inf).
///
/// frexp and ldexp are library calls and cost more than the rest of a segment test, so for
/// the usual magnitudes the exponent is read from m's bits and the scale is one product with
/// 2^-e: a product with a power of two is correctly rounded as ldexp is, so the two agree bit
/// for bit (also where a small coordinate becomes subnormal). A subnormal m, or one whose 2^-e
/// would itself be subnormal, takes the library calls.
gkVector<2> scaledDirection(const gkVector<2>& d) {
  const double m = std::max(std::fabs(d.x()), std::fabs(d.y()));
  if (m == 0.0 || !std::isfinite(m)) {
    return d;
  }
  std::uint64_t bits = 0;
  std::memcpy(&bits, &m, sizeof bits);
  const int biased = static_cast<int>(bits >> 52);  // m is positive: no sign bit
  // m = 0.5 x 2^e .. 2^e with e = biased - 1022 (frexp's exponent); 2^-e is a normal double
  // for e <= 1022.
  if (biased >= 1 && biased <= 2044) {
    const int e = biased - 1022;
    const std::uint64_t scaleBits = static_cast<std::uint64_t>(1023 - e) << 52;
    double scale = 0.0;
    std::memcpy(&scale, &scaleBits, sizeof scale);
    return gkVector<2>(d.x() * scale, d.y() * scale);
  }
  int e = 0;
  std::frexp(m, &e);
  return gkVector<2>(std::ldexp(d.x(), -e), std::ldexp(d.y(), -e));
}

/// Whether two scaled directions (of non-degenerate lines) are parallel. |d1 x d2| = |d1| |d2|
/// sin(angle): compare the sine, not the raw cross product, so that the answer is the same at
/// every scale. Written without division, on directions brought to unit order of magnitude, so
/// huge or tiny lengths cannot overflow or underflow.
///
/// Most pairs are far from parallel, and that shows without the two square roots: a length is
/// at most the sum of the coordinates' magnitudes, and the few roundings of either side move it
/// by far less than the 1e-12 of slack, so a cross product above the bound so built is above
/// the exact test's too, and the answer is the same.
bool scaledParallel(const gkVector<2>& d1, const gkVector<2>& d2) {
  const double cross = std::fabs(d1.cross(d2));
  const double taxicab1 = std::fabs(d1.x()) + std::fabs(d1.y());
  const double taxicab2 = std::fabs(d2.x()) + std::fabs(d2.y());
  if (cross > gkTolParallelSine * taxicab1 * taxicab2 * (1.0 + 1e-12)) {
    return false;
  }
  return cross <= gkTolParallelSine * d1.len() * d2.len();
}

}  // namespace

bool gkLine::isParallel(const gkLine& other) const {
  if (isDegenerate() || other.isDegenerate()) {
    return true;
  }
  return scaledParallel(scaledDirection(direction_), scaledDirection(other.direction_));
}

gkVector<2> gkLine::intersect(const gkLine& other) const {
  if (isDegenerate() || other.isDegenerate()) {
    return point_;
  }
  // The parallel test and the crossing share the scaled directions.
  const gkVector<2> d = scaledDirection(direction_);
  const gkVector<2> e = scaledDirection(other.direction_);
  if (scaledParallel(d, e)) {
    return point_;
  }
  // point_ + t * d lies on the other line where (q - p) x e == t * (d x e). With d and e scaled
  // by powers of two, t is in units of the scaled d, and the product below is that of d itself.
  const double t = (other.point_ - point_).cross(e) / d.cross(e);
  return point_ + d * t;
}

gkVector<2> gkLine::proj(const gkVector<2>& pt) const {
  if (isDegenerate()) {
    return point_;
  }
  const gkVector<2> d = scaledDirection(direction_);
  const double t = (pt - point_).dot(d) / d.dot(d);
  return point_ + d * t;
}

double gkLine::distToPoint(const gkVector<2>& pt) const {
  if (isDegenerate()) {
    return pt.distance(point_);
  }
  const gkVector<2> d = scaledDirection(direction_);
  return std::fabs(d.cross(pt - point_)) / d.len();
}
