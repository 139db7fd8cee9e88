#pragma once

#include <vector>

#include <gk/base/vector.h>
#include <gk/gk_export.h>

/// The vertices of the convex hull of points, by Andrew's monotone chain: O(n log n) at worst,
/// O(n) expected for large inputs (the points are sorted through buckets by x first).
///
/// - Orientation: counter-clockwise in a y-up frame (positive signed area).
/// - Start: the vertex with the smallest x, and among those the smallest y.
/// - Duplicates appear once; points on a hull edge (collinear with its ends) are left out, so
///   every returned vertex is a strict corner.
/// - Degenerate inputs: no point gives an empty hull; all points equal give that one point; all
///   points on one line give its two extreme points, the start first.
/// - Points with a NaN or infinite coordinate are ignored (they have no place in an order).
/// The orientation test is plain floating point: a point within rounding of a hull edge may be
/// kept or dropped.
GK_EXPORT void gwConvexHull(const std::vector<gkVector<2>>& points, std::vector<gkVector<2>>& hull);
