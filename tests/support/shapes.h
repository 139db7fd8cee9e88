#pragma once

#include <limits>
#include <vector>

#include <gk/base/ptr_handle.h>
#include <gk/base/vector.h>
#include <gk/cntr/region.h>

/// Reusable test shapes, defined once.
namespace gk::test {

using Points = std::vector<gkVector<2>>;

/// (0,0), (1,0), (1,1), (0,1): counter-clockwise unit square.
inline Points unitSquare() {
  return {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
}

/// A closed outline whose two diagonals cross at (1, 1).
inline Points bowTie() {
  return {{0, 0}, {2, 2}, {2, 0}, {0, 2}};
}

/// (0,0), (4,0), (0,3): a 3-4-5 right triangle, counter-clockwise.
inline Points triangle() {
  return {{0, 0}, {4, 0}, {0, 3}};
}

/// A triangle with a repeated vertex in the middle (a zero-length segment between 1 and 2).
inline Points triangleWithRepeat() {
  return {{0, 0}, {4, 0}, {4, 0}, {0, 3}};
}

/// Vertices carrying NaN and infinities in every slot.
inline Points nonFinite() {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  return {{nan, 0}, {0, nan}, {inf, 1}, {1, -inf}, {nan, inf}};
}

/// (x0, y0), (x0 + side, y0), (x0 + side, y0 + side), (x0, y0 + side): an axis-aligned square,
/// counter-clockwise from its lower-left corner.
inline Points squareAt(double x0, double y0, double side) {
  return {{x0, y0}, {x0 + side, y0}, {x0 + side, y0 + side}, {x0, y0 + side}};
}

/// A region of the given outline, held by const handle as a hole list wants it.
inline gkPtrHandle_const<gkRegion> regionHandle(const Points& outline) {
  return gkPtrHandle_const<gkRegion>(new gkRegion(outline));
}

/// The square (0,0)-(10,10) with one square hole (3,3)-(7,7).
inline gkRegion squareWithHole() {
  gkRegion r(squareAt(0, 0, 10));
  r.holes(gkRegion::Holes{regionHandle(squareAt(3, 3, 4))});
  return r;
}

/// The square (0,0)-(10,10) with a hole (2,2)-(8,8) that has a hole of its own, the island
/// (4,4)-(6,6): points on the island belong to the region again.
inline gkRegion islandInHole() {
  gkRegion hole(squareAt(2, 2, 6));
  hole.holes(gkRegion::Holes{regionHandle(squareAt(4, 4, 2))});
  gkRegion r(squareAt(0, 0, 10));
  r.holes(gkRegion::Holes{gkPtrHandle_const<gkRegion>(new gkRegion(hole))});
  return r;
}

/// The square (0,0)-(20,20) with three 2x2 square holes, in this order: (2,2)-(4,4),
/// (9,9)-(11,11) and (16,2)-(18,4).
inline gkRegion squareWithThreeHoles() {
  gkRegion r(squareAt(0, 0, 20));
  r.holes(gkRegion::Holes{regionHandle(squareAt(2, 2, 2)), regionHandle(squareAt(9, 9, 2)),
                          regionHandle(squareAt(16, 2, 2))});
  return r;
}

/// A "C" opening to the right: the square (0,0)-(10,10) less the slot (2,2)-(10,8), with arms
/// 2 thick. A ray from inside may cross one arm or three edges; from the mouth, none or two.
inline Points cShape() {
  return {{0, 0}, {10, 0}, {10, 2}, {2, 2}, {2, 8}, {10, 8}, {10, 10}, {0, 10}};
}

/// A figure eight of two diamond lobes, (-2,2)..(2,2) and (2,2)..(6,2), whose edges
/// (0,0)-(4,4) and (4,0)-(0,4) cross at (2,2). No vertex lies at the crossing.
inline Points figureEight() {
  return {{0, 0}, {4, 4}, {6, 2}, {4, 0}, {0, 4}, {-2, 2}};
}

/// A boundary that runs round three sides of the square [0,8]^2, cuts in to the middle,
/// forms a triangular inner loop (4,4), (6,2), (6,6) and leaves through the point it came in
/// by: the edge (0,8)-(6,2) and the closing edge (6,6)-(0,0) cross at (4,4). Walked from the
/// outside, the inner loop hangs on the outer one at that pinch point.
inline Points pinchedLoop() {
  return {{0, 0}, {8, 0}, {8, 8}, {0, 8}, {6, 2}, {6, 6}};
}

/// A self-intersecting boundary whose only edge that meets the rest of the boundary just at
/// its two ends is the closing edge (8,0)-(0,0) along the bottom. Every other edge is crossed:
/// (0,0)-(2,7) by (2,3)-(1,8) and by (1,8)-(8,0), and (2,7)-(2,3) by (1,8)-(8,0).
inline Points crossedExceptClosingEdge() {
  return {{0, 0}, {2, 7}, {2, 3}, {1, 8}, {8, 0}};
}

/// A boundary with its last vertex (-1,0) on its first edge (-1,-4)-(-1,5): the crossing the
/// first edge meets is a vertex of the boundary.
inline Points vertexOnEdge() {
  return {{-1, -4}, {-1, 5}, {5, 5}, {-1, 0}};
}

/// A boundary through (-5,6) twice whose outer walk falls into three triangles, one of which
/// shares an edge with another and is the only link to the third.
inline Points twoLoopsAfterMerging() {
  return {{-5, 6}, {0, 1}, {2, 2}, {-6, 4}, {-5, 6}, {-5, 0}};
}

}  // namespace gk::test
