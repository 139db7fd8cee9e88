#pragma once

#include <cstddef>
#include <vector>

#include <gk/base/vector.h>
#include <gk/gk_export.h>

/// An ordered vertex list with a fill rule. Vertices are kept exactly as given.
class GK_EXPORT gkPolygon {
 public:
  /// How the interior of a self-overlapping polygon is decided when it is filled.
  enum PolyFillMode { eEvenOdd = 0, eNonZeroWinding = 1 };

  gkPolygon() = default;
  gkPolygon(const std::vector<gkVector<2>>& vertices, PolyFillMode mode)
      : vertices_(vertices), mode_(mode) {}

  std::size_t size() const { return vertices_.size(); }
  bool empty() const { return vertices_.empty(); }
  /// Vertex i; i must be below size() (checked through the assertion hook).
  const gkVector<2>& operator[](std::size_t i) const;
  const std::vector<gkVector<2>>& vertices() const { return vertices_; }
  PolyFillMode fillMode() const { return mode_; }

 private:
  std::vector<gkVector<2>> vertices_;
  PolyFillMode mode_ = eEvenOdd;
};
