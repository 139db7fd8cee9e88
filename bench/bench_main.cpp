// The timing suite: every benchmark of bench/, registered in a fixed order, with the versions
// of the libraries it measures recorded in the output's context.
#include <string>

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

}  // namespace

int main(int argc, char** argv) {
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
