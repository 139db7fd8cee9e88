// The README's tour, kept compiling: tests/readme checks the two stay identical.
#include <gk/gk.h>

#include <cstdio>

int main() {
  // A closed contour: the closing segment (vertex 3 -> vertex 0) is segment 0, so that
  // segment k always ends at vertex k.
  gkContour square({{0, 0}, {4, 0}, {4, 4}, {0, 4}}, /*isClosed=*/true, /*label=*/1);

  // Shapes are values: copy, compare (the label is not compared), map by a transform.
  gkContour moved(std::vector<gkVector<2>>(), true, 0);
  square.map(gkXform<2>(gkMatrix<2>::identity(), gkVector<2>(10, 0)), moved);
  std::printf("first vertex moved to (%g, %g)\n", moved.points()[0].x(), moved.points()[0].y());

  // A polygon whose last vertex repeats its first gives a closed contour (both kept).
  gkContour fromPolygon(gkPolygon({{0, 0}, {1, 0}, {0, 1}, {0, 0}}, gkPolygon::eEvenOdd), 2);
  std::printf("closed: %d, vertices: %zu\n", fromPolygon.isClosed(), fromPolygon.points().size());

  // Errors are typed exceptions with fixed numbers, and leave the object unchanged.
  try {
    square.cachedVectorSize(-1);
  } catch (const gkContourDefs::BadParams& e) {
    std::printf("BadParams, error number %d\n", e.errorNumber());
  }
}
