#include <gk/cntr/region.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iostream>
#include <limits>
#include <map>
#include <ostream>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <typeinfo>
#include <vector>

#include <gk/base/assert.h>
#include <gk/base/line_seg.h>
#include <gk/base/numeric.h>
#include <gk/cntr/errors/contour_errors.h>
#include <gtest/gtest.h>

#include "plain_reference.h"
#include "plain_region_reference.h"
#include "region_test_access.h"
#include "shapes.h"

using gk::test::Points;
using RegionAccess = gkRegionTestAccess;

namespace {

// --- helpers --------------------------------------------------------------------------------

/// "(x, y), (x, y), ..." for failure messages.
std::string show(const Points& p) {
  std::ostringstream os;
  os.precision(17);
  for (std::size_t i = 0; i < p.size(); ++i) {
    os << (i == 0 ? "" : ", ") << "(" << p[i].x() << ", " << p[i].y() << ")";
  }
  return os.str();
}

bool sameCoordinate(double a, double b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

/// Exact equality of two vertex lists, a NaN coordinate matching a NaN.
::testing::AssertionResult samePoints(const Points& actual, const Points& expected) {
  bool same = actual.size() == expected.size();
  for (std::size_t i = 0; same && i < actual.size(); ++i) {
    same = sameCoordinate(actual[i].x(), expected[i].x()) &&
           sameCoordinate(actual[i].y(), expected[i].y());
  }
  if (same) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure()
         << "\n  actual:   " << show(actual) << "\n  expected: " << show(expected);
}

gkPtrHandle_const<gkRegion> regionHandle(const Points& p) {
  return gkPtrHandle_const<gkRegion>(new gkRegion(p));
}

/// Counts calls of the assertion hook while alive and remembers the last place reported;
/// puts the previous handler back on destruction.
class AssertionCounter {
 public:
  AssertionCounter() : previous_(gwSetAssertHandler(&AssertionCounter::record)) {
    count_ = 0;
    lastLine_ = 0;
    lastFile_.clear();
  }
  ~AssertionCounter() { gwSetAssertHandler(previous_); }
  AssertionCounter(const AssertionCounter&) = delete;
  AssertionCounter& operator=(const AssertionCounter&) = delete;

  static int count() { return count_; }
  static int lastLine() { return lastLine_; }
  static const std::string& lastFile() { return lastFile_; }

 private:
  static void record(const char* file, int line, const char*) {
    ++count_;
    lastLine_ = line;
    lastFile_ = file;
  }

  gkAssertHandler previous_;
  static inline int count_ = 0;
  static inline int lastLine_ = 0;
  static inline std::string lastFile_;
};

/// What a call ended with: a region, one of the library's errors, or an assertion failure.
struct Outcome {
  enum Kind { eRegion, eError, eAssertion, eNeverReturns, eCapExceeded, eDegenerateLoop };
  Kind kind = eRegion;
  Points points;              // eRegion
  int errorNumber = 0;        // eError
  std::wstring message;       // eError
  int assertionLine = 0;      // eAssertion
  std::string assertionFile;  // eAssertion
  long start = -1;            // the reference's start edge, when one was found
  std::size_t steps = 0;      // the reference's walk length
  std::size_t bound = 0;      // 4 * (n + X) + 4 for the reference's input
  bool simple = false;        // the reference found no self-intersection
};

/// The outer boundary as a contour, with the segment numbers of its crossings in reach.
class Boundary : public gkContour {
 public:
  explicit Boundary(const Points& p) : gkContour(p, true, 0) {}
  using gkContour::intersections;
};

/// Runs regularize (hullOnly false) or outerHull (true) of the library on a fresh region.
Outcome libraryOutcome(const Points& input, bool hullOnly) {
  Outcome out;
  try {
    const gkRegion source(input);
    gkRegion result;
    if (hullOnly) {
      source.outerHull(result);
    } else {
      source.regularize(result);
    }
    out.points = result.points();
  } catch (const gkContourDefs::Errors& e) {
    out.kind = Outcome::eError;
    out.errorNumber = e.errorNumber();
    out.message = e.message();
  } catch (const gkAssertionFailure& e) {
    out.kind = Outcome::eAssertion;
    out.assertionLine = e.line();
    out.assertionFile = e.file();
  }
  return out;
}

/// A plain reading of the outer-hull and regularization walk, step by step, with nothing but
/// the contour's and region's own queries (and the private crossing count, through the test
/// friend). Unlike the library it has no step bound: a walk that comes back to a state it was
/// in before (same point bit for bit, same cursor, same direction) can never return to its start,
/// and is reported as such; a huge cap guards against anything else.
class ReferenceWalk {
 public:
  static constexpr std::size_t kCap = 1000000;

  static Outcome run(const Points& v, bool hullOnly) {
    Outcome out;
    try {
      runUnguarded(v, hullOnly, out);
    } catch (const gkContourDefs::Errors& e) {
      out.kind = Outcome::eError;
      out.errorNumber = e.errorNumber();
      out.message = e.message();
    }
    return out;
  }

 private:
  static std::size_t wrap(long k, std::size_t n) {
    const long m = static_cast<long>(n);
    return static_cast<std::size_t>(k < 0 ? k + m : (k >= m ? k - m : k));
  }

  static Points loopRun(const Points& v, long from, long to) {
    Points r;
    for (long i = from; i <= to; ++i) {
      r.push_back(v[wrap(i, v.size())]);
    }
    return r;
  }

  static std::uint64_t bits(double d) {
    std::uint64_t u = 0;
    std::memcpy(&u, &d, sizeof u);
    return u;
  }

  static double medianSegmentLength(const Points& v) {
    std::vector<double> lengths;
    for (std::size_t k = 0; k < v.size(); ++k) {
      lengths.push_back(v[wrap(static_cast<long>(k) - 1, v.size())].distance(v[k]));
    }
    std::sort(lengths.begin(), lengths.end());
    return lengths[lengths.size() / 2];
  }

  static void runUnguarded(const Points& v, bool hullOnly, Outcome& out) {
    const gkRegion region(v);
    // Wrapper: a boundary that does not cross itself is the answer as it is.
    if (!region.isSelfIntersecting()) {
      out.simple = true;
      out.points = v;
      return;
    }
    if (v.size() < 3) {
      throw gkContourDefs::EmptyContour();
    }
    const Boundary boundary(v);
    const std::size_t n = v.size();
    const double eps = medianSegmentLength(v) / 100.0;

    long s = -1;
    for (std::size_t i = 0; i + 1 < n; ++i) {
      const gkVector<2> m = (v[i] + v[i + 1]) / 2.0;
      const gkVector<2> u = (v[i] - v[i + 1]).unit();
      const gkVector<2> w = gkVector<2>(-u.y(), u.x()) * eps;
      const gkVector<2> a = m + w;
      const gkVector<2> b = m - w;
      const std::size_t c1 = region.intersections(gkLineSeg(a, b), true, false).size();
      const std::size_t c2 = region.intersections(gkLineSeg(v[i], v[i + 1]), true, false).size();
      const bool outside = RegionAccess::insideCount(region, a, true) == 0 ||
                           RegionAccess::insideCount(region, b, true) == 0;
      if (c1 == 1 && c2 == 2 && outside) {
        s = static_cast<long>(i);
        break;
      }
    }
    if (s < 0) {
      throw gkContourDefs::BadParams(L"invalid contour");
    }
    out.start = s;

    std::size_t crossings = 0;
    for (std::size_t k = 0; k < n; ++k) {
      const gkVector<2>& from = v[wrap(static_cast<long>(k) - 1, n)];
      if (!gwRealEq(from, v[k], 1e-15)) {
        crossings += boundary.intersections(gkLineSeg(from, v[k]), true).size();
      }
    }
    out.bound = 4 * (n + crossings) + 4;

    Points walked;
    const gkVector<2> home = v[static_cast<std::size_t>(s)];
    gkVector<2> p = home;
    long cursor = s + 1;
    bool forward = true;
    bool first = true;
    std::set<std::tuple<std::uint64_t, std::uint64_t, long, bool>> seen;
    std::vector<int> segs;
    for (;;) {
      if (!first && p == home) {
        break;
      }
      first = false;
      if (!seen.insert({bits(p.x()), bits(p.y()), cursor, forward}).second) {
        out.kind = Outcome::eNeverReturns;
        return;
      }
      if (walked.size() >= kCap) {
        out.kind = Outcome::eCapExceeded;
        return;
      }
      const gkVector<2> t = forward ? v[wrap(cursor, n)] : v[wrap(cursor - 1, n)];
      const Points hits = boundary.intersections(gkLineSeg(p, t), segs, false);
      if (!hits.empty()) {
        p = hits.front();
        cursor = segs.front();
        forward = !forward;
      } else {
        p = t;
        cursor = static_cast<long>(wrap(forward ? cursor + 1 : cursor - 1, n));
      }
      walked.push_back(p);
    }
    out.steps = walked.size();
    if (!hullOnly) {
      out.points = walked;
      return;
    }

    // Split at repeated vertices.
    std::vector<Points> loops{walked};
    for (bool again = true; again;) {
      again = false;
      for (std::size_t r = 0; r < loops.size() && !again; ++r) {
        const Points lv = loops[r];
        const gkRegion loop(lv);
        const long m = static_cast<long>(lv.size());
        for (long j = 0; j < m && !again; ++j) {
          for (const int found : loop.vertexIndex(lv[static_cast<std::size_t>(j)], 1e-6)) {
            if (found == j) {
              continue;
            }
            const long q = found < j ? found + m : found;
            loops[r] = loopRun(lv, j, q - 1);
            loops.push_back(loopRun(lv, q, j + m - 1));
            again = true;
            break;
          }
        }
      }
    }

    // Drop loops inside other loops.
    std::vector<Points> kept = loops;
    for (bool again = true; again;) {
      again = false;
      for (std::size_t a = 0; a < kept.size() && !again; ++a) {
        if (kept[a].size() < 2) {
          out.kind = Outcome::eDegenerateLoop;
          return;
        }
        const gkVector<2> mid = (kept[a][1] + kept[a][0]) / 2.0;
        for (std::size_t b = 0; b < kept.size(); ++b) {
          if (b != a && gkRegion(kept[b]).inside(mid, true)) {
            kept[a] = kept.back();
            kept.pop_back();
            again = true;
            break;
          }
        }
      }
    }
    loops = kept;

    // Merge loops that share a vertex.
    for (bool again = true; again;) {
      again = false;
      for (std::size_t a = 0; a + 1 < loops.size() && !again; ++a) {
        for (std::size_t b = a + 1; b < loops.size() && !again; ++b) {
          const Points av = loops[a];
          const Points bv = loops[b];
          const gkRegion bRegion(bv);
          const long ma = static_cast<long>(av.size());
          for (long j = 0; j < ma; ++j) {
            const std::vector<int> shared =
                bRegion.vertexIndex(av[static_cast<std::size_t>(j)], 1e-6);
            if (shared.empty()) {
              continue;
            }
            Points joined = loopRun(av, j, j + ma - 1);
            const Points tail =
                loopRun(bv, shared.front(), shared.front() + static_cast<long>(bv.size()) - 1);
            joined.insert(joined.end(), tail.begin(), tail.end());
            loops[a] = joined;
            loops[b] = loops.back();
            loops.pop_back();
            again = true;
            break;
          }
        }
      }
    }
    if (loops.size() != 1) {
      out.kind = Outcome::eAssertion;
      out.assertionLine = 618;
      out.assertionFile = "cntr/region";
      return;
    }
    out.points = loops.front();
  }
};

void expectBadParams(const std::function<void()>& call, const std::wstring& message) {
  try {
    call();
    ADD_FAILURE() << "no exception";
  } catch (const gkContourDefs::BadParams& e) {
    EXPECT_EQ(e.message(), message);
  }
}

}  // namespace

// --- simple boundaries ------------------------------------------------------------------------

TEST(RegionRegularize, SimpleBoundaryIsReturnedUnchangedWithItsHolesAndNothingIsCached) {
  gkRegion r(gk::test::squareAt(0, 0, 10));
  r.holes(gkRegion::Holes{regionHandle(gk::test::squareAt(2, 2, 2))});
  r.label(5);
  gkRegion out;
  r.regularize(out);
  EXPECT_TRUE(samePoints(out.points(), r.points()));
  ASSERT_EQ(out.holes().size(), 1u);
  EXPECT_EQ(out.holes()[0].get(), r.holes()[0].get());
  EXPECT_EQ(out.label(), 5u);
  EXPECT_FALSE(RegionAccess::regularizedValid(r));
  EXPECT_EQ(RegionAccess::regularized(r), nullptr);
}

TEST(RegionOuterHull, SimpleBoundaryIsReturnedUnchangedWithItsHolesAndNothingIsCached) {
  gkRegion r(gk::test::squareAt(0, 0, 10));
  r.holes(gkRegion::Holes{regionHandle(gk::test::squareAt(2, 2, 2))});
  gkRegion out;
  r.outerHull(out);
  EXPECT_TRUE(samePoints(out.points(), r.points()));
  ASSERT_EQ(out.holes().size(), 1u);
  EXPECT_EQ(out.holes()[0].get(), r.holes()[0].get());
  EXPECT_FALSE(RegionAccess::outerHullValid(r));
  EXPECT_EQ(RegionAccess::outerHullCache(r), nullptr);
}

// --- figure eight -----------------------------------------------------------------------------

// The start edge is (4,4)-(6,2), the first one crossed by nothing and with the outside on one
// side. The walk goes round the right lobe to the crossing, turns back along the other diagonal
// round the left lobe, crosses again and comes home.
TEST(RegionRegularize, FigureEightKeepsBothLobesWithTheCrossingTwice) {
  const gkRegion r(gk::test::figureEight());
  gkRegion out;
  r.regularize(out);
  const Points expected{{6, 2}, {4, 0}, {2, 2}, {0, 0}, {-2, 2}, {0, 4}, {2, 2}, {4, 4}};
  EXPECT_TRUE(samePoints(out.points(), expected));
  EXPECT_TRUE(out.holes().empty());
}

// The walked boundary is split at (2,2) into the left lobe (2,2),(0,0),(-2,2),(0,4) and the
// right lobe (2,2),(4,4),(6,2),(4,0); neither lies inside the other, and they are merged back
// through the shared point, the left lobe first.
TEST(RegionOuterHull, FigureEightSplitsAtTheCrossingAndMergesBothLobesBack) {
  const gkRegion r(gk::test::figureEight());
  gkRegion out;
  r.outerHull(out);
  const Points expected{{2, 2}, {0, 0}, {-2, 2}, {0, 4}, {2, 2}, {4, 4}, {6, 2}, {4, 0}};
  EXPECT_TRUE(samePoints(out.points(), expected));
}

TEST(RegionRegularize, BowTieStartsOnItsRightSideAndPassesTheCentreTwice) {
  const gkRegion r(gk::test::bowTie());
  gkRegion out;
  r.regularize(out);
  const Points expected{{2, 0}, {1, 1}, {0, 0}, {0, 2}, {1, 1}, {2, 2}};
  EXPECT_TRUE(samePoints(out.points(), expected));
}

TEST(RegionOuterHull, BowTieKeepsBothTrianglesJoinedAtTheCentre) {
  const gkRegion r(gk::test::bowTie());
  gkRegion out;
  r.outerHull(out);
  const Points expected{{1, 1}, {0, 0}, {0, 2}, {1, 1}, {2, 2}, {2, 0}};
  EXPECT_TRUE(samePoints(out.points(), expected));
}

// --- inner loop at a pinch point ------------------------------------------------------------

// The walk starts on the bottom edge, goes round three sides, meets the closing edge at (4,4),
// turns back along it round the inner triangle, and at (4,4) again turns home along the closing
// edge: the inner loop stays, hanging at the pinch point (4,4).
TEST(RegionRegularize, PinchedLoopKeepsTheInnerLoop) {
  const gkRegion r(gk::test::pinchedLoop());
  gkRegion out;
  r.regularize(out);
  const Points expected{{8, 0}, {8, 8}, {0, 8}, {4, 4}, {6, 6}, {6, 2}, {4, 4}, {0, 0}};
  EXPECT_TRUE(samePoints(out.points(), expected));
}

// Split at (4,4): the inner triangle (4,4),(6,6),(6,2) has its first edge's midpoint (5,5)
// inside the outer loop and is dropped; the outer loop is what remains.
TEST(RegionOuterHull, PinchedLoopDropsTheInnerLoop) {
  const gkRegion r(gk::test::pinchedLoop());
  gkRegion out;
  r.outerHull(out);
  const Points expected{{4, 4}, {0, 0}, {8, 0}, {8, 8}, {0, 8}};
  EXPECT_TRUE(samePoints(out.points(), expected));
}

// --- holes and labels -------------------------------------------------------------------------

TEST(RegionRegularize, SelfIntersectingRegionWithHolesLosesThemAndItsLabel) {
  gkRegion r(gk::test::figureEight());
  r.holes(gkRegion::Holes{regionHandle(gk::test::squareAt(3.5, 1.5, 1))});
  r.label(42);
  ASSERT_EQ(r.holes().size(), 1u);
  gkRegion out;
  r.regularize(out);
  EXPECT_TRUE(out.holes().empty());
  EXPECT_EQ(out.label(), 0u);
  EXPECT_EQ(out.points().size(), 8u);
}

TEST(RegionOuterHull, SelfIntersectingRegionWithHolesLosesThemAndItsLabel) {
  gkRegion r(gk::test::figureEight());
  r.holes(gkRegion::Holes{regionHandle(gk::test::squareAt(3.5, 1.5, 1))});
  r.label(42);
  gkRegion out;
  r.outerHull(out);
  EXPECT_TRUE(out.holes().empty());
  EXPECT_EQ(out.label(), 0u);
  EXPECT_EQ(out.points().size(), 8u);
}

// --- no start edge ----------------------------------------------------------------------------

// Of the boundary's five edges only the closing edge (8,0)-(0,0) meets the rest of the boundary
// just at its ends; the closing edge is never a start candidate, and each other edge is crossed
// by a non-adjacent one, so its crossing count with ends included is above 2.
TEST(RegionRegularize, BoundaryWhoseOnlyUncrossedEdgeIsTheClosingEdgeIsAnInvalidContour) {
  const gkRegion r(gk::test::crossedExceptClosingEdge());
  ASSERT_TRUE(r.isSelfIntersecting());
  gkRegion out(gk::test::unitSquare());
  expectBadParams([&] { r.regularize(out); }, L"invalid contour");
  EXPECT_TRUE(samePoints(out.points(), gk::test::unitSquare()));
  // The slot keeps the freshly allocated empty region but stays invalid.
  EXPECT_FALSE(RegionAccess::regularizedValid(r));
  ASSERT_NE(RegionAccess::regularized(r), nullptr);
  EXPECT_TRUE(RegionAccess::regularized(r)->points().empty());
}

TEST(RegionOuterHull, BoundaryWhoseOnlyUncrossedEdgeIsTheClosingEdgeIsAnInvalidContour) {
  const gkRegion r(gk::test::crossedExceptClosingEdge());
  gkRegion out(gk::test::unitSquare());
  expectBadParams([&] { r.outerHull(out); }, L"invalid contour");
  EXPECT_TRUE(samePoints(out.points(), gk::test::unitSquare()));
  EXPECT_FALSE(RegionAccess::outerHullValid(r));
}

TEST(RegionRegularize, TheSameBoundaryRotatedToPutTheUncrossedEdgeFirstIsWalked) {
  // Control for the case above: with the bottom edge as edge 0 -> 1 it is a start candidate.
  const Points p = gk::test::crossedExceptClosingEdge();
  const Points rotated{p[4], p[0], p[1], p[2], p[3]};
  const gkRegion r(rotated);
  gkRegion out;
  EXPECT_NO_THROW(r.regularize(out));
  EXPECT_TRUE(out.points().back() == rotated[0]);
}

// --- splice -----------------------------------------------------------------------------------

// A's first segment meeting B is segment 2, (2,0)-(2,2), which crosses B's segment 1,
// (1,1)-(3,1), at (2,1).
TEST(RegionSplice, OverlappingSquaresGiveBothBoundariesThroughTheirFirstCrossing) {
  const gkRegion a(gk::test::squareAt(0, 0, 2));
  const gkRegion b(gk::test::squareAt(1, 1, 2));
  gkRegion out;
  RegionAccess::splice(a, b, out);
  const Points expected{{2, 1}, {2, 2}, {0, 2}, {0, 0}, {2, 0},
                        {2, 1}, {3, 1}, {3, 3}, {1, 3}, {1, 1}};
  EXPECT_TRUE(samePoints(out.points(), expected));
  EXPECT_EQ(out.points().size(), a.points().size() + b.points().size() + 2);
  EXPECT_TRUE(out.holes().empty());
}

TEST(RegionSplice, SquaresSplicedTheOtherWayRoundStartOnTheOtherSquare) {
  const gkRegion a(gk::test::squareAt(1, 1, 2));
  const gkRegion b(gk::test::squareAt(0, 0, 2));
  gkRegion out;
  RegionAccess::splice(a, b, out);
  // A's segment 1, (1,1)-(3,1), meets B's segment 2 at (2,1); segment 0, (1,3)-(1,1), meets
  // B's segment 3, (2,2)-(0,2), at (1,2) first.
  const Points expected{{1, 2}, {1, 1}, {3, 1}, {3, 3}, {1, 3},
                        {1, 2}, {0, 2}, {0, 0}, {2, 0}, {2, 2}};
  EXPECT_TRUE(samePoints(out.points(), expected));
}

TEST(RegionSplice, SplicedSquaresRegularizeIntoOneBoundary) {
  const gkRegion a(gk::test::squareAt(0, 0, 2));
  const gkRegion b(gk::test::squareAt(1, 1, 2));
  gkRegion spliced;
  RegionAccess::splice(a, b, spliced);
  EXPECT_TRUE(spliced.isSelfIntersecting());
  gkRegion hull;
  EXPECT_NO_THROW(spliced.outerHull(hull));
  EXPECT_GE(hull.points().size(), 3u);
}

TEST(RegionSplice, DisjointRegionsDoNotIntersect) {
  const gkRegion a(gk::test::squareAt(0, 0, 2));
  const gkRegion b(gk::test::squareAt(5, 5, 1));
  gkRegion out(gk::test::unitSquare());
  expectBadParams([&] { RegionAccess::splice(a, b, out); }, L"spliced regions do not intersect");
  EXPECT_TRUE(samePoints(out.points(), gk::test::unitSquare()));
}

TEST(RegionSplice, ARegionNestedInsideAnotherDoesNotIntersectIt) {
  const gkRegion a(gk::test::squareAt(0, 0, 10));
  const gkRegion b(gk::test::squareAt(2, 2, 1));
  gkRegion out;
  expectBadParams([&] { RegionAccess::splice(a, b, out); }, L"spliced regions do not intersect");
}

// --- caches -----------------------------------------------------------------------------------

TEST(RegionOuterHull, OnItselfReplacesTheRegionByItsHullWithInvalidCaches) {
  gkRegion r(gk::test::figureEight());
  r.outerHull(r);
  const Points expected{{2, 2}, {0, 0}, {-2, 2}, {0, 4}, {2, 2}, {4, 4}, {6, 2}, {4, 0}};
  EXPECT_TRUE(samePoints(r.points(), expected));
  EXPECT_FALSE(RegionAccess::outerHullValid(r));
  EXPECT_FALSE(RegionAccess::regularizedValid(r));
}

TEST(RegionRegularize, OnItselfReplacesTheRegionByItsRegularizationWithInvalidCaches) {
  gkRegion r(gk::test::pinchedLoop());
  r.regularize(r);
  const Points expected{{8, 0}, {8, 8}, {0, 8}, {4, 4}, {6, 6}, {6, 2}, {4, 4}, {0, 0}};
  EXPECT_TRUE(samePoints(r.points(), expected));
  EXPECT_FALSE(RegionAccess::regularizedValid(r));
  EXPECT_FALSE(RegionAccess::outerHullValid(r));
}

TEST(RegionOuterHull, ConstructionInOuterHullModeGivesTheHull) {
  const gkRegion r(gk::test::pinchedLoop(), gkContourDefs::eOuterHull);
  const Points expected{{4, 4}, {0, 0}, {8, 0}, {8, 8}, {0, 8}};
  EXPECT_TRUE(samePoints(r.points(), expected));
}

TEST(RegionRegularize, ConstructionInRegularizeModeGivesTheRegularization) {
  const gkRegion r(gk::test::pinchedLoop(), gkContourDefs::eRegularize);
  const Points expected{{8, 0}, {8, 8}, {0, 8}, {4, 4}, {6, 6}, {6, 2}, {4, 4}, {0, 0}};
  EXPECT_TRUE(samePoints(r.points(), expected));
}

TEST(RegionRegularize, CachedResultIsReusedAndSharedByCopies) {
  const gkRegion r(gk::test::figureEight());
  gkRegion first;
  r.regularize(first);
  ASSERT_TRUE(RegionAccess::regularizedValid(r));
  const gkRegion* cached = RegionAccess::regularized(r);
  ASSERT_NE(cached, nullptr);
  EXPECT_TRUE(samePoints(cached->points(), first.points()));
  gkRegion second;
  r.regularize(second);
  EXPECT_EQ(RegionAccess::regularized(r), cached);
  EXPECT_TRUE(samePoints(second.points(), first.points()));
  const gkRegion copy(r);
  EXPECT_EQ(RegionAccess::regularized(copy), cached);
  gkRegion third;
  copy.regularize(third);
  EXPECT_EQ(RegionAccess::regularized(copy), cached);
  EXPECT_TRUE(samePoints(third.points(), first.points()));
  // The other slot is untouched.
  EXPECT_FALSE(RegionAccess::outerHullValid(r));
}

TEST(RegionOuterHull, CachedResultIsReusedAndSharedByCopies) {
  const gkRegion r(gk::test::figureEight());
  gkRegion first;
  r.outerHull(first);
  ASSERT_TRUE(RegionAccess::outerHullValid(r));
  const gkRegion* cached = RegionAccess::outerHullCache(r);
  ASSERT_NE(cached, nullptr);
  gkRegion second;
  r.outerHull(second);
  EXPECT_EQ(RegionAccess::outerHullCache(r), cached);
  gkRegion copy;
  copy = r;
  EXPECT_EQ(RegionAccess::outerHullCache(copy), cached);
  EXPECT_TRUE(RegionAccess::outerHullValid(copy));
  gkRegion third;
  copy.outerHull(third);
  EXPECT_EQ(RegionAccess::outerHullCache(copy), cached);
  EXPECT_TRUE(samePoints(third.points(), first.points()));
  EXPECT_FALSE(RegionAccess::regularizedValid(r));
}

TEST(RegionRegularize, ChangingTheVerticesInvalidatesTheCachedResult) {
  gkRegion r(gk::test::figureEight());
  gkRegion out;
  r.regularize(out);
  ASSERT_TRUE(RegionAccess::regularizedValid(r));
  r.points(gk::test::bowTie());
  EXPECT_FALSE(RegionAccess::regularizedValid(r));
  r.regularize(out);
  const Points expected{{2, 0}, {1, 1}, {0, 0}, {0, 2}, {1, 1}, {2, 2}};
  EXPECT_TRUE(samePoints(out.points(), expected));
}

// --- fewer than three vertices ---------------------------------------------------------------

// Two vertices make one segment twice over and never cross themselves, so the public operations
// hand the region back unchanged; only the worker itself reaches the vertex-count check.
TEST(RegionRegularize, TwoVertexRegionIsNeverSelfIntersectingAndComesBackUnchanged) {
  const Points two{{0, 0}, {1, 1}};
  const gkRegion r(two);
  EXPECT_FALSE(r.isSelfIntersecting());
  gkRegion out;
  EXPECT_NO_THROW(r.regularize(out));
  EXPECT_TRUE(samePoints(out.points(), two));
  EXPECT_NO_THROW(r.outerHull(out));
  EXPECT_TRUE(samePoints(out.points(), two));
}

TEST(RegionRegularize, EmptyRegionComesBackUnchanged) {
  const gkRegion r;
  gkRegion out(gk::test::unitSquare());
  EXPECT_NO_THROW(r.regularize(out));
  EXPECT_TRUE(out.points().empty());
}

TEST(RegionRegularize, WorkerThrowsEmptyContourBelowThreeVertices) {
  for (const Points& p : {Points{}, Points{{1, 1}}, Points{{0, 0}, {1, 1}}}) {
    const gkRegion r(p);
    gkRegion out;
    for (const bool hullOnly : {false, true}) {
      try {
        RegionAccess::outerHullRegularize(r, out, hullOnly);
        ADD_FAILURE() << "no exception for " << p.size() << " vertices";
      } catch (const gkContourDefs::EmptyContour& e) {
        EXPECT_TRUE(e.message().empty());
      }
    }
  }
}

// --- the boundary walk against a plain reference ------------------------------------------------

namespace {

struct WalkTally {
  std::map<std::string, int> counts;
  void add(const std::string& what) { ++counts[what]; }
};

std::string describe(const Outcome& o) {
  switch (o.kind) {
    case Outcome::eRegion:
      return o.simple ? "simple" : "region";
    case Outcome::eError: {
      std::string m(o.message.begin(), o.message.end());
      return "error " + std::to_string(o.errorNumber) + " '" + m + "'";
    }
    case Outcome::eAssertion:
      return "assertion line " + std::to_string(o.assertionLine);
    case Outcome::eNeverReturns:
      return "never returns";
    case Outcome::eCapExceeded:
      return "cap exceeded";
    case Outcome::eDegenerateLoop:
      return "degenerate loop";
  }
  return "?";
}

/// Checks one input against the reference; returns the library's outcome description.
std::string checkAgainstReference(const Points& input, bool hullOnly) {
  const int assertionsBefore = AssertionCounter::count();
  const Outcome lib = libraryOutcome(input, hullOnly);
  const Outcome ref = ReferenceWalk::run(input, hullOnly);
  const int assertions = AssertionCounter::count() - assertionsBefore;
  EXPECT_EQ(assertions, lib.kind == Outcome::eAssertion ? 1 : 0);

  std::ostringstream where;
  where << (hullOnly ? "outerHull" : "regularize") << " of " << show(input) << ": library "
        << describe(lib) << ", reference " << describe(ref);

  switch (lib.kind) {
    case Outcome::eRegion: {
      EXPECT_EQ(ref.kind, Outcome::eRegion) << where.str();
      if (ref.kind != Outcome::eRegion) {
        break;
      }
      EXPECT_TRUE(samePoints(lib.points, ref.points)) << where.str();
      if (ref.simple) {
        break;
      }
      EXPECT_LE(ref.steps, ref.bound) << where.str();
      const gkContour source(input, true, 0);
      for (const gkVector<2>& p : lib.points) {
        const bool isVertex = std::find(input.begin(), input.end(), p) != input.end();
        EXPECT_TRUE(isVertex || source.distToPoint(p, false) < 1e-6)
            << where.str() << " vertex " << show({p});
      }
      if (!hullOnly && ref.start >= 0 && !lib.points.empty()) {
        EXPECT_TRUE(lib.points.back() == input[static_cast<std::size_t>(ref.start)]) << where.str();
      }
      break;
    }
    case Outcome::eError: {
      const bool walkBound =
          lib.errorNumber == gkContourDefs::BadParams::kErrorNumber &&
          lib.message == L"invalid contour" &&
          (ref.kind == Outcome::eNeverReturns || ref.kind == Outcome::eCapExceeded);
      const bool same = ref.kind == Outcome::eError && ref.errorNumber == lib.errorNumber &&
                        ref.message == lib.message;
      EXPECT_TRUE(walkBound || same) << where.str();
      break;
    }
    case Outcome::eAssertion: {
      const bool same = (ref.kind == Outcome::eAssertion && lib.assertionLine == 618 &&
                         lib.assertionFile == "cntr/region") ||
                        ref.kind == Outcome::eDegenerateLoop;
      EXPECT_TRUE(same) << where.str() << " at " << lib.assertionFile;
      break;
    }
    default:
      ADD_FAILURE() << where.str();
  }
  if (lib.kind == Outcome::eRegion && ref.simple) {
    return "unchanged, not self-intersecting";
  }
  if (ref.kind == Outcome::eNeverReturns) {
    return describe(lib) + ", walk never returns";
  }
  return describe(lib);
}

/// A star polygon: n directions round a centre at sorted random angles with random radii; each
/// vertex is then swapped with its successor with probability 0.2, which folds the boundary.
/// With integerGrid the coordinates are rounded to a small grid, so crossings land on vertices
/// and segments overlap.
Points randomFoldedStar(std::mt19937& rng, bool integerGrid) {
  std::uniform_int_distribution<int> count(5, 40);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  const int n = count(rng);
  std::vector<double> angles;
  for (int i = 0; i < n; ++i) {
    angles.push_back(unit(rng) * 2.0 * 3.141592653589793);
  }
  std::sort(angles.begin(), angles.end());
  Points p;
  const double scale = integerGrid ? 12.0 : 100.0;
  for (const double a : angles) {
    const double r = scale * (0.3 + 0.7 * unit(rng));
    double x = r * std::cos(a);
    double y = r * std::sin(a);
    if (integerGrid) {
      x = std::round(x);
      y = std::round(y);
    }
    p.emplace_back(x, y);
  }
  for (int i = 0; i + 1 < n; ++i) {
    if (unit(rng) < 0.2) {
      std::swap(p[static_cast<std::size_t>(i)], p[static_cast<std::size_t>(i + 1)]);
    }
  }
  return p;
}

}  // namespace

TEST(RegionWalk, ReferenceWalkReproducesTheHandWorkedFigureEight) {
  const Outcome reg = ReferenceWalk::run(gk::test::figureEight(), false);
  const Outcome hull = ReferenceWalk::run(gk::test::figureEight(), true);
  ASSERT_EQ(reg.kind, Outcome::eRegion);
  ASSERT_EQ(hull.kind, Outcome::eRegion);
  EXPECT_TRUE(samePoints(reg.points,
                         Points{{6, 2}, {4, 0}, {2, 2}, {0, 0}, {-2, 2}, {0, 4}, {2, 2}, {4, 4}}));
  EXPECT_TRUE(samePoints(hull.points,
                         Points{{2, 2}, {0, 0}, {-2, 2}, {0, 4}, {2, 2}, {4, 4}, {6, 2}, {4, 0}}));
  EXPECT_EQ(reg.start, 1);
}

TEST(RegionWalk, RandomFoldedStarsMatchTheReferenceWalkExactly) {
  const AssertionCounter counter;
  std::mt19937 rng(20240611u);
  WalkTally tally;
  for (int i = 0; i < 250; ++i) {
    const Points input = randomFoldedStar(rng, i % 3 == 2);
    for (const bool hullOnly : {false, true}) {
      tally.add(std::string(hullOnly ? "outerHull: " : "regularize: ") +
                checkAgainstReference(input, hullOnly));
    }
    if (::testing::Test::HasFailure()) {
      break;
    }
  }
  for (const auto& [what, n] : tally.counts) {
    std::cout << "[ walk     ] " << what << ": " << n << "\n";
  }
}

// --- adversarial inputs ----------------------------------------------------------------------

namespace {

/// Either a typed error or a region, the same as the reference's; never an assertion. The
/// worker is also run directly, past the self-intersection test of the public operations.
void expectTypedErrorOrDefinedResult(const Points& input) {
  const AssertionCounter counter;
  for (const bool hullOnly : {false, true}) {
    const std::string what = checkAgainstReference(input, hullOnly);
    EXPECT_EQ(what.find("assertion"), std::string::npos) << what;
    const gkRegion r(input);
    gkRegion out;
    try {
      RegionAccess::outerHullRegularize(r, out, hullOnly);
    } catch (const gkContourDefs::Errors&) {
      // A typed error is a defined outcome.
    }
  }
  EXPECT_EQ(AssertionCounter::count(), 0);
}

}  // namespace

TEST(RegionWalk, ANotchTipAHairAboveAnEdgeIsWalkedAsTheReferenceWalksIt) {
  // The notch's tip comes within the tolerance of the bottom edge, or just beyond it, with
  // boxes that do not meet the edge's: a query along the edge finds nothing there, and the
  // walk, which skips such queries, must agree with the reference. Tips on the edge or a hair
  // through it cross it, and the walk must turn where the reference turns.
  const AssertionCounter counter;
  for (const double hair : {0.3e-6, 0.9e-6, 1.1e-6, 2.5e-6, 0.0, -0.5e-6, -3e-6}) {
    for (const bool reversed : {false, true}) {
      Points v = {{0, 0}, {10, 0}, {10, 5}, {6, 5}, {5, hair}, {4, 5}, {0, 5}};
      if (reversed) {
        std::reverse(v.begin(), v.end());
      }
      for (const bool hullOnly : {false, true}) {
        const std::string what = checkAgainstReference(v, hullOnly);
        EXPECT_EQ(what.find("assertion"), std::string::npos) << what;
      }
    }
  }
  EXPECT_EQ(AssertionCounter::count(), 0);
}

TEST(RegionWalk, AllVerticesEqualIsNotSelfIntersectingAndComesBackUnchanged) {
  const Points same{{3, 3}, {3, 3}, {3, 3}, {3, 3}};
  expectTypedErrorOrDefinedResult(same);
  const gkRegion r(same);
  gkRegion out;
  r.regularize(out);
  EXPECT_TRUE(samePoints(out.points(), same));
}

TEST(RegionWalk, WorkerOnAllVerticesEqualFindsNoStartEdge) {
  const gkRegion r(Points{{3, 3}, {3, 3}, {3, 3}, {3, 3}});
  gkRegion out;
  expectBadParams([&] { RegionAccess::outerHullRegularize(r, out, false); }, L"invalid contour");
}

TEST(RegionWalk, CollinearBoundaryFoldedOnItselfComesBackUnchanged) {
  const Points folded{{0, 0}, {3, 0}, {1, 0}, {2, 0}};
  expectTypedErrorOrDefinedResult(folded);
  const gkRegion r(folded);
  gkRegion out;
  r.outerHull(out);
  EXPECT_TRUE(samePoints(out.points(), folded));
}

TEST(RegionWalk, WorkerOnACollinearBoundaryFindsNoStartEdge) {
  const gkRegion r(Points{{0, 0}, {1, 0}, {2, 0}, {3, 0}});
  gkRegion out;
  expectBadParams([&] { RegionAccess::outerHullRegularize(r, out, true); }, L"invalid contour");
}

TEST(RegionWalk, SpikesGiveATypedErrorOrTheReferenceResult) {
  // A square with a needle out through its top and straight back.
  expectTypedErrorOrDefinedResult({{0, 0}, {4, 0}, {4, 4}, {2, 4}, {2, 9}, {2, 4}, {0, 4}});
  // A needle from inside that pierces the top edge and returns.
  expectTypedErrorOrDefinedResult(
      {{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 2}, {2, 2}, {2, 7}, {2, 2}, {0, 2}});
  // A bow tie with a spike folded back over one lobe.
  expectTypedErrorOrDefinedResult({{0, 0}, {2, 2}, {2, 0}, {0, 2}, {3, 1}, {0, 2}});
}

TEST(RegionWalk, HugeCoordinatesGiveATypedErrorOrTheReferenceResult) {
  Points big;
  for (const gkVector<2>& p : gk::test::figureEight()) {
    big.push_back(p * 1e300);
  }
  expectTypedErrorOrDefinedResult(big);
}

TEST(RegionWalk, NanCoordinatesGiveATypedErrorOrTheReferenceResult) {
  expectTypedErrorOrDefinedResult(gk::test::nonFinite());
  Points withNan = gk::test::figureEight();
  withNan[3] = gkVector<2>(std::numeric_limits<double>::quiet_NaN(), 0);
  expectTypedErrorOrDefinedResult(withNan);
}

// --- degenerate walks -------------------------------------------------------------------------

// The vertex (-1,0) lies on the edge (-1,-4)-(-1,5). Walking up that edge from (-1,-4) the walk
// meets the closing-side edge (5,5)-(-1,0) at its end (-1,0), turns back round the triangle to
// (-1,5), comes down and meets (-1,0) again, now heading for vertex 3, which is that very point:
// the zero-length step finds no crossing and lands on (-1,0) once more.
TEST(RegionRegularize, CrossingOnAVertexRepeatsThatVertexInARow) {
  const gkRegion r(gk::test::vertexOnEdge());
  ASSERT_TRUE(r.isSelfIntersecting());
  gkRegion out;
  r.regularize(out);
  const Points expected{{-1, 0}, {5, 5}, {-1, 5}, {-1, 0}, {-1, 0}, {-1, -4}};
  EXPECT_TRUE(samePoints(out.points(), expected));
}

// Splitting that walk at (-1,0) leaves (-1,0),(-1,0),(-1,-4), which splits again into a loop of
// the one vertex (-1,0); asking that loop for its repeated vertices is a contour query on fewer
// than two vertices.
TEST(RegionOuterHull, RepeatedVertexInARowSplitsOffAOneVertexLoopAndThrowsEmptyContour) {
  const gkRegion r(gk::test::vertexOnEdge());
  gkRegion out(gk::test::unitSquare());
  EXPECT_THROW(r.outerHull(out), gkContourDefs::EmptyContour);
  EXPECT_TRUE(samePoints(out.points(), gk::test::unitSquare()));
  EXPECT_FALSE(RegionAccess::outerHullValid(r));
}

// More than one loop after merging. The walk passes (-5,6) twice, so it splits into three
// triangles: A = (-5,6),(-5,3.75),(-6,4); C = (-5,6),(-5,3.75),(-2,3); B = (-2,3),(0,1),(2,2).
// C connects A (at (-5,6)) and B (at (-2,3)); A and B share no vertex. A and C share their
// first edge, so the midpoint of C's first edge lies on A's boundary; the ray cast from it counts
// it as inside A (though A's own first-edge midpoint, the same point, is not inside C): C is
// dropped, and the two loops left cannot be merged.
TEST(RegionOuterHull, ConnectingLoopDroppedAsInsideLeavesTwoLoopsAndTripsTheAssertion) {
  const Points input = gk::test::twoLoopsAfterMerging();
  const AssertionCounter counter;
  const gkRegion r(input);
  gkRegion regular;
  r.regularize(regular);
  const Outcome walked = ReferenceWalk::run(input, false);
  ASSERT_EQ(walked.kind, Outcome::eRegion);
  EXPECT_TRUE(samePoints(regular.points(), walked.points));
  EXPECT_EQ(regular.points().size(), 9u);
  gkRegion out;
  try {
    r.outerHull(out);
    ADD_FAILURE() << "no assertion failure";
  } catch (const gkAssertionFailure& e) {
    EXPECT_EQ(e.file(), "cntr/region");
    EXPECT_EQ(e.line(), 618);
  }
  EXPECT_EQ(AssertionCounter::count(), 1);
  EXPECT_EQ(AssertionCounter::lastFile(), "cntr/region");
  EXPECT_EQ(AssertionCounter::lastLine(), 618);
  const Outcome hull = ReferenceWalk::run(input, true);
  EXPECT_EQ(hull.kind, Outcome::eAssertion);
}

// --- the faster loop handling against the plain scans ---------------------------------------

namespace {

/// The outcome of a walk: the boundary, or the exception it threw (type and message).
struct WalkOutcome {
  std::vector<gkVector<2>> points;
  std::string error;
};

template <typename F>
WalkOutcome outcomeOf(F&& walk) {
  WalkOutcome out;
  try {
    gkRegion result;
    walk(result);
    out.points = result.points();
  } catch (const std::exception& e) {
    out.error = std::string(typeid(e).name()) + ": " + e.what();
  }
  return out;
}

bool sameWalk(const WalkOutcome& a, const WalkOutcome& b) {
  if (a.error != b.error || a.points.size() != b.points.size()) {
    return false;
  }
  return a.points.empty() ||
         std::memcmp(a.points.data(), b.points.data(), a.points.size() * sizeof(a.points[0])) == 0;
}

std::vector<gkVector<2>> crossingStar(std::size_t n, int swapPercent, std::mt19937_64& rng) {
  std::uniform_real_distribution<double> u(0, 1);
  std::vector<gkVector<2>> v;
  for (std::size_t k = 0; k < n; ++k) {
    const double a = 6.283185307179586 * static_cast<double>(k) / static_cast<double>(n);
    const double r = 100 * (1 + 0.3 * u(rng));
    v.emplace_back(r * std::cos(a), r * std::sin(a));
  }
  for (std::size_t k = 0; k + 1 < n; ++k) {
    if (u(rng) * 100 < swapPercent) {
      std::swap(v[k], v[k + 1]);
    }
  }
  return v;
}

void expectWalksAgree(const std::vector<gkVector<2>>& v, int& walked) {
  const gkRegion region(v, gkContourDefs::eIgnore);
  const gk::test::PlainRegion plain(region);
  for (const bool hullOnly : {false, true}) {
    const WalkOutcome fast = outcomeOf(
        [&](gkRegion& r) { gkRegionTestAccess::outerHullRegularize(region, r, hullOnly); });
    const WalkOutcome reference =
        outcomeOf([&](gkRegion& r) { plain.plainOuterHullRegularize(r, hullOnly); });
    ASSERT_TRUE(sameWalk(fast, reference))
        << "hullOnly " << hullOnly << " fast error '" << fast.error << "' plain error '"
        << reference.error << "' sizes " << fast.points.size() << " " << reference.points.size();
    walked += fast.error.empty() ? 1 : 0;
  }
}

}  // namespace

TEST(RegionHullFastPaths, WalksMatchThePlainScansOnRandomCrossingStars) {
  std::mt19937_64 rng(2026);
  int walked = 0;
  for (int shape = 0; shape < 200; ++shape) {
    expectWalksAgree(crossingStar(6 + rng() % 80, 5 + static_cast<int>(rng() % 30), rng), walked);
  }
  // Most of them must get through the walk for the comparison to mean anything.
  EXPECT_GT(walked, 300) << walked;
}

TEST(RegionHullFastPaths, WalksMatchThePlainScansOnDegenerateGridShapes) {
  gk::test::DegenerateShapes gen(99);
  int walked = 0;
  for (int shape = 0; shape < 700; ++shape) {
    expectWalksAgree(gen.points(4 + gen.pick(12)), walked);
  }
  EXPECT_GT(walked, 150) << walked;
}

TEST(RegionHullFastPaths, WalksMatchThePlainScansOnLargerCrossingStars) {
  std::mt19937_64 rng(7);
  int walked = 0;
  for (const std::size_t n : {300u, 600u}) {
    expectWalksAgree(crossingStar(n, 10, rng), walked);
  }
  EXPECT_EQ(walked, 4);
}

TEST(RegionHullFastPaths, WalksMatchThePlainScansOnFineOutlinesThatSplitIntoManyLoops) {
  // Radial noise wider than the vertex spacing, with vertices swapped: the walked boundary
  // splits into many small loops beside one large one, which then takes them back in one by
  // one. Splitting and merging must cut and join exactly as the plain scans do.
  std::mt19937_64 rng(11);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  int walked = 0;
  for (const std::size_t n : {400u, 1200u, 2400u}) {
    std::vector<gkVector<2>> v;
    for (std::size_t k = 0; k < n; ++k) {
      const double t = 6.283185307179586 * static_cast<double>(k) / static_cast<double>(n);
      const double r = 100.0 * (1.0 + 0.2 * std::sin(3.0 * t)) + 0.6 * u(rng);
      v.emplace_back(r * std::cos(t), r * std::sin(t));
    }
    for (std::size_t k = 0; k + 1 < n; ++k) {
      if (u(rng) < 0.1) {
        std::swap(v[k], v[k + 1]);
      }
    }
    expectWalksAgree(v, walked);
  }
  EXPECT_EQ(walked, 6);
}
