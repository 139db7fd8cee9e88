#pragma once

#include <cstddef>
#include <vector>

#include <gk/base/rect.h>
#include <gk/base/vector.h>

namespace gk::detail {

/// The box of non-empty points, enclosed one by one from the first, so that it holds each of
/// them exactly: a contour's box for the identity transform, and a loop's before it becomes a
/// region.
inline gkRect vertexBox(const std::vector<gkVector<2>>& points) {
  gkRect box(points[0], gkVector<2>());
  for (std::size_t i = 1; i < points.size(); ++i) {
    box = box.enclose(gkRect(points[i], gkVector<2>()));
  }
  return box;
}

}  // namespace gk::detail
