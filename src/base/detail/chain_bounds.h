#pragma once

#include <cstddef>
#include <vector>

#include <gk/base/vector.h>

namespace gk::detail {

/// Bounds on runs of consecutive segments of a polyline, for finding the segments that come near
/// a query segment when a box index cannot narrow the search: on a dense star every segment's
/// box is large against the spacing of its neighbours, so thousands of boxes overlap any one,
/// yet the segments near a query are few. Consecutive segments of a contour stay together, so
/// a run of them fits in a thin rectangle turned along the direction in which its vertices
/// spread most (a run of spikes: along the spikes; a run of a smooth outline: along the
/// outline). A tree of such rectangles over halving runs leaves only the runs that pass near
/// the query, about two per level on a dense star.
///
/// Segments are numbered as the segment walk numbers them (closed: segment k ends at vertex k,
/// the closing segment first; open: segment k starts at vertex k).
///
/// The promise: candidates() lists every segment whose exact distance to the query is at most
/// the reach asked, whatever the rounding of the bounds (each comparison carries a margin for
/// it). The tree holds no bound, and says so through on(), when a coordinate is NaN or beyond
/// 1e100; callers then search otherwise.
class ChainBounds {
 public:
  ChainBounds(const std::vector<gkVector<2>>& points, bool closed);

  /// False when the bounds cannot be trusted (a coordinate NaN or beyond 1e100).
  bool on() const { return on_; }

  /// The largest magnitude of a vertex coordinate, for sizing rounding margins.
  double magnitude() const { return magnitude_; }

  /// Replaces out by the numbers, in increasing order and without repeats, of the segments that
  /// may lie within reach of the segment p -> q: every segment that does, maybe more. Lists
  /// every segment when the bounds are off or the query or reach is not finite.
  void candidates(const gkVector<2>& p, const gkVector<2>& q, double reach,
                  std::vector<std::size_t>& out) const;

  std::size_t segmentCount() const { return segments_; }

  // --- the tree itself, for searches other than by distance ----------------------------------
  // Levels run from 0 (the leaves) to levelCount() - 1 (one node); node j of level l > 0 has
  // children 2j and 2j + 1 of level l - 1 (the second may not exist). Only when on().

  std::size_t levelCount() const { return levels_.size(); }
  std::size_t nodeCount(std::size_t level) const { return levels_[level].size(); }

  /// The vertices leaf j answers for, [begin, end): each vertex belongs to exactly one leaf.
  void leafVertices(std::size_t j, std::size_t& begin, std::size_t& end) const;

  /// Four corners of a rectangle that holds every vertex under node j of the level, however the
  /// bounds were rounded: the node's rectangle grown by the rounding of the projections. Each
  /// corner is itself within cornerError() of the exact corner of that grown rectangle.
  void corners(std::size_t level, std::size_t j, gkVector<2> (&out)[4]) const;

  /// Whether pt may lie within radius of the grown rectangle of node j of the level (true when
  /// in doubt).
  bool near(std::size_t level, std::size_t j, const gkVector<2>& pt, double radius) const;

  /// A bound on how far a computed corner lies from the exact one.
  double cornerError() const;

  /// Bytes held, for memory accounting.
  std::size_t bytes() const;

 private:
  /// Segments per leaf run: few enough that a leaf's own segments cost little to list.
  static constexpr std::size_t kLeafSegments = 8;

  /// One run's rectangle: every vertex v of the run has a0 <= axis . v <= a1 and
  /// b0 <= axis x v <= b1 as computed, the axis (ax, ay) being of unit length give or take
  /// rounding.
  struct Node {
    double ax;
    double ay;
    double a0;
    double a1;
    double b0;
    double b1;
  };

  /// The spread of a run's vertices about a fixed centre, from which its axis is taken.
  struct Spread {
    double count = 0;
    double sx = 0;
    double sy = 0;
    double sxx = 0;
    double sxy = 0;
    double syy = 0;
    void add(const gkVector<2>& d);
    void merge(const Spread& other);
    /// Sets (ax, ay) to the unit direction of greatest spread; leaves it when there is none.
    void majorAxis(double& ax, double& ay) const;
  };

  /// Adds the level whose nodes cover segmentsPerNode segments each, spreads[j] being node j's.
  void buildLevel(const std::vector<gkVector<2>>& points, std::size_t segmentsPerNode,
                  const std::vector<Spread>& spreads);

  std::size_t segments_ = 0;
  bool closed_ = false;
  bool on_ = false;
  double magnitude_ = 0;
  // levels_[0] are the leaves, runs of kLeafSegments segments; node j of level i + 1 covers
  // nodes 2j and 2j + 1 of level i. The top level has one node.
  std::vector<std::vector<Node>> levels_;
};

}  // namespace gk::detail
