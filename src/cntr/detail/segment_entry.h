#pragma once

#include <gk/base/line.h>
#include <gk/base/line_seg.h>
#include <gk/base/numeric.h>
#include <gk/base/rect.h>
#include <gk/base/tolerances.h>
#include <gk/base/vector.h>

namespace gk::detail {

/// One segment's entries in a contour's segment caches: the segment p -> q, its line and its
/// box. False for a degenerate segment (ends within gkTolCoincident), whose entries are left as
/// they are. The caches are filled through this, and so is any test that asks about a segment
/// before they exist, so that both see the very same values.
inline bool segmentEntry(const gkVector<2>& p, const gkVector<2>& q, gkLineSeg& seg, gkLine& line,
                         gkRect& box) {
  if (gwRealEq(p, q, gkTolCoincident)) {
    return false;
  }
  seg = gkLineSeg(p, q);
  line = seg.line();
  box = gkRect(q, gkVector<2>()).enclose(gkRect(p, gkVector<2>()));
  return true;
}

}  // namespace gk::detail
