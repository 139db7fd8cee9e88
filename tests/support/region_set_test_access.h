#pragma once

#include <gk/cntr/region_set.h>

/// Reaches a region set's caches for tests. The set names this class as its friend; only tests
/// define it.
class gkRegionSetTestAccess {
 public:
  static std::size_t rectCacheSize(const gkRegionSet& s) { return s.encloseRectCache_.size(); }
  static bool rectCacheAllocated(const gkRegionSet& s) { return s.encloseRectCache_.allocated(); }
  static bool selfIntersectingValid(const gkRegionSet& s) { return s.selfIntersectingValid_; }
  static bool regularizedValid(const gkRegionSet& s) { return s.regularizedValid_; }
  static bool outerHullValid(const gkRegionSet& s) { return s.outerHullValid_; }
  static const gkRegionSet* regularized(const gkRegionSet& s) { return s.regularized_.get(); }
  static void checkEmptyRegionSet(const gkRegionSet& s) { s.checkEmptyRegionSet(); }
  static void setRegions(gkRegionSet& s, const gkRegionSet::Regions& r) { s.setRegions(r); }
};
