// Heap held by one contour or region once every cache a public query can fill is filled.
//
// This executable replaces the global operator new and delete (the library, a shared object,
// allocates through them too) with versions that keep a running total of live heap bytes and
// its peak, as malloc_usable_size reports each block. It is a program of its own so that the
// counting never touches the timing suite. Each benchmark runs once and reports, per vertex of
// the shape:
//   retainedBytesPerVertex  live bytes after construction and every cache-filling query,
//                           less those live before construction (the caller's input vector,
//                           made earlier, is not counted; the object's own copy is)
//   peakBytesPerVertex      the highest live total reached meanwhile, on the same baseline:
//                           includes the queries' temporaries and the (small) results they
//                           hand back
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <gk/gk.h>

#include "../inputs.h"

namespace {

std::atomic<std::size_t> gLive{0};
std::atomic<std::size_t> gPeak{0};

void* countedAlloc(std::size_t size) noexcept {
  void* p = std::malloc(size == 0 ? 1 : size);
  if (p != nullptr) {
    const std::size_t live =
        gLive.fetch_add(malloc_usable_size(p), std::memory_order_relaxed) + malloc_usable_size(p);
    std::size_t peak = gPeak.load(std::memory_order_relaxed);
    while (live > peak && !gPeak.compare_exchange_weak(peak, live, std::memory_order_relaxed)) {
    }
  }
  return p;
}

void countedFree(void* p) noexcept {
  if (p != nullptr) {
    gLive.fetch_sub(malloc_usable_size(p), std::memory_order_relaxed);
    std::free(p);
  }
}

void* countedNew(std::size_t size) {
  void* p = countedAlloc(size);
  if (p == nullptr) {
    throw std::bad_alloc();
  }
  return p;
}

}  // namespace

void* operator new(std::size_t size) {
  return countedNew(size);
}
void* operator new[](std::size_t size) {
  return countedNew(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return countedAlloc(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return countedAlloc(size);
}
void operator delete(void* p) noexcept {
  countedFree(p);
}
void operator delete[](void* p) noexcept {
  countedFree(p);
}
void operator delete(void* p, std::size_t) noexcept {
  countedFree(p);
}
void operator delete[](void* p, std::size_t) noexcept {
  countedFree(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
  countedFree(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept {
  countedFree(p);
}

namespace gk::bench {

namespace {

/// A point inside every family's shapes and one near their boundary, for the queries that fill
/// caches; the vertex-grid tolerance (one grid is built per distinct value).
const gkVector<2> kInner(1.0, 2.0);
const gkVector<2> kNearEdge(99.0, 5.0);
constexpr double kGridTolerance = 1.0;

/// Every public contour query that fills a cache, once.
void fillContourCaches(const gkContour& c) {
  benchmark::DoNotOptimize(c.length());
  benchmark::DoNotOptimize(c.meanPosition());
  benchmark::DoNotOptimize(c.extremalVertexIndex(gkRadian(0.3)));
  benchmark::DoNotOptimize(c.encloseRect());
  benchmark::DoNotOptimize(c.encloseCircle(gkContourDefs::eFarthestPair));
  benchmark::DoNotOptimize(c.encloseCircle(gkContourDefs::eFirstVertexCentered));
  {
    gkRegion hull;
    c.convexHull(hull);
  }
  gkEllipse ellipse;
  double residual = 0;
  c.fitEllipse(ellipse, residual);
  benchmark::DoNotOptimize(c.closestPoint(kNearEdge, false));
  benchmark::DoNotOptimize(c.vertexIndex(kNearEdge, kGridTolerance));
  benchmark::DoNotOptimize(c.intersections(gkLineSeg(kInner, kNearEdge), true));
  benchmark::DoNotOptimize(c.isSelfIntersecting());
}

/// Every public region query that fills a cache: the walks first, so that the copy each hands
/// back (a region with no caches yet, or the region itself when it does not self-intersect) is
/// small and gone before the others run; then the contour's queries and the region's own.
/// Returns false when regularize or outerHull threw (their caches then stay empty).
bool fillRegionCaches(const gkRegion& r) {
  bool walked = true;
  try {
    gkRegion out;
    r.regularize(out);
    r.outerHull(out);
  } catch (const gkException&) {
    walked = false;
  }
  fillContourCaches(r);
  benchmark::DoNotOptimize(r.inside(kInner, true));
  for (const bool holes : {false, true}) {
    benchmark::DoNotOptimize(r.area(holes));
    benchmark::DoNotOptimize(r.centerOfMass(holes));
    benchmark::DoNotOptimize(r.inertiaMatrix(holes));
  }
  return walked;
}

void report(benchmark::State& state, std::size_t before, std::size_t retained, int n) {
  state.counters["retainedBytesPerVertex"] = static_cast<double>(retained - before) / n;
  state.counters["peakBytesPerVertex"] =
      static_cast<double>(gPeak.load(std::memory_order_relaxed) - before) / n;
}

void registerMemory(Family f, int n) {
  const std::string fam = familyName(f);
  benchmark::RegisterBenchmark(benchName("contourMemory", "gkgeom", fam, n).c_str(),
                               [f, n](benchmark::State& state) {
                                 const Points pts = shape(f, n);
                                 for (auto _ : state) {
                                   const std::size_t before = gLive.load(std::memory_order_relaxed);
                                   gPeak.store(before, std::memory_order_relaxed);
                                   std::size_t retained = 0;
                                   {
                                     const gkContour c(pts, true, 0);
                                     fillContourCaches(c);
                                     retained = gLive.load(std::memory_order_relaxed);
                                   }
                                   report(state, before, retained, n);
                                 }
                                 state.counters["n"] = n;
                               })
      ->Iterations(1);
  benchmark::RegisterBenchmark(benchName("regionMemory", "gkgeom", fam, n).c_str(),
                               [f, n](benchmark::State& state) {
                                 const Points pts = shape(f, n);
                                 for (auto _ : state) {
                                   const std::size_t before = gLive.load(std::memory_order_relaxed);
                                   gPeak.store(before, std::memory_order_relaxed);
                                   std::size_t retained = 0;
                                   bool walked = true;
                                   {
                                     const gkRegion r(pts, gkContourDefs::eIgnore);
                                     walked = fillRegionCaches(r);
                                     retained = gLive.load(std::memory_order_relaxed);
                                   }
                                   report(state, before, retained, n);
                                   // 1 when regularize or outerHull threw, so their caches could
                                   // not be counted.
                                   state.counters["walkThrew"] = walked ? 0 : 1;
                                 }
                                 state.counters["n"] = n;
                               })
      ->Iterations(1);
}

}  // namespace

}  // namespace gk::bench

int main(int argc, char** argv) {
  for (const gk::bench::Family f : {gk::bench::Family::kStar, gk::bench::Family::kBlob,
                                    gk::bench::Family::kStarX, gk::bench::Family::kBlobX}) {
    for (const int n : gk::bench::sizes()) {
      gk::bench::registerMemory(f, n);
    }
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
