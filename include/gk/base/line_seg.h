#pragma once

#include <gk/base/line.h>
#include <gk/base/vector.h>
#include <gk/gk_export.h>

/// A closed segment from p1() to p2(). The default segment is the zero-length one at the origin.
class GK_EXPORT gkLineSeg {
 public:
  gkLineSeg() = default;
  gkLineSeg(const gkVector<2>& p1, const gkVector<2>& p2) : p1_(p1), p2_(p2) {}

  const gkVector<2>& p1() const { return p1_; }
  const gkVector<2>& p2() const { return p2_; }

  /// The infinite line through the segment, directed from p1 to p2.
  gkLine line() const { return gkLine(p1_, p2_); }
  double length() const { return p1_.distance(p2_); }

  /// Distance from pt to the closed segment. When the foot of the perpendicular falls on or
  /// beyond an end, the distance to that end point is returned exactly (computed from the end
  /// point itself, not from a projection). A zero-length segment is its point.
  double distToPoint(const gkVector<2>& pt) const;

  bool operator==(const gkLineSeg& o) const { return p1_ == o.p1_ && p2_ == o.p2_; }
  bool operator!=(const gkLineSeg& o) const { return !(*this == o); }

 private:
  gkVector<2> p1_;
  gkVector<2> p2_;
};
