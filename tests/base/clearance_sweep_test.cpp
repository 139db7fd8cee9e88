#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include <gk/base/vector.h>

#include "base/detail/clearance_sweep.h"
#include "base/detail/segment_walk.h"
#include "outlines.h"
#include "plain_clearance.h"

using gk::detail::kNoSegment;
using gk::detail::segmentsKeepClear;
using gk::test::plainClearance;

using gk::test::scaled;

namespace {

using Points = std::vector<gkVector<2>>;

constexpr double kReach = 2e-6;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kTwoPi = 6.283185307179586;

/// Checks the one promise: a true answer means every two segments sharing no vertex are more
/// than the reach apart. Returns the answer.
bool certifiedSoundly(const Points& points, bool closed, double reach = kReach) {
  const bool clear = segmentsKeepClear(points, closed, reach);
  if (clear) {
    EXPECT_GT(plainClearance(points, closed), static_cast<long double>(reach))
        << points.size() << " vertices, closed " << closed;
  }
  return clear;
}

Points star(std::size_t n, std::mt19937_64& rng, double spread = 0.3) {
  std::uniform_real_distribution<double> u(0.0, 1.0);
  return gk::test::starOutline(n, spread, [&] { return u(rng); });
}

Points blob(std::size_t n, std::mt19937_64& rng) {
  std::uniform_real_distribution<double> u(0.0, 1.0);
  return gk::test::blobOutline(n, 0.01, [&] { return u(rng); });
}

/// A closed rectilinear outline on integer coordinates: columns of random heights standing on
/// a base line, so that it has many vertical and horizontal segments, several on one line.
/// With minimum 0 some columns reach the base and touch it.
Points skyline(std::size_t columns, std::mt19937_64& rng, int minimum = 1) {
  std::uniform_int_distribution<int> height(minimum, 6);
  Points v{{0, 0}};
  int previous = -1;
  for (std::size_t c = 0; c < columns; ++c) {
    int h = height(rng);
    if (h == previous) {
      h = h == 6 ? 5 : h + 1;  // no collinear run across columns: every vertex a corner
    }
    v.emplace_back(static_cast<double>(c), h);
    v.emplace_back(static_cast<double>(c + 1), h);
    previous = h;
  }
  v.emplace_back(static_cast<double>(columns), 0);
  return v;
}

Points transposed(const Points& points) {
  Points t;
  for (const gkVector<2>& p : points) {
    t.emplace_back(p.y(), p.x());
  }
  return t;
}

/// Moves vertex i to distance d from segment (a, b), beside its middle, on the given side.
void placeBeside(Points& points, std::size_t i, const gkVector<2>& a, const gkVector<2>& b,
                 double d, double side) {
  const gkVector<2> along = b - a;
  const gkVector<2> normal = gkVector<2>(-along.y(), along.x()) / along.len();
  points[i] = (a + b) / 2.0 + normal * (side * d);
}

TEST(ClearanceSweep, CertifiesStarsBlobsAndRectilinearOutlines) {
  std::mt19937_64 rng(1);
  EXPECT_TRUE(certifiedSoundly(star(800, rng), true));
  EXPECT_TRUE(certifiedSoundly(blob(800, rng), true));
  const Points sky = skyline(300, rng);
  EXPECT_TRUE(certifiedSoundly(sky, true));
  EXPECT_TRUE(certifiedSoundly(transposed(sky), true));
  EXPECT_TRUE(certifiedSoundly(sky, false));
  // A regular polygon with vertices on both axes: vertical and horizontal tangents.
  Points regular;
  for (int k = 0; k < 600; ++k) {
    regular.emplace_back(std::cos(kTwoPi * k / 600), std::sin(kTwoPi * k / 600));
  }
  EXPECT_TRUE(certifiedSoundly(regular, true));
}

TEST(ClearanceSweep, CertifiesOpenSpiralsWhoseTurnsAreFarApart) {
  Points spiral;
  for (int k = 0; k < 1000; ++k) {
    const double t = 0.03 * k;
    spiral.emplace_back((1 + t) * std::cos(t), (1 + t) * std::sin(t));
  }
  EXPECT_TRUE(certifiedSoundly(spiral, false));
  // Closing it joins the outer end to the inner one across every turn.
  EXPECT_FALSE(certifiedSoundly(spiral, true));
}

TEST(ClearanceSweep, CertifiesAtEveryScaleAndFarFromTheOrigin) {
  std::mt19937_64 rng(2);
  const Points base = star(500, rng);
  for (const double scale : {1e-3, 1.0, 1e3, 1e6}) {
    for (const gkVector<2>& shift : {gkVector<2>(0, 0), gkVector<2>(1e6, -1e6)}) {
      EXPECT_TRUE(certifiedSoundly(scaled(base, scale, shift), true)) << scale;
    }
  }
}

TEST(ClearanceSweep, ReportsTheCrossingPairOfABowTie) {
  // The closing segment 0 runs (1,0)-(0,1) and segment 2 (0,0)-(1,1).
  const Points bowTie{{0, 1}, {0, 0}, {1, 1}, {1, 0}};
  std::pair<std::size_t, std::size_t> pair;
  EXPECT_FALSE(segmentsKeepClear(bowTie, true, kReach, &pair));
  EXPECT_EQ(pair, (std::pair<std::size_t, std::size_t>(0, 2)));
}

TEST(ClearanceSweep, LeavesThePairEmptyWhenNoPairEndedTheSweep) {
  std::pair<std::size_t, std::size_t> pair(0, 0);
  EXPECT_FALSE(segmentsKeepClear({{0, 0}, {1, 0}, {1, kNaN}, {0, 1}}, true, kReach, &pair));
  EXPECT_EQ(pair.first, kNoSegment);
  EXPECT_EQ(pair.second, kNoSegment);
}

TEST(ClearanceSweep, RefusesATJunction) {
  // The last vertex sits on the first segment's middle.
  EXPECT_FALSE(certifiedSoundly({{0, 0}, {4, 0}, {4, 3}, {2, 3}, {2, 0}}, false));
}

TEST(ClearanceSweep, RefusesAVertexWithinReachOfASegmentOnEitherSide) {
  for (const double side : {1.0, -1.0}) {
    for (const double fraction : {0.0, 0.5, 0.9, 0.99}) {
      // A slanted base and a spike whose tip comes down to it from above (or through it).
      Points v{{0, 0}, {10, 5}, {10, 10}, {6, 10}, {5, 5}, {4, 10}};
      placeBeside(v, 4, v[0], v[1], fraction * kReach, side);
      EXPECT_FALSE(certifiedSoundly(v, true)) << side << " " << fraction;
    }
  }
}

TEST(ClearanceSweep, CertifiesAVertexWellBeyondReach) {
  Points v{{0, 0}, {10, 5}, {10, 10}, {6, 10}, {5, 5}, {4, 10}};
  placeBeside(v, 4, v[0], v[1], 10 * kReach, 1.0);
  EXPECT_TRUE(certifiedSoundly(v, true));
}

TEST(ClearanceSweep, RefusesSteepAndFlatNearMissesInBothSweeps) {
  // The same near miss turned through many angles, so that the segment is steep for one sweep
  // and flat for the other, and vertical or horizontal at some angles.
  for (int step = 0; step < 64; ++step) {
    const double angle = kTwoPi * step / 64;
    Points v{{0, 0}, {10, 5}, {10, 10}, {6, 10}, {5, 5}, {4, 10}};
    placeBeside(v, 4, v[0], v[1], 0.5 * kReach, 1.0);
    for (gkVector<2>& p : v) {
      p = gkVector<2>(p.x() * std::cos(angle) - p.y() * std::sin(angle),
                      p.x() * std::sin(angle) + p.y() * std::cos(angle));
    }
    EXPECT_FALSE(certifiedSoundly(v, true)) << step;
  }
}

TEST(ClearanceSweep, RefusesTwoVerticesWithinReach) {
  // Non-consecutive vertices 1 and 4 nearly coincide; then consecutive ones.
  EXPECT_FALSE(certifiedSoundly({{0, 0}, {5, 5}, {10, 0}, {10, 10}, {5, 5 + 1e-7}, {0, 10}}, true));
  EXPECT_FALSE(certifiedSoundly({{0, 0}, {10, 0}, {10, 1e-7}, {10, 10}, {0, 10}}, true));
}

TEST(ClearanceSweep, RefusesRepeatedVertices) {
  EXPECT_FALSE(certifiedSoundly({{0, 0}, {10, 0}, {10, 0}, {10, 10}, {0, 10}}, true));
  EXPECT_FALSE(certifiedSoundly({{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}}, true));
}

TEST(ClearanceSweep, RefusesConsecutiveSegmentsFoldingBack) {
  // Vertex 2 turns straight back along the segment it arrived on.
  EXPECT_FALSE(certifiedSoundly({{0, 0}, {10, 0}, {20, 0}, {15, 0}, {15, 10}}, false));
}

TEST(ClearanceSweep, CertifiesCollinearSegmentsInARow) {
  // Straight runs through vertices, horizontal, vertical and slanted.
  EXPECT_TRUE(certifiedSoundly({{0, 0}, {5, 0}, {10, 0}, {10, 5}, {10, 10}, {5, 5}}, true));
}

TEST(ClearanceSweep, RefusesOverlappingCollinearSegments) {
  // Segment 4 runs up the line of segment 0 and over its upper part; segment 4 of the second
  // lies on segment 0's horizontal line, inside it.
  EXPECT_FALSE(certifiedSoundly({{0, 0}, {0, 10}, {5, 12}, {3, 5}, {0, 5}, {0, 15}}, false));
  EXPECT_FALSE(
      certifiedSoundly({{0, 0}, {10, 0}, {10, 5}, {5, 5}, {5, 0}, {3, 0}, {3, -5}}, false));
}

TEST(ClearanceSweep, RefusesNonFiniteAndHugeCoordinatesAndBadReach) {
  const Points square{{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0.5, 0.5}};
  EXPECT_FALSE(segmentsKeepClear({{0, 0}, {1, 0}, {kInf, 1}, {0, 1}}, true, kReach));
  EXPECT_FALSE(segmentsKeepClear({{0, 0}, {1, 0}, {1, -kInf}, {0, 1}}, true, kReach));
  EXPECT_FALSE(segmentsKeepClear({{0, 0}, {1, 0}, {kNaN, 1}, {0, 1}}, true, kReach));
  EXPECT_FALSE(segmentsKeepClear({{0, 0}, {1, 0}, {1e101, 1}, {0, 1}}, true, kReach));
  for (const double reach : {0.0, -1.0, kNaN, kInf}) {
    EXPECT_FALSE(segmentsKeepClear(square, true, reach)) << reach;
  }
}

TEST(ClearanceSweep, CertifiesUpToThreeVerticesWhereEverySegmentSharesAVertex) {
  EXPECT_TRUE(segmentsKeepClear({}, true, kReach));
  EXPECT_TRUE(segmentsKeepClear({{0, 0}}, true, kReach));
  EXPECT_TRUE(segmentsKeepClear({{0, 0}, {0, 0}}, false, kReach));
  EXPECT_TRUE(segmentsKeepClear({{0, 0}, {1, 0}, {0, 0}}, true, kReach));
  EXPECT_FALSE(segmentsKeepClear({{0, 0}, {1, 0}, {kNaN, 0}}, true, kReach));
}

TEST(ClearanceSweep, RefusesAnOpenWalkWhoseLastVertexNearsItsFirstSegment) {
  // The open walk's last vertex comes within reach of its first segment.
  Points v{{0, 0}, {10, 0}, {10, 10}, {5, 10}, {5, 0}};
  v[4] = gkVector<2>(5, 0.5 * kReach);
  EXPECT_FALSE(certifiedSoundly(v, false));
  v[4] = gkVector<2>(5, 1.0);
  EXPECT_TRUE(certifiedSoundly(v, false));
}

TEST(ClearanceSweep, IsSoundOnDegenerateIntegerShapes) {
  // Small grids: repeats, touching vertices, collinear overlaps and crossings at vertices.
  std::mt19937_64 rng(3);
  int certified = 0;
  for (int shape = 0; shape < 6000; ++shape) {
    const int grid = 3 + static_cast<int>(rng() % 10);
    const std::size_t n = 4 + rng() % 14;
    Points v;
    for (std::size_t i = 0; i < n; ++i) {
      v.emplace_back(static_cast<double>(rng() % grid), static_cast<double>(rng() % grid));
    }
    certified += certifiedSoundly(v, rng() % 2 == 0) ? 1 : 0;
  }
  EXPECT_GT(certified, 100);
}

TEST(ClearanceSweep, IsSoundOnStarsAndOutlinesWithVerticesPlacedAroundTheReach) {
  // A vertex moved beside a random segment that it does not touch, at distances around the
  // reach, at several scales; both answers must be common.
  std::mt19937_64 rng(4);
  int certified = 0;
  int refused = 0;
  for (int shape = 0; shape < 1500; ++shape) {
    const std::size_t n = 8 + rng() % 150;
    Points v = shape % 3 == 0 ? skyline(n / 2, rng, shape % 2)
                              : (shape % 3 == 1 ? star(n, rng) : blob(n, rng));
    const std::size_t i = rng() % v.size();
    const std::size_t a = (i + 2 + rng() % (v.size() - 3)) % v.size();
    const std::size_t b = (a + 1) % v.size();
    if (b != i && (b + 1) % v.size() != i && shape % 4 != 0) {
      const double distances[] = {0.0, 0.5, 0.99, 1.01, 1.5, 3.0, 10.0};
      placeBeside(v, i, v[a], v[b], distances[rng() % 7] * kReach, rng() % 2 == 0 ? 1.0 : -1.0);
    }
    if (shape % 5 == 0) {
      v = scaled(v, 1e4, gkVector<2>(-3e5, 7e5));
    }
    const bool clear = certifiedSoundly(v, rng() % 4 != 0);
    certified += clear ? 1 : 0;
    refused += clear ? 0 : 1;
  }
  EXPECT_GT(certified, 300);
  EXPECT_GT(refused, 300);
}

TEST(ClearanceSweep, IsSoundOnCrossedStars) {
  // Swapping consecutive vertices makes the outline cross itself; both answers occur.
  std::mt19937_64 rng(5);
  int certified = 0;
  for (int shape = 0; shape < 300; ++shape) {
    Points v = star(20 + rng() % 150, rng, 0.9);
    const int swaps = static_cast<int>(rng() % 3);
    for (int s = 0; s < swaps; ++s) {
      const std::size_t k = rng() % (v.size() - 1);
      std::swap(v[k], v[k + 1]);
    }
    certified += certifiedSoundly(v, true) ? 1 : 0;
  }
  EXPECT_GT(certified, 50);
  EXPECT_LT(certified, 250);
}

TEST(ClearanceSweep, IsSoundOnStarShapedPolygonsOfIntegerPoints) {
  // Random lattice points in order of angle round a centre make simple polygons full of exact
  // collinearities, equal coordinates and vertical and horizontal segments; ties in angle make
  // touching or overlapping ones.
  std::mt19937_64 rng(6);
  int certified = 0;
  int refused = 0;
  for (int shape = 0; shape < 1500; ++shape) {
    const int grid = 5 + static_cast<int>(rng() % 60);
    const std::size_t n = 4 + rng() % 60;
    Points v;
    for (std::size_t i = 0; i < n; ++i) {
      v.emplace_back(static_cast<double>(rng() % grid), static_cast<double>(rng() % grid));
    }
    // Half the shapes turn round a lattice point, where several vertices share an angle.
    const double offset = shape % 2 == 0 ? 0.0 : 0.25;
    const gkVector<2> centre(grid / 2 + offset, grid / 2 + offset / 2);
    std::sort(v.begin(), v.end(), [&centre](const gkVector<2>& a, const gkVector<2>& b) {
      return std::atan2(a.y() - centre.y(), a.x() - centre.x()) <
             std::atan2(b.y() - centre.y(), b.x() - centre.x());
    });
    v.erase(std::unique(v.begin(), v.end(),
                        [](const gkVector<2>& a, const gkVector<2>& b) {
                          return a.x() == b.x() && a.y() == b.y();
                        }),
            v.end());
    const bool clear = certifiedSoundly(v, shape % 3 != 0);
    certified += clear ? 1 : 0;
    refused += clear ? 0 : 1;
  }
  EXPECT_GT(certified, 300);
  EXPECT_GT(refused, 100);
}

TEST(ClearanceSweep, IsSoundOnCombsOfNearlyParallelTeeth) {
  // Long thin teeth a few reaches apart at small angles to each other and to the axes: the
  // sweep's order must hold between segments that are close but never within reach.
  std::mt19937_64 rng(7);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  int certified = 0;
  for (int shape = 0; shape < 400; ++shape) {
    const double gap = (1.0 + 4.0 * u(rng)) * kReach;
    const double tilt = shape % 4 == 0 ? 0.0 : 1e-3 * (u(rng) - 0.5);
    const double turn = kTwoPi * u(rng);
    Points v;
    const int teeth = 3 + static_cast<int>(rng() % 20);
    for (int t = 0; t < teeth; ++t) {
      const double x = 4.0 * gap * t;
      v.emplace_back(x, 0.0);
      v.emplace_back(x + tilt, 1.0);
      v.emplace_back(x + gap + tilt, 1.0 + tilt);
      v.emplace_back(x + gap, 0.0);
    }
    for (gkVector<2>& p : v) {
      p = gkVector<2>(p.x() * std::cos(turn) - p.y() * std::sin(turn),
                      p.x() * std::sin(turn) + p.y() * std::cos(turn));
    }
    certified += certifiedSoundly(v, false) ? 1 : 0;
  }
  EXPECT_GT(certified, 40);
}

TEST(ClearanceSweep, OrdersLargeOutlinesOnEitherSideOfZeroCorrectly) {
  // Thousands of vertices go through the radix sort of the coordinates; negative, positive and
  // zero coordinates (+0 and -0) and long columns of equal x must come out in order, or the
  // answers below go wrong.
  std::mt19937_64 rng(8);
  Points outline = blob(4000, rng);
  EXPECT_TRUE(segmentsKeepClear(outline, true, kReach));
  std::swap(outline[1000], outline[3000]);  // chords across the whole outline
  std::pair<std::size_t, std::size_t> pair;
  EXPECT_FALSE(segmentsKeepClear(outline, true, kReach, &pair));
  EXPECT_NE(pair.first, kNoSegment);
  Points sky = scaled(skyline(1500, rng), 1.0, gkVector<2>(-750, -3));
  int negatedZeros = 0;
  for (gkVector<2>& p : sky) {
    if (p.x() == 0.0 && negatedZeros++ == 0) {
      p = gkVector<2>(-0.0, p.y());  // one end of the vertical edge at x = 0
    }
  }
  ASSERT_EQ(negatedZeros, 2);
  EXPECT_TRUE(segmentsKeepClear(sky, true, kReach));
  EXPECT_TRUE(segmentsKeepClear(transposed(sky), true, kReach));
  sky[700] = gkVector<2>(sky[700].x(), -3);  // a column top on the base line
  EXPECT_FALSE(segmentsKeepClear(sky, true, kReach));
}

}  // namespace
