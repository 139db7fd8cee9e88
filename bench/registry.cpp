#include "registry.h"

#include <cxxabi.h>

#include <cstdlib>
#include <exception>
#include <map>
#include <string>
#include <typeinfo>
#include <utility>

namespace gk::bench {

namespace {

// Long enough for a stable mean of the fast calls, short enough that the ~400 benchmarks of
// the suite run in about five minutes on two cores.
constexpr double kMinTimeSeconds = 0.2;

/// The dynamic type of e, demangled ("gkContourDefs::BadParams").
std::string typeName(const std::exception& e) {
  int status = 0;
  char* name = abi::__cxa_demangle(typeid(e).name(), nullptr, nullptr, &status);
  std::string out = status == 0 && name != nullptr ? name : typeid(e).name();
  std::free(name);
  return out;
}

/// Peers not run at a size: each is clearly super-linear there and took more than 20 s per
/// call on the reference machine (2 cores of an AMD EPYC; the number after each entry, or the
/// point at which the run was stopped). Their time at the next smaller size shows the growth.
struct Skip {
  const char* op;
  const char* impl;
  const char* family;
  int n;
};
constexpr Skip kTooSlow[] = {
    {"encloseCircle", "opencv", "blob", 16384},            // 45 s (14 ms at 1024)
    {"encloseCircle", "opencv", "blob", 131072},           // > 45 s, stopped
    {"intersections", "geos", "star", 131072},             // > 45 s, stopped (0.98 s at 16384)
    {"regularize", "geos", "star-x", 131072},              // > 45 s, stopped (3.1 s at 16384)
    {"regularize", "clipper", "star", 131072},             // 20.8 s (0.18 s at 16384)
    {"regularize", "clipper", "star-x", 131072},           // 20.9 s (0.20 s at 16384)
    {"regularize", "clipper-simplify", "star", 131072},    // 370 s (0.89 s at 16384)
    {"regularize", "clipper-simplify", "blob", 131072},    // 46 s (0.34 s at 16384)
    {"regularize", "clipper-simplify", "star-x", 131072},  // > 45 s, stopped (2.9 s at 16384)
    {"regularize", "clipper-simplify", "blob-x", 131072},  // > 45 s, stopped (1.2 s at 16384)
};

bool tooSlow(const std::string& op, const std::string& impl, const std::string& family, int n) {
  for (const Skip& s : kTooSlow) {
    if (op == s.op && impl == s.impl && family == s.family && n == s.n) {
      return true;
    }
  }
  return false;
}

}  // namespace

const Points& cachedShape(Family family, int n) {
  static std::map<std::pair<Family, int>, Points> shapes;
  const auto key = std::make_pair(family, n);
  auto it = shapes.find(key);
  if (it == shapes.end()) {
    it = shapes.emplace(key, shape(family, n)).first;
  }
  return it->second;
}

benchmark::internal::Benchmark* add(const std::string& op, const std::string& impl,
                                    const std::string& family, int n, Body body) {
  if (tooSlow(op, impl, family, n)) {
    return addSkipped(op, impl, family, n, "skipped: > 20 s");
  }
  const std::string name = benchName(op, impl, family, n);
  auto* b = benchmark::RegisterBenchmark(name.c_str(), [n, body](benchmark::State& state) {
    state.counters["n"] = n;
    // A call that throws is reported as this benchmark's error (the report prints it in place
    // of a time) instead of ending the whole run.
    try {
      body(state);
    } catch (const std::exception& e) {
      const std::string message = "threw " + typeName(e) + ": " + e.what();
      state.SkipWithError(message.c_str());
    }
  });
  b->Unit(benchmark::kNanosecond)->MinTime(kMinTimeSeconds);
  return b;
}

benchmark::internal::Benchmark* addSkipped(const std::string& op, const std::string& impl,
                                           const std::string& family, int n,
                                           const std::string& reason) {
  const std::string name = benchName(op, impl, family, n);
  auto body = [n, reason](benchmark::State& state) {
    state.counters["n"] = n;
    state.SkipWithError(reason.c_str());
    for (auto _ : state) {
    }
  };
  return benchmark::RegisterBenchmark(name.c_str(), body)->Iterations(1);
}

}  // namespace gk::bench
