#pragma once

#include <gk/base/archive.h>

namespace gk::detail {

/// Reads the layer of the old base class that version-0 contours and regions begin with: a
/// version byte, which must be 0, and an unsigned long that the old class kept (an object id)
/// and that nothing uses any more. Nothing writes this layer now.
inline void readLegacyShapeLayer(gkArchive& ar) {
  unsigned char version = 0;
  ar || version;
  if (version != 0) {
    throw gkArchive::UnknownVersion("legacy shape layer", 0);
  }
  unsigned long unused = 0;
  ar || unused;
}

}  // namespace gk::detail
