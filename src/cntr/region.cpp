#include <gk/cntr/region.h>

#include <gk/cntr/errors/contour_errors.h>

namespace {

/// The effect of a construction mode once the boundary is stored; other values act as eIgnore.
void applyMode(gkRegion& region, gkContourDefs::IntersectionMode mode) {
  if (mode == gkContourDefs::eOuterHull) {
    region.outerHull(region);
  } else if (mode == gkContourDefs::eRegularize) {
    region.regularize(region);
  }
}

}  // namespace

// The contour part is a virtual base, built by the most derived class: a class derived from
// gkRegion builds it empty. So every constructor installs its boundary by assignment, which
// works whoever built the base.

gkRegion::gkRegion() : gkContour() {
  cleanCacheInfo();
  makeDataConsistentWithPoints();
}

gkRegion::gkRegion(const std::vector<gkVector<2>>& points, gkContourDefs::IntersectionMode mode)
    : gkContour() {
  gkContour::operator=(gkContour(points, true, 0));
  cleanCacheInfo();
  makeDataConsistentWithPoints();
  applyMode(*this, mode);
}

gkRegion::gkRegion(const gkPolygon& polygon, gkContourDefs::IntersectionMode mode) : gkContour() {
  gkContour::operator=(gkContour(polygon, 0));
  cleanCacheInfo();
  makeDataConsistentWithPoints();
  applyMode(*this, mode);
}

gkRegion::gkRegion(const gkContour& contour, gkContourDefs::IntersectionMode mode) : gkContour() {
  gkContour::operator=(contour);
  // The contour's caches were computed for its own closed flag; a region is always closed.
  cleanCacheInfo();
  makeDataConsistentWithPoints();
  applyMode(*this, mode);
}

gkRegion::gkRegion(const gkRegion& other) : gkPersistent(), gkRepBase(), gkContour() {
  *this = other;
}

gkRegion& gkRegion::operator=(const gkRegion& other) {
  if (this == &other) {
    return *this;
  }
  gkContour::operator=(other);
  holes_ = other.holes_;
  moments_ = other.moments_;
  regularizedValid_ = other.regularizedValid_;
  regularized_ = other.regularized_;
  outerHullValid_ = other.outerHullValid_;
  outerHull_ = other.outerHull_;
  return *this;
}

gkRegion::~gkRegion() = default;

gkPersistent* gkRegion::make() {
  return new gkRegion();
}

void gkRegion::holes(const Holes& h) {
  cleanCacheInfo();
  makeDataConsistentWithPoints();
  for (const gkPtrHandle_const<gkRegion>& hole : h) {
    if (!hole) {
      throw gkContourDefs::BadParams(L"a hole handle is empty");
    }
    // Only the two outer boundaries are compared; the holes of either side are not looked at.
    if (!intersections(static_cast<const gkContour&>(*hole), false).empty()) {
      throw gkContourDefs::BadParams(L"holes cannot intersect region");
    }
  }
  holes_ = h;
}

void gkRegion::holes(const std::vector<gkPtrHandle<gkRegion>>& h) {
  holes(Holes(h.begin(), h.end()));
}

bool gkRegion::isClosed() const {
  return true;
}

void gkRegion::isClosed(bool closed) {
  if (!closed) {
    throw gkContourDefs::RegionCannotBeSetOpen();
  }
}

void gkRegion::map(const gkXform<2>& xform, gkRegion& result) const {
  std::vector<gkVector<2>> mapped;
  mapped.reserve(points().size());
  for (const gkVector<2>& p : points()) {
    mapped.push_back(xform * p);
  }
  gkRegion out(mapped, gkContourDefs::eIgnore);
  out.label(label());
  result = out;
}

bool gkRegion::operator==(const gkRegion& other) const {
  return gkContour::operator==(other);
}

void gkRegion::draw(gkUITablet& /*tablet*/, const gkColor& /*color*/,
                    const gkUITablet::Layers& /*layer*/) const {}

void gkRegion::checkEmptyContour() const {
  if (points().size() < 3) {
    throw gkContourDefs::EmptyContour();
  }
}

void gkRegion::cleanCacheInfo() {
  gkContour::cleanCacheInfo();
  moments_.clear();
  // The derived-region handles are kept until a later regularize or outerHull replaces them.
  regularizedValid_ = false;
  outerHullValid_ = false;
}
