// gw_Area, the free function with no cache, against OpenCV's contourArea and Boost.Geometry's
// area. The peers' rows are also the area peers of the region's first area() call.
#include <vector>

#include <gk/gk.h>
#include <opencv2/imgproc.hpp>

#include "../../boost_peer.h"
#include "../../peers.h"
#include "../../registry.h"

namespace gk::bench {

namespace {

const std::vector<Family> kSimpleOutlines = {Family::kStar, Family::kBlob};

void registerArea(Family f, int n) {
  const std::string op = "gw_Area";
  const std::string fam = familyName(f);
  add(op, "gkgeom", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    for (auto _ : state) {
      benchmark::DoNotOptimize(gw_Area(pts));
    }
  });
  add(op, "opencv", fam, n, [f, n](benchmark::State& state) {
    const std::vector<cv::Point2f> contour = cvPoints(cachedShape(f, n));
    for (auto _ : state) {
      benchmark::DoNotOptimize(cv::contourArea(contour));
    }
  });
  add(op, "boost", fam, n, [f, n](benchmark::State& state) {
    const BRing ring = boostRing(cachedShape(f, n));
    for (auto _ : state) {
      benchmark::DoNotOptimize(bg::area(ring));
    }
  });
}

}  // namespace

void registerPolygonMomentsBenchmarks() {
  for (const Family f : kSimpleOutlines) {
    for (const int n : sizes()) {
      registerArea(f, n);
    }
  }
}

}  // namespace gk::bench
