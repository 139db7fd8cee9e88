#include <gk/base/rect.h>

#include <algorithm>

gkRect::gkRect(const gkVector<2>& origin, const gkVector<2>& size) {
  const gkVector<2> far = origin + size;
  ul_ = gkVector<2>(std::min(origin.x(), far.x()), std::min(origin.y(), far.y()));
  lr_ = gkVector<2>(std::max(origin.x(), far.x()), std::max(origin.y(), far.y()));
}

gkRect gkRect::enclose(const gkRect& other) const {
  gkRect r;
  r.ul_ = gkVector<2>(std::min(ul_.x(), other.ul_.x()), std::min(ul_.y(), other.ul_.y()));
  r.lr_ = gkVector<2>(std::max(lr_.x(), other.lr_.x()), std::max(lr_.y(), other.lr_.y()));
  return r;
}
