#pragma once

#include <cstddef>
#include <vector>

#include <gk/base/vector.h>

namespace gk::detail {

/// The points of a fixed list that lie within a tolerance of a query point, listed exactly as a
/// contour's vertexIndex lists its vertices: by grid column, then grid row (cells of the
/// tolerance's size, as gridCell numbers them), then number. It keeps one list of the points
/// sorted by cell instead of a map from cell to points, for code that asks about every point
/// of a large list once (the outer hull's loops): building it is a sort, and a query is a
/// binary search per column of the neighbourhood.
class NearVertices {
 public:
  /// points must outlive this object; tolerance is positive and finite.
  NearVertices(const std::vector<gkVector<2>>& points, double tolerance);

  /// Replaces out by the numbers of the points closer than the tolerance to pt (strictly).
  void find(const gkVector<2>& pt, std::vector<int>& out) const;

  /// As find(points[j], out), for a point of the list itself: the searches for its
  /// neighbourhood start from its own place in the sorted list and gallop outwards, so that
  /// asking about every point costs a few steps each rather than a binary search over all.
  void findNear(std::size_t j, std::vector<int>& out) const;

 private:
  struct Entry {
    long column;
    long row;
    int index;
  };

  /// The scan shared by find and findNear: for each column of pt's neighbourhood, from the
  /// place start(column, first row) gives, the points of the rows in reach.
  template <typename Start>
  void collect(const gkVector<2>& pt, Start start, std::vector<int>& out) const;

  const std::vector<gkVector<2>>& points_;
  double tolerance_;
  // Every point by (column, row, number): a cell's points are consecutive and in increasing
  // number, and the cells of one column are consecutive and in increasing row.
  std::vector<Entry> entries_;
  // Where each point's entry is in entries_, by point number.
  std::vector<std::size_t> place_;
};

}  // namespace gk::detail
