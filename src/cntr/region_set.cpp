#include <gk/cntr/region_set.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <gk/cntr/errors/contour_errors.h>

#include "base/detail/box_index.h"

namespace {

gkRegionSet::Regions asConst(const std::vector<gkPtrHandle<gkRegion>>& regions) {
  return gkRegionSet::Regions(regions.begin(), regions.end());
}

}  // namespace

gkRegionSet::gkRegionSet() {
  makeDataConsistentWithPoints();
}

gkRegionSet::gkRegionSet(const Regions& regions, gkContourDefs::IntersectionMode mode)
    : regions_(regions) {
  makeDataConsistentWithPoints();
  applyMode(mode);
}

gkRegionSet::gkRegionSet(const std::vector<gkPtrHandle<gkRegion>>& regions,
                         gkContourDefs::IntersectionMode mode)
    : gkRegionSet(asConst(regions), mode) {}

gkRegionSet::gkRegionSet(const gkRegionSet& other) : gkPersistent(), gkRepBase() {
  *this = other;
}

gkRegionSet& gkRegionSet::operator=(const gkRegionSet& other) {
  if (this == &other) {
    return *this;
  }
  regions_ = other.regions_;
  cachedVectorSize_ = other.cachedVectorSize_;
  moments_ = other.moments_;
  encloseRectCache_ = other.encloseRectCache_;
  selfIntersecting_ = other.selfIntersecting_;
  selfIntersectingValid_ = other.selfIntersectingValid_;
  regularizedValid_ = other.regularizedValid_;
  regularized_ = other.regularized_;
  outerHullValid_ = other.outerHullValid_;
  outerHull_ = other.outerHull_;
  return *this;
}

gkRegionSet::~gkRegionSet() = default;

gkPersistent* gkRegionSet::make() {
  return new gkRegionSet();
}

void gkRegionSet::regions(const Regions& regions, gkContourDefs::IntersectionMode mode) {
  cleanCacheInfo();
  regions_ = regions;
  makeDataConsistentWithPoints();
  applyMode(mode);
}

void gkRegionSet::regions(const std::vector<gkPtrHandle<gkRegion>>& regions,
                          gkContourDefs::IntersectionMode mode) {
  this->regions(asConst(regions), mode);
}

void gkRegionSet::add(const gkPtrHandle_const<gkRegion>& region,
                      gkContourDefs::IntersectionMode mode) {
  cleanCacheInfo();
  regions_.push_back(region);
  makeDataConsistentWithPoints();
  applyMode(mode);
}

void gkRegionSet::setRegions(const Regions& regions) {
  regions_ = regions;
}

void gkRegionSet::applyMode(gkContourDefs::IntersectionMode mode) {
  if (mode == gkContourDefs::eOuterHull) {
    outerHull(*this);
  } else if (mode == gkContourDefs::eRegularize) {
    regularize(*this);
  }
}

void gkRegionSet::cachedVectorSize(long n) {
  if (n < 0 || n > std::numeric_limits<int>::max()) {
    throw gkContourDefs::BadParams();
  }
  cachedVectorSize_ = n;
  mutating();
}

void gkRegionSet::checkEmptyRegionSet() const {
  if (regions_.empty()) {
    throw gkContourDefs::EmptyRegionSet();
  }
}

gkRect gkRegionSet::encloseRect(const gkXform<2>& x) const {
  checkEmptyRegionSet();
  if (const gkRect* cached = encloseRectCache_.find(x)) {
    return *cached;
  }
  gkRect box = regions_.front()->encloseRect(x);
  for (std::size_t i = 1; i < regions_.size(); ++i) {
    box = box.enclose(regions_[i]->encloseRect(x));
  }
  encloseRectCache_.insert(x, box, cachedVectorSize_);
  mutating();
  return box;
}

bool gkRegionSet::isSelfIntersecting() const {
  if (regions_.empty()) {
    return false;
  }
  if (selfIntersectingValid_) {
    return selfIntersecting_;
  }
  selfIntersectingValid_ = true;
  selfIntersecting_ = false;
  // Every member is asked (no early exit), then the pairs until the first that meets.
  for (const gkPtrHandle_const<gkRegion>& region : regions_) {
    if (region->gkContour::isSelfIntersecting()) {
      selfIntersecting_ = true;
    }
  }
  // Then the pairs (i, j), i < j, until the first that meets. Only pairs whose boxes overlap can
  // meet: i asks about each segment of j, and answers nothing for a segment whose box misses
  // its own box, the first thing it checks; when no vertex of j is NaN, every segment box of j
  // lies in j's box. So an index over the member boxes names the j worth asking; members with
  // a NaN vertex are always asked, members of fewer than two vertices have no segment that can
  // meet anything and are never asked. Row i of a member with fewer than two vertices throws
  // on its first pair, as the pair scan does.
  const std::size_t count = regions_.size();
  std::vector<gkRect> boxes(count);
  std::vector<bool> boxed(count, false);
  std::vector<std::size_t> alwaysAsked;
  for (std::size_t j = 0; j < count; ++j) {
    const std::vector<gkVector<2>>& v = regions_[j]->points();
    if (v.size() < 2) {
      continue;
    }
    const bool anyNaN = std::any_of(v.begin(), v.end(), [](const gkVector<2>& p) {
      return std::isnan(p.x()) || std::isnan(p.y());
    });
    if (anyNaN) {
      alwaysAsked.push_back(j);
    } else {
      boxes[j] = regions_[j]->encloseRect(gkXform<2>());
      boxed[j] = true;
    }
  }
  const gk::detail::BoxIndex index(boxes, boxed);
  std::vector<std::size_t> asked;
  for (std::size_t i = 0; i + 1 < count; ++i) {
    const gkContour& a = *regions_[i];
    if (a.points().size() < 2) {
      a.intersections(static_cast<const gkContour&>(*regions_[i + 1]));  // throws EmptyContour
    }
    index.candidates(a.encloseRect(gkXform<2>()), asked);
    asked.insert(asked.end(), alwaysAsked.begin(), alwaysAsked.end());
    std::sort(asked.begin(), asked.end());
    for (const std::size_t j : asked) {
      if (j > i && !a.intersections(static_cast<const gkContour&>(*regions_[j])).empty()) {
        selfIntersecting_ = true;
        return true;
      }
    }
  }
  return selfIntersecting_;
}

void gkRegionSet::regularize(gkRegionSet& result) const {
  cachedWalk(result, false, regularizedValid_, regularized_);
}

void gkRegionSet::outerHull(gkRegionSet& result) const {
  cachedWalk(result, true, outerHullValid_, outerHull_);
}

void gkRegionSet::cachedWalk(gkRegionSet& result, bool hullOnly, bool& valid,
                             gkPtrHandle<gkRegionSet>& slot) const {
  if (!isSelfIntersecting()) {
    result = *this;
    return;
  }
  if (!valid) {
    slot = gkPtrHandle<gkRegionSet>(new gkRegionSet());
    outerHullRegularize(*slot, hullOnly);
    valid = true;
  }
  // A second handle keeps the cached set alive while it is assigned: when result is this set,
  // the assignment overwrites the very handle that owns it.
  const gkPtrHandle<gkRegionSet> keep = slot;
  result = *keep;
}

void gkRegionSet::outerHullRegularize(gkRegionSet& result, bool hullOnly) const {
  checkEmptyRegionSet();
  Regions members = regions_;
  // Merge overlapping members in one pass. After a merge the last member moves into slot j and
  // j still advances, so that member is not compared with slot i in this pass: kept on purpose
  // (three mutually overlapping regions leave two).
  for (std::size_t i = 0; i + 1 < members.size(); ++i) {
    for (std::size_t j = i + 1; j < members.size(); ++j) {
      const gkRegion& a = *members[i];
      const gkRegion& b = *members[j];
      if (!a.intersections(static_cast<const gkContour&>(b), false).empty()) {
        gkPtrHandle<gkRegion> spliced(new gkRegion());
        a.splice(b, *spliced);
        members[i] = spliced;
        members[j] = members.back();
        members.pop_back();
      }
    }
  }
  for (gkPtrHandle_const<gkRegion>& member : members) {
    gkPtrHandle<gkRegion> walked(new gkRegion());
    if (hullOnly) {
      member->outerHull(*walked);
    } else {
      member->regularize(*walked);
    }
    member = walked;
  }
  result = gkRegionSet(members, gkContourDefs::eIgnore);
}

bool gkRegionSet::inside(const gkVector<2>& pt, bool considerHoles) const {
  return std::any_of(regions_.begin(), regions_.end(), [&](const gkPtrHandle_const<gkRegion>& r) {
    return r->inside(pt, considerHoles);
  });
}

double gkRegionSet::distToPoint(const gkVector<2>& pt, bool verticesOnly, bool considerHoles,
                                bool zeroIfInside) const {
  checkEmptyRegionSet();
  double best = std::numeric_limits<double>::infinity();
  for (const gkPtrHandle_const<gkRegion>& region : regions_) {
    best = std::min(best, region->distToPoint(pt, verticesOnly, considerHoles, zeroIfInside));
  }
  return best;
}

bool gkRegionSet::operator==(const gkRegionSet& other) const {
  if (regions_.size() != other.regions_.size()) {
    return false;
  }
  for (std::size_t i = 0; i < regions_.size(); ++i) {
    if (!(*regions_[i] == *other.regions_[i])) {
      return false;
    }
  }
  return true;
}

void gkRegionSet::draw(gkUITablet& tablet, const gkColor& color,
                       const gkUITablet::Layers& layer) const {
  for (const gkPtrHandle_const<gkRegion>& region : regions_) {
    region->draw(tablet, color, layer);
  }
}

void gkRegionSet::makeDataConsistentWithPoints() {
  cleanCacheInfo();
}

void gkRegionSet::makePointsConsistentWithData() {
  cleanCacheInfo();
}

void gkRegionSet::cleanCacheInfo() {
  mutating();
  encloseRectCache_.clear();
  moments_.clear();
  selfIntersectingValid_ = false;
  regularizedValid_ = false;
  outerHullValid_ = false;
}
