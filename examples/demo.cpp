// gkgeom demo: builds a few contours and prints what the library knows about them.
#include <gk/gk.h>

#include <cstdio>
#include <vector>

namespace {

void printContour(const char* name, const gkContour& c) {
  std::printf("%-22s vertices %2zu  %-6s  label %lu  segments %ld  cache bound %ld\n", name,
              c.points().size(), c.isClosed() ? "closed" : "open", c.label(), c.segmentCount(),
              c.cachedVectorSize());
}

}  // namespace

int main() {
  std::printf("gkgeom demo\n\n");

  // A square given as a closed polyline, and the same square from a polygon that repeats its
  // first vertex (so it comes back closed, with the repeated vertex kept).
  const std::vector<gkVector<2>> square = {{0, 0}, {4, 0}, {4, 4}, {0, 4}};
  const gkContour closed(square, true, 1);
  const gkContour open(square, false, 2);
  const gkContour fromPolygon(
      gkPolygon({{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 0}}, gkPolygon::eEvenOdd), 3);
  printContour("square (closed)", closed);
  printContour("square (open)", open);
  printContour("square from polygon", fromPolygon);

  // Mapping by a rotation of 90 degrees about the origin and a shift.
  gkContour turned(std::vector<gkVector<2>>(), true, 0);
  closed.map(gkXform<2>(gkMatrix<2>(gkRadian(gkDegree(90)), gkRadian(gkDegree(90)), 1, 1),
                        gkVector<2>(10, 0)),
             turned);
  printContour("square turned, shifted", turned);
  for (const gkVector<2>& p : turned.points()) {
    std::printf("    (%.3f, %.3f)\n", p.x(), p.y());
  }

  // Convex hull of a noisy point set: the interior and collinear points drop out.
  const std::vector<gkVector<2>> cloud = {{0, 0}, {2, 1}, {4, 0}, {4, 2}, {4, 4},
                                          {1, 3}, {0, 4}, {2, 2}, {0, 2}, {4, 0}};
  std::vector<gkVector<2>> hull;
  gwConvexHull(cloud, hull);
  std::printf("\nconvex hull of %zu points: %zu corners, counter-clockwise\n", cloud.size(),
              hull.size());
  for (const gkVector<2>& p : hull) {
    std::printf("    (%.0f, %.0f)\n", p.x(), p.y());
  }

  // A region with a hole: area, centre and moments with and without the hole, containment.
  gkRegion plate({{0, 0}, {10, 0}, {10, 6}, {0, 6}});
  plate.holes(
      gkRegion::Holes{gkPtrHandle_const<gkRegion>(new gkRegion({{6, 2}, {8, 2}, {8, 4}, {6, 4}}))});
  const gkVector<2> centre = plate.centerOfMass(true);
  std::printf("\nplate 10 x 6 with a 2 x 2 hole\n");
  std::printf("    area %.3f (without the hole %.3f)\n", plate.area(true), plate.area(false));
  std::printf("    centre of mass (%.4f, %.4f)\n", centre.x(), centre.y());
  const gkMatrix<2> m = plate.inertiaMatrix(false);
  std::printf("    inertia (outline) [%.3f %.3f; %.3f %.3f]\n", m.element(0, 0), m.element(0, 1),
              m.element(1, 0), m.element(1, 1));
  std::printf("    (7, 3) inside: %s with holes, %s without\n",
              plate.inside(gkVector<2>(7, 3), true) ? "yes" : "no",
              plate.inside(gkVector<2>(7, 3), false) ? "yes" : "no");
  std::printf("    distance from (12, 3): %.3f\n",
              plate.distToPoint(gkVector<2>(12, 3), false, true, true));

  // A self-intersecting outline (a bow tie) regularized into its outer boundary.
  const gkRegion bowTie({{0, 0}, {2, 2}, {2, 0}, {0, 2}});
  gkRegion regular;
  bowTie.regularize(regular);
  std::printf("\nbow tie self-intersecting: %s; regularized to %zu vertices:",
              bowTie.isSelfIntersecting() ? "yes" : "no", regular.points().size());
  for (const gkVector<2>& p : regular.points()) {
    std::printf(" (%g, %g)", p.x(), p.y());
  }
  std::printf("\n");

  // The ellipse with the same second moments as the plate's outline.
  const gkEllipse momentEllipse = gw_EllipseFromInertiaData(gw_InertiaDataPolygon(plate.points()));
  std::printf("moment ellipse of the outline: centre (%g, %g), semi-axes %.4f x %.4f\n",
              momentEllipse.center().x(), momentEllipse.center().y(), momentEllipse.radii().x(),
              momentEllipse.radii().y());

  // Errors are typed and carry fixed numbers.
  gkContour c = closed;
  try {
    c.cachedVectorSize(-1);
  } catch (const gkContourDefs::Errors& e) {
    std::printf("\ncachedVectorSize(-1) -> error 0x%08X, bound still %ld\n",
                static_cast<unsigned>(e.errorNumber()), c.cachedVectorSize());
  }
  return 0;
}
