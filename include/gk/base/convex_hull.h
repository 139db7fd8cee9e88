#pragma once

#include <vector>

#include <gk/base/vector.h>
#include <gk/gk_export.h>

/// The vertices of the convex hull of points, by Andrew's monotone chain with exact turns:
/// O(n log n) at worst, about O(n) on outlines and clouds (points certified inside the hull of
/// a sample are dropped first, and large inputs are sorted through buckets by x).
///
/// - Orientation: counter-clockwise in a y-up frame (positive signed area).
/// - Start: the vertex with the smallest x, and among those the smallest y.
/// - Duplicates appear once; points on a hull edge (collinear with its ends) are left out, so
///   every returned vertex is a strict corner.
/// - Degenerate inputs: no point gives an empty hull; all points equal give that one point; all
///   points on one line give its two extreme points, the start first.
/// - Points with a NaN or infinite coordinate are ignored (they have no place in an order).
/// Every turn is decided exactly, at any finite magnitude (subnormal to the largest double), so
/// the result is exactly the strict corners of the points' hull: a point one unit in the last
/// place outside an edge is a corner, one on the edge is not.
GK_EXPORT void gwConvexHull(const std::vector<gkVector<2>>& points, std::vector<gkVector<2>>& hull);
