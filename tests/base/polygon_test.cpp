#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include <gk/base/assert.h>
#include <gk/base/polygon.h>
#include <gk/base/vector.h>

namespace {

using V = gkVector<2>;

const std::vector<V> kTriangle = {V(0.1, 0.2), V(3.0, 0.0), V(1.0, 2.5)};

}  // namespace

TEST(Polygon, DefaultIsEmptyWithEvenOddFill) {
  const gkPolygon p;
  EXPECT_TRUE(p.empty());
  EXPECT_EQ(p.size(), 0u);
  EXPECT_TRUE(p.vertices().empty());
  EXPECT_EQ(p.fillMode(), gkPolygon::eEvenOdd);
}

TEST(Polygon, FillModesHaveTheirDocumentedValues) {
  EXPECT_EQ(static_cast<int>(gkPolygon::eEvenOdd), 0);
  EXPECT_EQ(static_cast<int>(gkPolygon::eNonZeroWinding), 1);
}

TEST(Polygon, KeepsVerticesInOrderAndExactly) {
  const gkPolygon p(kTriangle, gkPolygon::eNonZeroWinding);
  EXPECT_FALSE(p.empty());
  ASSERT_EQ(p.size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(p[i], kTriangle[i]) << i;
  }
  EXPECT_EQ(p.vertices(), kTriangle);
}

TEST(Polygon, KeepsTheFillMode) {
  EXPECT_EQ(gkPolygon(kTriangle, gkPolygon::eNonZeroWinding).fillMode(),
            gkPolygon::eNonZeroWinding);
  EXPECT_EQ(gkPolygon(kTriangle, gkPolygon::eEvenOdd).fillMode(), gkPolygon::eEvenOdd);
}

TEST(Polygon, KeepsRepeatedAndCollinearVertices) {
  const std::vector<V> v = {V(0.0, 0.0), V(0.0, 0.0), V(1.0, 0.0), V(2.0, 0.0), V(0.0, 0.0)};
  const gkPolygon p(v, gkPolygon::eEvenOdd);
  EXPECT_EQ(p.size(), 5u);
  EXPECT_EQ(p.vertices(), v);
}

TEST(Polygon, EmptyVertexListGivesAnEmptyPolygonWithTheGivenMode) {
  const gkPolygon p(std::vector<V>(), gkPolygon::eNonZeroWinding);
  EXPECT_TRUE(p.empty());
  EXPECT_EQ(p.fillMode(), gkPolygon::eNonZeroWinding);
}

TEST(Polygon, CopiesTheVertexListRatherThanReferringToIt) {
  std::vector<V> v = kTriangle;
  const gkPolygon p(v, gkPolygon::eEvenOdd);
  v[0] = V(99.0, 99.0);
  v.push_back(V(1.0, 1.0));
  EXPECT_EQ(p.size(), 3u);
  EXPECT_EQ(p[0], V(0.1, 0.2));
}

TEST(Polygon, IndexAtSizeThrowsAnAssertionFailure) {
  const gkPolygon p(kTriangle, gkPolygon::eEvenOdd);
  EXPECT_THROW(p[3], gkAssertionFailure);
  EXPECT_THROW(p[static_cast<std::size_t>(-1)], gkAssertionFailure);
}

TEST(Polygon, IndexIntoAnEmptyPolygonThrowsAnAssertionFailure) {
  EXPECT_THROW(gkPolygon()[0], gkAssertionFailure);
}

TEST(Polygon, AssertionFailureTellsWhereTheCheckFailed) {
  const gkPolygon p(kTriangle, gkPolygon::eEvenOdd);
  try {
    (void)p[7];
    FAIL() << "no exception";
  } catch (const gkAssertionFailure& e) {
    const std::string file = e.file();
    EXPECT_NE(file.find("polygon"), std::string::npos) << file;
    EXPECT_GT(e.line(), 0);
  }
}
