#pragma once

#include <gk/gk_export.h>

template <int N>
class gkVector;
template <int N>
class gkXform;

/// True when |a - b| <= eps, and always when a == b (so equal infinities compare equal).
/// A NaN never compares equal, not even to itself.
GK_EXPORT bool gwRealEq(double a, double b, double eps);

/// Coordinate-wise gwRealEq: true when both coordinates are equal within eps.
GK_EXPORT bool gwRealEq(const gkVector<2>& a, const gkVector<2>& b, double eps);

/// Field-wise gwRealEq over the four matrix elements and the two translation components.
GK_EXPORT bool gwRealEq(const gkXform<2>& a, const gkXform<2>& b, double eps);

/// The largest integer not above v. Values beyond the range of long saturate to the nearest end
/// of that range; NaN gives 0. Never undefined behaviour.
GK_EXPORT long gwIFloor(double v);
