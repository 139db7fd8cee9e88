#pragma once

#include <gk/base/color.h>
#include <gk/base/pair.h>
#include <gk/gk_export.h>

/// A drawing surface. Shapes draw themselves as line segments on it; subclass it to render to a
/// window, an image, a vector file, or to record the calls.
class GK_EXPORT gkUITablet {
 public:
  /// The layer a graphic goes to, passed through unchanged. Default is eDefaultLayer.
  enum Layers { eDefaultLayer = 0, eOverlayLayer = 1 };

  gkUITablet() = default;
  gkUITablet(const gkUITablet&) = default;
  gkUITablet& operator=(const gkUITablet&) = default;
  virtual ~gkUITablet();

  /// Draws the segment from `from` to `to`.
  virtual void drawLineSeg(const gkPair<double>& from, const gkPair<double>& to,
                           const gkColor& color, const Layers& layer) = 0;
};
