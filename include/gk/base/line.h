#pragma once

#include <gk/base/vector.h>
#include <gk/gk_export.h>

/// An infinite line, kept as a point on it and a direction (not normalised).
///
/// A line through two equal points is degenerate: it has no direction and stands for that one
/// point. Every operation gives a defined, finite answer for it, so no NaN can leak from it:
/// distToPoint is the distance to the point, proj is the point, isParallel is true (a point is
/// parallel to every line) and intersect returns the point. The default line is the degenerate
/// line at the origin.
class GK_EXPORT gkLine {
 public:
  gkLine() = default;
  /// The line through p1 and p2, directed from p1 to p2.
  gkLine(const gkVector<2>& p1, const gkVector<2>& p2) : point_(p1), direction_(p2 - p1) {}

  const gkVector<2>& point() const { return point_; }
  const gkVector<2>& direction() const { return direction_; }
  bool isDegenerate() const { return direction_.x() == 0.0 && direction_.y() == 0.0; }

  /// True when the sine of the angle between the two directions is at most gkTolParallelSine,
  /// measured relative to both direction lengths, so the answer does not depend on scale.
  /// A degenerate line is parallel to every line.
  bool isParallel(const gkLine& other) const;

  /// The crossing point of two lines. For parallel lines (by isParallel), which have no single
  /// crossing, it returns this line's point().
  gkVector<2> intersect(const gkLine& other) const;

  /// The foot of the perpendicular from pt.
  gkVector<2> proj(const gkVector<2>& pt) const;

  /// Distance from pt to the infinite line.
  double distToPoint(const gkVector<2>& pt) const;

 private:
  gkVector<2> point_;
  gkVector<2> direction_;
};
