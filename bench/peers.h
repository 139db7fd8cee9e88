#pragma once

#include <memory>
#include <vector>

#include <geos_c.h>
#include <opencv2/core/types.hpp>
#include <polyclipping/clipper.hpp>

#include "inputs.h"

/// The inputs in each peer library's own types, made outside the timed loops. Boost.Geometry's
/// types are in boost_peer.h, kept apart because its headers are slow to compile.
namespace gk::bench {

// --- GEOS (the C API, reentrant functions) ------------------------------------------------

/// The suite's one GEOS context, made on first use and never finished (it lives for the run).
GEOSContextHandle_t geosContext();

struct GeosDeleter {
  void operator()(GEOSGeometry* g) const { GEOSGeom_destroy_r(geosContext(), g); }
};
using GeosGeometry = std::unique_ptr<GEOSGeometry, GeosDeleter>;

struct GeosPreparedDeleter {
  void operator()(const GEOSPreparedGeometry* g) const {
    GEOSPreparedGeom_destroy_r(geosContext(), g);
  }
};
using GeosPrepared = std::unique_ptr<const GEOSPreparedGeometry, GeosPreparedDeleter>;

/// The closed ring through the points (the first point repeated at the end).
GeosGeometry geosRing(const Points& points);
/// The polygon whose shell is geosRing(points).
GeosGeometry geosPolygon(const Points& points);
/// The line string through the points, closed (first point repeated) when closed is set.
GeosGeometry geosLine(const Points& points, bool closed);
GeosGeometry geosPoint(const gkVector<2>& p);
/// The prepared form of g; g must outlive it.
GeosPrepared geosPrepare(const GEOSGeometry* g);

// --- OpenCV ---------------------------------------------------------------------------------

/// The points in single precision: the contour functions used here take CV_32F or CV_32S
/// points only.
std::vector<cv::Point2f> cvPoints(const Points& points);

// --- Clipper 1 ------------------------------------------------------------------------------

/// Clipper works on integers: coordinates are scaled by 1e6 and rounded (the shapes span a few
/// hundred units, so 1e-6 units survive and every value stays below Clipper's fast 2^30 range).
constexpr double kClipperScale = 1e6;
ClipperLib::Path clipperPath(const Points& points);

}  // namespace gk::bench
