#include <gk/base/ellipse.h>

#include <cmath>

namespace {
constexpr double kPi = 3.14159265358979323846;
}  // namespace

gkEllipse::gkEllipse(const gkCircle& circle)
    : center_(circle.center()), radii_(circle.radius(), circle.radius()) {}

gkEllipse::gkEllipse(const gkEllipseGeom& geom)
    : center_(geom.center), radii_(geom.radii), rotation_(geom.rotation) {
  if (geom.majorFirst && radii_.y() > radii_.x()) {
    radii_ = gkVector<2>(radii_.y(), radii_.x());
    rotation_ = rotation_ + gkRadian(kPi / 2.0);
  }
  if (geom.normalizeRotation && std::isfinite(rotation_.toDouble())) {
    double r = std::fmod(rotation_.toDouble(), kPi);
    if (r < 0.0) {
      r += kPi;
    }
    rotation_ = gkRadian(r >= kPi ? 0.0 : r);
  }
}
