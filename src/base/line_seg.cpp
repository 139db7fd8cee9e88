#include <gk/base/line_seg.h>

double gkLineSeg::distToPoint(const gkVector<2>& pt) const {
  const gkVector<2> d = p2_ - p1_;
  const double dd = d.dot(d);
  if (dd == 0.0) {
    return pt.distance(p1_);
  }
  const double t = (pt - p1_).dot(d) / dd;
  // Beyond an end, measure to the end point itself so the result is exactly that distance
  // (a projection would add rounding). `!(t > 0)` also sends a NaN parameter to p1.
  if (!(t > 0.0)) {
    return pt.distance(p1_);
  }
  if (t >= 1.0) {
    return pt.distance(p2_);
  }
  return pt.distance(p1_ + d * t);
}
