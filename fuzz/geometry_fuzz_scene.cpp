// Bytes to a geometry scene and back. The decoding is deliberately redundant: most byte
// strings should give shapes that are nearly right (repeated vertices, collinear runs, holes
// touching their outline through a shared vertex, values at the tolerances) rather than
// random clouds, because that is where the geometry has its corner cases.
#include <cmath>
#include <cstring>
#include <limits>

#include "geometry_fuzz_target.h"

namespace {

using Points = gkGeometryFuzzScene::Points;
using Shape = gkGeometryFuzzScene::Shape;

// How a coordinate is drawn (tag byte modulo 4).
enum CoordinateTag : std::uint8_t { eRaw = 0, eGrid = 1, eSpecial = 2, eNudged = 3 };
// How a vertex is drawn (tag byte modulo 4); 0 and 1 both read two coordinates, so that half
// of all vertices are fresh.
enum VertexTag : std::uint8_t { eFresh = 0, eRepeat = 2, eCollinear = 3 };

// The values that break naive geometry: non-finite, beyond the range where squares overflow,
// near 2^53 where a unit step is lost, denormals, signed zeros, and the library's tolerances.
const double kSpecials[] = {
    std::numeric_limits<double>::quiet_NaN(),
    -std::numeric_limits<double>::quiet_NaN(),
    std::numeric_limits<double>::infinity(),
    -std::numeric_limits<double>::infinity(),
    std::numeric_limits<double>::max(),
    -std::numeric_limits<double>::max(),
    1e300,
    -1e300,
    1e154,
    1e150,
    1e16,
    1e15,
    -1e15,
    1e15 + 1.0,
    9007199254740993.0,
    4611686018427387904.0,  // 2^62, where grid cells are clamped
    std::numeric_limits<double>::denorm_min(),
    -std::numeric_limits<double>::denorm_min(),
    std::numeric_limits<double>::min(),
    1e-300,
    1e-15,
    1e-10,
    1e-7,
    1e-6,
    0.0,
    -0.0,
    0.5,
    1.0,
};
constexpr std::size_t kSpecialCount = sizeof kSpecials / sizeof kSpecials[0];

// Reads bytes in order; past the end every byte is 0, so every input decodes.
class ByteReader {
 public:
  ByteReader(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  std::uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }

  double raw() {
    unsigned char bytes[sizeof(double)];
    for (unsigned char& b : bytes) {
      b = byte();
    }
    double value = 0.0;
    std::memcpy(&value, bytes, sizeof value);
    return value;
  }

  double coordinate() {
    switch (byte() % 4) {
      case eRaw:
        return raw();
      case eGrid:
        return static_cast<double>(static_cast<std::int8_t>(byte()));
      case eSpecial:
        return kSpecials[byte() % kSpecialCount];
      default: {
        // Half-integers nudged by up to 127e-7: around the 1e-6 proximity tolerance.
        const double base = static_cast<double>(static_cast<std::int8_t>(byte())) / 2.0;
        return base + static_cast<double>(static_cast<std::int8_t>(byte())) * 1e-7;
      }
    }
  }

  gkVector<2> vector() {
    const double x = coordinate();
    return gkVector<2>(x, coordinate());
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t at_ = 0;
};

class Decoder {
 public:
  explicit Decoder(ByteReader& in) : in_(in) {}

  Points points() {
    const std::size_t n = in_.byte() % (kGeometryFuzzMaxVertices + 1);
    Points out;
    for (std::size_t i = 0; i < n; ++i) {
      out.push_back(vertex());
      pool_.push_back(out.back());
    }
    return out;
  }

  // depth 0: a region (holes allowed), 1: a hole (one island allowed), 2: an island.
  Shape shape(int depth) {
    Shape s;
    s.outline = points();
    if (depth < 2) {
      const std::size_t cap = depth == 0 ? kGeometryFuzzMaxHoles : 1;
      const std::size_t holes = in_.byte() % (cap + 1);
      for (std::size_t h = 0; h < holes; ++h) {
        s.holes.push_back(shape(depth + 1));
      }
    }
    return s;
  }

 private:
  gkVector<2> vertex() {
    switch (in_.byte() % 4) {
      case eRepeat: {
        // Any vertex decoded so far, of any shape: shared vertices make touching shapes.
        const std::uint8_t which = in_.byte();
        return pool_.empty() ? gkVector<2>() : pool_[which % pool_.size()];
      }
      case eCollinear: {
        // On the line of the last two vertices, at a step of a quarter of their distance.
        const double t = static_cast<double>(static_cast<std::int8_t>(in_.byte())) / 4.0;
        const gkVector<2> b = pool_.empty() ? gkVector<2>() : pool_.back();
        const gkVector<2> a = pool_.size() < 2 ? gkVector<2>() : pool_[pool_.size() - 2];
        return a + (b - a) * t;
      }
      default:
        return in_.vector();
    }
  }

  ByteReader& in_;
  Points pool_;
};

class Encoder {
 public:
  void byte(std::uint8_t b) { out_.push_back(b); }

  void coordinate(double value) {
    byte(eRaw);
    unsigned char bytes[sizeof(double)];
    std::memcpy(bytes, &value, sizeof value);
    for (const unsigned char b : bytes) {
      byte(b);
    }
  }

  void vector(const gkVector<2>& v) {
    coordinate(v.x());
    coordinate(v.y());
  }

  void points(const Points& p) {
    const std::size_t n = p.size() < kGeometryFuzzMaxVertices ? p.size() : kGeometryFuzzMaxVertices;
    byte(static_cast<std::uint8_t>(n));
    for (std::size_t i = 0; i < n; ++i) {
      byte(eFresh);
      vector(p[i]);
    }
  }

  void shape(const Shape& s, int depth) {
    points(s.outline);
    if (depth < 2) {
      const std::size_t cap = depth == 0 ? kGeometryFuzzMaxHoles : 1;
      const std::size_t n = s.holes.size() < cap ? s.holes.size() : cap;
      byte(static_cast<std::uint8_t>(n));
      for (std::size_t h = 0; h < n; ++h) {
        shape(s.holes[h], depth + 1);
      }
    }
  }

  std::vector<std::uint8_t> take() { return std::move(out_); }

 private:
  std::vector<std::uint8_t> out_;
};

}  // namespace

gkGeometryFuzzScene gkGeometryFuzzDecode(const std::uint8_t* data, std::size_t size) {
  ByteReader in(data, size);
  Decoder decode(in);
  gkGeometryFuzzScene s;
  const std::uint8_t flags = in.byte();
  s.contourClosed = (flags & 1u) != 0;
  s.otherClosed = (flags & 2u) != 0;
  s.regionMode = static_cast<std::uint8_t>((flags >> 2) & 3u);
  s.setMode = static_cast<std::uint8_t>((flags >> 4) & 3u);
  s.cacheBound = static_cast<std::int8_t>(in.byte());
  s.fitRounds = static_cast<std::uint8_t>(in.byte() % (kGeometryFuzzMaxFitRounds + 1));
  s.contour = decode.points();
  s.other = decode.points();
  s.region = decode.shape(0);
  const std::size_t members = in.byte() % (kGeometryFuzzMaxMembers + 1);
  for (std::size_t m = 0; m < members; ++m) {
    s.setMembers.push_back(decode.shape(0));
  }
  s.point = in.vector();
  s.segmentStart = in.vector();
  s.segmentEnd = in.vector();
  for (double& e : s.xform) {
    e = in.coordinate();
  }
  s.angle = in.coordinate();
  s.tolerance = in.coordinate();
  s.fitLimit = in.coordinate();
  return s;
}

std::vector<std::uint8_t> gkGeometryFuzzEncode(const gkGeometryFuzzScene& s) {
  Encoder out;
  out.byte(static_cast<std::uint8_t>((s.contourClosed ? 1u : 0u) | (s.otherClosed ? 2u : 0u) |
                                     ((s.regionMode & 3u) << 2) | ((s.setMode & 3u) << 4)));
  out.byte(static_cast<std::uint8_t>(s.cacheBound));
  out.byte(s.fitRounds);
  out.points(s.contour);
  out.points(s.other);
  out.shape(s.region, 0);
  const std::size_t members =
      s.setMembers.size() < kGeometryFuzzMaxMembers ? s.setMembers.size() : kGeometryFuzzMaxMembers;
  out.byte(static_cast<std::uint8_t>(members));
  for (std::size_t m = 0; m < members; ++m) {
    out.shape(s.setMembers[m], 0);
  }
  out.vector(s.point);
  out.vector(s.segmentStart);
  out.vector(s.segmentEnd);
  for (const double e : s.xform) {
    out.coordinate(e);
  }
  out.coordinate(s.angle);
  out.coordinate(s.tolerance);
  out.coordinate(s.fitLimit);
  return out.take();
}
