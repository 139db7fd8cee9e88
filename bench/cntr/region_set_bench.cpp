// gkRegionSet::isSelfIntersecting on 16 blobs (no peer: the question, "does a member cross
// itself or another member", has no single call in the peer libraries).
//
// The answer is cached by the set and by each member, so it is asked of new sets on new members,
// built with the timer paused (timeFirstCalls); "newRegionSet" times that construction alone.
#include <vector>

#include <gk/gk.h>

#include "../first_calls.h"
#include "../registry.h"

namespace gk::bench {

namespace {

constexpr int kMembers = 16;
constexpr int kGridSide = 4;
/// Blobs reach at most 130 from their centre: 300 apart they never meet, so the whole set
/// must be examined to answer false.
constexpr double kGridStep = 300.0;
const std::string kFamily = "blobs16";

/// The members' outlines: blob(n / 16) moved to the cells of a 4 x 4 grid.
std::vector<Points> memberOutlines(int n) {
  const Points one = blob(n / kMembers);
  std::vector<Points> out;
  for (int m = 0; m < kMembers; ++m) {
    const gkVector<2> offset(kGridStep * (m % kGridSide), kGridStep * (m / kGridSide));
    Points pts;
    pts.reserve(one.size());
    for (const gkVector<2>& p : one) {
      pts.push_back(p + offset);
    }
    out.push_back(pts);
  }
  return out;
}

gkRegionSet makeSet(const std::vector<Points>& outlines) {
  std::vector<gkPtrHandle<gkRegion>> members;
  members.reserve(outlines.size());
  for (const Points& pts : outlines) {
    members.emplace_back(new gkRegion(pts, gkContourDefs::eIgnore));
  }
  return gkRegionSet(members, gkContourDefs::eIgnore);
}

/// A set on members of its own (the members cache their answers too), for timeFirstCalls: it
/// builds the set in place from the outlines, as makeSet's result initializes the member.
struct NewSet {
  explicit NewSet(const std::vector<Points>& outlines) : set(makeSet(outlines)) {}
  const gkRegionSet set;
};

}  // namespace

void registerRegionSetBenchmarks() {
  for (const int n : sizes()) {
    add("newRegionSet", "gkgeom", kFamily, n, [n](benchmark::State& state) {
      const std::vector<Points> outlines = memberOutlines(n);
      for (auto _ : state) {
        const gkRegionSet set = makeSet(outlines);
        benchmark::DoNotOptimize(&set);
      }
    });
    add("setIsSelfIntersecting", "gkgeom", kFamily, n, [n](benchmark::State& state) {
      const std::vector<Points> outlines = memberOutlines(n);
      bool answer = true;
      timeFirstCalls<NewSet>(
          state, n,
          [&answer](const NewSet& s) {
            answer = s.set.isSelfIntersecting();
            benchmark::DoNotOptimize(answer);
          },
          outlines);
      state.counters["selfIntersecting"] = answer ? 1 : 0;
    });
  }
}

}  // namespace gk::bench
