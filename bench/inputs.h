#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <gk/base/vector.h>

/// The shapes every benchmark measures, made by a fixed-seed generator of our own so that the
/// inputs are bit-identical with every compiler and standard library (the standard's
/// distributions are not pinned down). Shapes are centred on the origin.
namespace gk::bench {

using Points = std::vector<gkVector<2>>;

constexpr double kPi = 3.141592653589793;

/// splitmix64: a tiny generator whose whole sequence is fixed by its seed.
class SplitMix64 {
 public:
  explicit SplitMix64(std::uint64_t seed) : state_(seed) {}
  std::uint64_t next();
  /// Uniform in [0, 1), from the top 53 bits.
  double uniform();
  /// Standard normal, by the Box-Muller transform of two uniforms.
  double gaussian();

 private:
  std::uint64_t state_;
};

/// The outline families. The "-x" variants are their self-intersecting copies.
enum class Family { kStar, kBlob, kStarX, kBlobX, kDisc };

/// "star", "blob", "star-x", "blob-x", "disc".
std::string familyName(Family family);

/// The vertex counts every size sweep uses: 64, 1024, 16384, 131072.
const std::vector<int>& sizes();

/// Spiky star: vertex k at angle 2 pi k / n, radius 100 (1 + 0.3 u), u uniform in [0, 1).
/// Counter-clockwise and simple (every vertex sits on its own ray from the origin).
Points star(int n);

/// Smooth traced blob: radius 100 (1 + 0.2 sin 3t + 0.1 cos 7t) plus uniform noise in
/// [-0.01, 0.01) at angle t = 2 pi k / n. Counter-clockwise and simple.
Points blob(int n);

/// A self-intersecting copy: for k = 0 .. n-2 in order, vertex k swaps places with vertex k+1
/// with probability 0.1 (a vertex may travel on with later swaps, as a bubble would).
Points crossed(const Points& points, std::uint64_t seed);

/// n points uniform in the disc of radius 100 (for convex hulls).
Points disc(int n);

/// The shape of a family at n vertices (star, blob, their crossed copies, or the disc points).
Points shape(Family family, int n);

/// count query points uniform in the shape's bounding box enlarged by 10% of its size on each
/// side: some inside, some outside, some near the boundary.
Points queryPoints(const Points& shape, std::size_t count);

/// The size of the query pool the per-query benchmarks cycle through.
constexpr std::size_t kQueryPool = 1024;

/// The true ellipse of noisyEllipse().
struct EllipseTruth {
  double cx = 3.0;
  double cy = -2.0;
  double a = 80.0;        ///< major semi-axis
  double b = 30.0;        ///< minor semi-axis
  double rotation = 0.4;  ///< of the major axis from the x axis, radians
};

/// n points at uniform parameter on the EllipseTruth ellipse, each coordinate moved by Gaussian
/// noise of standard deviation 0.5. Each trial number draws other noise.
Points noisyEllipse(int n, std::uint64_t trial = 0);

/// The points turned by angle radians about the origin.
Points rotated(const Points& points, double angle);

/// "op/impl/family/n": the name the report pairs implementations by.
std::string benchName(const std::string& op, const std::string& impl, const std::string& family,
                      int n);

}  // namespace gk::bench
