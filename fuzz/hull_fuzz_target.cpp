#include "hull_fuzz_target.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include <gk/base/convex_hull.h>

#include "plain_hull.h"

namespace {

using V = gkVector<2>;

/// Enough for the hull's sample filter (from 128 points) and its bucket sort (from 256) many
/// times over, small enough that one input runs in milliseconds.
constexpr std::size_t kMaxPoints = 4000;
constexpr std::size_t kRecordSize = 7;
constexpr double kPi = 3.141592653589793;

std::uint16_t word(const std::uint8_t* p) {
  return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

/// SplitMix64: the per-point jitter and cloud positions, a function of the record and of the
/// number of points before it (so that repeated records give different points).
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next() {
    std::uint64_t z = (state_ += 0x9e3779b97f4a7c15u);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return z ^ (z >> 31);
  }

  /// In [0, 1), a multiple of 2^-53.
  double unit() { return static_cast<double>(next() >> 11) * 0x1p-53; }

  /// A whole number in [-j, j].
  int within(int j) { return static_cast<int>(next() % static_cast<std::uint64_t>(2 * j + 1)) - j; }

 private:
  std::uint64_t state_;
};

/// x moved by `steps` units in the last place (across zero too); non-finite x unchanged.
/// The bits of a double read as a sign-magnitude integer, made two's complement, are in the
/// order of the doubles, with both zeros at 0.
double stepUlps(double x, int steps) {
  if (!std::isfinite(x) || steps == 0) {
    return x;
  }
  std::int64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  std::int64_t ordered = bits < 0 ? std::numeric_limits<std::int64_t>::min() - bits : bits;
  ordered += steps;
  bits = ordered < 0 ? std::numeric_limits<std::int64_t>::min() - ordered : ordered;
  double y;
  std::memcpy(&y, &bits, sizeof y);
  return y;
}

double special(std::uint16_t w) {
  const double e = static_cast<double>(w >> 4);
  switch (w & 15) {
    case 0:
      return std::numeric_limits<double>::quiet_NaN();
    case 1:
      return std::numeric_limits<double>::infinity();
    case 2:
      return -std::numeric_limits<double>::infinity();
    case 3:
      return 0.0;
    case 4:
      return -0.0;
    case 5:
      return e * 5e-324;
    case 6:
      return -e * 5e-324;
    case 7:
      return 1e300;
    case 8:
      return -1e300;
    case 9:
      return 0x1p480 * (e / 2048.0);
    case 10:
      return -0x1p480 * (e / 2048.0);
    case 11:
      return 0x1p-480 * (e / 2048.0);
    case 12:
      return -0x1p-480 * (e / 2048.0);
    case 13:
      return DBL_MAX;
    case 14:
      return -DBL_MAX;
    default:
      return e / 64.0;
  }
}

/// The decoder's state: the points and the frame fresh points are placed in.
struct Decoder {
  std::vector<V> v;
  V origin{0.0, 0.0};
  double scale = 1.0;

  bool full() const { return v.size() >= kMaxPoints; }
  const V& last() const { return v.empty() ? origin : v.back(); }

  void lattice(std::int16_t a, std::int16_t b) {
    v.emplace_back(origin.x() + scale * (a / 64.0), origin.y() + scale * (b / 64.0));
  }

  void ring(unsigned h, std::uint16_t a, std::uint16_t b, std::uint16_t c, Random& random) {
    const std::size_t k = 2 + 2 * static_cast<std::size_t>(b & 0xFF) + (h & 1);
    const double rx = scale * ((a + 1) / 64.0);
    const double ry = (b >> 8) == 0 ? rx : rx * ((b >> 8) / 64.0);
    const double turn = static_cast<double>(h >> 1) * kPi / 16.0;
    const double cosTurn = std::cos(turn);
    const double sinTurn = std::sin(turn);
    const double phase = (c & 0xFF) / 256.0;
    const bool ulps = (c & 0x100) != 0;
    const int j = c >> 9;
    const V centre = last();
    for (std::size_t i = 0; i < k && !full(); ++i) {
      const double angle = 2.0 * kPi * (static_cast<double>(i) + phase) / static_cast<double>(k);
      const double ex = rx * std::cos(angle);
      const double ey = ry * std::sin(angle);
      double x = centre.x() + (ex * cosTurn - ey * sinTurn);
      double y = centre.y() + (ex * sinTurn + ey * cosTurn);
      if (j > 0) {
        const int dx = random.within(j);
        const int dy = random.within(j);
        if (ulps) {
          x = stepUlps(x, dx);
          y = stepUlps(y, dy);
        } else {
          x += dx * (scale * 1e-7);
          y += dy * (scale * 1e-7);
        }
      }
      v.emplace_back(x, y);
    }
  }

  void copy(std::uint16_t a, std::uint16_t b) {
    const std::size_t n = v.size();
    const std::size_t count = 1 + static_cast<std::size_t>(b & 0xFF);
    for (std::size_t i = 0; i < count && !full(); ++i) {
      const V p = v[(a + i) % n];
      v.push_back(p);
    }
  }

  void nearCollinear(unsigned h, std::uint16_t a, std::uint16_t b, std::uint16_t c) {
    const std::size_t n = v.size();
    const V p = v[a % n];
    const V q = v[b % n];
    const V along = q - p;
    const double length = along.len();
    const V normal = length > 0 ? V(-along.y(), along.x()) / length : V(0.0, 0.0);
    const double off = static_cast<std::int8_t>(c >> 8) * (scale * 1e-9);
    for (unsigned i = 0; i <= h && !full(); ++i) {
      const double t = static_cast<double>(((c & 0xFFu) + 97u * i) % 256u) / 256.0;
      v.push_back(p + along * t + normal * off);
    }
  }

  void frame(std::int16_t a, std::int16_t b, std::int16_t c) {
    origin = V(a * (1e9 / 64.0), b * (1e9 / 64.0));
    scale = std::ldexp(1.0, c % 1101);
  }

  void cloud(std::uint16_t a, std::uint16_t b, std::uint16_t c, Random& random) {
    const std::size_t count = 1 + 2 * static_cast<std::size_t>(b & 0xFF);
    const double r = scale * ((a + 1) / 64.0);
    const unsigned g = c & 0xFF;
    const bool disc = (c & 0x100) != 0;
    const V centre = last();
    for (std::size_t i = 0; i < count && !full(); ++i) {
      double u;
      double w;
      if (disc) {
        const double rho = std::sqrt(random.unit());
        const double angle = 2.0 * kPi * random.unit();
        u = rho * std::cos(angle);
        w = rho * std::sin(angle);
      } else {
        u = 2.0 * random.unit() - 1.0;
        w = 2.0 * random.unit() - 1.0;
      }
      if (g != 0) {
        u = std::round(u * g) / g;
        w = std::round(w * g) / g;
      }
      v.emplace_back(centre.x() + r * u, centre.y() + r * w);
    }
  }

  void reorder(std::uint16_t a, std::uint16_t b) {
    std::rotate(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(a % v.size()), v.end());
    if ((b & 1) != 0) {
      std::reverse(v.begin(), v.end());
    }
  }
};

}  // namespace

std::vector<gkVector<2>> gkHullFuzzDecode(const std::uint8_t* data, std::size_t size) {
  Decoder d;
  for (std::size_t at = 0; at + kRecordSize <= size && !d.full(); at += kRecordSize) {
    const std::uint8_t* r = data + at;
    const unsigned mode = r[0] & 7u;
    const unsigned h = r[0] >> 3;
    const std::uint16_t a = word(r + 1);
    const std::uint16_t b = word(r + 3);
    const std::uint16_t c = word(r + 5);
    std::uint64_t seed = d.v.size();
    for (std::size_t i = 0; i < kRecordSize; ++i) {
      seed = (seed << 8) ^ (seed >> 56) ^ r[i];
    }
    Random random(seed);
    switch (mode) {
      case 0:
        d.lattice(static_cast<std::int16_t>(a), static_cast<std::int16_t>(b));
        break;
      case 1:
        d.ring(h, a, b, c, random);
        break;
      case 2:
        if (!d.v.empty()) {
          d.copy(a, b);
        }
        break;
      case 3:
        if (!d.v.empty()) {
          d.nearCollinear(h, a, b, c);
        }
        break;
      case 4:
        d.v.emplace_back(special(a), special(b));
        break;
      case 5:
        d.frame(static_cast<std::int16_t>(a), static_cast<std::int16_t>(b),
                static_cast<std::int16_t>(c));
        break;
      case 6:
        d.cloud(a, b, c, random);
        break;
      default:
        if (!d.v.empty()) {
          d.reorder(a, b);
        }
        break;
    }
  }
  return std::move(d.v);
}

bool gkHullFuzzCheck(const std::uint8_t* data, std::size_t size) {
  const std::vector<gkVector<2>> points = gkHullFuzzDecode(data, size);
  std::vector<gkVector<2>> hull;
  gwConvexHull(points, hull);
  return hull == gk::test::plainConvexHull(points);
}
