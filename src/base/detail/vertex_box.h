#pragma once

#include <cstddef>
#include <vector>

#include <gk/base/rect.h>
#include <gk/base/vector.h>

namespace gk::detail {

/// The box of non-empty points, enclosed one by one from the first, so that it holds each of
/// them exactly: a contour's box for the identity transform, and a loop's before it becomes a
/// region.
///
/// Enclosing keeps a bound unless a point is strictly beyond it, so the box is the first
/// point's where that holds a NaN, ignores NaN coordinates after it, and of two zeros of
/// opposite sign at a bound keeps the first met. Four running boxes over every fourth point,
/// each started from the first point, are enclosed in turn at the end: four chains of
/// comparisons instead of one, the same bounds but for which zero comes first, so a bound
/// that ends at zero is worked out again one point after another.
inline gkRect vertexBox(const std::vector<gkVector<2>>& points) {
  const gkRect first(points[0], gkVector<2>());
  const std::size_t n = points.size();
  constexpr std::size_t kLanes = 4;
  double lowX[kLanes];
  double lowY[kLanes];
  double highX[kLanes];
  double highY[kLanes];
  for (std::size_t j = 0; j < kLanes; ++j) {
    lowX[j] = first.ul().x();
    lowY[j] = first.ul().y();
    highX[j] = first.lr().x();
    highY[j] = first.lr().y();
  }
  std::size_t i = 1;
  for (; i + kLanes <= n; i += kLanes) {
    for (std::size_t j = 0; j < kLanes; ++j) {
      const double x = points[i + j].x();
      const double y = points[i + j].y();
      lowX[j] = x < lowX[j] ? x : lowX[j];
      lowY[j] = y < lowY[j] ? y : lowY[j];
      highX[j] = highX[j] < x ? x : highX[j];
      highY[j] = highY[j] < y ? y : highY[j];
    }
  }
  gkRect box = first;
  for (std::size_t j = 0; j < kLanes; ++j) {
    box = box.enclose(gkRect(gkVector<2>(lowX[j], lowY[j]), gkVector<2>()))
              .enclose(gkRect(gkVector<2>(highX[j], highY[j]), gkVector<2>()));
  }
  const auto atZero = [](double c) { return c == 0.0; };
  if (atZero(box.ul().x()) || atZero(box.ul().y()) || atZero(box.lr().x()) ||
      atZero(box.lr().y())) {
    box = first;
    i = 1;
  }
  for (; i < n; ++i) {
    box = box.enclose(gkRect(points[i], gkVector<2>()));
  }
  return box;
}

}  // namespace gk::detail
