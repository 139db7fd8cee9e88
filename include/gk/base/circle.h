#pragma once

#include <gk/base/vector.h>

/// A circle: centre and radius.
class gkCircle {
 public:
  gkCircle() = default;
  gkCircle(const gkVector<2>& center, double radius) : center_(center), radius_(radius) {}

  const gkVector<2>& center() const { return center_; }
  double radius() const { return radius_; }

  bool operator==(const gkCircle& o) const { return center_ == o.center_ && radius_ == o.radius_; }
  bool operator!=(const gkCircle& o) const { return !(*this == o); }

 private:
  gkVector<2> center_;
  double radius_ = 0.0;
};
