// The first call of a region's moments (area, centre of mass, inertia matrix, and all three)
// against OpenCV's moments of a contour and Boost.Geometry's centroid.
//
// The moments are cached per region, so they are asked of new regions, built with the timer
// paused (timeFirstCalls); "newRegion" (region_bench.cpp) times that construction alone.
#include <vector>

#include <gk/gk.h>
#include <opencv2/imgproc.hpp>

#include "../boost_peer.h"
#include "../first_calls.h"
#include "../peers.h"
#include "../registry.h"

namespace gk::bench {

namespace {

const std::vector<Family> kSimpleOutlines = {Family::kStar, Family::kBlob};

void registerMoments(Family f, int n) {
  const std::string fam = familyName(f);
  add("area", "gkgeom", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    timeFirstCalls<gkRegion>(
        state, n, [](const gkRegion& r) { benchmark::DoNotOptimize(r.area(true)); }, pts,
        gkContourDefs::eIgnore);
  });
  add("centerOfMass", "gkgeom", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    timeFirstCalls<gkRegion>(
        state, n, [](const gkRegion& r) { benchmark::DoNotOptimize(r.centerOfMass(true)); }, pts,
        gkContourDefs::eIgnore);
  });
  add("inertiaMatrix", "gkgeom", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    timeFirstCalls<gkRegion>(
        state, n, [](const gkRegion& r) { benchmark::DoNotOptimize(r.inertiaMatrix(true)); }, pts,
        gkContourDefs::eIgnore);
  });
  add("moments", "gkgeom", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    timeFirstCalls<gkRegion>(
        state, n,
        [](const gkRegion& r) {
          benchmark::DoNotOptimize(r.area(true));
          benchmark::DoNotOptimize(r.centerOfMass(true));
          benchmark::DoNotOptimize(r.inertiaMatrix(true));
        },
        pts, gkContourDefs::eIgnore);
  });
  // cv::moments gives area, centroid and central second moments in one call: the report takes
  // it as the peer of area, centerOfMass and inertiaMatrix as well.
  add("moments", "opencv", fam, n, [f, n](benchmark::State& state) {
    const std::vector<cv::Point2f> contour = cvPoints(cachedShape(f, n));
    for (auto _ : state) {
      const cv::Moments m = cv::moments(contour);
      benchmark::DoNotOptimize(m);
    }
  });
  add("centerOfMass", "boost", fam, n, [f, n](benchmark::State& state) {
    const BRing ring = boostRing(cachedShape(f, n));
    BPoint centroid;
    for (auto _ : state) {
      bg::centroid(ring, centroid);
      benchmark::DoNotOptimize(centroid);
    }
  });
}

}  // namespace

void registerRegionMomentsBenchmarks() {
  for (const Family f : kSimpleOutlines) {
    for (const int n : sizes()) {
      registerMoments(f, n);
    }
  }
}

}  // namespace gk::bench
