#pragma once

#include <gk/base/matrix.h>
#include <gk/base/vector.h>
#include <gk/gk_export.h>

/// The moment record of a plane figure: signed area, centre of mass, and the central second
/// moments of area, not divided by the area: (0,0) = integral of (x - cx)^2 dA, (0,1) = (1,0) =
/// integral of (x - cx)(y - cy) dA, (1,1) = integral of (y - cy)^2 dA. The area is positive for a
/// counter-clockwise outline (y up) and negative for a clockwise one; the matrix is always the
/// moments of the point set itself, whatever the sign of the area.
class GK_EXPORT gk_InertiaData {
 public:
  /// The empty record (0, (0, 0), zero matrix) that sums start from.
  gk_InertiaData() = default;
  gk_InertiaData(double area, const gkVector<2>& centerOfMass, const gkMatrix<2>& inertiaMatrix)
      : area_(area), centerOfMass_(centerOfMass), inertiaMatrix_(inertiaMatrix) {}

  double area() const { return area_; }
  const gkVector<2>& centerOfMass() const { return centerOfMass_; }
  const gkMatrix<2>& inertiaMatrix() const { return inertiaMatrix_; }

  /// The record of the union of two pieces, by the parallel-axis rule. A record of area exactly
  /// 0 leaves the other unchanged. Pieces of the same sign add as plain moments (weights taken
  /// absolute). Pieces of opposite signs keep their signed weights, and the piece with the
  /// smaller signed area has its own matrix subtracted: so a negative piece (a hole, or a
  /// clockwise triangle) is taken away from a positive one.
  gk_InertiaData operator+(const gk_InertiaData& other) const;

 private:
  double area_ = 0.0;
  gkVector<2> centerOfMass_;
  gkMatrix<2> inertiaMatrix_;
};
