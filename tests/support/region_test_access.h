#pragma once

#include <gk/cntr/region.h>

/// Reaches a region's private workers and cache slots for tests. The region names this class as
/// its friend; only tests define it.
class gkRegionTestAccess {
 public:
  static long insideCount(const gkRegion& r, const gkVector<2>& pt, bool bothDirections) {
    return r.insideCount(pt, bothDirections);
  }
  static void splice(const gkRegion& a, const gkRegion& b, gkRegion& result) {
    a.splice(b, result);
  }
  static void outerHullRegularize(const gkRegion& r, gkRegion& result, bool hullOnly) {
    r.outerHullRegularize(result, hullOnly);
  }
  static bool regularizedValid(const gkRegion& r) { return r.regularizedValid_; }
  static bool outerHullValid(const gkRegion& r) { return r.outerHullValid_; }
  static const gkRegion* regularized(const gkRegion& r) { return r.regularized_.get(); }
  static const gkRegion* outerHullCache(const gkRegion& r) { return r.outerHull_.get(); }
  static void checkEmptyContour(const gkRegion& r) { r.checkEmptyContour(); }
};
