#pragma once

// The geometry fuzzer's seed scenes, by file name. The seed writer (make_geometry_seeds.cpp)
// encodes them into fuzz/corpus/geometry/, and the replay test checks that the checked-in files
// are still exactly these encodings, so a change of the byte format cannot leave stale seeds.

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "geometry_fuzz_target.h"

namespace gk::fuzz {

using Scene = gkGeometryFuzzScene;
using Points = Scene::Points;

inline Points squareAt(double x0, double y0, double side) {
  return {{x0, y0}, {x0 + side, y0}, {x0 + side, y0 + side}, {x0, y0 + side}};
}

// Query arguments that reach into the shapes below: a point inside most of them, a segment
// across them, a rotation with a scale, an oblique angle.
inline Scene baseScene() {
  Scene s;
  s.point = gkVector<2>(1.0, 1.0);
  s.segmentStart = gkVector<2>(-1.0, 0.5);
  s.segmentEnd = gkVector<2>(11.0, 0.5);
  const double c = std::cos(0.5);
  const double n = std::sin(0.5);
  const double xform[6] = {2.0 * c, -2.0 * n, 2.0 * n, 2.0 * c, 3.0, -4.0};
  for (int i = 0; i < 6; ++i) {
    s.xform[i] = xform[i];
  }
  s.angle = 0.7;
  s.tolerance = 0.5;
  s.fitRounds = 1;
  s.fitLimit = 2.0;
  s.cacheBound = 2;
  return s;
}

inline std::vector<std::pair<std::string, Scene>> geometrySeeds() {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  std::vector<std::pair<std::string, Scene>> seeds;
  const auto add = [&](const std::string& name, const Scene& s) { seeds.emplace_back(name, s); };

  Scene s = baseScene();
  s.contour = {{0, 0}, {2, 2}, {2, 0}, {0, 2}};
  s.other = squareAt(0.5, 0.5, 1);
  s.region.outline = s.contour;
  s.regionMode = 1;
  add("bow_tie", s);

  s = baseScene();
  s.contour = {{0, 0}, {4, 4}, {6, 2}, {4, 0}, {0, 4}, {-2, 2}};
  s.other = {{-3, 2}, {7, 2}};
  s.region.outline = s.contour;
  s.regionMode = 2;
  s.setMembers = {{squareAt(1, 1, 2), {}}};
  s.setMode = 1;
  add("figure_eight", s);

  s = baseScene();
  s.contour = squareAt(0, 0, 10);
  s.other = {{5, -1}, {5, 11}};
  s.region.outline = squareAt(0, 0, 10);
  s.region.holes = {{squareAt(3, 3, 4), {}}};
  s.point = gkVector<2>(5, 5);
  add("square_with_hole", s);

  s = baseScene();
  s.contour = squareAt(0, 0, 10);
  s.other = squareAt(4.5, 4.5, 1);
  s.region.outline = squareAt(0, 0, 10);
  s.region.holes = {{squareAt(2, 2, 6), {{squareAt(4, 4, 2), {}}}}};
  s.point = gkVector<2>(5, 5);
  s.setMembers = {{squareAt(5, 5, 10), {}}};
  s.setMode = 2;
  add("island_in_hole", s);

  s = baseScene();
  s.contour = {{0, 0}, {1, 1}, {2, 2}, {3, 3}, {1.5, 1.5}, {4, 4}};
  s.contourClosed = false;
  s.other = {{0, 0}, {1, 0}, {2, 0}, {3, 0}};
  s.region.outline = {{0, 0}, {1, 0}, {2, 0}, {2, 1}, {2, 2}, {1, 1}};
  add("collinear", s);

  s = baseScene();
  s.contour = {{0, 0}, {4, 0}, {4, 4}, {2, 4}, {2, 9}, {2, 4}, {0, 4}};
  s.other = {{1, 6}, {3, 6}};
  s.region.outline = s.contour;
  s.regionMode = 1;
  add("spike", s);

  s = baseScene();
  s.contour = {{0, 0}, {8, 0}, {8, 8}, {0, 8}, {6, 2}, {6, 6}};
  s.other = s.contour;
  s.region.outline = s.contour;
  s.regionMode = 1;
  s.setMembers = {{{{0, 0}, {2, 7}, {2, 3}, {1, 8}, {8, 0}}, {}}};
  s.setMode = 2;
  add("pinched_loop", s);

  s = baseScene();
  s.contour = {{nan, 0}, {0, nan}, {inf, 1}, {1, -inf}, {nan, inf}};
  s.other = squareAt(0, 0, 2);
  s.region.outline = {{0, 0}, {4, 0}, {nan, 2}, {4, 4}, {0, 4}};
  s.region.holes = {{{{1, 1}, {2, 1}, {2, inf}}, {}}};
  s.point = gkVector<2>(nan, 1);
  s.angle = nan;
  s.tolerance = inf;
  add("non_finite", s);

  s = baseScene();
  s.contour = squareAt(1e15, -1e15, 1e15);
  s.other = {{0, 0}, {3e15, 3e15}};
  s.region.outline = {{1e15, 1e15}, {3e15, 3e15}, {3e15, 1e15}, {1e15, 3e15}};
  s.region.holes = {{squareAt(1.5e15, 1.1e15, 1.0), {}}};
  s.point = gkVector<2>(2e15, 2e15);
  s.tolerance = 1e-6;
  s.xform[4] = 1e300;
  add("huge", s);

  s = baseScene();
  const double tiny = std::numeric_limits<double>::denorm_min();
  s.contour = {{0, 0}, {tiny, 0}, {tiny, tiny}, {0, tiny}, {2 * tiny, 3 * tiny}};
  s.other = {{-tiny, -tiny}, {tiny, tiny}};
  s.region.outline = {{0, 0}, {4 * tiny, 4 * tiny}, {4 * tiny, 0}, {0, 4 * tiny}};
  s.point = gkVector<2>(tiny, tiny);
  s.tolerance = tiny;
  s.xform[0] = 1e300;
  s.xform[3] = 1e300;
  add("denormal", s);

  s = baseScene();
  s.contour = {{0, 0}, {1, 0}, {1, 0}, {1, 1}, {0, 0}, {0, 0}};
  s.other = s.contour;
  s.region.outline = {{2, 2}, {2, 2}, {2, 2}};
  s.setMembers = {{squareAt(0, 0, 4), {}}, {squareAt(2, 2, 4), {}}, {squareAt(0, 0, 4), {}}};
  s.setMode = 1;
  s.xform[0] = 0.0;
  s.xform[1] = 0.0;
  add("repeated_vertices_and_singular_xform", s);

  return seeds;
}

}  // namespace gk::fuzz
