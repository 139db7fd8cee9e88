#pragma once

#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

#include <gk/base/vector.h>

namespace gk::detail {

inline constexpr std::size_t kNoSegment = std::numeric_limits<std::size_t>::max();

/// True only when every two segments of the walk through points (closed or open, numbered as
/// forEachSegment numbers them) that share no vertex lie more than reach apart. False means
/// "not shown", not "too close": the answer is false whenever a floating-point decision on the
/// way is too close to call, a coordinate is not finite or beyond 1e100, two vertices (even
/// consecutive ones) lie within 2 reach of each other, or two consecutive segments fold back
/// onto each other. Callers use it to skip an exact quadratic search that could only find pairs
/// within reach, and fall back to that search on false.
///
/// O(n log n): two plane sweeps, one across x and one across y, over the segments ordered
/// bottom to top (Shamos and Hoey's crossing sweep, which checks each pair that becomes
/// adjacent in that order), each vertex also measured against its nearest non-incident
/// segments above and below. A segment no steeper than 45 degrees within reach of a vertex is
/// within 1.42 reach of it vertically, so one of the two sweeps sees every such vertex-segment
/// pair, and a grid of the vertices sees every pair whose nearest points are vertices.
///
/// When the answer is false because two segments were found within reach of each other (or
/// crossing), closePair, if given, receives their numbers, lower first; otherwise it receives
/// kNoSegment twice.
bool segmentsKeepClear(const std::vector<gkVector<2>>& points, bool closed, double reach,
                       std::pair<std::size_t, std::size_t>* closePair = nullptr);

}  // namespace gk::detail
