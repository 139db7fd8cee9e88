#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <limits>
#include <random>
#include <vector>

#include <gk/base/vector.h>
#include <gk/cntr/contour.h>

#include "base/detail/near_vertices.h"

using gk::detail::NearVertices;
using Points = std::vector<gkVector<2>>;

namespace {

/// Asserts that every point of the list, and the extra queries, get from the sorted cells what
/// the contour's vertex grid answers, in its order.
void expectVertexIndexOrder(const Points& points, double tolerance, const Points& queries) {
  const gkContour contour(points, false, 0);
  const NearVertices near(points, tolerance);
  std::vector<int> found;
  for (const Points* list : {&points, &queries}) {
    for (const gkVector<2>& q : *list) {
      near.find(q, found);
      ASSERT_EQ(found, contour.vertexIndex(q, tolerance))
          << "at (" << q.x() << ", " << q.y() << "), tolerance " << tolerance;
    }
  }
  // Asked by number, a point of the list gets the same list.
  std::vector<int> foundNear;
  for (std::size_t j = 0; j < points.size(); ++j) {
    near.find(points[j], found);
    near.findNear(j, foundNear);
    ASSERT_EQ(foundNear, found) << "point " << j << ", tolerance " << tolerance;
  }
}

}  // namespace

TEST(NearVertices, ListsAsTheVertexGridDoesOnClustersOfNearAndRepeatedPoints) {
  std::mt19937_64 rng(3);
  std::uniform_real_distribution<double> u(0, 1);
  for (const double tolerance : {1e-6, 0.3, 1.3}) {
    for (int shape = 0; shape < 20; ++shape) {
      Points p;
      Points queries;
      for (int i = 0; i < 300; ++i) {
        if (i > 0 && u(rng) < 0.2) {
          // Near or on an earlier point, at distances around the tolerance.
          const gkVector<2> base = p[static_cast<std::size_t>(u(rng) * static_cast<double>(i))];
          const double d = tolerance * (u(rng) < 0.3 ? 0.0 : 2.0 * u(rng));
          const double a = 6.283185307179586 * u(rng);
          p.push_back(base + gkVector<2>(d * std::cos(a), d * std::sin(a)));
        } else {
          p.emplace_back(20 * tolerance * u(rng), 20 * tolerance * u(rng));
        }
        queries.emplace_back(20 * tolerance * u(rng) - tolerance, 20 * tolerance * u(rng));
      }
      expectVertexIndexOrder(p, tolerance, queries);
    }
  }
}

TEST(NearVertices, ListsAsTheVertexGridDoesWhereRoundingMovesACellTwoAway) {
  // 4.55 / 1.3 rounds below 3.5 (cell 3) while 5.85 / 1.3 is exactly 4.5 (cell 5): points 1.3
  // apart, less a hair, two cells apart.
  const Points p = {{4.55, 0}, {5.85, 0}, {5.85 - 1e-15, 0}, {3.25, 0}, {4.55, 1.3}, {0, 0}};
  expectVertexIndexOrder(p, 1.3, {{5.2, 0.65}, {4.55, 0.0}});
}

TEST(NearVertices, ListsAsTheVertexGridDoesForZerosHugeAndNonFiniteCoordinates) {
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Points p = {{0.0, -0.0}, {-0.0, 0.0}, {1e300, 1e300}, {-1e300, 1e300}, {inf, 0},
                    {0, -inf},   {nan, 0},    {0, nan},       {5e-7, 0},       {1e300, 1e300}};
  expectVertexIndexOrder(p, 1e-6, {{0, 0}, {1e300, 1e300}, {inf, inf}, {nan, nan}});
}

TEST(NearVertices, APointOfTheListFindsByNumberWhatItFindsByPlace) {
  // Long lists, where the searches from a point's own place gallop far: points on a fine
  // grid (many per column), on a line (one per column), in tight clusters, and one point
  // repeated, at tolerances from far below to far above the spacing.
  std::mt19937_64 rng(77);
  std::uniform_real_distribution<double> u(0, 1);
  for (const double tolerance : {1e-9, 0.01, 0.5, 7.0}) {
    Points grid;
    Points line;
    Points clusters;
    for (int i = 0; i < 2000; ++i) {
      grid.emplace_back(std::floor(u(rng) * 30), std::floor(u(rng) * 30) + 0.5 * u(rng));
      line.emplace_back(0.37 * i, 1.0);
      clusters.emplace_back(std::floor(i / 50.0) * 10.0 + 0.01 * u(rng), 0.01 * u(rng));
    }
    const Points same(300, gkVector<2>(2.5, -1.0));
    for (const Points* p : std::initializer_list<const Points*>{&grid, &line, &clusters, &same}) {
      const NearVertices near(*p, tolerance);
      std::vector<int> found;
      std::vector<int> foundNear;
      for (std::size_t j = 0; j < p->size(); ++j) {
        near.find((*p)[j], found);
        near.findNear(j, foundNear);
        ASSERT_EQ(foundNear, found) << "point " << j << ", tolerance " << tolerance;
      }
    }
  }
}

TEST(NearVertices, AnEmptyListFindsNothing) {
  const Points none;
  const NearVertices near(none, 1.0);
  std::vector<int> found = {7};
  near.find(gkVector<2>(0, 0), found);
  EXPECT_TRUE(found.empty());
}
