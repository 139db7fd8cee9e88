// The timing suite: every benchmark of bench/, registered in a fixed order, with the versions
// of the libraries it measures recorded in the output's context.
#include <string>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include <benchmark/benchmark.h>
#include <geos_c.h>
#include <boost/version.hpp>
#include <opencv2/core/version.hpp>
#include <polyclipping/clipper.hpp>

#include "registry.h"

namespace {

#if defined(__clang__)
constexpr const char* kCompiler = "clang " __clang_version__;
#elif defined(__GNUC__)
constexpr const char* kCompiler = "g++ " __VERSION__;
#else
constexpr const char* kCompiler = "unknown";
#endif

/// Keeps freed memory in the process. By default glibc hands large blocks back to the kernel
/// as soon as they are freed (each served by its own mapping, or trimmed off the top of the
/// heap), so every call that allocates them again is given fresh pages, at a page fault each:
/// on this kind of virtual machine over a microsecond a page, and moving with the host's load.
/// A program that calls a library in a loop runs with a warm heap; so do the benchmarks, every
/// library alike. Blocks of up to 32 MB (glibc's largest threshold) come from the heap.
void keepFreedMemory() {
#if defined(__GLIBC__)
  mallopt(M_MMAP_THRESHOLD, 32 * 1024 * 1024);
  mallopt(M_TRIM_THRESHOLD, 1024 * 1024 * 1024);
#endif
}

}  // namespace

int main(int argc, char** argv) {
  keepFreedMemory();
  gk::bench::registerContourBenchmarks();
  gk::bench::registerRegionBenchmarks();
  gk::bench::registerRegionMomentsBenchmarks();
  gk::bench::registerRegionSetBenchmarks();
  gk::bench::registerPolygonMomentsBenchmarks();
  gk::bench::registerConvexHullBenchmarks();
  gk::bench::registerEllipseFitBenchmarks();

  benchmark::AddCustomContext("compiler", kCompiler);
  benchmark::AddCustomContext("gkgeom", GKGEOM_BENCH_VERSION);
  benchmark::AddCustomContext("google_benchmark", GKGEOM_BENCH_BENCHMARK_VERSION);
  benchmark::AddCustomContext("geos", GEOSversion());
  benchmark::AddCustomContext("opencv", CV_VERSION);
  benchmark::AddCustomContext("boost", BOOST_LIB_VERSION);
  benchmark::AddCustomContext("clipper", CLIPPER_VERSION);

  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
