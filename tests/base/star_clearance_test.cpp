#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <vector>

#include <gk/base/vector.h>

#include "base/detail/star_clearance.h"
#include "outlines.h"
#include "plain_clearance.h"

using gk::detail::sampledCentre;
using gk::detail::vertexCentre;
using gk::test::plainClearance;
using gk::test::scaled;

namespace {

using Points = std::vector<gkVector<2>>;

constexpr double kGap = 2e-6;
constexpr double kPerMagnitude = 1024.0 * std::numeric_limits<double>::epsilon();
constexpr double kTwoPi = 6.283185307179586;

/// The test as self-intersection first asks it: about the mean of a sample of the vertices.
bool starShapedKeepsClear(const Points& points, double gap, double perMagnitude) {
  return points.empty()
             ? gk::detail::starShapedKeepsClear(points, {0, 0}, gap, perMagnitude)
             : gk::detail::starShapedKeepsClear(points, sampledCentre(points), gap, perMagnitude);
}

double largestMagnitude(const Points& points) {
  double m = 0.0;
  for (const gkVector<2>& p : points) {
    m = std::max({m, std::abs(p.x()), std::abs(p.y())});
  }
  return m;
}

/// The one promise: a true answer means every two segments sharing no vertex, of the closed
/// polygon and of the open walk, lie farther apart than the gap. Returns the answer.
bool certifiedSoundlyAbout(
    const Points& points, const gkVector<2>& centre,
    gk::detail::StarDistances distances = gk::detail::StarDistances::kLinesFirst) {
  const bool clear =
      gk::detail::starShapedKeepsClear(points, centre, kGap, kPerMagnitude, distances);
  if (clear) {
    const long double reach = kGap + kPerMagnitude * largestMagnitude(points);
    EXPECT_GT(plainClearance(points, true), reach) << points.size() << " vertices, closed";
    EXPECT_GT(plainClearance(points, false), reach) << points.size() << " vertices, open";
  }
  return clear;
}

/// As certifiedSoundlyAbout, about the sampled centre.
bool certifiedSoundly(const Points& points) {
  return certifiedSoundlyAbout(points, points.empty() ? gkVector<2>() : sampledCentre(points));
}

Points regularPolygon(std::size_t n, double radius, const gkVector<2>& centre = {0, 0}) {
  Points v;
  for (std::size_t k = 0; k < n; ++k) {
    const double a = kTwoPi * static_cast<double>(k) / static_cast<double>(n);
    v.emplace_back(centre.x() + radius * std::cos(a), centre.y() + radius * std::sin(a));
  }
  return v;
}

Points reversed(Points v) {
  std::reverse(v.begin(), v.end());
  return v;
}

}  // namespace

TEST(StarClearance, SmoothBlobsAreCertifiedEitherWayRound) {
  std::mt19937_64 rng(17);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  for (const std::size_t n : {8u, 64u, 1024u, 16384u, 131072u}) {
    const Points blob = gk::test::blobOutline(n, 0.01, [&] { return u(rng); });
    for (const Points& p : {blob, reversed(blob)}) {
      // The plain clearance is quadratic: checked up to 1024 vertices.
      EXPECT_TRUE(n > 1024 ? starShapedKeepsClear(p, kGap, kPerMagnitude) : certifiedSoundly(p))
          << n;
    }
  }
}

TEST(StarClearance, SpikyStarsAreCertifiedWhileTheirKernelHoldsTheCentre) {
  // A star's spikes see each other from a disc about the origin only: its kernel, about as
  // wide as a spike's foot times 100 / 30 (the radius over the spread). At 64 vertices that is
  // 30, at 16384 about 0.13, and the mean of 64 vertices lies a few units from the origin.
  std::mt19937_64 rng(17);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  for (const std::size_t n : {8u, 64u}) {
    const Points star = gk::test::starOutline(n, 0.3, [&] { return u(rng); });
    EXPECT_TRUE(certifiedSoundly(star)) << n;
    EXPECT_TRUE(certifiedSoundly(reversed(star))) << n;
  }
  const Points dense = gk::test::starOutline(16384, 0.3, [&] { return u(rng); });
  EXPECT_FALSE(starShapedKeepsClear(dense, kGap, kPerMagnitude));
  // The mean of every vertex lands in the kernel, where the lines of the steepest spikes pass
  // within 0.2 of the centre: it is the distance to each segment, not to its line, that bounds
  // the clearance.
  EXPECT_TRUE(gk::detail::starShapedKeepsClear(dense, vertexCentre(dense), kGap, kPerMagnitude));
  EXPECT_TRUE(gk::detail::starShapedKeepsClear(dense, vertexCentre(dense), kGap, kPerMagnitude,
                                               gk::detail::StarDistances::kSegments));
  // At 131072 vertices the kernel is about 0.02 across, and this star's mean lies 0.035 from
  // the origin: some steps turn back as seen from there.
  const Points denser = gk::test::starOutline(131072, 0.3, [&] { return u(rng); });
  EXPECT_FALSE(gk::detail::starShapedKeepsClear(denser, vertexCentre(denser), kGap, kPerMagnitude));
  EXPECT_TRUE(gk::detail::starShapedKeepsClear(denser, {0, 0}, kGap, kPerMagnitude));
}

TEST(StarClearance, TheCentresAreTheMeansOfASampleAndOfEveryVertex) {
  Points v;
  for (int k = 0; k < 200; ++k) {
    v.emplace_back(k, k % 2 == 0 ? 1.0 : 3.0);
  }
  EXPECT_EQ(vertexCentre(v), gkVector<2>(99.5, 2.0));
  // 64 of 200: vertices 0, 3, 6, 9, 12, 15, 18, 21, 25, ... (s * 200 / 64).
  double sx = 0.0;
  double sy = 0.0;
  for (int s = 0; s < 64; ++s) {
    sx += v[static_cast<std::size_t>(s * 200 / 64)].x();
    sy += v[static_cast<std::size_t>(s * 200 / 64)].y();
  }
  EXPECT_EQ(sampledCentre(v), gkVector<2>(sx / 64.0, sy / 64.0));
  EXPECT_EQ(sampledCentre({{4, 5}}), gkVector<2>(4, 5));
}

TEST(StarClearance, AConvexPolygonFarFromTheOriginIsCertified) {
  EXPECT_TRUE(certifiedSoundly(regularPolygon(7, 3.0, {1e6, -2e6})));
  EXPECT_TRUE(certifiedSoundly(reversed(regularPolygon(5, 0.5, {-40, 12}))));
}

TEST(StarClearance, ATriangleIsCertifiedButFewerVerticesAreNot) {
  EXPECT_TRUE(certifiedSoundly({{0, 0}, {4, 0}, {0, 3}}));
  EXPECT_FALSE(starShapedKeepsClear({{0, 0}, {4, 0}}, kGap, kPerMagnitude));
  EXPECT_FALSE(starShapedKeepsClear({{1, 1}}, kGap, kPerMagnitude));
  EXPECT_FALSE(starShapedKeepsClear({}, kGap, kPerMagnitude));
}

TEST(StarClearance, AnOutlineWindingTwiceIsNotCertified) {
  // Every step turns the same way by a sixteenth of a turn around the centre, but the steps
  // go round twice: the segments cross.
  Points twice;
  for (int k = 0; k < 32; ++k) {
    const double a = kTwoPi * k / 16.0;
    const double r = k < 16 ? 10.0 : 12.0;
    twice.emplace_back(r * std::cos(a), r * std::sin(a));
  }
  EXPECT_FALSE(starShapedKeepsClear(twice, kGap, kPerMagnitude));
  EXPECT_EQ(plainClearance(twice, true), 0.0L);
}

TEST(StarClearance, AStepTurningBackIsNotCertified) {
  Points v = regularPolygon(12, 10.0);
  std::swap(v[4], v[5]);
  EXPECT_FALSE(starShapedKeepsClear(v, kGap, kPerMagnitude));
  // A step straight towards the centre (zero turn) is not a wedge either.
  Points radial = regularPolygon(12, 10.0);
  radial.insert(radial.begin() + 3, radial[3] * 0.5);
  EXPECT_FALSE(starShapedKeepsClear(radial, kGap, kPerMagnitude));
}

TEST(StarClearance, ARepeatedVertexIsNotCertified) {
  Points v = regularPolygon(10, 10.0);
  v.insert(v.begin() + 4, v[4]);
  EXPECT_FALSE(starShapedKeepsClear(v, kGap, kPerMagnitude));
  Points closing = regularPolygon(10, 10.0);
  closing.push_back(closing.front());
  EXPECT_FALSE(starShapedKeepsClear(closing, kGap, kPerMagnitude));
}

TEST(StarClearance, AnOutlineNotStarShapedAboutItsVertexMeanIsNotCertified) {
  // A C: the centre of its vertices lies in the gap of the C, outside it, and the outline
  // turns back as seen from there.
  Points c;
  for (int k = 0; k <= 40; ++k) {
    const double a = 0.5 + (kTwoPi - 1.0) * k / 40.0;
    c.emplace_back(10.0 * std::cos(a), 10.0 * std::sin(a));
  }
  for (int k = 40; k >= 0; --k) {
    const double a = 0.5 + (kTwoPi - 1.0) * k / 40.0;
    c.emplace_back(8.0 * std::cos(a), 8.0 * std::sin(a));
  }
  EXPECT_GT(plainClearance(c, true), 1.0L);  // simple, and clear by far
  EXPECT_FALSE(starShapedKeepsClear(c, kGap, kPerMagnitude));
}

TEST(StarClearance, SegmentsWithinTheGapOfEachOtherAreNotCertified) {
  // An octagon's segments two apart are about 0.7 of its radius apart: below the gap when the
  // radius is 2e-6, far above it at 1e-3.
  const Points small = regularPolygon(8, 2e-6, {5, 5});
  EXPECT_LT(plainClearance(small, true), static_cast<long double>(kGap));
  EXPECT_FALSE(starShapedKeepsClear(small, kGap, kPerMagnitude));
  EXPECT_TRUE(certifiedSoundly(regularPolygon(8, 1e-3, {5, 5})));
  // A vertex a hair from the next but one segment: the wedge between is wide enough, the
  // vertices are not far enough apart.
  Points hair = regularPolygon(16, 10.0);
  hair.insert(hair.begin() + 5,
              hair[4] * (1.0 + 1e-7) + gkVector<2>(-hair[4].y(), hair[4].x()) * 1e-8);
  EXPECT_LT(plainClearance(hair, true), static_cast<long double>(kGap));
  EXPECT_FALSE(starShapedKeepsClear(hair, kGap, kPerMagnitude));
}

TEST(StarClearance, AThinWedgeBetweenTangentialSegmentsIsJudgedByItsWidth) {
  // A fine regular polygon with one vertex doubled a small turn further on, where the axes
  // meet the outline: the segments on either side of the thin wedge are nearly tangential and
  // their taxicab lengths nearly their lengths, so the bound is close to the clearance itself
  // (the wedge's width). Widths from a tenth of the gap to a hundred times it.
  int certified = 0;
  for (int step = 0; step <= 30; ++step) {
    const double width = kGap * std::pow(10.0, -1.0 + step / 10.0);
    for (const int quarter : {0, 1, 2, 3}) {
      Points v = regularPolygon(96, 10.0);
      const std::size_t k = 24u * static_cast<std::size_t>(quarter);
      const double a = kTwoPi * quarter / 4.0 + width / 10.0;
      v.insert(v.begin() + static_cast<std::ptrdiff_t>(k) + 1,
               gkVector<2>(10.0 * std::cos(a), 10.0 * std::sin(a)));
      certified += certifiedSoundly(v) ? 1 : 0;
    }
  }
  EXPECT_GT(certified, 20);
  EXPECT_LT(certified, 100);
}

TEST(StarClearance, SegmentsEndingNearTheCentreAreJudgedByTheirEnds) {
  // Vertices 4 and 6 of a regular polygon pulled in close to the centre: the segments through
  // them point at it, so their nearest points to it are those vertices, and the segments into
  // vertex 4 and out of vertex 6 share no vertex yet come as close as vertices 4 and 6 do.
  int certified = 0;
  for (int step = 0; step <= 40; ++step) {
    const double pulled = std::pow(10.0, -6.0 + step / 10.0);
    Points v = regularPolygon(32, 10.0);
    v[4] = v[4] * (pulled / 10.0);
    v[6] = v[6] * (pulled / 10.0);
    for (const gkVector<2>& centre : {gkVector<2>(0, 0), gkVector<2>(1e-9, -2e-9)}) {
      const bool linesFirst = certifiedSoundlyAbout(v, centre);
      // Measuring the segments at once gives the same answer here: the lines through the
      // pulled vertices pass too near the centre for the first pass to answer.
      EXPECT_EQ(certifiedSoundlyAbout(v, centre, gk::detail::StarDistances::kSegments), linesFirst);
      certified += linesFirst ? 1 : 0;
    }
  }
  EXPECT_GT(certified, 20);
  EXPECT_LT(certified, 80);
}

TEST(StarClearance, ClearanceNearTheGapIsNeverOverstated) {
  // Regular polygons whose clearance sweeps across the gap, and random star-shaped polygons
  // with thin wedges and vertices near the centre: every true answer is checked against the
  // plain clearance, and both answers occur.
  std::mt19937_64 rng(2026);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  int certified = 0;
  int refused = 0;
  for (int shape = 0; shape < 3000; ++shape) {
    Points v;
    if (shape % 2 == 0) {
      const std::size_t n = 3 + static_cast<std::size_t>(u(rng) * 30);
      v = regularPolygon(n, std::pow(10.0, -7.0 + 3.0 * u(rng)), {u(rng), u(rng)});
    } else {
      const std::size_t n = 3 + static_cast<std::size_t>(u(rng) * 60);
      std::vector<double> angles;
      for (std::size_t k = 0; k < n; ++k) {
        angles.push_back(kTwoPi * u(rng));
      }
      std::sort(angles.begin(), angles.end());
      const double scale = std::pow(10.0, -5.0 + 8.0 * u(rng));
      for (const double a : angles) {
        const double r = scale * (shape % 3 == 0 ? 1e-3 + u(rng) : 0.5 + u(rng));
        v.emplace_back(r * std::cos(a), r * std::sin(a));
      }
      if (shape % 5 == 0) {
        v = reversed(v);
      }
    }
    (certifiedSoundly(v) ? certified : refused) += 1;
  }
  EXPECT_GT(certified, 200);
  EXPECT_GT(refused, 300);
}

TEST(StarClearance, NonFiniteOrHugeCoordinatesAreNotCertified) {
  const Points octagon = regularPolygon(8, 10.0);
  for (const double bad :
       {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), 1e101}) {
    for (const bool inX : {true, false}) {
      Points v = octagon;
      v[3] = inX ? gkVector<2>(bad, v[3].y()) : gkVector<2>(v[3].x(), bad);
      EXPECT_FALSE(starShapedKeepsClear(v, kGap, kPerMagnitude)) << bad;
    }
  }
  EXPECT_FALSE(starShapedKeepsClear(scaled(octagon, 1e100, {0, 0}), kGap, kPerMagnitude));
  EXPECT_TRUE(certifiedSoundly(scaled(octagon, 1e98, {0, 0})));
}

TEST(StarClearance, TheGapGrowsWithTheLargestCoordinate) {
  // A unit octagon far from the origin: clear by 0.7, but the rounding allowance of 1024 eps
  // per unit of magnitude is 0.023 at 1e11 and 2.3 at 1e13.
  EXPECT_TRUE(certifiedSoundly(regularPolygon(8, 1.0, {1e11, 0})));
  EXPECT_FALSE(starShapedKeepsClear(regularPolygon(8, 1.0, {1e13, 0}), kGap, kPerMagnitude));
}
