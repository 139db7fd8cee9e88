#include <gk/base/polygon.h>

#include <gk/base/assert.h>

const gkVector<2>& gkPolygon::operator[](std::size_t i) const {
  GK_ASSERT(i < vertices_.size());
  return vertices_[i];
}
