#include "base/detail/near_vertices.h"

#include <algorithm>
#include <cstddef>
#include <tuple>
#include <utility>

#include "base/detail/grid_cell.h"

namespace gk::detail {

NearVertices::NearVertices(const std::vector<gkVector<2>>& points, double tolerance)
    : points_(points), tolerance_(tolerance) {
  entries_.reserve(points.size());
  for (std::size_t j = 0; j < points.size(); ++j) {
    entries_.push_back({gridCell(points[j].x(), tolerance), gridCell(points[j].y(), tolerance),
                        static_cast<int>(j)});
  }
  std::sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) {
    return std::tie(a.column, a.row, a.index) < std::tie(b.column, b.row, b.index);
  });
  place_.resize(points.size());
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    place_[static_cast<std::size_t>(entries_[i].index)] = i;
  }
}

namespace {

/// Whether an entry's cell comes before (column, row) in the list's order.
template <typename Entry>
bool before(const Entry& e, long column, long row) {
  return e.column < column || (e.column == column && e.row < row);
}

}  // namespace

template <typename Start>
void NearVertices::collect(const gkVector<2>& pt, Start start, std::vector<int>& out) const {
  out.clear();
  long aFirst = 0;
  long aLast = 0;
  long bFirst = 0;
  long bLast = 0;
  gridCellSpan(pt.x(), gridCell(pt.x(), tolerance_), tolerance_, aFirst, aLast);
  gridCellSpan(pt.y(), gridCell(pt.y(), tolerance_), tolerance_, bFirst, bLast);
  for (long a = aFirst; a <= aLast; ++a) {
    // The first point of column a at row bFirst or above; the column's rows follow in order.
    for (std::size_t i = start(a, bFirst);
         i < entries_.size() && entries_[i].column == a && entries_[i].row <= bLast; ++i) {
      const int index = entries_[i].index;
      if (pt.distance(points_[static_cast<std::size_t>(index)]) < tolerance_) {
        out.push_back(index);
      }
    }
  }
}

void NearVertices::find(const gkVector<2>& pt, std::vector<int>& out) const {
  collect(
      pt,
      [this](long column, long row) {
        return static_cast<std::size_t>(
            std::lower_bound(entries_.begin(), entries_.end(), std::make_pair(column, row),
                             [](const Entry& e, const std::pair<long, long>& key) {
                               return before(e, key.first, key.second);
                             }) -
            entries_.begin());
      },
      out);
}

void NearVertices::findNear(std::size_t j, std::vector<int>& out) const {
  const std::size_t own = place_[j];
  // The first place whose cell is not before (column, row). Point j's own cell is in its
  // neighbourhood, so a key in an earlier column, or in its column at a row not after its own,
  // has that place at or before j's, and a key in a later column after it: the search gallops
  // from j's place in that direction by doubling steps, then bisects the last step.
  const auto start = [this, own](long column, long row) {
    const auto notBefore = [&](std::size_t lo, std::size_t hi) {
      return static_cast<std::size_t>(
          std::partition_point(entries_.begin() + static_cast<std::ptrdiff_t>(lo),
                               entries_.begin() + static_cast<std::ptrdiff_t>(hi),
                               [&](const Entry& e) { return before(e, column, row); }) -
          entries_.begin());
    };
    if (before(entries_[own], column, row)) {
      // After own: every place up to lo is before the key, hi is not (or is the end).
      std::size_t lo = own + 1;
      std::size_t step = 1;
      std::size_t hi = lo;
      while (hi < entries_.size() && before(entries_[hi], column, row)) {
        lo = hi + 1;
        hi += step;
        step *= 2;
      }
      return notBefore(lo, std::min(hi, entries_.size()));
    }
    // At or before own: hi is not before the key; lo is before it, or the start.
    std::size_t hi = own;
    std::size_t step = 1;
    std::size_t lo = own;
    while (lo > 0) {
      lo = hi >= step ? hi - step : 0;
      if (before(entries_[lo], column, row)) {
        break;
      }
      hi = lo;
      step *= 2;
    }
    return notBefore(lo, hi);
  };
  collect(points_[j], start, out);
}

}  // namespace gk::detail
