#pragma once

#include <gk/base/angle.h>
#include <gk/base/circle.h>
#include <gk/base/point.h>
#include <gk/base/vector.h>
#include <gk/gk_export.h>

/// An ellipse: centre, two semi-axes (radii) and the rotation of the first radius' axis from
/// the x axis. The default ellipse is the point at the origin (radii 0, rotation 0).
class GK_EXPORT gkEllipse {
 public:
  /// The geometry record an ellipse is built from.
  struct gkEllipseGeom {
    gkPoint center;
    gkVector<2> radii;
    gkRadian rotation;
    /// When set, the radii are ordered so that radii.x() >= radii.y(), turning the rotation a
    /// quarter turn when they are swapped.
    bool majorFirst = false;
    /// When set, the rotation is brought into [0, pi) (an ellipse is symmetric under a half turn).
    bool normalizeRotation = false;
  };

  gkEllipse() = default;
  /// The circle as an ellipse with equal radii and rotation 0.
  explicit gkEllipse(const gkCircle& circle);
  /// Applies the record's flags, then stores centre, radii and rotation.
  explicit gkEllipse(const gkEllipseGeom& geom);

  const gkVector<2>& center() const { return center_; }
  const gkVector<2>& radii() const { return radii_; }
  const gkRadian& rotation() const { return rotation_; }

  bool operator==(const gkEllipse& o) const {
    return center_ == o.center_ && radii_ == o.radii_ && rotation_ == o.rotation_;
  }
  bool operator!=(const gkEllipse& o) const { return !(*this == o); }

 private:
  gkVector<2> center_;
  gkVector<2> radii_;
  gkRadian rotation_;
};
