#include <cmath>
#include <limits>

#include <gk/base/convex_hull.h>
#include <gk/base/numeric.h>
#include <gk/base/tolerances.h>
#include <gk/cntr/contour.h>
#include <gk/cntr/errors/contour_errors.h>
#include <gk/cntr/moments/ellipse_from_moments.h>
#include <gk/cntr/region.h>

#include "base/detail/farthest_pair.h"
#include "base/detail/segment_walk.h"
#include "base/detail/vertex_box.h"

namespace {

gkPair<double> asPair(const gkVector<2>& v) {
  return gkPair<double>(v.x(), v.y());
}

/// Scores a vertex for extremalVertexIndex. The axis directions score by the bare coordinate,
/// so the rounding of cos and sin at the axis angles (cos(pi/2) is 6e-17, not 0) cannot tip a
/// tie between vertices that are level along the axis.
class DirectionScore {
 public:
  explicit DirectionScore(const gkVector<2>& d) : d_(d) {
    if (gwRealEq(d, gkVector<2>(1, 0), gkTolCoincident)) {
      axis_ = Axis::kPlusX;
    } else if (gwRealEq(d, gkVector<2>(-1, 0), gkTolCoincident)) {
      axis_ = Axis::kMinusX;
    } else if (gwRealEq(d, gkVector<2>(0, 1), gkTolCoincident)) {
      axis_ = Axis::kPlusY;
    } else if (gwRealEq(d, gkVector<2>(0, -1), gkTolCoincident)) {
      axis_ = Axis::kMinusY;
    }
  }

  double operator()(const gkVector<2>& p) const {
    switch (axis_) {
      case Axis::kPlusX:
        return p.x();
      case Axis::kMinusX:
        return -p.x();
      case Axis::kPlusY:
        return p.y();
      case Axis::kMinusY:
        return -p.y();
      case Axis::kNone:
        break;
    }
    return d_.dot(p);
  }

 private:
  enum class Axis { kNone, kPlusX, kMinusX, kPlusY, kMinusY };
  gkVector<2> d_;
  Axis axis_ = Axis::kNone;
};

}  // namespace

double gkContour::length() const {
  if (points_.empty()) {
    return 0.0;
  }
  if (!lengthValid_) {
    double sum = 0.0;
    gk::detail::forEachSegment(
        points_, isClosed(),
        [&sum](std::size_t, const gkVector<2>& p, const gkVector<2>& q) { sum += p.distance(q); });
    length_ = sum;
    lengthValid_ = true;
  }
  return length_;
}

gkVector<2> gkContour::meanPosition() const {
  checkEmptyContour();
  if (!meanValid_) {
    double total = 0.0;
    gkVector<2> sum;
    gk::detail::forEachSegment(points_, isClosed(),
                               [&](std::size_t, const gkVector<2>& p, const gkVector<2>& q) {
                                 const double w = p.distance(q);
                                 sum = sum + ((p + q) / 2.0) * w;
                                 total = total + w;
                               });
    // All vertices coincide: the wire is a point, and that point is its centroid (rather than
    // the 0/0 the weighted sum would give).
    mean_ = total == 0.0 ? points_[0] : sum / total;
    meanValid_ = true;
  }
  return mean_;
}

int gkContour::extremalVertexIndex(const gkRadian& angle) const {
  checkEmptyContour();
  if (!std::isfinite(angle.toDouble())) {
    throw gkContourDefs::BadParams(L"extremalVertexIndex: the angle is not a finite number");
  }
  if (const int* cached = extremalCache_.find(angle)) {
    return *cached;
  }
  const DirectionScore score(gkVector<2>(std::cos(angle.toDouble()), std::sin(angle.toDouble())));
  double best = -std::numeric_limits<double>::max();
  int index = -1;
  for (std::size_t i = 0; i < points_.size(); ++i) {
    const double s = score(points_[i]);
    // Strictly greater: among equal scores the lowest index wins, and a NaN score never wins.
    if (s > best) {
      best = s;
      index = static_cast<int>(i);
    }
  }
  if (index < 0) {
    index = 0;
  }
  extremalCache_.insert(angle, index, cachedVectorSize_);
  return index;
}

gkVector<2> gkContour::extremalVertexPosition(const gkRadian& angle) const {
  return points_[static_cast<std::size_t>(extremalVertexIndex(angle))];
}

gkRect gkContour::encloseRect(const gkXform<2>& x) const {
  checkEmptyContour();
  if (const gkRect* cached = encloseRectCache_.find(x)) {
    return *cached;
  }
  gkRect box;
  if (!gwRealEq(x, gkXform<2>(), gkTolCoincident)) {
    box = gkRect(x * points_[0], gkVector<2>());
    for (std::size_t i = 1; i < points_.size(); ++i) {
      box = box.enclose(gkRect(x * points_[i], gkVector<2>()));
    }
  } else {
    // The identity (within 1e-15) uses the vertices themselves, so the box holds each of them
    // exactly, with no rounding from a near-identity product.
    box = gk::detail::vertexBox(points_);
  }
  encloseRectCache_.insert(x, box, cachedVectorSize_);
  return box;
}

gkCircle gkContour::encloseCircle(gkContourDefs::DiameterMode mode) const {
  if (mode != gkContourDefs::eFarthestPair && mode != gkContourDefs::eFirstVertexCentered) {
    throw gkContourDefs::BadParams(L"diameterMode is not one of the valid enums");
  }
  const std::size_t m = static_cast<std::size_t>(mode);
  if (circleValid_[m]) {
    return circles_[m];
  }
  const std::size_t n = points_.size();
  if (mode == gkContourDefs::eFarthestPair) {
    // Over every ordered pair, rows first, the first pair that reaches the greatest distance
    // (found without visiting every pair). With no two distinct vertices the entry is not
    // written and stays the default circle.
    const gk::detail::FarthestPair pair = gk::detail::firstFarthestPair(points_);
    if (pair.found) {
      circles_[0] = gkCircle((points_[pair.i] + points_[pair.j]) / 2.0, pair.distance / 2.0);
    }
  } else {
    if (n == 0) {
      throw gkContourDefs::EmptyContour();
    }
    double r = 0.0;
    for (std::size_t k = 1; k < n; ++k) {
      const double d = points_[0].distance(points_[k]);
      if (d > r) {
        r = d;
      }
    }
    circles_[1] = gkCircle(points_[0], r);
  }
  circleValid_[m] = true;
  return circles_[m];
}

double gkContour::diameter(gkContourDefs::DiameterMode mode) const {
  return 2.0 * encloseCircle(mode).radius();
}

void gkContour::convexHull(gkRegion& out) const {
  checkEmptyContour();
  if (!hullValid_) {
    std::vector<gkVector<2>> hullPoints;
    gwConvexHull(points_, hullPoints);
    hull_ = gkPtrHandle<gkRegion>(new gkRegion(hullPoints, gkContourDefs::eIgnore));
    hullValid_ = true;
  }
  // Hold a second handle while assigning: out may be the region that owns this cache.
  const gkPtrHandle<gkRegion> keep = hull_;
  out = *keep;
}

void gkContour::fitEllipse(gkEllipse& ellipse, double& residual) const {
  checkEmptyContour();
  if (!ellipseValid_) {
    gw_FitEllipse(points_, ellipse_, ellipseResidual_);
    ellipseValid_ = true;
  }
  ellipse = ellipse_;
  residual = ellipseResidual_;
}

void gkContour::draw(gkUITablet& tablet, gkContourDefs::DrawMode /*mode*/, const gkColor& color,
                     const gkUITablet::Layers& layer) const {
  gk::detail::forEachSegment(points_, isClosed(),
                             [&](std::size_t, const gkVector<2>& p, const gkVector<2>& q) {
                               tablet.drawLineSeg(asPair(p), asPair(q), color, layer);
                             });
}
