#include "base/detail/near_vertices.h"

#include <algorithm>
#include <tuple>

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
}

void NearVertices::find(const gkVector<2>& pt, std::vector<int>& out) const {
  out.clear();
  long aFirst = 0;
  long aLast = 0;
  long bFirst = 0;
  long bLast = 0;
  gridCellSpan(pt.x(), gridCell(pt.x(), tolerance_), tolerance_, aFirst, aLast);
  gridCellSpan(pt.y(), gridCell(pt.y(), tolerance_), tolerance_, bFirst, bLast);
  for (long a = aFirst; a <= aLast; ++a) {
    // The first point of column a at row bFirst or above; the column's rows follow in order.
    auto it = std::lower_bound(entries_.begin(), entries_.end(), std::make_pair(a, bFirst),
                               [](const Entry& e, const std::pair<long, long>& key) {
                                 return e.column < key.first ||
                                        (e.column == key.first && e.row < key.second);
                               });
    for (; it != entries_.end() && it->column == a && it->row <= bLast; ++it) {
      if (pt.distance(points_[static_cast<std::size_t>(it->index)]) < tolerance_) {
        out.push_back(it->index);
      }
    }
  }
}

}  // namespace gk::detail
