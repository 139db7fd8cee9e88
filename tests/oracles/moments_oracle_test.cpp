// Area, centre of mass and second moments against Boost.Geometry and against Green's-theorem
// moments computed here in long double.
//
// "Relative" is measured against the conditioning of each quantity, not its value:
//  - area: against S = 1/2 sum |x_i y_i+1 - x_i+1 y_i| over every ring, the sum of the absolute
//    origin triangles the shoelace formula adds (equal to the area when the origin is in the
//    shape's kernel, larger when cancellation is inherent);
//  - centre of mass: against L = the largest distance of a vertex from the origin;
//  - second moments: element by element against the trace Mxx + Myy of the exact central
//    matrix, which bounds every element.
// Each bound is 1e-12 of that scale.

#include <gk/cntr/moments/polygon_moments.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include <gk/base/matrix.h>
#include <gk/cntr/errors/contour_errors.h>
#include <gk/cntr/moments/inertia_data.h>
#include <gk/cntr/region.h>
#include <gtest/gtest.h>

#include "oracle_shapes.h"

namespace {

using gk::oracle::ClosedFormMoments;
using gk::oracle::Points;
using gk::oracle::Rng;
using gk::oracle::StarWithHoles;
namespace bg = boost::geometry;

constexpr int kShapeCount = 3000;
constexpr double kRel = 1e-12;

double absoluteOriginTriangles(const Points& pts) {
  double s = 0.0;
  for (std::size_t i = 0; i < pts.size(); ++i) {
    s += std::fabs(pts[i].cross(pts[(i + 1) % pts.size()]));
  }
  return s / 2.0;
}

double areaScale(const StarWithHoles& s, bool withHoles) {
  double scale = absoluteOriginTriangles(s.outer);
  if (withHoles) {
    for (const Points& h : s.holes) {
      scale += absoluteOriginTriangles(h);
    }
  }
  return scale;
}

double extent(const Points& pts) {
  double l = 0.0;
  for (const gkVector<2>& p : pts) {
    l = std::max(l, p.len());
  }
  return l;
}

/// The fixed-seed shapes every test here walks: about a quarter without holes, the rest with up
/// to three, alternately listed clockwise and counter-clockwise.
const std::vector<StarWithHoles>& shapes() {
  static const std::vector<StarWithHoles> all = [] {
    Rng rng(20240611);
    std::vector<StarWithHoles> out;
    out.reserve(kShapeCount);
    for (int i = 0; i < kShapeCount; ++i) {
      out.push_back(gk::oracle::starWithHoles(rng, 3));
    }
    return out;
  }();
  return all;
}

/// The documented base choice of a triangle's moment record (docs/behaviour.md, Moments):
/// the vertices are rotated while the distance from c to the line a-b is smaller than its
/// distance to the segment a-b by more than 1e-10. A foot of the altitude off the base by d
/// makes those distances differ by about d^2 / 2h only, so a foot up to sqrt(2e-10 h) off the
/// base is taken as on it, and the record, built on unsigned distances to the foot, counts
/// the overhang on the wrong side: its area is off by about d h. Mirrored here in long
/// double to tell which random polygons meet the rule.
bool footKeptOffItsBase(gkVector<2> a, gkVector<2> b, gkVector<2> c) {
  const auto distances = [](const gkVector<2>& p, const gkVector<2>& q, const gkVector<2>& r,
                            long double& toLine, long double& toSegment, long double& t) {
    const long double dx = static_cast<long double>(q.x()) - p.x();
    const long double dy = static_cast<long double>(q.y()) - p.y();
    const long double rx = static_cast<long double>(r.x()) - p.x();
    const long double ry = static_cast<long double>(r.y()) - p.y();
    const long double len = std::sqrt(dx * dx + dy * dy);
    toLine = std::fabs(dx * ry - dy * rx) / len;
    t = (dx * rx + dy * ry) / (len * len);
    const long double tc = std::clamp(t, 0.0L, 1.0L);
    toSegment = std::hypot(rx - tc * dx, ry - tc * dy);
  };
  long double toLine = 0, toSegment = 0, t = 0;
  for (int turn = 0; turn < 3; ++turn) {
    distances(a, b, c, toLine, toSegment, t);
    if (turn == 2 || !(toLine < toSegment - 1e-10L)) {
      break;
    }
    const gkVector<2> first = a;
    a = b;
    b = c;
    c = first;
  }
  return t < 0 || t > 1;
}

/// Whether any triangle (centroid, previous, current) of the polygon's fan meets that rule.
bool meetsTheFootRule(const Points& pts) {
  const gkVector<2> g = gw_CenterOfMass(pts);
  for (std::size_t i = 0; i < pts.size(); ++i) {
    if (footKeptOffItsBase(g, pts[(i + pts.size() - 1) % pts.size()], pts[i])) {
      return true;
    }
  }
  return false;
}

/// Polygons that meet the foot rule are held to this looser bound instead: their error is of
/// the order sqrt(2e-10 h) h, not of rounding.
constexpr double kFootRuleRel = 1e-4;

void expectMatrixMatches(const gkMatrix<2>& m, const ClosedFormMoments& exact, int caseNo,
                         double rel = kRel) {
  const double tol = rel * static_cast<double>(exact.mxx + exact.myy);
  EXPECT_NEAR(m.element(0, 0), static_cast<double>(exact.mxx), tol) << "case " << caseNo;
  EXPECT_NEAR(m.element(0, 1), static_cast<double>(exact.mxy), tol) << "case " << caseNo;
  EXPECT_NEAR(m.element(1, 0), static_cast<double>(exact.mxy), tol) << "case " << caseNo;
  EXPECT_NEAR(m.element(1, 1), static_cast<double>(exact.myy), tol) << "case " << caseNo;
}

}  // namespace

TEST(MomentsOracle, PolygonAreaAgreesWithBoostAndGreensTheoremOnThreeThousandStarPolygons) {
  const std::vector<StarWithHoles>& all = shapes();
  for (int i = 0; i < kShapeCount; ++i) {
    const StarWithHoles& s = all[static_cast<std::size_t>(i)];
    const double tol = kRel * areaScale(s, false);
    const double exact = static_cast<double>(gk::oracle::closedFormMoments(s.outer, {}).area);
    ASSERT_GT(exact, 0.0) << "the generator lists outlines counter-clockwise";
    EXPECT_NEAR(gw_Area(s.outer), exact, tol) << "case " << i;
    EXPECT_NEAR(gw_Area(s.outer), bg::area(gk::oracle::toBoost(s, false)), tol) << "case " << i;
    // gw_Area is absolute: the clockwise listing gives the same number.
    Points reversed(s.outer.rbegin(), s.outer.rend());
    EXPECT_NEAR(gw_Area(reversed), exact, tol) << "case " << i;
  }
}

TEST(MomentsOracle, RegionAreaWithAndWithoutHolesAgreesWithBoostOnThreeThousandShapes) {
  const std::vector<StarWithHoles>& all = shapes();
  int withHoles = 0;
  for (int i = 0; i < kShapeCount; ++i) {
    const StarWithHoles& s = all[static_cast<std::size_t>(i)];
    const gkRegion r = gk::oracle::makeRegion(s);
    withHoles += s.holes.empty() ? 0 : 1;
    const double exactOuter = static_cast<double>(gk::oracle::closedFormMoments(s.outer, {}).area);
    const double exactHoled =
        static_cast<double>(gk::oracle::closedFormMoments(s.outer, s.holes).area);
    EXPECT_NEAR(r.area(false), exactOuter, kRel * areaScale(s, false)) << "case " << i;
    EXPECT_NEAR(r.area(true), exactHoled, kRel * areaScale(s, true)) << "case " << i;
    EXPECT_NEAR(r.area(false), bg::area(gk::oracle::toBoost(s, false)), kRel * areaScale(s, false))
        << "case " << i;
    EXPECT_NEAR(r.area(true), bg::area(gk::oracle::toBoost(s, true)), kRel * areaScale(s, true))
        << "case " << i;
  }
  // The generator really produced both kinds (it is seeded, so this is a fixed count).
  EXPECT_GT(withHoles, kShapeCount / 2);
  EXPECT_LT(withHoles, kShapeCount);
}

TEST(MomentsOracle, RegionCentreOfMassAgreesWithBoostCentroidOnThreeThousandShapes) {
  const std::vector<StarWithHoles>& all = shapes();
  for (int i = 0; i < kShapeCount; ++i) {
    const StarWithHoles& s = all[static_cast<std::size_t>(i)];
    const gkRegion r = gk::oracle::makeRegion(s);
    const double tol = kRel * extent(s.outer);
    for (bool considerHoles : {false, true}) {
      const ClosedFormMoments exact =
          gk::oracle::closedFormMoments(s.outer, considerHoles ? s.holes : std::vector<Points>{});
      gk::oracle::BPoint centroid;
      bg::centroid(gk::oracle::toBoost(s, considerHoles), centroid);
      const gkVector<2> c = r.centerOfMass(considerHoles);
      EXPECT_NEAR(c.x(), static_cast<double>(exact.cx), tol) << "case " << i;
      EXPECT_NEAR(c.y(), static_cast<double>(exact.cy), tol) << "case " << i;
      EXPECT_NEAR(c.x(), centroid.x(), tol) << "case " << i;
      EXPECT_NEAR(c.y(), centroid.y(), tol) << "case " << i;
    }
  }
}

TEST(MomentsOracle, PolygonMomentRecordAgreesWithGreensTheoremOnThreeThousandStarPolygons) {
  const std::vector<StarWithHoles>& all = shapes();
  int footRule = 0;
  for (int i = 0; i < kShapeCount; ++i) {
    const StarWithHoles& s = all[static_cast<std::size_t>(i)];
    const ClosedFormMoments exact = gk::oracle::closedFormMoments(s.outer, {});
    const double rel = meetsTheFootRule(s.outer) ? kFootRuleRel : kRel;
    footRule += rel == kRel ? 0 : 1;
    const gk_InertiaData d = gw_InertiaDataPolygon(s.outer);
    EXPECT_NEAR(d.area(), static_cast<double>(exact.area), rel * areaScale(s, false))
        << "case " << i;
    EXPECT_NEAR(d.centerOfMass().x(), static_cast<double>(exact.cx), rel * extent(s.outer))
        << "case " << i;
    EXPECT_NEAR(d.centerOfMass().y(), static_cast<double>(exact.cy), rel * extent(s.outer))
        << "case " << i;
    expectMatrixMatches(d.inertiaMatrix(), exact, i, rel);
    expectMatrixMatches(gkRegion(s.outer).inertiaMatrix(false), exact, i, rel);
  }
  // Seeded: the rule is met by a few polygons in the thousands, never by most.
  RecordProperty("footRuleCases", footRule);
  EXPECT_LT(footRule, kShapeCount / 100);
}

TEST(MomentsOracle, FootOfTheAltitudeJustOffItsBaseIsTakenAsOnIt) {
  // A rhombus round the origin whose vertices (1,0) and (-1e-6,1) make an angle just over a
  // right angle at the centroid. In the fan triangle (centroid, (1,0), (-1e-6,1)) the foot of
  // the altitude from (-1e-6,1) lies 1e-6 beyond the centroid, off its base (0,0)-(1,0); the
  // distances to the line and to the segment differ by 5e-13, under 1e-10, so the base is
  // kept and the 1e-6 overhang (height 1) is counted inside the base: the triangle's area is
  // 1e-6 too large. The opposite triangle does the same: the record's area is 2 + 2e-6, where
  // Green's theorem gives 2 exactly. Kept as documented (docs/behaviour.md, Moments).
  const Points rhombus = {{1, 0}, {-1e-6, 1}, {-1, 0}, {1e-6, -1}};
  const ClosedFormMoments exact = gk::oracle::closedFormMoments(rhombus, {});
  ASSERT_EQ(static_cast<double>(exact.area), 2.0);
  EXPECT_TRUE(meetsTheFootRule(rhombus));
  EXPECT_NEAR(gw_InertiaDataPolygon(rhombus).area(), 2.0 + 2e-6, 1e-12);
  // The plain shoelace sum has no such rule.
  EXPECT_EQ(gw_Area(rhombus), 2.0);
}

TEST(MomentsOracle, HoleRecordsSubtractedByTheParallelAxisRuleAgreeWithGreensTheorem) {
  // The region refuses inertiaMatrix(true) when it has holes (pinned below), but its moment
  // records combine: the outline's record plus each hole's record with its area negated is the
  // record of the holed shape.
  const std::vector<StarWithHoles>& all = shapes();
  int checked = 0;
  for (int i = 0; i < kShapeCount; ++i) {
    const StarWithHoles& s = all[static_cast<std::size_t>(i)];
    if (s.holes.empty()) {
      continue;
    }
    gk_InertiaData sum = gw_InertiaDataPolygon(s.outer);
    bool footRule = meetsTheFootRule(s.outer);
    for (const Points& h : s.holes) {
      // Each hole's own record counter-clockwise, then negated: a clockwise listing of a
      // non-convex hole would meet the combination quirk pinned below.
      const bool counterClockwise = gk::oracle::rawMoments(h, 0, 0).m00 > 0;
      const Points ccw = counterClockwise ? h : Points(h.rbegin(), h.rend());
      const gk_InertiaData hole = gw_InertiaDataPolygon(ccw);
      footRule = footRule || meetsTheFootRule(ccw);
      sum = sum + gk_InertiaData(-hole.area(), hole.centerOfMass(), hole.inertiaMatrix());
    }
    const ClosedFormMoments exact = gk::oracle::closedFormMoments(s.outer, s.holes);
    const double rel = footRule ? kFootRuleRel : kRel;
    EXPECT_NEAR(sum.area(), static_cast<double>(exact.area), rel * areaScale(s, true))
        << "case " << i;
    EXPECT_NEAR(sum.centerOfMass().x(), static_cast<double>(exact.cx), rel * extent(s.outer))
        << "case " << i;
    EXPECT_NEAR(sum.centerOfMass().y(), static_cast<double>(exact.cy), rel * extent(s.outer))
        << "case " << i;
    expectMatrixMatches(sum.inertiaMatrix(), exact, i, rel);
    ++checked;
  }
  EXPECT_GT(checked, kShapeCount / 2);
}

TEST(MomentsOracle, RegionInertiaMatrixWithHolesIsRefusedRatherThanComputed) {
  // Documented: inertiaMatrix(considerHoles) on a region with holes throws BadParams; the
  // oracle's holed moments are therefore compared through gk_InertiaData above instead.
  const std::vector<StarWithHoles>& all = shapes();
  for (const StarWithHoles& s : all) {
    if (!s.holes.empty()) {
      const gkRegion r = gk::oracle::makeRegion(s);
      EXPECT_THROW(r.inertiaMatrix(true), gkContourDefs::BadParams);
      return;
    }
  }
  FAIL() << "no shape with holes was generated";
}

TEST(MomentsOracle, ClockwiseNonConvexOutlineKeepsTheCombinationRuleQuirk) {
  // Green's theorem gives one matrix for a point set whatever its listing. The library's
  // triangle fan from the centroid adds pieces by gk_InertiaData::operator+, whose rule for
  // pieces of opposite signs subtracts the matrix of the piece with the smaller signed area.
  // Listed clockwise, the running sum is the negative piece and a positive fan triangle (which
  // appears only for a non-convex outline) is the larger one, so the sum's own matrix is
  // subtracted instead. The rule is kept exactly (docs/behaviour.md, Moments), so a clockwise
  // non-convex outline has a matrix different from Green's; area and centre are unaffected.
  const Points ccw = {{0, 0}, {4, 0}, {4, 1}, {1, 1}, {1, 4}, {0, 4}};  // an L, counter-clockwise
  const Points cw(ccw.rbegin(), ccw.rend());
  const ClosedFormMoments exact = gk::oracle::closedFormMoments(ccw, {});
  const gk_InertiaData forward = gw_InertiaDataPolygon(ccw);
  const gk_InertiaData backward = gw_InertiaDataPolygon(cw);
  expectMatrixMatches(forward.inertiaMatrix(), exact, 0);
  EXPECT_DOUBLE_EQ(backward.area(), -forward.area());
  EXPECT_NEAR(backward.centerOfMass().x(), forward.centerOfMass().x(), 1e-14);
  EXPECT_NEAR(backward.centerOfMass().y(), forward.centerOfMass().y(), 1e-14);
  const double tol = kRel * static_cast<double>(exact.mxx + exact.myy);
  EXPECT_GT(std::fabs(backward.inertiaMatrix().element(0, 0) - static_cast<double>(exact.mxx)),
            1e6 * tol);
}

TEST(MomentsOracle, ClockwiseConvexOutlineHasGreensMatrix) {
  // The other side of the quirk: with the centroid inside a convex outline every fan triangle
  // has the outline's sign, no opposite-sign step happens, and clockwise is as exact as
  // counter-clockwise. Star polygons with radii in [0.99, 1] are convex.
  Rng rng(7);
  for (int i = 0; i < 200; ++i) {
    Points ccw = gk::oracle::starPolygon(rng, {rng.uniform(-5, 5), rng.uniform(-5, 5)},
                                         rng.integer(3, 30), 0.999, 1.0);
    const ClosedFormMoments exact = gk::oracle::closedFormMoments(ccw, {});
    expectMatrixMatches(gw_InertiaDataPolygon(Points(ccw.rbegin(), ccw.rend())).inertiaMatrix(),
                        exact, i);
  }
}
