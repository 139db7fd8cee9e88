#pragma once

#include <gk/cntr/contour.h>

#include "base/detail/box_index.h"

/// Reads and seeds a contour's private caches, so tests can tell a cached answer from a fresh
/// one. The contour names this class as its friend; only tests define it.
class gkContourTestAccess {
 public:
  static bool lineSegsValid(const gkContour& c) {
    return c.lineSegsValid_ && c.linesValid_ && c.segRectsValid_;
  }
  static const std::vector<gkLineSeg>& lineSegs(const gkContour& c) { return c.lineSegs(); }
  static const std::vector<bool>& validLine(const gkContour& c) { return c.validLine(); }
  static const std::vector<gkLine>& lines(const gkContour& c) { return c.lines(); }
  static const std::vector<gkRect>& segRects(const gkContour& c) { return c.segRects(); }

  static auto& encloseRectCache(const gkContour& c) { return c.encloseRectCache_; }
  static auto& extremalCache(const gkContour& c) { return c.extremalCache_; }
  static auto& vertexGrid(const gkContour& c) { return c.vertexGrid_; }
  static bool lengthValid(const gkContour& c) { return c.lengthValid_; }
  static bool hullValid(const gkContour& c) { return c.hullValid_; }
  static const gkRegion* hull(const gkContour& c) { return c.hull_.get(); }
  static double medianFeatureSize(const gkContour& c) { return c.medianFeatureSize(); }
  /// Pairs of segments per segment sharing a cell of the segment index (0 before it is built):
  /// how crowded the index is, which decides how self-intersection searches.
  static double indexPairsPerSegment(const gkContour& c) {
    return c.segIndex_ ? static_cast<double>(c.segIndex_->pairCount()) /
                             static_cast<double>(c.lineSegs().size())
                       : 0.0;
  }

  /// Marks every plain cache valid with recognisable values, as queries would.
  static void fillPlainCaches(const gkContour& c) {
    c.meanValid_ = true;
    c.mean_ = gkVector<2>(7, 8);
    c.lengthValid_ = true;
    c.length_ = 9.0;
    c.circleValid_.assign(2, true);
    c.circles_.assign(2, gkCircle(gkVector<2>(1, 2), 3));
    c.ellipseValid_ = true;
    c.ellipseResidual_ = 0.5;
    c.selfIntersecting_ = true;
    c.selfIntersectingValid_ = true;
    c.medianValid_ = true;
    c.medianFeatureSize_ = 4.0;
    c.computeLineSegs();
  }

  /// True when no cache of any kind is valid or allocated.
  static bool noCache(const gkContour& c) {
    return !c.meanValid_ && !c.hullValid_ && !c.lengthValid_ && c.length_ == 0.0 &&
           !c.ellipseValid_ && c.ellipseResidual_ == 0.0 && !c.selfIntersectingValid_ &&
           !c.lineSegsValid_ && !c.linesValid_ && !c.segRectsValid_ && !c.medianValid_ &&
           c.medianFeatureSize_ == 0.0 && c.circleValid_ == std::vector<bool>(2, false) &&
           c.circles_.size() == 2 && !c.encloseRectCache_.allocated() &&
           !c.extremalCache_.allocated() && !c.vertexGrid_ && !c.segIndex_ && !c.chains_ &&
           !c.chainsBuilt_ && c.crowded_ == 0;
  }

  /// The runs of segments (built on first use) and whether they were built.
  static const gk::detail::ChainBounds* runs(const gkContour& c) { return c.chainBounds(); }
  static bool runsBuilt(const gkContour& c) { return c.chainsBuilt_; }
  /// Fills the segment caches, as the first segment query does.
  static void fillSegmentCaches(const gkContour& c) { c.computeLineSegs(); }

  static void checkEmptyContour(const gkContour& c) { c.checkEmptyContour(); }
};
