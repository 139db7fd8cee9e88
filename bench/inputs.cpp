#include "inputs.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace gk::bench {

namespace {

// One seed per family, so that a family's shape does not depend on which others were made.
constexpr std::uint64_t kStarSeed = 0x5174A2;
constexpr std::uint64_t kBlobSeed = 0xB10B;
constexpr std::uint64_t kCrossSeed = 0xC2055;
constexpr std::uint64_t kDiscSeed = 0xD15C;
constexpr std::uint64_t kQuerySeed = 0x9E3;
constexpr std::uint64_t kEllipseSeed = 0xE111;

constexpr double kRadius = 100.0;
constexpr double kSwapProbability = 0.1;

}  // namespace

std::uint64_t SplitMix64::next() {
  std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ULL);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
  return z ^ (z >> 31);
}

double SplitMix64::uniform() {
  return static_cast<double>(next() >> 11) * 0x1p-53;
}

double SplitMix64::gaussian() {
  // 1 - u lies in (0, 1], so the logarithm is finite.
  const double u1 = 1.0 - uniform();
  const double u2 = uniform();
  return std::sqrt(-2.0 * std::log(u1)) * std::cos(2.0 * kPi * u2);
}

std::string familyName(Family family) {
  switch (family) {
    case Family::kStar:
      return "star";
    case Family::kBlob:
      return "blob";
    case Family::kStarX:
      return "star-x";
    case Family::kBlobX:
      return "blob-x";
    case Family::kDisc:
      return "disc";
  }
  return "?";
}

const std::vector<int>& sizes() {
  static const std::vector<int> kSizes = {64, 1024, 16384, 131072};
  return kSizes;
}

Points star(int n) {
  SplitMix64 rng(kStarSeed);
  Points pts;
  pts.reserve(static_cast<std::size_t>(n));
  for (int k = 0; k < n; ++k) {
    const double t = 2.0 * kPi * k / n;
    const double r = kRadius * (1.0 + 0.3 * rng.uniform());
    pts.emplace_back(r * std::cos(t), r * std::sin(t));
  }
  return pts;
}

Points blob(int n) {
  SplitMix64 rng(kBlobSeed);
  Points pts;
  pts.reserve(static_cast<std::size_t>(n));
  for (int k = 0; k < n; ++k) {
    const double t = 2.0 * kPi * k / n;
    const double noise = 0.02 * rng.uniform() - 0.01;
    const double r = kRadius * (1.0 + 0.2 * std::sin(3.0 * t) + 0.1 * std::cos(7.0 * t)) + noise;
    pts.emplace_back(r * std::cos(t), r * std::sin(t));
  }
  return pts;
}

Points crossed(const Points& points, std::uint64_t seed) {
  SplitMix64 rng(seed);
  Points out = points;
  for (std::size_t k = 0; k + 1 < out.size(); ++k) {
    if (rng.uniform() < kSwapProbability) {
      std::swap(out[k], out[k + 1]);
    }
  }
  return out;
}

Points disc(int n) {
  SplitMix64 rng(kDiscSeed);
  Points pts;
  pts.reserve(static_cast<std::size_t>(n));
  for (int k = 0; k < n; ++k) {
    const double r = kRadius * std::sqrt(rng.uniform());
    const double t = 2.0 * kPi * rng.uniform();
    pts.emplace_back(r * std::cos(t), r * std::sin(t));
  }
  return pts;
}

Points shape(Family family, int n) {
  switch (family) {
    case Family::kStar:
      return star(n);
    case Family::kBlob:
      return blob(n);
    case Family::kStarX:
      return crossed(star(n), kCrossSeed);
    case Family::kBlobX:
      return crossed(blob(n), kCrossSeed);
    case Family::kDisc:
      return disc(n);
  }
  throw std::invalid_argument("unknown family");
}

Points queryPoints(const Points& shape, std::size_t count) {
  double x0 = shape.front().x();
  double x1 = x0;
  double y0 = shape.front().y();
  double y1 = y0;
  for (const gkVector<2>& p : shape) {
    x0 = std::min(x0, p.x());
    x1 = std::max(x1, p.x());
    y0 = std::min(y0, p.y());
    y1 = std::max(y1, p.y());
  }
  const double mx = 0.1 * (x1 - x0);
  const double my = 0.1 * (y1 - y0);
  SplitMix64 rng(kQuerySeed);
  Points pts;
  pts.reserve(count);
  for (std::size_t k = 0; k < count; ++k) {
    const double x = (x0 - mx) + (x1 - x0 + 2.0 * mx) * rng.uniform();
    const double y = (y0 - my) + (y1 - y0 + 2.0 * my) * rng.uniform();
    pts.emplace_back(x, y);
  }
  return pts;
}

Points noisyEllipse(int n, std::uint64_t trial) {
  const EllipseTruth e;
  const double c = std::cos(e.rotation);
  const double s = std::sin(e.rotation);
  constexpr double kNoise = 0.5;
  SplitMix64 rng(kEllipseSeed + trial);
  Points pts;
  pts.reserve(static_cast<std::size_t>(n));
  for (int k = 0; k < n; ++k) {
    const double t = 2.0 * kPi * k / n;
    const double u = e.a * std::cos(t);
    const double v = e.b * std::sin(t);
    const double x = e.cx + c * u - s * v + kNoise * rng.gaussian();
    const double y = e.cy + s * u + c * v + kNoise * rng.gaussian();
    pts.emplace_back(x, y);
  }
  return pts;
}

Points rotated(const Points& points, double angle) {
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  Points out;
  out.reserve(points.size());
  for (const gkVector<2>& p : points) {
    out.emplace_back(c * p.x() - s * p.y(), s * p.x() + c * p.y());
  }
  return out;
}

std::string benchName(const std::string& op, const std::string& impl, const std::string& family,
                      int n) {
  return op + "/" + impl + "/" + family + "/" + std::to_string(n);
}

}  // namespace gk::bench
