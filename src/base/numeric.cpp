#include <gk/base/numeric.h>

#include <cmath>
#include <limits>

#include <gk/base/vector.h>
#include <gk/base/xform.h>

bool gwRealEq(double a, double b, double eps) {
  // The a == b test first makes equal infinities equal (their difference is NaN).
  return a == b || std::fabs(a - b) <= eps;
}

bool gwRealEq(const gkVector<2>& a, const gkVector<2>& b, double eps) {
  return gwRealEq(a.x(), b.x(), eps) && gwRealEq(a.y(), b.y(), eps);
}

bool gwRealEq(const gkXform<2>& a, const gkXform<2>& b, double eps) {
  for (int r = 0; r < 2; ++r) {
    for (int c = 0; c < 2; ++c) {
      if (!gwRealEq(a.matrix().element(r, c), b.matrix().element(r, c), eps)) {
        return false;
      }
    }
  }
  return gwRealEq(a.trans(), b.trans(), eps);
}

long gwIFloor(double v) {
  if (std::isnan(v)) {
    return 0;
  }
  const double f = std::floor(v);
  // long's range is [-2^63, 2^63); both ends are exact doubles, so these tests are exact.
  constexpr double kLow = static_cast<double>(std::numeric_limits<long>::min());
  if (f < kLow) {
    return std::numeric_limits<long>::min();
  }
  if (f >= -kLow) {
    return std::numeric_limits<long>::max();
  }
  return static_cast<long>(f);
}
