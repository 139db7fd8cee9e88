#pragma once

#include <vector>

#include <gk/base/bounded_cache.h>
#include <gk/base/color.h>
#include <gk/base/matrix.h>
#include <gk/base/persistent.h>
#include <gk/base/ptr_handle.h>
#include <gk/base/rect.h>
#include <gk/base/rep_base.h>
#include <gk/base/ui_tablet.h>
#include <gk/base/xform.h>
#include <gk/cntr/contour.h>
#include <gk/cntr/contour_defs.h>
#include <gk/cntr/moments/moment_cache.h>
#include <gk/cntr/region.h>
#include <gk/gk_export.h>

class gkRegionSetTestAccess;

/// An ordered collection of regions, each held by counted const handle and shared with other
/// holders, treated as one shape. Members are not checked against one another: a set may hold
/// overlapping, nested or identical regions.
class GK_EXPORT gkRegionSet : public virtual gkPersistent, public virtual gkRepBase {
 public:
  using Regions = std::vector<gkPtrHandle_const<gkRegion>>;

  /// An empty set.
  gkRegionSet();
  /// Stores the list, then applies mode to the whole set: eOuterHull replaces it by its outer
  /// hull, eRegularize by its regularization (each only when the set self-intersects); any other
  /// value keeps it as given.
  explicit gkRegionSet(const Regions& regions,
                       gkContourDefs::IntersectionMode mode = gkContourDefs::eIgnore);
  explicit gkRegionSet(const std::vector<gkPtrHandle<gkRegion>>& regions,
                       gkContourDefs::IntersectionMode mode = gkContourDefs::eIgnore);
  /// Copies the member handles (members are shared), the bound and every cache; the rectangle
  /// cache into a map of its own, the cached derived sets by shared handle.
  gkRegionSet(const gkRegionSet& other);
  gkRegionSet& operator=(const gkRegionSet& other);
  ~gkRegionSet() override;

  /// A new empty set, owned by the caller (the archive's factory).
  static gkPersistent* make();
  /// Registers the class with the archive's type registry.
  static const gk_Instantiator sExemplar;

  /// A copy of the member list.
  Regions regions() const { return regions_; }
  /// Replaces the members (dropping every cache), then applies mode as the constructors do.
  void regions(const Regions& regions,
               gkContourDefs::IntersectionMode mode = gkContourDefs::eIgnore);
  void regions(const std::vector<gkPtrHandle<gkRegion>>& regions,
               gkContourDefs::IntersectionMode mode = gkContourDefs::eIgnore);
  /// Appends a member (dropping every cache), then applies mode.
  void add(const gkPtrHandle_const<gkRegion>& region,
           gkContourDefs::IntersectionMode mode = gkContourDefs::eIgnore);

  /// The bound of the rectangle cache: it holds at most cachedVectorSize() + 1 transforms.
  long cachedVectorSize() const { return cachedVectorSize_; }
  /// Throws BadParams (empty message) for n < 0 or beyond 32 bits; the bound is unchanged.
  void cachedVectorSize(long n);

  /// The box of the members' outer boundaries under x (holes take no part). Throws
  /// EmptyRegionSet for an empty set. Cached by transform, bounded as the contour's cache is.
  gkRect encloseRect(const gkXform<2>& x = gkXform<2>()) const;

  /// True when a member's outer boundary self-intersects or two members' outer boundaries
  /// meet. Holes are not examined. An empty set is false. Cached.
  bool isSelfIntersecting() const;

  /// result := the set with overlapping members spliced together (in a single pass) and every
  /// member regularized. A set that does not self-intersect is assigned unchanged. result may
  /// be this set. Throws what the members' operations throw. Cached.
  void regularize(gkRegionSet& result) const;
  /// As regularize, with every member reduced to its outer hull. Cached.
  void outerHull(gkRegionSet& result) const;

  /// The sum of the members' area(considerHoles). An empty set has area 0 (no check). Cached.
  double area(bool considerHoles) const;
  /// The area-weighted centre of the members; (0, 0) when the total area is within 1e-15 of 0.
  /// Throws EmptyRegionSet for an empty set. Cached per flag.
  gkVector<2> centerOfMass(bool considerHoles) const;
  /// The members' moment records summed in order by the parallel-axis rule. With considerHoles,
  /// a member with holes throws BadParams as its own inertiaMatrix does. Throws EmptyRegionSet
  /// for an empty set. Cached per flag.
  gkMatrix<2> inertiaMatrix(bool considerHoles) const;

  /// True when pt is inside some member (in member order); an empty set is false.
  bool inside(const gkVector<2>& pt, bool considerHoles) const;
  /// The smallest member distance. Throws EmptyRegionSet for an empty set.
  double distToPoint(const gkVector<2>& pt, bool verticesOnly, bool considerHoles,
                     bool zeroIfInside) const;

  /// Same member count and pairwise equal members in list order (outer boundaries only): the
  /// same regions in another order compare unequal.
  bool operator==(const gkRegionSet& other) const;
  bool operator!=(const gkRegionSet& other) const { return !(*this == other); }

  /// Calls each member's draw(tablet, color, layer) in list order.
  void draw(gkUITablet& tablet, const gkColor& color, const gkUITablet::Layers& layer) const;

 protected:
  /// Replaces the members without touching any cache (for loading).
  void setRegions(const Regions& regions);
  /// Throws EmptyRegionSet (empty message) when the set has no member.
  void checkEmptyRegionSet() const;

  /// Both hooks just drop every cache, through the virtual cleanCacheInfo.
  virtual void makeDataConsistentWithPoints();
  virtual void makePointsConsistentWithData();
  /// Drops every cache and marks the object changed.
  virtual void cleanCacheInfo();

  /// The set layer: version byte (1 is written), then serialize_.
  void dispatchSerialize(gkArchive& ar) override;
  /// The persistent layer, the members as handles (no empty handle), and in version 1 the cache
  /// bound. A loaded set starts with no cache. Other versions throw UnknownVersion.
  virtual void serialize_(gkArchive& ar, unsigned char version);

 private:
  friend class gkRegionSetTestAccess;

  void applyMode(gkContourDefs::IntersectionMode mode);
  void cachedWalk(gkRegionSet& result, bool hullOnly, bool& valid,
                  gkPtrHandle<gkRegionSet>& slot) const;
  void outerHullRegularize(gkRegionSet& result, bool hullOnly) const;

  Regions regions_;
  long cachedVectorSize_ = 3;
  mutable gk::detail::MomentCache moments_;
  mutable gk::detail::BoundedKeyedCache<gkXform<2>, gkRect, gkContour::XformKeyLess>
      encloseRectCache_;
  mutable bool selfIntersecting_ = false;
  mutable bool selfIntersectingValid_ = false;
  mutable bool regularizedValid_ = false;
  mutable gkPtrHandle<gkRegionSet> regularized_;
  mutable bool outerHullValid_ = false;
  mutable gkPtrHandle<gkRegionSet> outerHull_;
};
