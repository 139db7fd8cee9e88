#pragma once

#include <gk/base/matrix.h>
#include <gk/base/vector.h>

namespace gk::detail {

/// The moments a region or region set keeps: area, centre of mass and inertia matrix, one entry
/// each per value of considerHoles (index 0: false, 1: true), each valid only while its flag is
/// set. The shape's cache cleaning calls clear(); a copy of the shape copies the entries.
struct MomentCache {
  bool areaValid[2] = {false, false};
  double area[2] = {0.0, 0.0};
  bool centerOfMassValid[2] = {false, false};
  gkVector<2> centerOfMass[2];
  bool inertiaValid[2] = {false, false};
  gkMatrix<2> inertia[2];

  /// Invalidates every entry (areas are reset to 0 as well).
  void clear() { *this = MomentCache(); }
};

}  // namespace gk::detail
