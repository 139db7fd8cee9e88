#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <gk/base/vector.h>

/// What one geometry fuzz input decodes to: two contours, a region with holes (each hole may
/// hold an island), further members for a region set, and the arguments of the queries.
/// Every operation of the public interface is run on it by gkGeometryFuzzRun.
struct gkGeometryFuzzScene {
  using Points = std::vector<gkVector<2>>;

  /// A region's outline and its holes; a hole's island is a hole of that hole.
  struct Shape {
    Points outline;
    std::vector<Shape> holes;
  };

  bool contourClosed = true;
  bool otherClosed = false;
  /// Passed as gkContourDefs::IntersectionMode when the region and the set are built, so
  /// 3 (not a mode) is tried too.
  std::uint8_t regionMode = 0;
  std::uint8_t setMode = 0;
  Points contour;
  Points other;
  Shape region;
  std::vector<Shape> setMembers;
  gkVector<2> point;
  gkVector<2> segmentStart;
  gkVector<2> segmentEnd;
  /// The transform's matrix (row by row) and translation: used for map, encloseRect and the
  /// edgelet shapes' data-from-points transform.
  double xform[6] = {1.0, 0.0, 0.0, 1.0, 0.0, 0.0};
  double angle = 0.0;
  double tolerance = 1.0;
  /// Outlier-rejection rounds and limit of the circle and ellipse fits.
  std::uint8_t fitRounds = 0;
  double fitLimit = 1.0;
  /// Passed to cachedVectorSize; negative values must be refused.
  std::int8_t cacheBound = 3;
};

/// The caps that keep one input fast whatever its bytes: every vertex list, every hole list
/// and the set's member list are cut at these lengths.
constexpr std::size_t kGeometryFuzzMaxVertices = 40;
constexpr std::size_t kGeometryFuzzMaxHoles = 3;
constexpr std::size_t kGeometryFuzzMaxMembers = 3;
constexpr std::uint8_t kGeometryFuzzMaxFitRounds = 3;

/// Decodes bytes into a scene; any byte string is valid (missing bytes read as zero). Each
/// coordinate is drawn as a raw double, a small integer, a special value (NaN, infinities,
/// 1e300, 1e15, denormals, ...) or a half-integer nudged by multiples of 1e-7; each vertex is
/// two such coordinates, a repeat of an earlier vertex, or a point on the line of the
/// previous two.
gkGeometryFuzzScene gkGeometryFuzzDecode(const std::uint8_t* data, std::size_t size);

/// The bytes that decode to scene (each coordinate stored as a raw double), for seeds.
/// Lists longer than the caps are cut, as decoding would cut them.
std::vector<std::uint8_t> gkGeometryFuzzEncode(const gkGeometryFuzzScene& scene);

/// Runs every public operation on the scene. Only gkException may end an operation; each is
/// tried on its own, so a refused one does not hide the rest. Anything else escapes (a finding),
/// and so does a broken round trip through the archive, as std::logic_error.
void gkGeometryFuzzRun(const gkGeometryFuzzScene& scene);

/// The fuzzer's body: decode, then run; always 0 (libFuzzer's convention).
int gkGeometryFuzzOne(const std::uint8_t* data, std::size_t size);
