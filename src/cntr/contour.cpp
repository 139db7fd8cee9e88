#include <gk/cntr/contour.h>

#include <limits>

#include <gk/base/numeric.h>
#include <gk/base/tolerances.h>
#include <gk/cntr/errors/contour_errors.h>
#include <gk/cntr/region.h>

#include "base/detail/segment_walk.h"
#include "base/detail/total_order.h"
#include "cntr/detail/segment_entry.h"

namespace {

bool polygonIsClosed(const gkPolygon& polygon) {
  return !polygon.empty() && gwRealEq(polygon[0], polygon[polygon.size() - 1], gkTolCoincident);
}

}  // namespace

bool gkContour::XformKeyLess::operator()(const gkXform<2>& a, const gkXform<2>& b) const {
  const double ka[5] = {a.trans().x(), a.trans().y(), a.matrix().element(0, 0),
                        a.matrix().element(0, 1), a.matrix().element(1, 0)};
  const double kb[5] = {b.trans().x(), b.trans().y(), b.matrix().element(0, 0),
                        b.matrix().element(0, 1), b.matrix().element(1, 0)};
  for (int i = 0; i < 5; ++i) {
    if (gk::detail::lessNaNLast(ka[i], kb[i])) {
      return true;
    }
    if (gk::detail::lessNaNLast(kb[i], ka[i])) {
      return false;
    }
  }
  return false;
}

gkContour::gkContour() {
  makeDataConsistentWithPoints();
}

gkContour::gkContour(const std::vector<gkVector<2>>& points, bool isClosed, unsigned long label)
    : label_(label), isClosed_(isClosed), points_(points) {
  makeDataConsistentWithPoints();
}

gkContour::gkContour(const gkPolygon& polygon, unsigned long label)
    : label_(label), isClosed_(polygonIsClosed(polygon)), points_(polygon.vertices()) {
  makeDataConsistentWithPoints();
}

gkContour::gkContour(const gkContour& other) : gkPersistent(), gkRepBase() {
  *this = other;
}

gkContour& gkContour::operator=(const gkContour& other) {
  if (this == &other) {
    return *this;
  }
  label_ = other.label_;
  isClosed_ = other.isClosed_;
  points_ = other.points_;
  cachedVectorSize_ = other.cachedVectorSize_;
  meanValid_ = other.meanValid_;
  mean_ = other.mean_;
  lengthValid_ = other.lengthValid_;
  length_ = other.length_;
  hullValid_ = other.hullValid_;
  hull_ = other.hull_;
  encloseRectCache_ = other.encloseRectCache_;
  circleValid_ = other.circleValid_;
  circles_ = other.circles_;
  extremalCache_ = other.extremalCache_;
  ellipseValid_ = other.ellipseValid_;
  ellipse_ = other.ellipse_;
  ellipseResidual_ = other.ellipseResidual_;
  selfIntersecting_ = other.selfIntersecting_;
  selfIntersectingValid_ = other.selfIntersectingValid_;
  lineSegsValid_ = other.lineSegsValid_;
  lineSegs_ = other.lineSegs_;
  linesValid_ = other.linesValid_;
  lines_ = other.lines_;
  segRectsValid_ = other.segRectsValid_;
  segRects_ = other.segRects_;
  validLine_ = other.validLine_;
  segIndex_ = other.segIndex_;
  chains_ = other.chains_;
  chainsBuilt_ = other.chainsBuilt_;
  crowded_ = other.crowded_;
  medianValid_ = other.medianValid_;
  medianFeatureSize_ = other.medianFeatureSize_;
  if (!other.vertexGrid_) {
    vertexGrid_.reset();
  } else if (vertexGrid_) {
    *vertexGrid_ = *other.vertexGrid_;
  } else {
    vertexGrid_.reset(new VertexGrids(*other.vertexGrid_));
  }
  return *this;
}

gkContour::~gkContour() = default;

gkPersistent* gkContour::make() {
  return new gkContour(std::vector<gkVector<2>>(), true, 0);
}

void gkContour::points(const std::vector<gkVector<2>>& v) {
  cleanCacheInfo();
  points_ = v;
  makeDataConsistentWithPoints();
}

void gkContour::setPoints(const std::vector<gkVector<2>>& v) {
  cleanCacheInfo();
  points_ = v;
}

bool gkContour::isClosed() const {
  return isClosed_;
}

void gkContour::isClosed(bool closed) {
  isClosed_ = closed;
  cleanCacheInfo();
}

void gkContour::label(unsigned long label) {
  label_ = label;
  mutating();
}

void gkContour::cachedVectorSize(long n) {
  // The bound is a signed 32-bit quantity in the stored form; refuse what would not fit rather
  // than store a value that changes meaning on the way to disk.
  if (n < 0 || n > std::numeric_limits<int>::max()) {
    throw gkContourDefs::BadParams();
  }
  cachedVectorSize_ = n;
  mutating();
}

gkPolygon gkContour::polygon() const {
  std::vector<gkVector<2>> vertices = points_;
  if (isClosed() && !points_.empty()) {
    vertices.push_back(points_[0]);
  }
  return gkPolygon(vertices, gkPolygon::eEvenOdd);
}

void gkContour::map(const gkXform<2>& x, gkContour& out) const {
  std::vector<gkVector<2>> mapped;
  mapped.reserve(points_.size());
  for (const gkVector<2>& p : points_) {
    mapped.push_back(x * p);
  }
  out = gkContour(mapped, isClosed(), label_);
}

bool gkContour::operator==(const gkContour& other) const {
  return isClosed() == other.isClosed() && points_ == other.points_ &&
         cachedVectorSize_ == other.cachedVectorSize_;
}

long gkContour::segmentCount() const {
  const long n = static_cast<long>(points_.size());
  if (n == 0) {
    return 0;
  }
  return isClosed() ? n : n - 1;
}

void gkContour::checkEmptyContour() const {
  if (points_.size() < 2) {
    throw gkContourDefs::EmptyContour();
  }
}

const std::vector<gkLineSeg>& gkContour::lineSegs() const {
  computeLineSegs();
  return lineSegs_;
}

const std::vector<bool>& gkContour::validLine() const {
  computeLineSegs();
  return validLine_;
}

const std::vector<gkLine>& gkContour::lines() const {
  computeLineSegs();
  return lines_;
}

const std::vector<gkRect>& gkContour::segRects() const {
  computeLineSegs();
  return segRects_;
}

void gkContour::computeLineSegs() const {
  if (lineSegsValid_ && linesValid_ && segRectsValid_) {
    return;
  }
  lineSegs_.clear();
  lines_.clear();
  segRects_.clear();
  validLine_.clear();
  // The index is built over these boxes and goes with them. The runs of segments depend on the
  // vertices alone and stay: a caller may hold them while the caches fill (cleanCacheInfo drops
  // them with everything else).
  segIndex_.reset();
  crowded_ = 0;
  const std::size_t count = static_cast<std::size_t>(segmentCount());
  lineSegs_.reserve(count);
  lines_.reserve(count);
  segRects_.reserve(count);
  validLine_.reserve(count);
  gk::detail::forEachSegment(
      points_, isClosed(), [this](std::size_t, const gkVector<2>& p, const gkVector<2>& q) {
        // A degenerate segment keeps its number, with default values and a false flag.
        lineSegs_.emplace_back();
        lines_.emplace_back();
        segRects_.emplace_back();
        validLine_.push_back(
            gk::detail::segmentEntry(p, q, lineSegs_.back(), lines_.back(), segRects_.back()));
      });
  segRectsValid_ = true;
  linesValid_ = true;
  lineSegsValid_ = true;
}

void gkContour::makeDataConsistentWithPoints() {
  cleanCacheInfo();
}

void gkContour::makePointsConsistentWithData() {
  cleanCacheInfo();
}

void gkContour::cleanCacheInfo() {
  mutating();
  encloseRectCache_.clear();
  extremalCache_.clear();
  vertexGrid_.reset();
  meanValid_ = false;
  length_ = 0.0;
  lengthValid_ = false;
  // The hull handle itself is kept until the next convexHull() overwrites it.
  hullValid_ = false;
  circleValid_.assign(2, false);
  circles_.assign(2, gkCircle());
  ellipseValid_ = false;
  ellipseResidual_ = 0.0;
  selfIntersectingValid_ = false;
  lineSegsValid_ = false;
  linesValid_ = false;
  segRectsValid_ = false;
  segIndex_.reset();
  chains_.reset();
  chainsBuilt_ = false;
  crowded_ = 0;
  medianValid_ = false;
  medianFeatureSize_ = 0.0;
}
