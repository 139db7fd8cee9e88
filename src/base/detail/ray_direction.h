#pragma once

#include <vector>

#include <gk/base/vector.h>

namespace gk::detail {

class ChainBounds;

/// The direction of a region's containment ray from pt, or false when pt is within
/// gkTolProximity of a vertex (such a point counts as inside: no ray can be aimed through it).
///
/// The ray is aimed through the first gap wider than pi/n between the vertex directions
/// (angle() normalised to [0, 2 pi)) in ascending order, NaN last, the last gap wrapping round
/// to the first: along the bisector of that gap, so that it rarely passes through a vertex,
/// where crossings double up; (1, 0) when no gap is that wide.
///
/// That gap nearly always comes among the first few directions, so only those get an angle:
/// a cheap key that orders directions as their angles do picks the smallest few, and the gaps
/// between them are trusted only below a bound that no direction left out can reach. When
/// that does not settle it, more and then all directions are ordered by key, and only where
/// neighbouring keys jump by nearly the gap width are angles taken. Either way the direction
/// is, bit for bit, what the full sort gives.
///
/// chains, when given, are bounds on runs of consecutive segments of the closed walk through
/// vertices: the on-vertex test and the smallest directions are then found by a search of
/// those runs instead of a pass over every vertex, with the same answer.
bool containmentRayDirection(const std::vector<gkVector<2>>& vertices, const gkVector<2>& pt,
                             gkVector<2>& direction, const ChainBounds* chains = nullptr);

}  // namespace gk::detail
