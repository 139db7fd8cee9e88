#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include <gk/base/rect.h>
#include <gk/base/vector.h>

#include "base/detail/vertex_box.h"

using gk::detail::vertexBox;

namespace {

using Points = std::vector<gkVector<2>>;

/// The box enclosed one point after another: what vertexBox must return, bit for bit.
gkRect plainBox(const Points& points) {
  gkRect box(points[0], gkVector<2>());
  for (std::size_t i = 1; i < points.size(); ++i) {
    box = box.enclose(gkRect(points[i], gkVector<2>()));
  }
  return box;
}

std::uint64_t bits(double d) {
  std::uint64_t b = 0;
  std::memcpy(&b, &d, sizeof b);
  return b;
}

void expectSameBits(const gkRect& a, const gkRect& b) {
  EXPECT_EQ(bits(a.ul().x()), bits(b.ul().x()));
  EXPECT_EQ(bits(a.ul().y()), bits(b.ul().y()));
  EXPECT_EQ(bits(a.lr().x()), bits(b.lr().x()));
  EXPECT_EQ(bits(a.lr().y()), bits(b.lr().y()));
}

}  // namespace

TEST(VertexBox, MatchesThePointByPointBoxBitForBitOnAwkwardCoordinates) {
  // Coordinates drawn from a small pool, so that ties, zeros of both signs at the bounds, NaN
  // (first or later), infinities and repeats are common, at every length from 1 to 40 and in
  // longer lists.
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  const std::vector<double> pool = {0.0,    -0.0, 1.0,  -1.0, 2.5, -2.5, 1e300,
                                    -1e300, inf,  -inf, nan,  0.5, -0.5, 3.0};
  std::mt19937_64 rng(404);
  std::uniform_int_distribution<std::size_t> pick(0, pool.size() - 1);
  std::uniform_int_distribution<int> few(0, 9);
  for (int shape = 0; shape < 20000; ++shape) {
    const std::size_t n = shape < 15000 ? 1 + static_cast<std::size_t>(shape % 40)
                                        : 40 + static_cast<std::size_t>(shape % 400);
    Points v;
    for (std::size_t i = 0; i < n; ++i) {
      // Mostly plain values, so that the bounds are not always infinite.
      const double x = few(rng) < 2 ? pool[pick(rng)] : static_cast<double>(few(rng)) - 4.5;
      const double y = few(rng) < 2 ? pool[pick(rng)] : static_cast<double>(few(rng)) - 4.0;
      v.emplace_back(x, y);
    }
    SCOPED_TRACE(shape);
    expectSameBits(vertexBox(v), plainBox(v));
  }
}

TEST(VertexBox, KeepsTheFirstZeroMetAtABound) {
  // Zeros of both signs at the low bounds: the negative one (point 4) is met first, but the
  // positive one (point 5) is in the first of the four running boxes (points 1, 5, ...) and
  // the negative one in the last (points 4, 8, ...).
  const Points v = {{1, 1}, {2, 2}, {3, 3}, {4, 4}, {-0.0, -0.0}, {0, 0}, {5, 5}, {6, 6}, {7, 7}};
  EXPECT_TRUE(std::signbit(vertexBox(v).ul().x()));
  EXPECT_TRUE(std::signbit(vertexBox(v).ul().y()));
  expectSameBits(vertexBox(v), plainBox(v));
  // And at the high bounds, the positive zero first.
  const Points w = {{-1, -1},     {-2, -2}, {-3, -3}, {-4, -4}, {0, 0},
                    {-0.0, -0.0}, {-5, -5}, {-6, -6}, {-7, -7}};
  EXPECT_FALSE(std::signbit(vertexBox(w).lr().x()));
  EXPECT_FALSE(std::signbit(vertexBox(w).lr().y()));
  expectSameBits(vertexBox(w), plainBox(w));
}

TEST(VertexBox, ANaNInTheFirstPointStaysAndOneLaterIsIgnored) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Points first = {{nan, 1}, {5, 2}, {-5, 3}, {1, 4}, {2, 5}, {3, 6}};
  EXPECT_TRUE(std::isnan(vertexBox(first).ul().x()));
  EXPECT_TRUE(std::isnan(vertexBox(first).lr().x()));
  EXPECT_EQ(vertexBox(first).ul().y(), 1.0);
  EXPECT_EQ(vertexBox(first).lr().y(), 6.0);
  const Points later = {{0.5, 1}, {nan, nan}, {-5, 3}, {1, 4}, {2, nan}, {3, 6}};
  EXPECT_EQ(vertexBox(later), gkRect(gkVector<2>(-5, 1), gkVector<2>(8, 5)));
}
