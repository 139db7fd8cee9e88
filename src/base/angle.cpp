#include <gk/base/angle.h>

#include <cmath>

#include "base/detail/total_order.h"

namespace {
constexpr double kPi = 3.14159265358979323846;
constexpr double kTwoPi = 2.0 * kPi;
}  // namespace

gkRadian::gkRadian(const gkDegree& degrees) : value_(degrees.toDouble() * (kPi / 180.0)) {}

gkRadian::gkRadian(const gkAngle8& angle) : value_(angle.value() * (kTwoPi / 256.0)) {}

gkRadian gkRadian::norm() const {
  if (!std::isfinite(value_)) {
    return gkRadian(std::nan(""));
  }
  double r = std::fmod(value_, kTwoPi);
  if (r < 0.0) {
    r += kTwoPi;
  }
  // A tiny negative remainder plus 2*pi can round up to 2*pi itself, which is outside the range;
  // that angle is one full turn, i.e. 0.
  // A remainder of -0.0 is the same angle as 0; give the canonical +0.0.
  if (r >= kTwoPi || r == 0.0) {
    r = 0.0;
  }
  return gkRadian(r);
}

bool gkRadian::operator<(const gkRadian& o) const {
  return gk::detail::lessNaNLast(value_, o.value_);
}

gkDegree::gkDegree(const gkRadian& radians) : value_(radians.toDouble() * (180.0 / kPi)) {}

gkDegree::gkDegree(const gkAngle8& angle) : value_(angle.value() * (360.0 / 256.0)) {}

gkAngle8::gkAngle8(const gkDegree& degrees) {
  const double steps = degrees.toDouble() * (256.0 / 360.0);
  if (!std::isfinite(steps)) {
    value_ = 0;
    return;
  }
  // Wrap before rounding so the conversion to an integer is always in range.
  double wrapped = std::fmod(std::round(std::fmod(steps, 256.0)), 256.0);
  if (wrapped < 0.0) {
    wrapped += 256.0;
  }
  value_ = static_cast<unsigned char>(static_cast<int>(wrapped) & 0xff);
}

gkAngle8::gkAngle8(const gkRadian& radians) : gkAngle8(gkDegree(radians)) {}
