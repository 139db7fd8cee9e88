// Eight threads share regions the way an application does: they copy and release handles to
// the same objects, deep-copy shapes whose caches were filled beforehand (the copies share the
// hull region and the segment index by handle), and query shapes of their own, the per-thread
// eviction generator and the per-thread archive included. Every answer must equal the one
// computed on the main thread. Built alone under ThreadSanitizer by `make tsan`, where any
// data race fails the run (halt_on_error=1).
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <sstream>
#include <thread>
#include <vector>

#include <gk/base/archive.h>
#include <gk/base/bounded_cache.h>
#include <gk/base/numeric.h>
#include <gk/base/ptr_handle.h>
#include <gk/base/random_uniform.h>
#include <gk/base/thread_local.h>
#include <gk/cntr/contour.h>
#include <gk/cntr/errors/contour_errors.h>
#include <gk/cntr/region.h>
#include <gk/cntr/region_set.h>

#include "shapes.h"

namespace {

using gk::test::Points;

constexpr int kThreads = 8;
constexpr int kRounds = 200;

/// What a thread computes from one region; compared with the main thread's answer.
struct Answers {
  double area = 0.0;
  double areaWithHoles = 0.0;
  bool selfIntersecting = false;
  std::size_t hullSize = 0;
  std::size_t outerHullSize = 0;
  bool insideCentre = false;
  std::size_t crossings = 0;
  double length = 0.0;

  bool operator==(const Answers& o) const {
    return area == o.area && areaWithHoles == o.areaWithHoles &&
           selfIntersecting == o.selfIntersecting && hullSize == o.hullSize &&
           outerHullSize == o.outerHullSize && insideCentre == o.insideCentre &&
           crossings == o.crossings && length == o.length;
  }
};

Answers answersOf(const gkRegion& r) {
  Answers a;
  a.area = r.area(false);
  a.areaWithHoles = r.area(true);
  a.selfIntersecting = r.isSelfIntersecting();
  gkRegion hull;
  r.convexHull(hull);
  a.hullSize = hull.points().size();
  gkRegion outer;
  r.outerHull(outer);
  a.outerHullSize = outer.points().size();
  a.insideCentre = r.inside(gkVector<2>(5, 5), true);
  a.crossings =
      r.intersections(gkLineSeg(gkVector<2>(-1, 1.5), gkVector<2>(21, 1.5)), true, true).size();
  a.length = r.length();
  return a;
}

std::vector<gkPtrHandle_const<gkRegion>> sharedRegions() {
  std::vector<gkPtrHandle_const<gkRegion>> shared;
  shared.emplace_back(new gkRegion(gk::test::squareWithHole()));
  shared.emplace_back(new gkRegion(gk::test::islandInHole()));
  shared.emplace_back(new gkRegion(gk::test::squareWithThreeHoles()));
  shared.emplace_back(new gkRegion(gk::test::figureEight()));
  shared.emplace_back(new gkRegion(gk::test::pinchedLoop()));
  shared.emplace_back(new gkRegion(gk::test::bowTie()));
  return shared;
}

/// The victims a fresh generator of seed 1 names, as every thread's eviction generator must.
std::vector<std::size_t> victimsOfAFreshGenerator(std::size_t size, int count) {
  gkRandomUniform g(1);
  std::vector<std::size_t> out;
  for (int i = 0; i < count; ++i) {
    out.push_back(static_cast<std::size_t>(gwIFloor(g.next(0.0, static_cast<double>(size)))));
  }
  return out;
}

TEST(Threads, SharedRegionsCopiedAndQueriedOnEightThreadsGiveTheMainThreadsAnswers) {
  const std::vector<gkPtrHandle_const<gkRegion>> shared = sharedRegions();
  std::vector<Answers> expected;
  for (const auto& r : shared) {
    // Fills every cache the threads will read through their copies.
    expected.push_back(answersOf(*r));
  }
  std::vector<long> counts;
  for (const auto& r : shared) {
    counts.push_back(r->refCount());
  }

  std::atomic<int> mismatches{0};
  std::atomic<int> errors{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      try {
        for (int round = 0; round < kRounds; ++round) {
          const std::size_t k = static_cast<std::size_t>(t + round) % shared.size();
          // Handle traffic on the shared objects: copies, assignments, releases.
          std::vector<gkPtrHandle_const<gkRegion>> held(shared.begin(), shared.end());
          gkPtrHandle_const<gkRegion> one = held[k];
          held.clear();
          one = shared[(k + 1) % shared.size()];
          one.reset();
          // A deep copy of a shared region: the copy reads the shared object and then shares
          // its hull region and segment index by handle.
          const gkRegion copy(*shared[k]);
          if (!(answersOf(copy) == expected[k])) {
            ++mismatches;
          }
          // A set of this thread's own copies, members shared among its own handles only.
          const gkRegionSet set(
              gkRegionSet::Regions{gkPtrHandle_const<gkRegion>(new gkRegion(copy)),
                                   gkPtrHandle_const<gkRegion>(new gkRegion(copy))});
          if (set.area(false) != 2.0 * expected[k].area) {
            ++mismatches;
          }
        }
      } catch (...) {
        ++errors;
      }
    });
  }
  for (std::thread& th : threads) {
    th.join();
  }
  EXPECT_EQ(mismatches.load(), 0);
  EXPECT_EQ(errors.load(), 0);
  for (std::size_t i = 0; i < shared.size(); ++i) {
    EXPECT_EQ(shared[i]->refCount(), counts[i]) << i;
  }
}

TEST(Threads, EachThreadEvictsWithItsOwnGeneratorSeededWithOne) {
  const std::vector<std::size_t> reference = victimsOfAFreshGenerator(7, 64);
  std::atomic<int> mismatches{0};
  std::atomic<int> errors{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      try {
        // Interleaved with the other threads' draws, this thread's own sequence is untouched.
        for (std::size_t i = 0; i < reference.size(); ++i) {
          if (gk::detail::boundedCacheVictim(7) != reference[i]) {
            ++mismatches;
          }
        }
        // Then bounded caches that evict: more transforms than the bound on a contour of its
        // own, each box still right.
        const gkContour c(gk::test::squareAt(t, -t, 2.0), true, 0);
        for (int i = 0; i < 100; ++i) {
          const gkXform<2> x(gkMatrix<2>(1, 0, 0, 1), gkVector<2>(i, 0));
          if (c.encloseRect(x).ul() != gkVector<2>(t + i, -t)) {
            ++mismatches;
          }
          // Along +x vertices 1 and 2 tie and the lower wins; above it, the upper corner.
          if (c.extremalVertexIndex(gkRadian(0.01 * i)) != (i == 0 ? 1 : 2)) {
            ++mismatches;
          }
        }
      } catch (...) {
        ++errors;
      }
    });
  }
  for (std::thread& th : threads) {
    th.join();
  }
  EXPECT_EQ(mismatches.load(), 0);
  EXPECT_EQ(errors.load(), 0);
}

TEST(Threads, ArchivesAndErrorsOnEightThreadsStayOnTheirOwnThread) {
  std::atomic<int> mismatches{0};
  std::atomic<int> errors{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      try {
        for (int round = 0; round < 50; ++round) {
          // Each archive is the current one of its own thread only.
          std::ostringstream os;
          {
            gkArchive ar(os);
            gkPtrHandle<gkRegion> h(new gkRegion(gk::test::islandInHole()));
            ar || h;
          }
          std::istringstream is(os.str());
          gkArchive ar(is);
          gkPtrHandle<gkRegion> back;
          ar || back;
          if (!back || back->area(true) != gk::test::islandInHole().area(true)) {
            ++mismatches;
          }
          // A typed error built, thrown and read on each thread.
          try {
            gkContour(Points{{static_cast<double>(t), 0}}, true, 0).length();
            (void)gkContour(Points{{static_cast<double>(t), 0}}, false, 0).meanPosition();
            ++mismatches;
          } catch (const gkContourDefs::EmptyContour& e) {
            if (e.what() == nullptr) {
              ++mismatches;
            }
          }
        }
      } catch (...) {
        ++errors;
      }
    });
  }
  for (std::thread& th : threads) {
    th.join();
  }
  EXPECT_EQ(mismatches.load(), 0);
  EXPECT_EQ(errors.load(), 0);
}

}  // namespace
