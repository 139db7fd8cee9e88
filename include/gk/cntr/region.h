#pragma once

#include <vector>

#include <gk/base/matrix.h>
#include <gk/base/ptr_handle.h>
#include <gk/base/vector.h>
#include <gk/cntr/contour.h>
#include <gk/cntr/contour_defs.h>
#include <gk/cntr/moments/moment_cache.h>
#include <gk/gk_export.h>

class gkRegionTestAccess;
class gkRegionSet;

/// A closed outer boundary (the contour base) with a list of holes, each itself a region held
/// by counted const handle and shared with whoever else holds it.
///
/// A region is always closed: isClosed() is true whatever it was built from, and the geometry
/// treats the last vertex as joined to the first. Holes never intersect the outer boundary when
/// they are set; that a hole lies inside, or that holes do not overlap, is the caller's business.
/// A hole may have holes of its own (an island inside a hole is inside the region).
class GK_EXPORT gkRegion : public virtual gkContour {
 public:
  using Holes = std::vector<gkPtrHandle_const<gkRegion>>;

  /// An empty region (no vertex, no hole).
  gkRegion();
  /// The boundary from a vertex list, then the effect of mode: eOuterHull replaces the region
  /// by its outer hull, eRegularize by its regularization (each only when the boundary
  /// self-intersects); any other value keeps it as given.
  explicit gkRegion(const std::vector<gkVector<2>>& points,
                    gkContourDefs::IntersectionMode mode = gkContourDefs::eIgnore);
  /// The boundary from a polygon (all its vertices, a repeated last vertex included).
  explicit gkRegion(const gkPolygon& polygon,
                    gkContourDefs::IntersectionMode mode = gkContourDefs::eIgnore);
  /// The boundary from a contour (its vertices and label; an open contour is taken as closed).
  explicit gkRegion(const gkContour& contour,
                    gkContourDefs::IntersectionMode mode = gkContourDefs::eIgnore);

  /// Copies the boundary, the hole handles (the holes are shared, not duplicated) and every
  /// cache, the cached derived regions by shared handle.
  gkRegion(const gkRegion& other);
  gkRegion& operator=(const gkRegion& other);
  ~gkRegion() override;

  /// A new empty region, owned by the caller (the archive's factory).
  static gkPersistent* make();
  /// Registers the class with the archive's type registry.
  static const gk_Instantiator sExemplar;

  const Holes& holes() const { return holes_; }
  /// Sets the holes. Drops every cache first; then, in order, intersects the outer boundary
  /// with each hole's outer boundary and throws BadParams ("holes cannot intersect region") at
  /// the first hole that meets it, leaving the old holes in place (with all caches dropped).
  void holes(const Holes& h);
  void holes(const std::vector<gkPtrHandle<gkRegion>>& h);

  /// Always true.
  bool isClosed() const override;
  /// true does nothing; false throws RegionCannotBeSetOpen and leaves the region closed.
  void isClosed(bool closed) override;

  using gkContour::map;
  /// result := a new region of xform applied to every outer vertex, with this label and no
  /// holes (holes are deliberately not carried over).
  void map(const gkXform<2>& xform, gkRegion& result) const;

  /// Compares the outer boundaries only (as contours): holes and caches take no part.
  bool operator==(const gkRegion& other) const;
  bool operator!=(const gkRegion& other) const { return !(*this == other); }

  using gkContour::draw;
  /// Draws nothing, deliberately (a region set calls it for each member); the contour's draw
  /// with a mode still draws the boundary.
  virtual void draw(gkUITablet& tablet, const gkColor& color,
                    const gkUITablet::Layers& layer) const;

  // --- containment and distance ----------------------------------------------------------

  /// True when pt lies inside the outer boundary (an odd crossing count; a point within 1e-6 of
  /// a boundary vertex counts as inside) and, with considerHoles, inside none of the holes
  /// (each hole asked with its own holes, so an island in a hole counts as inside).
  bool inside(const gkVector<2>& pt, bool considerHoles) const;

  using gkContour::closestVertexIndex;
  /// The nearest vertex over the boundary and, with considerHoles, the holes: holeIndex is -1
  /// for the boundary, else the hole's position. Ties keep the boundary, then the earlier hole.
  long closestVertexIndex(const gkVector<2>& pt, bool considerHoles, long& holeIndex) const;

  using gkContour::closestPoint;
  /// verticesOnly: the nearest vertex as closestVertexIndex(pt, considerHoles, h) finds it.
  /// Otherwise the nearest point on the boundary or on any hole: in this branch the holes are
  /// searched whatever considerHoles says (deliberately).
  gkVector<2> closestPoint(const gkVector<2>& pt, bool verticesOnly, bool considerHoles) const;

  using gkContour::distToPoint;
  /// 0.0 when zeroIfInside and inside(pt, considerHoles); else the distance to
  /// closestPoint(pt, verticesOnly, considerHoles).
  double distToPoint(const gkVector<2>& pt, bool verticesOnly, bool considerHoles,
                     bool zeroIfInside) const;

  /// The crossings of seg with the boundary (ordered along seg), then, with considerHoles, with
  /// each hole in hole order. The whole is not re-sorted.
  std::vector<gkVector<2>> intersections(const gkLineSeg& seg, bool includeEnds,
                                         bool considerHoles) const;
  /// The crossings of c with the boundary, then, with considerHoles, with each hole.
  std::vector<gkVector<2>> intersections(const gkContour& c, bool considerHoles) const;
  /// The contour's own forms, on the outer boundary.
  std::vector<gkVector<2>> intersections(const gkLineSeg& seg, bool includeEnds) const {
    return gkContour::intersections(seg, includeEnds);
  }
  std::vector<gkVector<2>> intersections(const gkContour& other) const {
    return gkContour::intersections(other);
  }

  // --- moments ---------------------------------------------------------------------------

  /// The absolute area of the outer boundary; with considerHoles, minus each hole's own area
  /// (its outer boundary's). Throws EmptyContour below 3 vertices. Cached per flag.
  double area(bool considerHoles) const;
  /// The centroid of the outer boundary; with considerHoles and at least one hole, the centroid
  /// of the boundary's area less each hole's (a region whose holes take all its area has centre
  /// (0, 0)). Throws EmptyContour below 3 vertices. Cached per flag.
  gkVector<2> centerOfMass(bool considerHoles) const;
  /// The central second moments of the outer boundary (see gk_InertiaData). With considerHoles
  /// on a region that has holes, throws BadParams ("inertiaMatrix(considerHoles) is not
  /// implemented"); without holes both flags give the same matrix. Throws EmptyContour below 3
  /// vertices. Cached per flag.
  gkMatrix<2> inertiaMatrix(bool considerHoles) const;

  // --- outer hull and regularization -----------------------------------------------------

  /// result := the region with its self-intersections walked out: the boundary traced along the
  /// outside of the figure, turning at every crossing; loops reached through a pinch vertex stay.
  /// A region whose boundary does not self-intersect is assigned unchanged (holes included);
  /// otherwise the result has no holes. result may be this region. Throws EmptyContour below 3
  /// vertices and BadParams ("invalid contour") when no edge can start the walk or the walk
  /// does not come back to its start. Cached.
  void regularize(gkRegion& result) const;
  /// As regularize, then loops inside other loops are dropped and loops sharing a vertex are
  /// merged, leaving the outermost envelope as one boundary. Cached.
  void outerHull(gkRegion& result) const;

 protected:
  using gkContour::intersections;

  /// Throws EmptyContour (empty message) when the outer boundary has fewer than 3 vertices.
  void checkEmptyContour() const;

  /// Drops the contour's caches, then the region's own.
  void cleanCacheInfo() override;

  /// The region layer: version byte (1 is written), then serialize_.
  void dispatchSerialize(gkArchive& ar) override;
  /// Version 1: the contour layer of the outline, then the holes as handles. Version 0 (read
  /// only): the old base layer, the outline's vertices, one dropped byte, the cache bound; label
  /// 0 and closed flag false. Loaded hole lists are checked (no empty handle, no region among
  /// its own holes, nesting at most gkArchive::kMaxDepth deep) but not intersected.
  void serialize_(gkArchive& ar, unsigned char version) override;

 private:
  friend class gkRegionTestAccess;
  friend class gkRegionSet;

  /// The number of boundary crossings of a ray from pt (the outer boundary only).
  long insideCount(const gkVector<2>& pt, bool bothDirections) const;
  /// The worker behind regularize (hullOnly false) and outerHull (true).
  void outerHullRegularize(gkRegion& result, bool hullOnly) const;
  /// result := one boundary running round this region, over at their first crossing, round
  /// other and back: self-touching at that point, meant to be regularized. Throws BadParams
  /// ("spliced regions do not intersect") when the boundaries do not meet.
  void splice(const gkRegion& other, gkRegion& result) const;
  /// The shared body of regularize and outerHull: one cache slot each.
  void cachedWalk(gkRegion& result, bool hullOnly, bool& valid, gkPtrHandle<gkRegion>& slot) const;

  Holes holes_;
  mutable gk::detail::MomentCache moments_;
  mutable bool regularizedValid_ = false;
  mutable gkPtrHandle<gkRegion> regularized_;
  mutable bool outerHullValid_ = false;
  mutable gkPtrHandle<gkRegion> outerHull_;
};
