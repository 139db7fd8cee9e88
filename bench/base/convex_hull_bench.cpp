// gwConvexHull against OpenCV's convexHull, Boost.Geometry's convex_hull and GEOS' ConvexHull,
// on outline vertices (star, blob) and on points scattered in a disc.
#include <vector>

#include <gk/gk.h>
#include <opencv2/imgproc.hpp>

#include "../boost_peer.h"
#include "../peers.h"
#include "../registry.h"

namespace gk::bench {

namespace {

const std::vector<Family> kPointSets = {Family::kStar, Family::kBlob, Family::kDisc};

void registerHull(Family f, int n) {
  const std::string op = "convexHull";
  const std::string fam = familyName(f);
  add(op, "gkgeom", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    std::vector<gkVector<2>> hull;
    for (auto _ : state) {
      gwConvexHull(pts, hull);
      benchmark::DoNotOptimize(hull.data());
    }
    state.counters["hullVertices"] = static_cast<double>(hull.size());
  });
  add(op, "opencv", fam, n, [f, n](benchmark::State& state) {
    const std::vector<cv::Point2f> pts = cvPoints(cachedShape(f, n));
    std::vector<cv::Point2f> hull;
    for (auto _ : state) {
      cv::convexHull(pts, hull);
      benchmark::DoNotOptimize(hull.data());
    }
    state.counters["hullVertices"] = static_cast<double>(hull.size());
  });
  add(op, "boost", fam, n, [f, n](benchmark::State& state) {
    const BMultiPoint pts = boostMultiPoint(cachedShape(f, n));
    BRing hull;
    for (auto _ : state) {
      hull.clear();
      bg::convex_hull(pts, hull);
      benchmark::DoNotOptimize(hull.data());
    }
    // The ring repeats its first vertex at the end.
    state.counters["hullVertices"] = static_cast<double>(hull.size()) - 1;
  });
  add(op, "geos", fam, n, [f, n](benchmark::State& state) {
    // The hull of a line string is the hull of its vertices, and it is the cheapest GEOS
    // geometry to build from a point list.
    const GeosGeometry pts = geosLine(cachedShape(f, n), false);
    int hullVertices = 0;
    for (auto _ : state) {
      const GeosGeometry hull(GEOSConvexHull_r(geosContext(), pts.get()));
      benchmark::DoNotOptimize(hull.get());
      hullVertices = GEOSGetNumCoordinates_r(geosContext(), hull.get()) - 1;
    }
    state.counters["hullVertices"] = hullVertices;
  });
}

}  // namespace

void registerConvexHullBenchmarks() {
  for (const Family f : kPointSets) {
    for (const int n : sizes()) {
      registerHull(f, n);
    }
  }
}

}  // namespace gk::bench
