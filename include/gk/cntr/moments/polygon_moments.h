#pragma once

#include <vector>

#include <gk/base/edgelet.h>
#include <gk/base/vector.h>
#include <gk/cntr/moments/inertia_data.h>
#include <gk/gk_export.h>

// Moments of a polygon given as a vertex list taken as closed: every edge loop starts with the
// pair (last vertex, first vertex), then (first, second), and so on.

/// The absolute area of the polygon. No count guard: fewer than 3 points give 0 (so does none).
GK_EXPORT double gw_Area(const std::vector<gkVector<2>>& points);
/// The absolute area of the polygon of the edgelets' positions; 0 below 3 edgelets.
GK_EXPORT double gw_Area(const std::vector<gkEdgelet>& edgelets);

namespace gyContour {
/// The polygon's centroid, as the signed-area-weighted centroids of the triangles (origin,
/// previous, current). Edges whose cross product is within 1e-15 of 0 add nothing; when the
/// weights sum to within 1e-6 of 0 (a degenerate polygon) the result is (0, 0), as it is for 2
/// points or fewer. Each triangle's centroid is the crossing of two of its medians.
GK_EXPORT gkVector<2> centerOfMass(const std::vector<gkVector<2>>& points);
}  // namespace gyContour

/// gyContour::centerOfMass.
GK_EXPORT gkVector<2> gw_CenterOfMass(const std::vector<gkVector<2>>& points);
/// gyContour::centerOfMass of the edgelets' positions.
GK_EXPORT gkVector<2> gw_CenterOfMass(const std::vector<gkEdgelet>& edgelets);

/// The full moment record of the polygon: the triangles (centroid, previous, current) summed in
/// three passes ordered for accuracy (first those larger than the mean, then those clearly
/// non-degenerate, then the rest). Fewer than 3 points give the empty record.
GK_EXPORT gk_InertiaData gw_InertiaDataPolygon(const std::vector<gkVector<2>>& points);

/// The population standard deviation (divided by n, not n - 1). An empty list gives 0.
GK_EXPORT double gw_StdDev(const std::vector<double>& values);
