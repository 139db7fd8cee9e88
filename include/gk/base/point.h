#pragma once

#include <gk/base/vector.h>

/// A gkVector<2> seen as a position. Converts to and from gkVector<2> without loss.
class gkPoint : public gkVector<2> {
 public:
  gkPoint() = default;
  gkPoint(double x, double y) : gkVector<2>(x, y) {}
  gkPoint(const gkVector<2>& v) : gkVector<2>(v) {}  // NOLINT(google-explicit-constructor)
};
