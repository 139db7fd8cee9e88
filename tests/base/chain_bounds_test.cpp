#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <limits>
#include <numeric>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gk/base/vector.h>

#include "base/detail/chain_bounds.h"
#include "outlines.h"
#include "plain_clearance.h"

using gk::detail::ChainBounds;
using gk::test::WidePoint;
using gk::test::wideSegmentDistance;

using gk::test::scaled;

namespace {

using Points = std::vector<gkVector<2>>;
using Segments = std::vector<std::size_t>;

constexpr double kReach = 2e-6;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kTwoPi = 6.283185307179586;

/// The vertex segment k starts at, as the segment walk numbers segments (closed: the closing
/// segment, from the last vertex to the first, is segment 0).
std::size_t segmentStart(std::size_t k, std::size_t n, bool closed) {
  return closed ? (k == 0 ? n - 1 : k - 1) : k;
}

/// The vertex segment k ends at.
std::size_t segmentEnd(std::size_t k, bool closed) {
  return closed ? k : k + 1;
}

Segments everySegment(std::size_t count) {
  Segments all(count);
  std::iota(all.begin(), all.end(), std::size_t{0});
  return all;
}

bool lists(const Segments& out, std::size_t k) {
  return std::find(out.begin(), out.end(), k) != out.end();
}

Segments candidatesOf(const ChainBounds& bounds, const gkVector<2>& p, const gkVector<2>& q,
                      double reach) {
  Segments out{12345, 7};  // stale content that candidates() must replace
  bounds.candidates(p, q, reach, out);
  return out;
}

gkVector<2> turned(const gkVector<2>& p, double angle) {
  return gkVector<2>(p.x() * std::cos(angle) - p.y() * std::sin(angle),
                     p.x() * std::sin(angle) + p.y() * std::cos(angle));
}

/// What the promise checks saw, so that a test can tell that they were not empty.
struct Tally {
  std::size_t queries = 0;
  std::size_t required = 0;  // (query, segment) pairs that the reference puts within reach
  std::size_t pruned = 0;    // queries that listed fewer segments than there are
};

/// A shape, its bounds, and the plain reference for the promise: every segment whose distance to
/// the query, in extended precision, is at most the reach must be listed.
class Checker {
 public:
  Checker(const Points& points, bool closed)
      : points_(points), closed_(closed), bounds_(points, closed) {
    for (const gkVector<2>& p : points) {
      wide_.push_back(WidePoint{p.x(), p.y()});
    }
  }

  const ChainBounds& bounds() const { return bounds_; }

  testing::AssertionResult keepsPromise(const gkVector<2>& p, const gkVector<2>& q, double reach,
                                        Tally& tally) const {
    const Segments out = candidatesOf(bounds_, p, q, reach);
    const std::size_t count = bounds_.segmentCount();
    ++tally.queries;
    tally.pruned += out.size() < count ? 1 : 0;
    for (std::size_t i = 0; i < out.size(); ++i) {
      if (out[i] >= count) {
        return failure(p, q, reach) << ": candidate " << out[i] << " of " << count << " segments";
      }
      if (i > 0 && out[i] <= out[i - 1]) {
        return failure(p, q, reach) << ": candidates not increasing at " << i;
      }
    }
    const WidePoint wp{p.x(), p.y()};
    const WidePoint wq{q.x(), q.y()};
    const long double wideReach = reach;
    const std::size_t n = points_.size();
    for (std::size_t k = 0; k < count; ++k) {
      const long double d = wideSegmentDistance(wide_[segmentStart(k, n, closed_)],
                                                wide_[segmentEnd(k, closed_)], wp, wq);
      if (d <= wideReach) {
        ++tally.required;
        if (!std::binary_search(out.begin(), out.end(), k)) {
          return failure(p, q, reach)
                 << ": segment " << k << " at distance " << static_cast<double>(d)
                 << " is not listed (" << out.size() << " of " << count << " listed)";
        }
      }
    }
    return testing::AssertionSuccess();
  }

 private:
  testing::AssertionResult failure(const gkVector<2>& p, const gkVector<2>& q, double reach) const {
    std::ostringstream text;
    text << std::setprecision(17) << "query (" << p.x() << ", " << p.y() << ") -> (" << q.x()
         << ", " << q.y() << "), reach " << reach << ", " << points_.size() << " vertices, "
         << (closed_ ? "closed" : "open");
    return testing::AssertionFailure() << text.str();
  }

  const Points& points_;
  bool closed_;
  ChainBounds bounds_;
  std::vector<WidePoint> wide_;
};

const std::vector<double> kReaches{kReach, kReach, kReach, 0.0, 1e-3, 1.0};

/// Checks the promise on queries of every kind against the shape: random segments across it,
/// short ones, near misses at 0.5 to 2 reaches from a chosen segment (pointing away, running
/// beside it, or of zero length), crossings, zero-length queries, queries along a segment and
/// queries from one of its ends.
void checkQueries(const Points& points, bool closed, std::mt19937_64& rng, int queries,
                  const std::vector<double>& reaches, const std::string& label, Tally& tally) {
  const Checker checker(points, closed);
  ASSERT_TRUE(checker.bounds().on()) << label;
  const std::size_t n = points.size();
  const std::size_t count = checker.bounds().segmentCount();
  ASSERT_EQ(count, closed ? n : n - 1) << label;
  ASSERT_GT(count, 0u) << label;
  double minX = points[0].x();
  double maxX = minX;
  double minY = points[0].y();
  double maxY = minY;
  for (const gkVector<2>& v : points) {
    minX = std::min(minX, v.x());
    maxX = std::max(maxX, v.x());
    minY = std::min(minY, v.y());
    maxY = std::max(maxY, v.y());
  }
  double size = std::max(maxX - minX, maxY - minY);
  size = size > 0 ? size : 1.0;
  std::uniform_real_distribution<double> u(0.0, 1.0);
  const auto pointIn = [&]() {
    return gkVector<2>(minX - 0.1 * size + 1.2 * size * u(rng),
                       minY - 0.1 * size + 1.2 * size * u(rng));
  };
  const auto direction = [&]() {
    const double angle = kTwoPi * u(rng);
    return gkVector<2>(std::cos(angle), std::sin(angle));
  };
  const double factors[] = {0.5, 0.99, 1.0, 1.01, 2.0};
  for (int i = 0; i < queries; ++i) {
    const double reach = reaches[rng() % reaches.size()];
    const std::size_t k = rng() % count;
    const gkVector<2> a = points[segmentStart(k, n, closed)];
    const gkVector<2> b = points[segmentEnd(k, closed)];
    const gkVector<2> along = b - a;
    const double length = along.len();
    const gkVector<2> dir = length > 0 ? along / length : direction();
    const gkVector<2> normal(-dir.y(), dir.x());
    const double side = rng() % 2 == 0 ? 1.0 : -1.0;
    const gkVector<2> c = a + along * u(rng);
    const double miss = factors[rng() % 5] * reach;
    // Query lengths from the size of the shape down to a millionth of it.
    const double span = size * std::pow(10.0, -6.0 * u(rng));
    gkVector<2> p;
    gkVector<2> q;
    switch (i % 8) {
      case 0:  // across the shape
        p = pointIn();
        q = pointIn();
        break;
      case 1:  // short, anywhere
        p = pointIn();
        q = p + direction() * span;
        break;
      case 2:  // a near miss pointing away from the segment
        p = c + normal * (side * miss);
        q = p + normal * (side * span);
        break;
      case 3:  // a near miss running beside the segment
        p = c + normal * (side * miss);
        q = p + dir * (span * (u(rng) - 0.5));
        break;
      case 4:  // crossing the segment
        p = c + normal * (span * u(rng));
        q = c - normal * (span * u(rng));
        break;
      case 5:  // zero length, near the segment or anywhere
        p = rng() % 2 == 0 ? c + normal * (side * miss) : pointIn();
        q = p;
        break;
      case 6:  // along the segment's line, over some of it or beyond its ends
        p = a + along * (2.0 * u(rng) - 0.5);
        q = a + along * (2.0 * u(rng) - 0.5);
        break;
      default:  // from one of its ends, sometimes of zero length
        p = rng() % 2 == 0 ? a : b;
        q = rng() % 4 == 0 ? p : p + direction() * span;
        break;
    }
    if (rng() % 2 == 0) {
      std::swap(p, q);
    }
    EXPECT_TRUE(checker.keepsPromise(p, q, reach, tally)) << label << ", query " << i;
  }
}

/// The tallies of a test: the reference put many segments within reach, and most queries were
/// answered by the tree rather than by listing every segment.
void expectMeaningful(const Tally& tally, std::size_t required) {
  EXPECT_GT(tally.required, required);
  EXPECT_GT(tally.pruned, tally.queries / 2);
}

Points star(std::size_t n, std::mt19937_64& rng) {
  std::uniform_real_distribution<double> u(0.0, 1.0);
  return gk::test::starOutline(n, 0.3, [&] { return u(rng); });
}

Points blob(std::size_t n, std::mt19937_64& rng) {
  std::uniform_real_distribution<double> u(0.0, 1.0);
  return gk::test::blobOutline(n, 0.01, [&] { return u(rng); });
}

/// Steps of random length in a slowly wandering direction: the walk crosses itself often.
Points walk(std::size_t n, std::mt19937_64& rng) {
  std::uniform_real_distribution<double> u(0.0, 1.0);
  std::normal_distribution<double> turn(0.0, 0.6);
  Points v{{0, 0}};
  double heading = kTwoPi * u(rng);
  for (std::size_t k = 1; k < n; ++k) {
    heading += turn(rng);
    const double step = 0.05 + 2.0 * u(rng);
    v.push_back(v.back() + gkVector<2>(std::cos(heading), std::sin(heading)) * step);
  }
  return v;
}

/// Long thin teeth a few reaches apart, at small angles to each other, turned.
Points comb(int teeth, std::mt19937_64& rng) {
  std::uniform_real_distribution<double> u(0.0, 1.0);
  const double gap = (1.0 + 4.0 * u(rng)) * kReach;
  const double tilt = rng() % 4 == 0 ? 0.0 : 1e-3 * (u(rng) - 0.5);
  const double turn = rng() % 4 == 0 ? 0.0 : kTwoPi * u(rng);
  Points v;
  for (int t = 0; t < teeth; ++t) {
    const double x = 4.0 * gap * t;
    v.emplace_back(x, 0.0);
    v.emplace_back(x + tilt, 1.0);
    v.emplace_back(x + gap + tilt, 1.0 + tilt);
    v.emplace_back(x + gap, 0.0);
  }
  for (gkVector<2>& p : v) {
    p = turned(p, turn);
  }
  return v;
}

/// Vertices alternately on two lines, pitch apart: long, nearly parallel segments, each sharing
/// its ends with its neighbours.
Points zigzag(std::size_t n, double pitch, double turn) {
  Points v;
  for (std::size_t k = 0; k < n; ++k) {
    v.push_back(turned(gkVector<2>(pitch * static_cast<double>(k), k % 2 == 0 ? 0.0 : 1.0), turn));
  }
  return v;
}

/// Every vertex on one line (kind 0: horizontal, 1: vertical, 2: y = x / 2 exactly, 3: turned by
/// an angle whose rounding leaves them only nearly in line), the walk going back and forth over
/// itself.
Points collinear(std::size_t n, int kind, std::mt19937_64& rng) {
  Points v;
  for (std::size_t k = 0; k < n; ++k) {
    const double t = static_cast<double>(rng() % 64);
    switch (kind) {
      case 0:
        v.emplace_back(t, 3.0);
        break;
      case 1:
        v.emplace_back(-2.0, t);
        break;
      case 2:
        v.emplace_back(t, t / 2.0);
        break;
      default:
        v.push_back(turned(gkVector<2>(t, 0.0), 0.7));
        break;
    }
  }
  return v;
}

/// Each vertex repeated up to the given number of extra times, at random.
Points repeated(const Points& points, int most, std::mt19937_64& rng) {
  Points v;
  for (const gkVector<2>& p : points) {
    const int copies = 1 + static_cast<int>(rng() % static_cast<std::uint64_t>(most + 1));
    for (int c = 0; c < copies; ++c) {
      v.push_back(p);
    }
  }
  return v;
}

std::string describe(const char* shape, std::size_t n, bool closed) {
  std::ostringstream text;
  text << shape << " of " << n << " vertices, " << (closed ? "closed" : "open");
  return text.str();
}

TEST(ChainBounds, ListsEverySegmentWithinReachOnDenseStars) {
  std::mt19937_64 rng(11);
  Tally tally;
  for (const std::size_t n : {64, 100, 257, 1000, 4096}) {
    const int queries = n >= 4096 ? 40 : (n >= 1000 ? 96 : 200);
    for (const bool closed : {true, false}) {
      checkQueries(star(n, rng), closed, rng, queries, kReaches, describe("star", n, closed),
                   tally);
    }
  }
  expectMeaningful(tally, 1000);
}

TEST(ChainBounds, ListsEverySegmentWithinReachOnSmoothBlobs) {
  std::mt19937_64 rng(12);
  Tally tally;
  for (const std::size_t n : {9, 50, 333, 2000}) {
    const int queries = n >= 2000 ? 64 : 200;
    for (const bool closed : {true, false}) {
      checkQueries(blob(n, rng), closed, rng, queries, kReaches, describe("blob", n, closed),
                   tally);
    }
  }
  expectMeaningful(tally, 500);
}

TEST(ChainBounds, ListsEverySegmentWithinReachOnRandomWalks) {
  std::mt19937_64 rng(13);
  Tally tally;
  for (const std::size_t n : {2, 3, 17, 500, 2500}) {
    const int queries = n >= 2500 ? 64 : 200;
    for (const bool closed : {true, false}) {
      checkQueries(walk(n, rng), closed, rng, queries, kReaches, describe("walk", n, closed),
                   tally);
    }
  }
  expectMeaningful(tally, 500);
}

TEST(ChainBounds, ListsEverySegmentWithinReachOnCombsAndZigzagsOfNearlyParallelTeeth) {
  std::mt19937_64 rng(14);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  Tally tally;
  for (int shape = 0; shape < 24; ++shape) {
    const int teeth = 3 + static_cast<int>(rng() % 200);
    const bool closed = shape % 2 == 0;
    checkQueries(comb(teeth, rng), closed, rng, 40, kReaches,
                 describe("comb", 4 * static_cast<std::size_t>(teeth), closed), tally);
  }
  for (int shape = 0; shape < 12; ++shape) {
    const std::size_t n = 5 + rng() % 800;
    const double pitch = (0.5 + 3.0 * u(rng)) * kReach;
    const double turn = shape % 3 == 0 ? 0.0 : kTwoPi * u(rng);
    const bool closed = shape % 2 == 0;
    checkQueries(zigzag(n, pitch, turn), closed, rng, 40, kReaches, describe("zigzag", n, closed),
                 tally);
  }
  expectMeaningful(tally, 2000);
}

TEST(ChainBounds, ListsEverySegmentWithinReachWithRepeatedVertices) {
  std::mt19937_64 rng(15);
  Tally tally;
  for (const bool closed : {true, false}) {
    const Points stars = repeated(star(400, rng), 2, rng);
    checkQueries(stars, closed, rng, 160, kReaches, describe("star", stars.size(), closed), tally);
    // Runs of up to 20 equal vertices: whole leaves of the tree are a single point.
    const Points blobs = repeated(blob(60, rng), 19, rng);
    checkQueries(blobs, closed, rng, 160, kReaches, describe("blob", blobs.size(), closed), tally);
    const Points walks = repeated(walk(300, rng), 3, rng);
    checkQueries(walks, closed, rng, 160, kReaches, describe("walk", walks.size(), closed), tally);
  }
  expectMeaningful(tally, 500);
}

TEST(ChainBounds, ListsEverySegmentWithinReachOnCollinearOverlappingRuns) {
  std::mt19937_64 rng(16);
  Tally tally;
  for (int kind = 0; kind < 4; ++kind) {
    for (const std::size_t n : {5, 40, 300}) {
      for (const bool closed : {true, false}) {
        checkQueries(collinear(n, kind, rng), closed, rng, 96, kReaches,
                     describe("collinear run", n, closed), tally);
      }
    }
  }
  // A run that goes straight out and back along one line, then a spike off it.
  Points v = collinear(200, 3, rng);
  v.push_back(turned(gkVector<2>(30.0, 5.0), 0.7));
  checkQueries(v, true, rng, 96, kReaches, describe("collinear run and spike", v.size(), true),
               tally);
  // Collinear runs are long and overlap one another, so many queries list nearly everything;
  // only the count of required pairs says the check was not empty.
  EXPECT_GT(tally.required, 2000u);
}

TEST(ChainBounds, ListsEverySegmentWithinReachAtEveryScaleAndFarFromTheOrigin) {
  std::mt19937_64 rng(17);
  Tally tally;
  const Points shapes[] = {star(300, rng), blob(200, rng), comb(60, rng), collinear(100, 3, rng)};
  const char* names[] = {"star", "blob", "comb", "collinear run"};
  for (const double scale : {1e-3, 1.0, 1e3, 1e6}) {
    const std::vector<double> reaches{kReach, kReach, 0.0, 1e-3, 1.0, kReach * scale};
    for (const gkVector<2>& shift :
         {gkVector<2>(0, 0), gkVector<2>(1e7, -1e7), gkVector<2>(-3e7, 1e7 + 0.5)}) {
      for (std::size_t s = 0; s < 4; ++s) {
        const bool closed = s % 2 == 0;
        std::ostringstream label;
        label << describe(names[s], shapes[s].size(), closed) << ", scale " << scale << ", shift ("
              << shift.x() << ", " << shift.y() << ")";
        checkQueries(scaled(shapes[s], scale, shift), closed, rng, 36, reaches, label.str(), tally);
      }
    }
  }
  expectMeaningful(tally, 1000);
}

TEST(ChainBounds, ListsFewSegmentsForQueriesFromATurnedCopyOfADenseStar) {
  std::mt19937_64 rng(21);
  const Points points = star(16384, rng);
  const std::size_t n = points.size();
  Points copy;
  for (const gkVector<2>& p : points) {
    copy.push_back(turned(p, 0.01));
  }
  const Checker checker(points, true);
  const ChainBounds& bounds = checker.bounds();
  ASSERT_TRUE(bounds.on());
  ASSERT_EQ(bounds.segmentCount(), n);
  Segments out;
  std::size_t listed = 0;
  const int queries = 2000;
  Tally tally;
  for (int i = 0; i < queries; ++i) {
    const std::size_t k = rng() % n;
    const gkVector<2>& p = copy[segmentStart(k, n, true)];
    const gkVector<2>& q = copy[segmentEnd(k, true)];
    bounds.candidates(p, q, kReach, out);
    listed += out.size();
    if (i < 12) {
      EXPECT_TRUE(checker.keepsPromise(p, q, kReach, tally)) << "query " << i;
    }
  }
  const double mean = static_cast<double>(listed) / queries;
  EXPECT_LT(mean, 64.0);
  EXPECT_GT(mean, 0.0);  // the turned copy crosses the star: its segments do come near
}

TEST(ChainBounds, ListsFewSegmentsForLongRaysLeavingASmoothOutlineSlantwise) {
  // Rays as containment tests aim them: from a hair beside a fine outline, 500 long, leaving
  // it at a slant. Their extent along both axes of most runs' rectangles is large, so only
  // the rays' own lines tell the runs they pass far from; the few segments near the start are
  // all that may be listed, and every one within reach is.
  std::mt19937_64 rng(23);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  const Points points = gk::test::blobOutline(16384, 0.01, [&] { return u(rng); });
  const std::size_t n = points.size();
  const Checker checker(points, true);
  const ChainBounds& bounds = checker.bounds();
  Segments out;
  Tally tally;
  std::size_t listed = 0;
  const int rays = 200;
  for (int i = 0; i < rays; ++i) {
    const std::size_t k = rng() % n;
    const gkVector<2>& a = points[k];
    const gkVector<2>& b = points[(k + 1) % n];
    const gkVector<2> mid = (a + b) / 2.0;
    const gkVector<2> along = (b - a).unit();
    const gkVector<2> outward(along.y(), -along.x());  // the blob runs counter-clockwise
    const double slant = 0.3 + 1.0 * u(rng);           // radians off the outward normal
    const gkVector<2> dir = outward * std::cos(slant) + along * std::sin(slant);
    const gkVector<2> start = mid + outward * 1e-4;
    bounds.candidates(start, start + dir * 500.0, kReach, out);
    listed += out.size();
    if (i < 20) {
      EXPECT_TRUE(checker.keepsPromise(start, start + dir * 500.0, kReach, tally)) << "ray " << i;
    }
  }
  EXPECT_LT(static_cast<double>(listed) / rays, 40.0);
}

TEST(ChainBounds, ListsNoSegmentForAQueryFarOutsideOrInTheMiddleOfADenseStar) {
  std::mt19937_64 rng(22);
  const ChainBounds bounds(star(16384, rng), true);
  EXPECT_TRUE(candidatesOf(bounds, {1e4, 1e4}, {1e4 + 5, 1e4 - 3}, kReach).empty());
  EXPECT_TRUE(candidatesOf(bounds, {-500, 0}, {-400, 300}, 1.0).empty());
  // Every vertex lies 100 or more from the centre.
  EXPECT_TRUE(candidatesOf(bounds, {0, 0}, {30, 40}, kReach).empty());
  EXPECT_TRUE(candidatesOf(bounds, {-1, -1}, {-1, -1}, 10.0).empty());
}

TEST(ChainBounds, ListsNothingForAnEmptyPointList) {
  const ChainBounds bounds({}, true);
  EXPECT_EQ(bounds.segmentCount(), 0u);
  EXPECT_TRUE(bounds.on());
  EXPECT_EQ(bounds.magnitude(), 0.0);
  EXPECT_TRUE(candidatesOf(bounds, {0, 0}, {1, 1}, 1e3).empty());
  // With no segment, even the queries that list every segment list none.
  EXPECT_TRUE(candidatesOf(bounds, {kNaN, 0}, {1, 1}, kReach).empty());
  EXPECT_TRUE(candidatesOf(bounds, {0, 0}, {1, 1}, -1.0).empty());
  const ChainBounds open({}, false);
  EXPECT_EQ(open.segmentCount(), 0u);
  EXPECT_TRUE(open.on());
  EXPECT_TRUE(candidatesOf(open, {0, 0}, {1, 1}, 1e3).empty());
}

TEST(ChainBounds, FindsTheOneZeroLengthSegmentOfASingleClosedVertex) {
  const ChainBounds bounds({{5, 7}}, true);
  EXPECT_TRUE(bounds.on());
  ASSERT_EQ(bounds.segmentCount(), 1u);
  EXPECT_EQ(candidatesOf(bounds, {4, 6}, {6, 8}, 0.0), Segments{0});
  EXPECT_EQ(candidatesOf(bounds, {5, 7}, {5, 7}, 0.0), Segments{0});
  EXPECT_EQ(candidatesOf(bounds, {5 + 1e-6, 7}, {5 + 1e-6, 8}, kReach), Segments{0});
  EXPECT_TRUE(candidatesOf(bounds, {6, 6}, {7, 7}, 0.5).empty());
  EXPECT_TRUE(candidatesOf(bounds, {5 + 1e-5, 7}, {5 + 1e-5, 8}, kReach).empty());
}

TEST(ChainBounds, HasNoSegmentForASingleOpenVertex) {
  const ChainBounds bounds({{5, 7}}, false);
  EXPECT_TRUE(bounds.on());
  EXPECT_EQ(bounds.segmentCount(), 0u);
  EXPECT_TRUE(candidatesOf(bounds, {4, 6}, {6, 8}, 0.0).empty());
  EXPECT_TRUE(candidatesOf(bounds, {5, 7}, {5, 7}, 1.0).empty());
  EXPECT_TRUE(candidatesOf(bounds, {kNaN, 7}, {5, 7}, 1.0).empty());
}

TEST(ChainBounds, HasTwoSegmentsForTwoClosedVerticesAndOneForTwoOpenOnes) {
  const Points points{{0, 0}, {4, 2}};
  const ChainBounds closed(points, true);
  ASSERT_EQ(closed.segmentCount(), 2u);
  EXPECT_EQ(candidatesOf(closed, {2, 0}, {2, 3}, 0.0), (Segments{0, 1}));
  EXPECT_EQ(candidatesOf(closed, {4, 2}, {5, 5}, 0.0), (Segments{0, 1}));
  EXPECT_TRUE(candidatesOf(closed, {10, 10}, {11, 12}, 0.5).empty());
  const ChainBounds open(points, false);
  ASSERT_EQ(open.segmentCount(), 1u);
  EXPECT_EQ(candidatesOf(open, {2, 0}, {2, 3}, 0.0), Segments{0});
  EXPECT_EQ(candidatesOf(open, {2, 1 + 1e-7}, {2, 1 + 1e-7}, kReach), Segments{0});
  EXPECT_TRUE(candidatesOf(open, {10, 10}, {11, 12}, 0.5).empty());
}

TEST(ChainBounds, FindsTheClosingSegmentOfAClosedContour) {
  // 203 vertices: the last leaf is a partial run of segments.
  for (const std::size_t n : {203, 2048}) {
    std::mt19937_64 rng(23);
    const Points points = star(n, rng);
    const ChainBounds bounds(points, true);
    ASSERT_EQ(bounds.segmentCount(), n);
    // Segment 0 runs from the last vertex to the first.
    const gkVector<2> a = points[n - 1];
    const gkVector<2> b = points[0];
    const gkVector<2> middle = (a + b) / 2.0;
    const gkVector<2> normal = gkVector<2>(a.y() - b.y(), b.x() - a.x()) / (b - a).len();
    const Segments crossing =
        candidatesOf(bounds, middle + normal * 1e-3, middle - normal * 1e-3, 0.0);
    EXPECT_TRUE(lists(crossing, 0)) << n;
    EXPECT_LT(crossing.size(), n) << n;
    const gkVector<2> near = middle + normal * (0.5 * kReach);
    const Segments beside = candidatesOf(bounds, near, near + normal, kReach);
    EXPECT_TRUE(lists(beside, 0)) << n;
    EXPECT_LT(beside.size(), n) << n;
  }
}

TEST(ChainBounds, FindsTheLastSegmentOfAnOpenContour) {
  for (const std::size_t n : {203, 2049}) {
    std::mt19937_64 rng(24);
    const Points points = blob(n, rng);
    const ChainBounds bounds(points, false);
    ASSERT_EQ(bounds.segmentCount(), n - 1);
    const std::size_t last = n - 2;
    const gkVector<2> a = points[n - 2];
    const gkVector<2> b = points[n - 1];
    const gkVector<2> middle = (a + b) / 2.0;
    const gkVector<2> normal = gkVector<2>(a.y() - b.y(), b.x() - a.x()) / (b - a).len();
    const Segments crossing =
        candidatesOf(bounds, middle + normal * 1e-3, middle - normal * 1e-3, 0.0);
    EXPECT_TRUE(lists(crossing, last)) << n;
    EXPECT_LT(crossing.size(), n - 1) << n;
    // Beyond the last vertex, along the segment's line.
    const gkVector<2> beyond = b + (b - a) / (b - a).len() * (0.5 * kReach);
    const Segments past = candidatesOf(bounds, beyond, beyond, kReach);
    EXPECT_TRUE(lists(past, last)) << n;
    EXPECT_LT(past.size(), n - 1) << n;
  }
}

TEST(ChainBounds, ListsSegmentsNearVerticesThatAreAllEqual) {
  for (const gkVector<2>& at : {gkVector<2>(3, 4), gkVector<2>(1e7, -1e7)}) {
    const Points points(50, at);
    for (const bool closed : {true, false}) {
      const ChainBounds bounds(points, closed);
      ASSERT_TRUE(bounds.on());
      const std::size_t count = closed ? 50 : 49;
      ASSERT_EQ(bounds.segmentCount(), count);
      const gkVector<2> near = at + gkVector<2>(0, 1e-6);
      EXPECT_EQ(candidatesOf(bounds, near, near, kReach), everySegment(count));
      EXPECT_EQ(candidatesOf(bounds, at, at, 0.0), everySegment(count));
      EXPECT_EQ(candidatesOf(bounds, at - gkVector<2>(1, 1), at + gkVector<2>(1, 1), 0.0),
                everySegment(count));
      EXPECT_TRUE(
          candidatesOf(bounds, at + gkVector<2>(1, 0), at + gkVector<2>(1, 5), kReach).empty());
    }
  }
}

/// The bounds of the points are off, and every query lists every segment, even far away.
void expectOffAndListingEverything(const Points& points, bool closed) {
  const ChainBounds bounds(points, closed);
  EXPECT_FALSE(bounds.on());
  const std::size_t count = closed ? points.size() : points.size() - 1;
  ASSERT_EQ(bounds.segmentCount(), count);
  EXPECT_EQ(candidatesOf(bounds, {1e4, 1e4}, {1e4 + 1, 1e4}, kReach), everySegment(count));
  EXPECT_EQ(candidatesOf(bounds, {0.5, 0.5}, {0.5, 0.5}, 0.0), everySegment(count));
}

Points squareWith(std::size_t i, const gkVector<2>& v) {
  Points points{{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0.5, 0.5}};
  points[i] = v;
  return points;
}

TEST(ChainBounds, TurnsOffAndListsEverySegmentForANaNVertex) {
  for (const bool closed : {true, false}) {
    expectOffAndListingEverything(squareWith(2, {kNaN, 1}), closed);
    expectOffAndListingEverything(squareWith(0, {0, kNaN}), closed);
    expectOffAndListingEverything(squareWith(4, {kNaN, kNaN}), closed);
  }
  std::mt19937_64 rng(25);
  Points points = star(1000, rng);
  points[517] = gkVector<2>(kNaN, 3);
  expectOffAndListingEverything(points, true);
}

TEST(ChainBounds, TurnsOffAndListsEverySegmentForACoordinateBeyond1e100) {
  for (const bool closed : {true, false}) {
    expectOffAndListingEverything(squareWith(2, {1e101, 1}), closed);
    expectOffAndListingEverything(squareWith(3, {0, -1e101}), closed);
    expectOffAndListingEverything(squareWith(1, {std::nextafter(1e100, kInf), 0}), closed);
  }
}

TEST(ChainBounds, TurnsOffAndListsEverySegmentForAnInfiniteCoordinate) {
  for (const bool closed : {true, false}) {
    expectOffAndListingEverything(squareWith(2, {kInf, 1}), closed);
    expectOffAndListingEverything(squareWith(4, {0.5, -kInf}), closed);
  }
}

TEST(ChainBounds, ListsEverySegmentForAQueryWithANaNOrHugeCoordinate) {
  std::mt19937_64 rng(26);
  const ChainBounds bounds(star(300, rng), true);
  ASSERT_TRUE(bounds.on());
  const Segments all = everySegment(300);
  for (const double bad : {kNaN, 1e101, -1e101, kInf, -kInf}) {
    EXPECT_EQ(candidatesOf(bounds, {bad, 1e4}, {1e4, 1e4}, kReach), all) << bad;
    EXPECT_EQ(candidatesOf(bounds, {1e4, bad}, {1e4, 1e4}, kReach), all) << bad;
    EXPECT_EQ(candidatesOf(bounds, {1e4, 1e4}, {bad, 1e4}, kReach), all) << bad;
    EXPECT_EQ(candidatesOf(bounds, {1e4, 1e4}, {1e4, bad}, kReach), all) << bad;
  }
}

TEST(ChainBounds, ListsEverySegmentForANegativeNaNOrHugeReach) {
  std::mt19937_64 rng(27);
  for (const bool closed : {true, false}) {
    const ChainBounds bounds(star(300, rng), closed);
    ASSERT_TRUE(bounds.on());
    const Segments all = everySegment(closed ? 300 : 299);
    for (const double reach : {-1e-300, -1.0, kNaN, 1e101, kInf}) {
      EXPECT_EQ(candidatesOf(bounds, {1e4, 1e4}, {1e4 + 1, 1e4}, reach), all) << reach;
    }
    // A large finite reach is still one the bounds answer.
    EXPECT_TRUE(candidatesOf(bounds, {1e4, 1e4}, {1e4 + 1, 1e4}, 1e3).empty());
  }
}

TEST(ChainBounds, KeepsTheBoundsOnAndThePromiseForCoordinatesOfExactly1e100) {
  std::mt19937_64 rng(28);
  Tally tally;
  for (const bool closed : {true, false}) {
    Points points = star(64, rng);
    points[10] = gkVector<2>(1e100, 0);
    points[30] = gkVector<2>(-1e100, 1e100);
    points[31] = gkVector<2>(0, -1e100);
    const Checker checker(points, closed);
    EXPECT_TRUE(checker.bounds().on());
    EXPECT_EQ(checker.bounds().magnitude(), 1e100);
    checkQueries(points, closed, rng, 160, {kReach, 0.0, 1.0, 1e90, 1e100}, "star with 1e100",
                 tally);
    // A query at the huge vertex, and one along the huge segment out to it.
    EXPECT_TRUE(checker.keepsPromise({1e100, 0}, {1e100, 0}, 0.0, tally));
    EXPECT_TRUE(checker.keepsPromise({1e100, 1e90}, {1e100, -1e90}, 1.0, tally));
    EXPECT_TRUE(checker.keepsPromise(points[9], points[9] * 1e90, 0.0, tally));
  }
  // The query and the reach may be as large too: a small square answers queries out there.
  const ChainBounds square({{0, 0}, {1, 0}, {1, 1}, {0, 1}}, true);
  ASSERT_TRUE(square.on());
  EXPECT_TRUE(candidatesOf(square, {1e100, 0}, {1e100, 1}, 1.0).empty());
  EXPECT_TRUE(candidatesOf(square, {1e100, 1e100}, {1e100, 1e100}, 1e99).empty());
  const Segments across = candidatesOf(square, {-1e100, 0.5}, {1e100, 0.5}, 0.0);
  EXPECT_TRUE(lists(across, 0) && lists(across, 2));  // the two sides it crosses
  EXPECT_EQ(candidatesOf(square, {2, 2}, {3, 3}, 1e100), everySegment(4));
}

TEST(ChainBounds, TreatsPositiveAndNegativeZeroAlike) {
  const Points points{{-0.0, 0.0}, {1, -0.0}, {1, 1}, {0.0, 1}, {-0.0, -0.0}, {-1, 0.0}};
  for (const bool closed : {true, false}) {
    const Checker checker(points, closed);
    ASSERT_TRUE(checker.bounds().on());
    Tally tally;
    for (const double x : {0.0, -0.0}) {
      for (const double y : {0.0, -0.0}) {
        EXPECT_TRUE(checker.keepsPromise({x, y}, {x, y}, 0.0, tally));
        EXPECT_TRUE(checker.keepsPromise({x, y}, {-1, -1}, 0.0, tally));
        EXPECT_TRUE(checker.keepsPromise({x, 0.5}, {0.5, y}, kReach, tally));
        const Segments out = candidatesOf(checker.bounds(), {x, y}, {x, y}, 0.0);
        // Vertices 0 and 4 are the origin: segments 0, 1, 4 and 5 of the closed contour
        // touch it, and 0, 3, 4 of the open one.
        const Segments touching = closed ? Segments{0, 1, 4, 5} : Segments{0, 3, 4};
        for (const std::size_t k : touching) {
          EXPECT_TRUE(lists(out, k)) << k << " " << closed;
        }
      }
    }
    EXPECT_GT(tally.required, 20u);
  }
}

TEST(ChainBounds, ListsBothSegmentsOfAVertexThatAQueryTouchesAtReachZero) {
  std::mt19937_64 rng(29);
  const std::size_t n = 256;
  const Points points = star(n, rng);
  for (const bool closed : {true, false}) {
    const ChainBounds bounds(points, closed);
    for (const std::size_t i : {std::size_t{0}, std::size_t{1}, std::size_t{7}, std::size_t{8},
                                std::size_t{100}, n - 2, n - 1}) {
      // Outward from the vertex, and ending on it from outside.
      const gkVector<2> v = points[i];
      const Segments from = candidatesOf(bounds, v, v * 1.5, 0.0);
      const Segments to = candidatesOf(bounds, v * 2.0, v, 0.0);
      const Segments at = candidatesOf(bounds, v, v, 0.0);
      // Closed: segment i ends at vertex i and segment i + 1 starts there; open: segments
      // i - 1 and i.
      Segments touching;
      if (closed) {
        touching = {i, (i + 1) % n};
      } else {
        if (i > 0) {
          touching.push_back(i - 1);
        }
        if (i + 1 < n) {
          touching.push_back(i);
        }
      }
      for (const std::size_t k : touching) {
        EXPECT_TRUE(lists(from, k)) << i << " " << k << " " << closed;
        EXPECT_TRUE(lists(to, k)) << i << " " << k << " " << closed;
        EXPECT_TRUE(lists(at, k)) << i << " " << k << " " << closed;
      }
      EXPECT_LT(at.size(), bounds.segmentCount());
    }
  }
}

TEST(ChainBounds, ReportsTheLargestCoordinateMagnitude) {
  const ChainBounds bounds({{1, -2}, {-7.5, 3}, {0, 6}}, false);
  EXPECT_EQ(bounds.magnitude(), 7.5);
  const ChainBounds far({{1e7, -3e7}, {2e7, 1}}, true);
  EXPECT_EQ(far.magnitude(), 3e7);
}

TEST(ChainBounds, ReplacesWhateverTheOutputHeld) {
  const ChainBounds bounds({{0, 0}, {1, 0}, {1, 1}, {0, 1}}, true);
  Segments out{99, 3, 1};
  bounds.candidates({5, 5}, {6, 6}, kReach, out);
  EXPECT_TRUE(out.empty());
  out = {99, 3, 1};
  bounds.candidates({0.5, -1}, {0.5, 0.5}, 0.0, out);
  EXPECT_TRUE(lists(out, 1));  // the bottom edge, which the query crosses
  EXPECT_FALSE(lists(out, 99));
  EXPECT_TRUE(std::is_sorted(out.begin(), out.end()));
}

TEST(ChainBounds, HoldsBytesThatGrowWithTheVertexCount) {
  std::mt19937_64 rng(30);
  const ChainBounds empty({}, true);
  const ChainBounds small(star(64, rng), true);
  const ChainBounds large(star(4096, rng), true);
  EXPECT_GT(empty.bytes(), 0u);
  EXPECT_GT(small.bytes(), empty.bytes());
  EXPECT_GT(large.bytes(), small.bytes());
  // The tree holds fewer nodes than segments: a leaf covers a run of several.
  EXPECT_LT(large.bytes(), 4096 * sizeof(gkVector<2>) * 2);
}

}  // namespace
