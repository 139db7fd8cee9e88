// The stored forms of contours, regions and region sets.

#include <limits>
#include <unordered_map>

#include <gk/base/archive.h>
#include <gk/cntr/contour.h>
#include <gk/cntr/region.h>
#include <gk/cntr/region_set.h>

#include "cntr/detail/legacy_layer.h"

namespace {

/// Bytes a stored vertex takes: two doubles.
constexpr std::size_t kVertexBytes = 16;
/// The fewest bytes a stored handle takes: its tag.
constexpr std::size_t kHandleBytes = 1;

/// The cache bound as loaded: a signed 32-bit quantity, never negative.
long checkedBound(gkArchive& ar, long bound) {
  if (bound < 0 || bound > std::numeric_limits<int>::max()) {
    throw gkArchive::BadFormat("cache bound " + std::to_string(bound) + " out of range",
                               ar.offset() - 8);
  }
  return bound;
}

/// How deeply holes nest below r (a region without holes: 0), refusing a region that is among
/// its own holes and nesting deeper than the archive allows. Loaded hole lists can be any graph
/// of back-references; containment recurses through holes, so it must be a shallow tree-like
/// graph. Memoised, so shared holes are measured once.
int holeNesting(const gkRegion& r, std::unordered_map<const gkRegion*, int>& depth, gkArchive& ar) {
  constexpr int kInProgress = -1;
  const auto found = depth.find(&r);
  if (found != depth.end()) {
    if (found->second == kInProgress) {
      throw gkArchive::BadFormat("a region is among its own holes", ar.offset());
    }
    return found->second;
  }
  depth[&r] = kInProgress;
  int deepest = 0;
  for (const gkPtrHandle_const<gkRegion>& hole : r.holes()) {
    const int d = holeNesting(*hole, depth, ar) + 1;
    if (d > gkArchive::kMaxDepth) {
      throw gkArchive::LimitExceeded(
          "holes nest deeper than " + std::to_string(gkArchive::kMaxDepth), ar.offset());
    }
    deepest = std::max(deepest, d);
  }
  depth[&r] = deepest;
  return deepest;
}

}  // namespace

// --- gkContour --------------------------------------------------------------------------------

const gk_Instantiator gkContour::sExemplar(typeid(gkContour), &gkContour::make, "gkContour");

void gkContour::dispatchSerialize(gkArchive& ar) {
  if (haveVisited(static_cast<const gkContour*>(this), sizeof(gkContour))) {
    return;
  }
  unsigned char version = 1;
  ar || version;
  gkContour::serialize_(ar, version);
  setVisited(static_cast<const gkContour*>(this), sizeof(gkContour));
}

void gkContour::serialize_(gkArchive& ar, unsigned char version) {
  if (version > 1) {
    throw gkArchive::UnknownVersion("cntr/contour", 904);
  }
  if (version == 1) {
    gkPersistent::dispatchSerialize(ar);
    ar || label_ || isClosed_;
    ar.container(points_, kVertexBytes);
    long bound = cachedVectorSize_;
    ar || bound;
    if (ar.isLoading()) {
      cachedVectorSize_ = checkedBound(ar, bound);
    }
  } else {
    gk::detail::readLegacyShapeLayer(ar);
    ar.container(points_, kVertexBytes);
    unsigned char dropped = 0;
    ar || dropped;
    long bound = 0;
    ar || bound;
    cachedVectorSize_ = checkedBound(ar, bound);
    ar || isClosed_;
    label_ = 0;
  }
  if (ar.isLoading()) {
    cleanCacheInfo();
  }
}

// --- gkRegion ---------------------------------------------------------------------------------

const gk_Instantiator gkRegion::sExemplar(typeid(gkRegion), &gkRegion::make, "gkRegion");

void gkRegion::dispatchSerialize(gkArchive& ar) {
  if (haveVisited(static_cast<const gkRegion*>(this), sizeof(gkRegion))) {
    return;
  }
  unsigned char version = 1;
  ar || version;
  gkRegion::serialize_(ar, version);
  setVisited(static_cast<const gkRegion*>(this), sizeof(gkRegion));
}

void gkRegion::serialize_(gkArchive& ar, unsigned char version) {
  if (version > 1) {
    throw gkArchive::UnknownVersion("cntr/region", 819);
  }
  if (version == 1) {
    gkContour::dispatchSerialize(ar);
    Holes loaded = holes_;
    ar.container(loaded, kHandleBytes);
    if (ar.isLoading()) {
      for (const gkPtrHandle_const<gkRegion>& hole : loaded) {
        if (!hole) {
          throw gkArchive::BadFormat("a hole handle is empty", ar.offset());
        }
      }
      holes_.swap(loaded);
      std::unordered_map<const gkRegion*, int> depth;
      try {
        holeNesting(*this, depth, ar);
      } catch (...) {
        // Refused holes are not kept: a region among its own holes would hold a counted
        // reference to itself and never be freed.
        holes_.swap(loaded);
        throw;
      }
    }
  } else {
    // The legacy form, read as it always was: the outline's vertices and bound, then label and
    // closed flag cleared (a legacy region is not forced closed here; it reads as closed anyway).
    gk::detail::readLegacyShapeLayer(ar);
    std::vector<gkVector<2>> vertices;
    ar.container(vertices, kVertexBytes);
    unsigned char dropped = 0;
    ar || dropped;
    long bound = 0;
    ar || bound;
    gkContour::operator=(gkContour(vertices, false, 0));
    gkContour::cachedVectorSize(checkedBound(ar, bound));
    gkContour::label(0);
    holes_.clear();
  }
  if (ar.isLoading()) {
    cleanCacheInfo();
  }
}

// --- gkRegionSet ------------------------------------------------------------------------------

const gk_Instantiator gkRegionSet::sExemplar(typeid(gkRegionSet), &gkRegionSet::make,
                                             "gkRegionSet");

void gkRegionSet::dispatchSerialize(gkArchive& ar) {
  if (haveVisited(static_cast<const gkRegionSet*>(this), sizeof(gkRegionSet))) {
    return;
  }
  unsigned char version = 1;
  ar || version;
  gkRegionSet::serialize_(ar, version);
  setVisited(static_cast<const gkRegionSet*>(this), sizeof(gkRegionSet));
}

void gkRegionSet::serialize_(gkArchive& ar, unsigned char version) {
  if (version > 1) {
    throw gkArchive::UnknownVersion("cntr/regionst", 479);
  }
  gkPersistent::dispatchSerialize(ar);
  Regions loaded = regions_;
  ar.container(loaded, kHandleBytes);
  if (ar.isLoading()) {
    for (const gkPtrHandle_const<gkRegion>& member : loaded) {
      if (!member) {
        throw gkArchive::BadFormat("a region set member handle is empty", ar.offset());
      }
    }
    setRegions(loaded);
  }
  if (version == 1) {
    long bound = cachedVectorSize_;
    ar || bound;
    if (ar.isLoading()) {
      cachedVectorSize_ = checkedBound(ar, bound);
    }
  }
  if (ar.isLoading()) {
    cleanCacheInfo();
  }
}
