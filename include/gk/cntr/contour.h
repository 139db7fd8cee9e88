#pragma once

#include <map>
#include <memory>
#include <utility>
#include <vector>

#include <gk/base/angle.h>
#include <gk/base/archive.h>
#include <gk/base/bounded_cache.h>
#include <gk/base/circle.h>
#include <gk/base/color.h>
#include <gk/base/ellipse.h>
#include <gk/base/line.h>
#include <gk/base/line_seg.h>
#include <gk/base/pair.h>
#include <gk/base/persistent.h>
#include <gk/base/polygon.h>
#include <gk/base/ptr_handle.h>
#include <gk/base/rect.h>
#include <gk/base/rep_base.h>
#include <gk/base/ui_tablet.h>
#include <gk/base/vector.h>
#include <gk/base/xform.h>
#include <gk/cntr/contour_defs.h>
#include <gk/gk_export.h>

class gkContourTestAccess;
class gkRegion;
namespace gk::detail {
class BoxIndex;
class ChainBounds;
}  // namespace gk::detail

/// A planar polyline: an ordered vertex list, a closed flag (a closing segment joins the last
/// vertex to the first) and a caller's label.
///
/// Every measure is computed on first request and cached inside the object; any change of the
/// vertices or of the closed flag drops every cache (cleanCacheInfo). Queries are const but fill
/// caches, so one contour must not be used from two threads at once; different contours may.
///
/// Segment numbering, used by every segment-based query: a closed contour of n vertices has n
/// segments and segment k runs from vertex k-1 to vertex k, the predecessor of vertex 0 being
/// vertex n-1 (so segment 0 is the closing segment and segment k always ends at vertex k); an
/// open contour has n-1 segments and segment k runs from vertex k to vertex k+1.
class GK_EXPORT gkContour : public virtual gkPersistent, public virtual gkRepBase {
 public:
  /// Orders grid cells (column, then row) for the vertex grid of vertexIndex().
  struct gzSTLLessPredicate {
    bool operator()(const gkPair<long>& a, const gkPair<long>& b) const {
      return a.x() < b.x() || (a.x() == b.x() && a.y() < b.y());
    }
  };
  /// Key order of the enclosing-rectangle cache: dictionary order on translation x, translation
  /// y, matrix element (0,0), (0,1), (1,0). Element (1,1) is never compared, on purpose: two
  /// transforms that differ only there are one key. NaN fields sort after every number and are
  /// equivalent to one another, so a NaN transform cannot break the map.
  struct XformKeyLess {
    bool operator()(const gkXform<2>& a, const gkXform<2>& b) const;
  };
  /// One grid per tolerance: (cell size, cell -> vertex numbers in increasing order).
  using VertexGrids =
      std::vector<std::pair<double, std::map<gkPair<long>, std::vector<int>, gzSTLLessPredicate>>>;

  /// An empty closed contour with label 0 and the default bound 3.
  gkContour();

  /// Copies the vertices exactly as given: nothing is removed or merged, and empty, one-vertex,
  /// repeated and non-finite vertex lists are all accepted. The cache bound starts at 3.
  gkContour(const std::vector<gkVector<2>>& points, bool isClosed, unsigned long label);

  /// Copies the polygon's vertices in order. The contour is closed exactly when the polygon's
  /// first and last vertices coincide within 1e-15 in each coordinate, and then both are kept
  /// (the repeated last vertex is not dropped). An empty polygon gives an empty open contour.
  gkContour(const gkPolygon& polygon, unsigned long label);

  /// Copies everything, caches included: keyed caches are deep-copied, so the copy owns its own.
  gkContour(const gkContour& other);
  /// As the copy constructor; self-assignment does nothing.
  gkContour& operator=(const gkContour& other);
  ~gkContour() override;

  /// A new closed, empty contour with label 0, owned by the caller (the archive's factory).
  static gkPersistent* make();
  /// Registers the class with the archive's type registry.
  static const gk_Instantiator sExemplar;

  const std::vector<gkVector<2>>& points() const { return points_; }
  /// Replaces the vertices: drops every cache, stores v, then lets a derived class bring its
  /// per-vertex data in step (makeDataConsistentWithPoints).
  virtual void points(const std::vector<gkVector<2>>& v);

  virtual bool isClosed() const;
  /// Stores the flag and drops every cache, even when the value does not change.
  virtual void isClosed(bool closed);

  unsigned long label() const { return label_; }
  /// Stores the label; no cache depends on it, so none is dropped.
  void label(unsigned long label);

  /// The bound of the keyed caches: each holds at most cachedVectorSize() + 1 entries.
  long cachedVectorSize() const { return cachedVectorSize_; }
  /// Sets the bound for later insertions (caches already larger are not trimmed).
  /// Throws gkContourDefs::BadParams (empty message) for n < 0 or n beyond 32 bits, leaving the
  /// bound unchanged.
  void cachedVectorSize(long n);

  /// The vertices as a polygon with fill mode 0. A closed contour's polygon repeats vertex 0 at
  /// the end (one vertex more); an open contour's has the same vertices. An empty closed contour
  /// gives an empty polygon.
  gkPolygon polygon() const;

  /// out := a new contour of x applied to every vertex, with this closed flag and label. The
  /// result has no cache and the default bound 3, whatever this contour's bound is.
  void map(const gkXform<2>& x, gkContour& out) const;

  /// Same closed flag, exactly equal vertex lists and the same cache bound. The label is
  /// deliberately not compared; the bound is.
  bool operator==(const gkContour& other) const;
  bool operator!=(const gkContour& other) const { return !(*this == other); }

  /// How many segments the walk has: n for a closed contour, n-1 for an open one, 0 without any.
  long segmentCount() const;

  // --- measures ---------------------------------------------------------------------------

  /// Sum of the segment lengths over the walk (the closing segment included when closed).
  /// 0.0 without vertices. Cached.
  double length() const;

  /// The length-weighted centroid of the polyline as a wire (not of the enclosed area): each
  /// segment contributes its midpoint weighted by its length. When all vertices coincide (total
  /// length 0) it is vertex 0. Throws EmptyContour below 2 vertices. Cached.
  gkVector<2> meanPosition() const;

  /// The vertex farthest in the direction of angle; among equal scores the lowest index wins.
  /// The four axis directions (within 1e-15 of (+-1, 0), (0, +-1)) score by the bare coordinate,
  /// so the rounding of cos and sin at those angles cannot change the answer. A vertex whose
  /// score is NaN never wins; when no vertex scores above the most negative double, vertex 0 is
  /// returned. Throws EmptyContour below 2 vertices and BadParams for a non-finite angle.
  /// Cached by angle (the raw value: an angle plus a full turn is another key) in a bounded cache.
  int extremalVertexIndex(const gkRadian& angle) const;
  /// The vertex at extremalVertexIndex(angle).
  gkVector<2> extremalVertexPosition(const gkRadian& angle) const;

  /// The axis-aligned box of the transformed vertices (not the transform of the box). Throws
  /// EmptyContour below 2 vertices. Cached by transform in a bounded cache whose key order
  /// ignores matrix element (1,1) (see XformKeyLess).
  gkRect encloseRect(const gkXform<2>& x = gkXform<2>()) const;

  /// eFarthestPair: the circle on the first farthest-apart pair of vertices met in the order
  /// (i, j) over all ordered pairs; it may leave vertices outside, and with no two distinct
  /// vertices it is the default circle (centre (0,0), radius 0). O(n^2), once per vertex set.
  /// eFirstVertexCentered: centred on vertex 0 with the greatest distance from it as radius;
  /// throws EmptyContour without vertices. Neither mode is the minimal enclosing circle.
  /// Throws BadParams ("diameterMode is not one of the valid enums") for any other mode value.
  /// Cached per mode.
  gkCircle encloseCircle(gkContourDefs::DiameterMode mode) const;
  /// 2 * encloseCircle(mode).radius().
  double diameter(gkContourDefs::DiameterMode mode) const;

  /// out := the convex hull of the vertices as a region (counter-clockwise, strict corners).
  /// Throws EmptyContour below 2 vertices. Cached; the cache is shared by copies.
  void convexHull(gkRegion& out) const;

  /// The least-squares ellipse of the vertices and its residual. Throws EmptyContour below 2
  /// vertices. Cached.
  void fitEllipse(gkEllipse& ellipse, double& residual) const;

  /// Draws every segment of the walk on tablet, the closing segment first; the mode is not
  /// consulted. An empty or one-vertex open contour draws nothing; a one-vertex closed contour
  /// draws one zero-length segment.
  virtual void draw(gkUITablet& tablet, gkContourDefs::DrawMode mode, const gkColor& color,
                    const gkUITablet::Layers& layer) const;

  // --- proximity and intersections --------------------------------------------------------

  /// The number of the vertex nearest to pt; the lowest number wins a tie. Throws EmptyContour
  /// below 2 vertices.
  long closestVertexIndex(const gkVector<2>& pt) const;

  /// The nearest vertex (verticesOnly) or the nearest point on the segments. Ties keep the
  /// earlier segment of the walk, so on a closed contour the closing segment wins. Throws
  /// EmptyContour below 2 vertices.
  gkVector<2> closestPoint(const gkVector<2>& pt, bool verticesOnly) const;

  /// Distance from pt to closestPoint(pt, verticesOnly).
  double distToPoint(const gkVector<2>& pt, bool verticesOnly) const;

  /// The numbers of all vertices strictly closer than tolerance to pt, found through a grid of
  /// cell size tolerance (cells centred on multiples of it). Ordered by cell, column-major over
  /// the 3x3 neighbourhood of pt's cell, then by vertex number: not sorted as a whole. One grid
  /// is built and kept per distinct tolerance value. Throws EmptyContour below 2 vertices and
  /// BadParams for a tolerance that is not a positive finite number.
  std::vector<int> vertexIndex(const gkVector<2>& pt, double tolerance) const;

  /// The crossings of the contour with seg, ordered along seg from p1 to p2. Parallel segments
  /// never cross (even when they overlap). With includeEnds false, every contour segment that
  /// passes within 1e-6 of an end of seg is dropped whole. A crossing at a vertex is reported
  /// once for each of the two segments that meet there. Throws EmptyContour below 2 vertices.
  std::vector<gkVector<2>> intersections(const gkLineSeg& seg, bool includeEnds) const;

  /// The crossings with every segment of other, grouped by other's segment walk, each group
  /// ordered along its segment (ends included). Throws EmptyContour when this contour has
  /// fewer than 2 vertices; other is not checked.
  std::vector<gkVector<2>> intersections(const gkContour& other) const;

  /// True when two segments of the contour that do not share an end cross. False for an empty
  /// contour. Cached.
  bool isSelfIntersecting() const;

 protected:
  /// Drops every cache and replaces the vertices, without the data hook: for derived classes
  /// that keep their per-vertex data in step themselves.
  void setPoints(const std::vector<gkVector<2>>& v);

  /// Throws gkContourDefs::EmptyContour (empty message) for fewer than 2 vertices.
  void checkEmptyContour() const;

  /// The segments in walk order. A degenerate segment (ends equal within 1e-15) keeps its place
  /// with default values; test validLine() before using entry k.
  const std::vector<gkLineSeg>& lineSegs() const;
  /// False where the segment of the same number is degenerate.
  const std::vector<bool>& validLine() const;
  /// The infinite line of each segment (default for degenerate ones).
  const std::vector<gkLine>& lines() const;
  /// The bounding box of each segment (default for degenerate ones).
  const std::vector<gkRect>& segRects() const;
  /// Fills the four segment caches together in one pass, unless they are filled.
  void computeLineSegs() const;
  /// The index over the boxes of the valid segments, built (with the segment caches) on first
  /// use and kept with them.
  const gk::detail::BoxIndex& segmentIndex() const;
  /// The rectangles of runs of consecutive segments, built on first use and kept until the
  /// vertices change (filling the segment caches keeps them); null when they hold no bound (a
  /// coordinate NaN or beyond 1e100).
  const gk::detail::ChainBounds* chainBounds() const;
  /// chainBounds() when the segment index is crowded (its cells list many pairs a segment: long
  /// spikes), null when the index serves segment queries well.
  const gk::detail::ChainBounds* crowdedChains() const;
  /// For each segment, true only when no valid segment but itself and the two sharing its ends
  /// has a box overlapping its box: a query along that segment, either way and without ends,
  /// finds nothing. All false when a coordinate is not finite or beyond 1e100, or when the
  /// segment index is crowded. Not cached: O(n) on outlines whose segments keep apart, for a
  /// caller that queries most segments.
  std::vector<bool> segmentsClearOfOthers() const;
  /// How many crossings intersections(seg, includeEnds) finds, the candidates searched through
  /// runs (this contour's chainBounds()) when given: for containment rays, which meet an
  /// outline in few places whatever its shape.
  std::size_t crossingCount(const gkLineSeg& seg, bool includeEnds,
                            const gk::detail::ChainBounds* runs) const;

  /// The crossings with seg (as the public form) and, in segIndices, the segment number each was
  /// found on.
  std::vector<gkVector<2>> intersections(const gkLineSeg& seg, std::vector<int>& segIndices,
                                         bool includeEnds) const;
  /// As intersections(seg, segIndices, includeEnds), into the caller's buffers, for a caller
  /// that asks many queries of one contour: contourBox is this contour's identity box, points
  /// and segIndices are replaced by the crossings and their segments, candidates is scratch.
  void intersectionsInto(const gkLineSeg& seg, bool includeEnds, const gkRect& contourBox,
                         std::vector<gkVector<2>>& points, std::vector<int>& segIndices,
                         std::vector<std::size_t>& candidates) const;

  /// The upper median of the segment lengths over the walk (zero-length ones included). Throws
  /// EmptyContour below 2 vertices. Cached.
  double medianFeatureSize() const;

  /// Hooks that keep a derived class's per-vertex data in step with the vertices. Here both
  /// just drop every cache, through the virtual cleanCacheInfo so that overrides are reached.
  virtual void makeDataConsistentWithPoints();
  virtual void makePointsConsistentWithData();

  /// Drops every cache and marks the object changed. Overrides must call this one.
  virtual void cleanCacheInfo();

  /// The contour layer: version byte (1 is written), then serialize_.
  void dispatchSerialize(gkArchive& ar) override;
  /// Version 1: the persistent layer, label, closed flag, vertices, cache bound. Version 0 (read
  /// only): the old base layer, vertices, one dropped byte, cache bound, closed flag; label 0.
  /// A loaded contour starts with no cache. Other versions throw UnknownVersion.
  virtual void serialize_(gkArchive& ar, unsigned char version);

 private:
  friend class gkContourTestAccess;

  unsigned long label_ = 0;
  bool isClosed_ = true;
  std::vector<gkVector<2>> points_;
  long cachedVectorSize_ = 3;

  // Caches. Each is a pure function of points_ and isClosed_, filled by a const query and
  // valid only while its flag is set; cleanCacheInfo() is the only thing that invalidates them.
  mutable bool meanValid_ = false;
  mutable gkVector<2> mean_;
  mutable bool lengthValid_ = false;
  mutable double length_ = 0.0;
  mutable gk::detail::BoundedKeyedCache<gkXform<2>, gkRect, XformKeyLess> encloseRectCache_;
  mutable std::vector<bool> circleValid_ = std::vector<bool>(2, false);
  mutable std::vector<gkCircle> circles_ = std::vector<gkCircle>(2);
  mutable gk::detail::BoundedKeyedCache<gkRadian, int> extremalCache_;
  mutable bool hullValid_ = false;
  // Shared by copies (a copy takes the handle, not a new region).
  mutable gkPtrHandle<gkRegion> hull_;
  mutable bool ellipseValid_ = false;
  mutable gkEllipse ellipse_;
  mutable double ellipseResidual_ = 0.0;
  mutable bool selfIntersecting_ = false;
  mutable bool selfIntersectingValid_ = false;
  mutable bool lineSegsValid_ = false;
  mutable std::vector<gkLineSeg> lineSegs_;
  mutable bool linesValid_ = false;
  mutable std::vector<gkLine> lines_;
  mutable bool segRectsValid_ = false;
  mutable std::vector<gkRect> segRects_;
  mutable std::vector<bool> validLine_;
  // The grid over segRects_ that narrows segment queries; built with the segment caches and
  // dropped with them. Immutable once built, so copies share it.
  mutable std::shared_ptr<const gk::detail::BoxIndex> segIndex_;
  // Built on first use (segment queries on a crowded index, containment) and dropped only by
  // cleanCacheInfo; chainsBuilt_ says whether that was tried, crowded_ whether the index is
  // crowded (0 not known yet, 1 yes, 2 no; dropped with the index).
  mutable std::shared_ptr<const gk::detail::ChainBounds> chains_;
  mutable bool chainsBuilt_ = false;
  mutable unsigned char crowded_ = 0;
  mutable bool medianValid_ = false;
  mutable double medianFeatureSize_ = 0.0;
  mutable std::unique_ptr<VertexGrids> vertexGrid_;
};
