#pragma once

#include <gk/base/angle.h>
#include <gk/base/vector.h>

/// An edge point as an edge detector reports it: a position, a 16-bit gradient magnitude and a
/// gradient direction in 256ths of a turn.
class gkEdgelet {
 public:
  gkEdgelet() = default;
  gkEdgelet(const gkVector<2>& position, unsigned short magnitude, const gkAngle8& angle)
      : position_(position), magnitude_(magnitude), angle_(angle) {}

  const gkVector<2>& position() const { return position_; }
  unsigned short magnitude() const { return magnitude_; }
  const gkAngle8& angle() const { return angle_; }

  bool operator==(const gkEdgelet& o) const {
    return position_ == o.position_ && magnitude_ == o.magnitude_ && angle_ == o.angle_;
  }
  bool operator!=(const gkEdgelet& o) const { return !(*this == o); }

 private:
  gkVector<2> position_;
  unsigned short magnitude_ = 0;
  gkAngle8 angle_;
};
