#pragma once

#include <algorithm>

#include <gk/base/vector.h>
#include <gk/gk_export.h>

/// An axis-aligned rectangle, kept as its two defining corners exactly as given (no origin plus
/// size arithmetic), so that a box grown by enclose() from points contains each of those points
/// with no rounding.
class GK_EXPORT gkRect {
 public:
  gkRect() = default;
  /// The rectangle from origin to origin + size. A negative size extends the other way; size
  /// (0, 0) is a point box at origin, whose corners are both exactly origin.
  gkRect(const gkVector<2>& origin, const gkVector<2>& size) {
    const gkVector<2> far = origin + size;
    ul_ = gkVector<2>(std::min(origin.x(), far.x()), std::min(origin.y(), far.y()));
    lr_ = gkVector<2>(std::max(origin.x(), far.x()), std::max(origin.y(), far.y()));
  }

  /// The corner with the smaller coordinates.
  const gkVector<2>& ul() const { return ul_; }
  /// The corner with the larger coordinates.
  const gkVector<2>& lr() const { return lr_; }
  double width() const { return lr_.x() - ul_.x(); }
  double height() const { return lr_.y() - ul_.y(); }
  gkVector<2> size() const { return lr_ - ul_; }

  /// The smallest rectangle holding both. (Inline, like the constructor: the segment caches
  /// build a box per segment from them.)
  gkRect enclose(const gkRect& other) const {
    gkRect r;
    r.ul_ = gkVector<2>(std::min(ul_.x(), other.ul_.x()), std::min(ul_.y(), other.ul_.y()));
    r.lr_ = gkVector<2>(std::max(lr_.x(), other.lr_.x()), std::max(lr_.y(), other.lr_.y()));
    return r;
  }

  /// True when pt lies in the closed rectangle: the boundary is inside. (Inline: every segment
  /// query asks it of every candidate.)
  bool within(const gkVector<2>& pt) const {
    return pt.x() >= ul_.x() && pt.x() <= lr_.x() && pt.y() >= ul_.y() && pt.y() <= lr_.y();
  }

  /// True when the two closed rectangles share at least one point (touching counts).
  bool overlaps(const gkRect& other) const {
    return lr_.x() >= other.ul_.x() && ul_.x() <= other.lr_.x() && lr_.y() >= other.ul_.y() &&
           ul_.y() <= other.lr_.y();
  }

  bool operator==(const gkRect& o) const { return ul_ == o.ul_ && lr_ == o.lr_; }
  bool operator!=(const gkRect& o) const { return !(*this == o); }

 private:
  gkVector<2> ul_;
  gkVector<2> lr_;
};
