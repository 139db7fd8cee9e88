#pragma once

#include <cstddef>

#include <gk/base/angle.h>
#include <gk/base/edgelet.h>
#include <gk/base/vector.h>

/// What the datum-carrying shapes need to know about their per-vertex datum T: how to make a
/// datum at a position (when points are set and data must follow) and where a datum lies (when
/// data are set and points must follow). Specialised for each datum type the library
/// instantiates.
template <typename T>
struct gkDatumTraits;

/// Edgelets: a datum made from a position carries no measurement, so it has magnitude 0 and
/// angle 0; only the position survives a change of points.
template <>
struct gkDatumTraits<gkEdgelet> {
  /// The datum's name in stored type names.
  static constexpr const char* kName = "gkEdgelet";
  /// Bytes one stored datum takes: position, 16-bit magnitude, angle byte.
  static constexpr std::size_t kStoredBytes = 19;
  static gkEdgelet fromPosition(const gkVector<2>& position) {
    return gkEdgelet(position, 0, gkAngle8(static_cast<unsigned char>(0)));
  }
  static const gkVector<2>& position(const gkEdgelet& datum) { return datum.position(); }
};
