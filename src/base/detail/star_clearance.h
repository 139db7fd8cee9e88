#pragma once

#include <vector>

#include <gk/base/vector.h>

namespace gk::detail {

/// The mean of up to 64 of the points, evenly spaced along the list: a centre for
/// starShapedKeepsClear that costs nothing beside its pass. points must not be empty.
gkVector<2> sampledCentre(const std::vector<gkVector<2>>& points);

/// The mean of every point: a centre that lands inside the kernel of outlines (dense stars)
/// whose kernel is too small for the sampled mean to find. points must not be empty.
gkVector<2> vertexCentre(const std::vector<gkVector<2>>& points);

/// How starShapedKeepsClear bounds each segment's distance from the centre: by its line's
/// distance first, and by the segment's own only when that is too small (smooth outlines: the
/// cheaper pass usually answers); or by the segment's own at once (dense stars, whose radial
/// spikes have lines through the centre's neighbourhood: the cheaper pass would be wasted).
enum class StarDistances { kLinesFirst, kSegments };

/// True only when the closed polygon through points is star-shaped about centre and every two
/// of its segments that share no vertex lie more than gap + gapPerMagnitude m apart, m being
/// the largest magnitude of a coordinate. False means "not shown": the outline is not
/// star-shaped about that centre, a decision on the way is too close to call, a coordinate is
/// not finite or beyond 1e100, or there are fewer than three vertices. gap must be at least
/// 1e-100.
///
/// The open walk through the same points has no pair of segments sharing no vertex that the
/// closed polygon lacks, so a true answer holds for it too.
///
/// One pass, no allocation: a cheap first test where the clearance sweep would take
/// O(n log n). Seen from the centre, each segment sweeps a wedge; when every wedge turns the
/// same way by less than a half turn and together they turn exactly once, the wedges tile the
/// plane around the centre, and two segments sharing no vertex lie in wedges with a whole
/// wedge between them on each side. Two points of such segments are then at least
/// rho sin(min(gamma, pi/2)) apart, rho being the least distance from the centre to a segment
/// and gamma the narrowest wedge.
bool starShapedKeepsClear(const std::vector<gkVector<2>>& points, const gkVector<2>& centre,
                          double gap, double gapPerMagnitude,
                          StarDistances distances = StarDistances::kLinesFirst);

}  // namespace gk::detail
