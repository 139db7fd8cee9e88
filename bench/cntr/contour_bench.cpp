// gkContour against its peers: self-intersection, crossings with another contour, the
// farthest-pair circle and diameter, and nearest-point queries.
//
// Queries that the contour caches (isSelfIntersecting, encloseCircle, diameter, intersections'
// segment index) are asked of new contours, built with the timer paused (timeFirstCalls), so that
// every iteration pays the full first call and nothing else; "newContour" times that construction
// alone, for information.
#include <cstddef>
#include <vector>

#include <gk/gk.h>
#include <opencv2/imgproc.hpp>

#include "../boost_peer.h"
#include "../first_calls.h"
#include "../peers.h"
#include "../registry.h"

namespace gk::bench {

namespace {

const std::vector<Family> kOutlines = {Family::kStar, Family::kBlob, Family::kStarX,
                                       Family::kBlobX};
const std::vector<Family> kSimpleOutlines = {Family::kStar, Family::kBlob};

/// The turn between a contour and its copy in the intersections benchmark: several vertex
/// spacings at every size, so the two outlines cross many times.
constexpr double kCopyTurn = 0.01;

void registerConstruction(Family f, int n) {
  const std::string fam = familyName(f);
  add("newContour", "gkgeom", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    for (auto _ : state) {
      gkContour c(pts, true, 0);
      benchmark::DoNotOptimize(&c);
    }
  });
}

void registerSelfIntersection(Family f, int n) {
  const std::string op = "isSelfIntersecting";
  const std::string fam = familyName(f);
  add(op, "gkgeom", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    bool answer = false;
    timeFirstCalls<gkContour>(
        state, n,
        [&answer](const gkContour& c) {
          answer = c.isSelfIntersecting();
          benchmark::DoNotOptimize(answer);
        },
        pts, true, 0);
    state.counters["selfIntersecting"] = answer ? 1 : 0;
  });
  add(op, "geos", fam, n, [f, n](benchmark::State& state) {
    const GeosGeometry ring = geosRing(cachedShape(f, n));
    char simple = 0;
    for (auto _ : state) {
      simple = GEOSisSimple_r(geosContext(), ring.get());
      benchmark::DoNotOptimize(simple);
    }
    state.counters["selfIntersecting"] = simple == 1 ? 0 : 1;
  });
  // Boost's own self-intersection test of one geometry. Its is_simple does not serve: on a
  // ring (an areal geometry) it only looks for duplicate points and spikes, and in Boost 1.74
  // it calls the simple star and blob outlines, as closed or open line strings, not simple.
  add(op, "boost", fam, n, [f, n](benchmark::State& state) {
    const BRing ring = boostRing(cachedShape(f, n));
    bool crosses = false;
    for (auto _ : state) {
      crosses = bg::intersects(ring);
      benchmark::DoNotOptimize(crosses);
    }
    state.counters["selfIntersecting"] = crosses ? 1 : 0;
  });
}

void registerIntersections(Family f, int n) {
  const std::string op = "intersections";
  const std::string fam = familyName(f);
  add(op, "gkgeom", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    const gkContour other(rotated(pts, kCopyTurn), true, 0);
    std::size_t crossings = 0;
    timeFirstCalls<gkContour>(
        state, n,
        [&other, &crossings](const gkContour& c) {
          const std::vector<gkVector<2>> x = c.intersections(other);
          crossings = x.size();
          benchmark::DoNotOptimize(crossings);
        },
        pts, true, 0);
    state.counters["crossings"] = static_cast<double>(crossings);
  });
  add(op, "geos", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    const GeosGeometry a = geosLine(pts, true);
    const GeosGeometry b = geosLine(rotated(pts, kCopyTurn), true);
    int crossings = 0;
    for (auto _ : state) {
      const GeosGeometry x(GEOSIntersection_r(geosContext(), a.get(), b.get()));
      crossings = GEOSGetNumGeometries_r(geosContext(), x.get());
      benchmark::DoNotOptimize(crossings);
    }
    state.counters["crossings"] = crossings;
  });
}

void registerEncloseCircle(Family f, int n) {
  const std::string fam = familyName(f);
  add("encloseCircle", "gkgeom", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    timeFirstCalls<gkContour>(
        state, n,
        [](const gkContour& c) {
          const gkCircle circle = c.encloseCircle(gkContourDefs::eFarthestPair);
          benchmark::DoNotOptimize(circle);
        },
        pts, true, 0);
  });
  add("diameter", "gkgeom", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    timeFirstCalls<gkContour>(
        state, n,
        [](const gkContour& c) {
          benchmark::DoNotOptimize(c.diameter(gkContourDefs::eFarthestPair));
        },
        pts, true, 0);
  });
  // minEnclosingCircle answers both questions at once; the report takes it as the peer of
  // diameter too.
  add("encloseCircle", "opencv", fam, n, [f, n](benchmark::State& state) {
    const std::vector<cv::Point2f> pts = cvPoints(cachedShape(f, n));
    cv::Point2f centre;
    float radius = 0;
    for (auto _ : state) {
      cv::minEnclosingCircle(pts, centre, radius);
      benchmark::DoNotOptimize(radius);
    }
  });
}

void registerProximity(Family f, int n) {
  const std::string fam = familyName(f);
  // One contour, queried over and over: its caches are filled by a first query outside the loop.
  add("closestPoint", "gkgeom", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    const Points queries = queryPoints(pts, kQueryPool);
    const gkContour c(pts, true, 0);
    benchmark::DoNotOptimize(c.closestPoint(queries[0], false));
    std::size_t k = 0;
    for (auto _ : state) {
      benchmark::DoNotOptimize(c.closestPoint(queries[k], false));
      k = (k + 1) % kQueryPool;
    }
  });
  add("distToPoint", "gkgeom", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    const Points queries = queryPoints(pts, kQueryPool);
    const gkContour c(pts, true, 0);
    benchmark::DoNotOptimize(c.distToPoint(queries[0], false));
    std::size_t k = 0;
    for (auto _ : state) {
      benchmark::DoNotOptimize(c.distToPoint(queries[k], false));
      k = (k + 1) % kQueryPool;
    }
  });
  // Each peer's distance from a point to the closed outline (as a curve, not as an area),
  // registered once; the report takes them as the peers of distToPoint too.
  {
    const std::string op = "closestPoint";
    add(op, "boost", fam, n, [f, n](benchmark::State& state) {
      const Points& pts = cachedShape(f, n);
      const BLinestring line = boostClosedLine(pts);
      std::vector<BPoint> queries;
      for (const gkVector<2>& q : queryPoints(pts, kQueryPool)) {
        queries.push_back(boostPoint(q));
      }
      std::size_t k = 0;
      for (auto _ : state) {
        benchmark::DoNotOptimize(bg::distance(queries[k], line));
        k = (k + 1) % kQueryPool;
      }
    });
    add(op, "geos", fam, n, [f, n](benchmark::State& state) {
      const Points& pts = cachedShape(f, n);
      const GeosGeometry line = geosLine(pts, true);
      const GeosPrepared prepared = geosPrepare(line.get());
      std::vector<GeosGeometry> queries;
      for (const gkVector<2>& q : queryPoints(pts, kQueryPool)) {
        queries.push_back(geosPoint(q));
      }
      double d = 0;
      // The first distance query builds the prepared geometry's index: outside the loop.
      GEOSPreparedDistance_r(geosContext(), prepared.get(), queries[0].get(), &d);
      std::size_t k = 0;
      for (auto _ : state) {
        GEOSPreparedDistance_r(geosContext(), prepared.get(), queries[k].get(), &d);
        benchmark::DoNotOptimize(d);
        k = (k + 1) % kQueryPool;
      }
    });
    add(op, "opencv", fam, n, [f, n](benchmark::State& state) {
      const Points& pts = cachedShape(f, n);
      const std::vector<cv::Point2f> contour = cvPoints(pts);
      const std::vector<cv::Point2f> queries = cvPoints(queryPoints(pts, kQueryPool));
      std::size_t k = 0;
      for (auto _ : state) {
        benchmark::DoNotOptimize(cv::pointPolygonTest(contour, queries[k], true));
        k = (k + 1) % kQueryPool;
      }
    });
  }
}

}  // namespace

void registerContourBenchmarks() {
  for (const Family f : kOutlines) {
    for (const int n : sizes()) {
      registerConstruction(f, n);
      registerSelfIntersection(f, n);
    }
  }
  for (const Family f : kSimpleOutlines) {
    for (const int n : sizes()) {
      registerIntersections(f, n);
      registerEncloseCircle(f, n);
      registerProximity(f, n);
    }
  }
}

}  // namespace gk::bench
