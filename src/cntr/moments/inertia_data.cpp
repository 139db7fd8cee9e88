#include <gk/cntr/moments/inertia_data.h>

#include <cmath>

namespace {

/// Below this the combined area is treated as zero and the combined centre is the origin.
constexpr double kZeroArea = 1e-16;

}  // namespace

gk_InertiaData gk_InertiaData::operator+(const gk_InertiaData& other) const {
  const gk_InertiaData& a = *this;
  const gk_InertiaData& b = other;
  if (a.area_ == 0.0) {
    return b;
  }
  if (b.area_ == 0.0) {
    return a;
  }
  const double area = a.area_ + b.area_;
  gkVector<2> c;
  if (std::fabs(area) > kZeroArea) {
    c = (b.centerOfMass_ * b.area_ + a.centerOfMass_ * a.area_) / area;
  }
  const gkVector<2> da = c - a.centerOfMass_;
  const gkVector<2> db = c - b.centerOfMass_;

  double wa = a.area_;
  double wb = b.area_;
  double sa = 1.0;
  double sb = 1.0;
  if (wa * wb > 0.0) {
    wa = std::fabs(wa);
    wb = std::fabs(wb);
  }
  if (!(wa * wb >= 0.0)) {
    // Opposite signs: the piece with the smaller signed area is taken away. The signed weights
    // stay, so the parallel-axis terms of the negative piece are subtracted too.
    if (a.area_ > b.area_) {
      sb = -1.0;
    } else {
      sa = -1.0;
    }
  }
  const gkMatrix<2>& ma = a.inertiaMatrix_;
  const gkMatrix<2>& mb = b.inertiaMatrix_;
  const double m00 =
      sa * ma.element(0, 0) + wa * da.x() * da.x() + sb * mb.element(0, 0) + wb * db.x() * db.x();
  const double m11 =
      sa * ma.element(1, 1) + wa * da.y() * da.y() + sb * mb.element(1, 1) + wb * db.y() * db.y();
  const double m01 =
      sa * ma.element(0, 1) + wa * da.x() * da.y() + sb * mb.element(0, 1) + wb * db.x() * db.y();
  return gk_InertiaData(area, c, gkMatrix<2>(m00, m01, m01, m11));
}
