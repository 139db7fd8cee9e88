#include "base/detail/ray_direction.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include <gk/base/angle.h>
#include <gk/base/tolerances.h>

#include "base/detail/total_order.h"

namespace gk::detail {

namespace {

/// pi as the containment ray's gap threshold uses it.
constexpr double kPi = 3.141592653589793;

/// A squared length above this has a square root above gkTolProximity (sqrt is correctly
/// rounded, hence monotone), so only shorter vectors need their length taken.
constexpr double kOnVertexSquared = 1e-11;

/// How far past the chosen key the candidates reach, in key units. It dwarfs the rounding of a
/// key (under 1e-15), so every direction left out is known to lie beyond the bound below.
constexpr double kKeyMargin = 1e-9;

/// A cheap stand-in for the angle of v normalised to [0, 2 pi): the quadrant plus a fraction
/// that grows with the angle inside it (the "diamond angle"), in [0, 4). Mathematically it
/// orders directions exactly as the angle does. A direction a hair below the +x axis gets 0,
/// because its normalised angle may round to one full turn, which norm() makes 0. NaN when a
/// coordinate is NaN or both are infinite: then the caller sorts every angle.
double diamondKey(const gkVector<2>& v) {
  const double x = v.x();
  const double y = v.y();
  if (x > 0 && y >= 0) {
    return y / (x + y);
  }
  if (x <= 0 && y > 0) {
    return 1.0 + -x / (y - x);
  }
  if (x < 0 && y <= 0) {
    return 2.0 + -y / (-x - y);
  }
  if (x >= 0 && y < 0) {
    return -y <= x * 1e-15 ? 0.0 : 3.0 + x / (x - y);
  }
  return std::numeric_limits<double>::quiet_NaN();
}

/// The angle (within about 1e-15) of the direction whose diamond key is key.
double angleOfKey(double key) {
  const double quadrant = std::min(3.0, std::floor(key));
  const double t = key - quadrant;
  return quadrant * (kPi / 2.0) + std::atan2(t, 1.0 - t);
}

/// The containment ray's direction from the ascending order of every vertex direction (NaN
/// last). Only a growing prefix of the order is sorted: a prefix holds the same values as the
/// fully sorted list does there, so the first wide gap is the same.
gkVector<2> directionFromAllAngles(const std::vector<gkVector<2>>& vertices, const gkVector<2>& pt,
                                   double threshold) {
  const std::size_t n = vertices.size();
  std::vector<double> angles;
  angles.reserve(n);
  for (const gkVector<2>& vertex : vertices) {
    angles.push_back((vertex - pt).angle().norm().toDouble());
  }
  const auto nanLast = [](double a, double b) { return gk::detail::lessNaNLast(a, b); };
  std::size_t checked = 0;  // gaps (i, i + 1) for i < checked are known to be narrow
  for (std::size_t prefix = std::min<std::size_t>(n, 16);; prefix = std::min(n, prefix * 8)) {
    std::partial_sort(angles.begin(), angles.begin() + static_cast<std::ptrdiff_t>(prefix),
                      angles.end(), nanLast);
    // The gap after the last sorted direction is known only once everything is sorted; the
    // gap after the very last direction wraps round to the first.
    const std::size_t last = prefix == n ? n : prefix - 1;
    for (std::size_t i = checked; i < last; ++i) {
      const std::size_t j = i + 1 == n ? 0 : i + 1;
      const double gap = gkRadian(angles[j] - angles[i]).norm().toDouble();
      if (gap > threshold) {
        return gkVector<2>(1.0, gkRadian(angles[i] + gap / 2.0));
      }
    }
    checked = last;
    if (prefix == n) {
      return gkVector<2>(1.0, 0.0);
    }
  }
}

/// The m-th smallest of keys (1 <= m <= keys.size(), no NaN). The first round asks for the
/// 16th, found in one pass through a small sorted window; later rounds are rare.
double mthSmallest(const std::vector<double>& keys, std::size_t m) {
  constexpr std::size_t kWindow = 16;
  if (m > kWindow) {
    std::vector<double> copy(keys);
    std::nth_element(copy.begin(), copy.begin() + static_cast<std::ptrdiff_t>(m - 1), copy.end());
    return copy[m - 1];
  }
  std::array<double, kWindow> window{};
  std::size_t filled = 0;
  for (const double k : keys) {
    if (filled == m && !(k < window[m - 1])) {
      continue;
    }
    std::size_t at = filled < m ? filled++ : m - 1;
    for (; at > 0 && k < window[at - 1]; --at) {
      window[at] = window[at - 1];
    }
    window[at] = k;
  }
  return window[m - 1];
}

/// The containment ray's direction found from the few smallest directions only. The ray runs
/// through the first gap wider than threshold in the ascending order of the normalised vertex
/// directions; that gap nearly always comes among the first few. The m smallest diamond keys
/// (m growing) pick candidates; their true angles, sorted, are the start of the full order for
/// every value below a bound that no direction left out can reach. Only gaps between two such
/// values are trusted. Returns false when that is not enough (the caller sorts everything),
/// so the answer is always the full sort's.
bool directionFromSmallestAngles(const std::vector<gkVector<2>>& vertices, const gkVector<2>& pt,
                                 const std::vector<double>& keys, double threshold,
                                 gkVector<2>& direction) {
  std::vector<double> angles;
  for (std::size_t m = 16; m < keys.size(); m *= 8) {
    const double k = mthSmallest(keys, m);
    const double reach = k + kKeyMargin;
    // Every direction whose key is above reach has an angle above this: the in-quadrant angle
    // grows at least as fast as the key, and the roundings of key and angle are under 1e-14.
    const double bound = angleOfKey(k) + kKeyMargin / 2.0;
    angles.clear();
    for (std::size_t i = 0; i < keys.size(); ++i) {
      if (keys[i] <= reach) {
        angles.push_back((vertices[i] - pt).angle().norm().toDouble());
      }
    }
    std::sort(angles.begin(), angles.end());
    for (std::size_t i = 0; i + 1 < angles.size() && angles[i + 1] < bound; ++i) {
      const double gap = gkRadian(angles[i + 1] - angles[i]).norm().toDouble();
      if (gap > threshold) {
        direction = gkVector<2>(1.0, gkRadian(angles[i] + gap / 2.0));
        return true;
      }
    }
  }
  return false;
}

}  // namespace

bool containmentRayDirection(const std::vector<gkVector<2>>& vertices, const gkVector<2>& pt,
                             gkVector<2>& direction) {
  const double threshold = kPi / static_cast<double>(vertices.size());
  std::vector<double> keys;
  keys.reserve(vertices.size());
  bool keysUsable = true;
  for (const gkVector<2>& vertex : vertices) {
    const gkVector<2> v = vertex - pt;
    // NaN fails the first comparison and takes the exact test.
    if (!(v.x() * v.x() + v.y() * v.y() > kOnVertexSquared) && v.len() <= gkTolProximity) {
      return false;
    }
    keys.push_back(diamondKey(v));
    keysUsable = keysUsable && !std::isnan(keys.back());
  }
  direction = gkVector<2>(1.0, 0.0);
  if (!keysUsable || !directionFromSmallestAngles(vertices, pt, keys, threshold, direction)) {
    direction = directionFromAllAngles(vertices, pt, threshold);
  }
  return true;
}

}  // namespace gk::detail
