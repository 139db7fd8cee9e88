#include "peers.h"

#include <cmath>
#include <stdexcept>

namespace gk::bench {

namespace {

GEOSCoordSequence* coordSequence(const Points& points, bool closed) {
  const std::size_t count = points.size() + (closed ? 1 : 0);
  std::vector<double> xy;
  xy.reserve(2 * count);
  for (const gkVector<2>& p : points) {
    xy.push_back(p.x());
    xy.push_back(p.y());
  }
  if (closed) {
    xy.push_back(points.front().x());
    xy.push_back(points.front().y());
  }
  GEOSCoordSequence* seq =
      GEOSCoordSeq_copyFromBuffer_r(geosContext(), xy.data(), count, /*hasZ=*/0, /*hasM=*/0);
  if (seq == nullptr) {
    throw std::runtime_error("GEOSCoordSeq_copyFromBuffer_r failed");
  }
  return seq;
}

GeosGeometry checked(GEOSGeometry* g, const char* what) {
  if (g == nullptr) {
    throw std::runtime_error(what);
  }
  return GeosGeometry(g);
}

}  // namespace

GEOSContextHandle_t geosContext() {
  static const GEOSContextHandle_t context = GEOS_init_r();
  return context;
}

GeosGeometry geosRing(const Points& points) {
  return checked(GEOSGeom_createLinearRing_r(geosContext(), coordSequence(points, true)),
                 "GEOSGeom_createLinearRing_r failed");
}

GeosGeometry geosPolygon(const Points& points) {
  GeosGeometry shell = geosRing(points);
  // The polygon takes ownership of its shell.
  return checked(GEOSGeom_createPolygon_r(geosContext(), shell.release(), nullptr, 0),
                 "GEOSGeom_createPolygon_r failed");
}

GeosGeometry geosLine(const Points& points, bool closed) {
  return checked(GEOSGeom_createLineString_r(geosContext(), coordSequence(points, closed)),
                 "GEOSGeom_createLineString_r failed");
}

GeosGeometry geosPoint(const gkVector<2>& p) {
  return checked(GEOSGeom_createPointFromXY_r(geosContext(), p.x(), p.y()),
                 "GEOSGeom_createPointFromXY_r failed");
}

GeosPrepared geosPrepare(const GEOSGeometry* g) {
  const GEOSPreparedGeometry* prepared = GEOSPrepare_r(geosContext(), g);
  if (prepared == nullptr) {
    throw std::runtime_error("GEOSPrepare_r failed");
  }
  return GeosPrepared(prepared);
}

std::vector<cv::Point2f> cvPoints(const Points& points) {
  std::vector<cv::Point2f> out;
  out.reserve(points.size());
  for (const gkVector<2>& p : points) {
    out.emplace_back(static_cast<float>(p.x()), static_cast<float>(p.y()));
  }
  return out;
}

ClipperLib::Path clipperPath(const Points& points) {
  ClipperLib::Path path;
  path.reserve(points.size());
  for (const gkVector<2>& p : points) {
    path.emplace_back(static_cast<ClipperLib::cInt>(std::llround(p.x() * kClipperScale)),
                      static_cast<ClipperLib::cInt>(std::llround(p.y() * kClipperScale)));
  }
  return path;
}

}  // namespace gk::bench
