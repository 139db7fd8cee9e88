// gkRegion against its peers: regularization and outer hull of (self-intersecting) outlines,
// and point containment.
//
// regularize and outerHull are cached per region, so they are asked of new regions, built with
// the timer paused (timeFirstCalls); "newRegion" times that construction alone, for information.
// Containment runs on one region built before the loop, its caches filled by a first query.
#include <cstddef>
#include <string>
#include <utility>
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

void registerConstruction(Family f, int n) {
  add("newRegion", "gkgeom", familyName(f), n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    for (auto _ : state) {
      gkRegion r(pts, gkContourDefs::eIgnore);
      benchmark::DoNotOptimize(&r);
    }
  });
}

void registerRepair(Family f, int n) {
  const std::string fam = familyName(f);
  // regularize and outerHull, timed alike: the same walk, the outer hull going on to its loops.
  using Walk = void (gkRegion::*)(gkRegion&) const;
  for (const auto& [op, walk] : {std::pair<const char*, Walk>("regularize", &gkRegion::regularize),
                                 std::pair<const char*, Walk>("outerHull", &gkRegion::outerHull)}) {
    add(op, "gkgeom", fam, n, [f, n, walk = walk](benchmark::State& state) {
      const Points& pts = cachedShape(f, n);
      gkRegion result;
      timeFirstCalls<gkRegion>(
          state, n,
          [&result, walk](const gkRegion& r) {
            (r.*walk)(result);
            benchmark::DoNotOptimize(&result);
          },
          pts, gkContourDefs::eIgnore);
      state.counters["outVertices"] = static_cast<double>(result.points().size());
    });
  }
  // Each peer's repair of a self-intersecting polygon, registered once under regularize; the
  // report takes them as the peers of outerHull too. GEOS MakeValid, Clipper's union of the one
  // polygon under the non-zero rule, and Clipper's SimplifyPolygon (that union made strictly
  // simple: touching vertices split apart).
  {
    const std::string op = "regularize";
    add(op, "geos", fam, n, [f, n](benchmark::State& state) {
      const GeosGeometry polygon = geosPolygon(cachedShape(f, n));
      for (auto _ : state) {
        const GeosGeometry valid(GEOSMakeValid_r(geosContext(), polygon.get()));
        benchmark::DoNotOptimize(valid.get());
      }
    });
    add(op, "clipper", fam, n, [f, n](benchmark::State& state) {
      const ClipperLib::Path path = clipperPath(cachedShape(f, n));
      ClipperLib::Paths solution;
      for (auto _ : state) {
        ClipperLib::Clipper c;
        c.AddPath(path, ClipperLib::ptSubject, true);
        c.Execute(ClipperLib::ctUnion, solution, ClipperLib::pftNonZero, ClipperLib::pftNonZero);
        benchmark::DoNotOptimize(solution.data());
      }
      state.counters["outPaths"] = static_cast<double>(solution.size());
    });
    add(op, "clipper-simplify", fam, n, [f, n](benchmark::State& state) {
      const ClipperLib::Path path = clipperPath(cachedShape(f, n));
      ClipperLib::Paths solution;
      for (auto _ : state) {
        ClipperLib::SimplifyPolygon(path, solution, ClipperLib::pftNonZero);
        benchmark::DoNotOptimize(solution.data());
      }
    });
  }
}

void registerInside(Family f, int n) {
  const std::string op = "inside";
  const std::string fam = familyName(f);
  add(op, "gkgeom", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    const Points queries = queryPoints(pts, kQueryPool);
    const gkRegion region(pts, gkContourDefs::eIgnore);
    int insideCount = 0;
    for (const gkVector<2>& q : queries) {
      insideCount += region.inside(q, true) ? 1 : 0;
    }
    std::size_t k = 0;
    for (auto _ : state) {
      benchmark::DoNotOptimize(region.inside(queries[k], true));
      k = (k + 1) % kQueryPool;
    }
    state.counters["insideOf1024"] = insideCount;
  });
  add(op, "opencv", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    const std::vector<cv::Point2f> contour = cvPoints(pts);
    const std::vector<cv::Point2f> queries = cvPoints(queryPoints(pts, kQueryPool));
    int insideCount = 0;
    for (const cv::Point2f& q : queries) {
      insideCount += cv::pointPolygonTest(contour, q, false) >= 0 ? 1 : 0;
    }
    std::size_t k = 0;
    for (auto _ : state) {
      benchmark::DoNotOptimize(cv::pointPolygonTest(contour, queries[k], false));
      k = (k + 1) % kQueryPool;
    }
    state.counters["insideOf1024"] = insideCount;
  });
  add(op, "boost", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    const BPolygon polygon = boostPolygon(pts);
    std::vector<BPoint> queries;
    for (const gkVector<2>& q : queryPoints(pts, kQueryPool)) {
      queries.push_back(boostPoint(q));
    }
    int insideCount = 0;
    for (const BPoint& q : queries) {
      insideCount += bg::within(q, polygon) ? 1 : 0;
    }
    std::size_t k = 0;
    for (auto _ : state) {
      benchmark::DoNotOptimize(bg::within(queries[k], polygon));
      k = (k + 1) % kQueryPool;
    }
    state.counters["insideOf1024"] = insideCount;
  });
  add(op, "geos", fam, n, [f, n](benchmark::State& state) {
    const Points& pts = cachedShape(f, n);
    const GeosGeometry polygon = geosPolygon(pts);
    const GeosPrepared prepared = geosPrepare(polygon.get());
    std::vector<GeosGeometry> queries;
    for (const gkVector<2>& q : queryPoints(pts, kQueryPool)) {
      queries.push_back(geosPoint(q));
    }
    // The first pass also builds the prepared polygon's point-location index.
    int insideCount = 0;
    for (const GeosGeometry& q : queries) {
      insideCount += GEOSPreparedContains_r(geosContext(), prepared.get(), q.get()) == 1 ? 1 : 0;
    }
    std::size_t k = 0;
    for (auto _ : state) {
      benchmark::DoNotOptimize(
          GEOSPreparedContains_r(geosContext(), prepared.get(), queries[k].get()));
      k = (k + 1) % kQueryPool;
    }
    state.counters["insideOf1024"] = insideCount;
  });
}

}  // namespace

void registerRegionBenchmarks() {
  for (const Family f : kOutlines) {
    for (const int n : sizes()) {
      registerConstruction(f, n);
      registerRepair(f, n);
    }
  }
  for (const Family f : kSimpleOutlines) {
    for (const int n : sizes()) {
      registerInside(f, n);
    }
  }
}

}  // namespace gk::bench
