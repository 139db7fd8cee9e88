#pragma once

#include <functional>
#include <string>

#include <benchmark/benchmark.h>

#include "inputs.h"

/// How the suite names, times and shares its benchmarks. Every benchmark is called
/// "op/impl/family/n" (scripts/bench-report.py pairs the implementations of one op, family and
/// n by that name) and carries the counter "n", the vertex or point count.
namespace gk::bench {

using Body = std::function<void(benchmark::State&)>;

/// The shape of a family at n vertices, made once per run and kept (every benchmark of that
/// family and size reads the same vector).
const Points& cachedShape(Family family, int n);

/// Registers op/impl/family/n: body runs with the counter "n" set and the suite's minimum time
/// (0.2 s; a call slower than that runs once, as Google Benchmark's first trial is one
/// iteration). A call that throws makes the benchmark an error carrying the exception. A peer
/// listed as too slow at that size (registry.cpp) is registered through addSkipped instead.
benchmark::internal::Benchmark* add(const std::string& op, const std::string& impl,
                                    const std::string& family, int n, Body body);

/// Registers op/impl/family/n as not run, with reason as its error message (the report prints
/// it in place of a time): for a peer that would take far too long at that size.
benchmark::internal::Benchmark* addSkipped(const std::string& op, const std::string& impl,
                                           const std::string& family, int n,
                                           const std::string& reason);

/// Each file's registration function; bench_main.cpp calls them in this order.
void registerContourBenchmarks();
void registerRegionBenchmarks();
void registerRegionMomentsBenchmarks();
void registerRegionSetBenchmarks();
void registerPolygonMomentsBenchmarks();
void registerConvexHullBenchmarks();
void registerEllipseFitBenchmarks();

}  // namespace gk::bench
