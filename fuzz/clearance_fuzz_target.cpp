#include "clearance_fuzz_target.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "base/detail/clearance_sweep.h"
#include "base/detail/star_clearance.h"
#include "plain_clearance.h"

namespace {

/// The reach self-intersection passes for coordinates of this size.
constexpr double kReach = 2e-6;
constexpr std::size_t kMaxVertices = 64;

std::uint16_t word(const std::uint8_t* p) {
  return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

}  // namespace

gkClearanceFuzzInput gkClearanceFuzzDecode(const std::uint8_t* data, std::size_t size) {
  gkClearanceFuzzInput input;
  if (size == 0) {
    return input;
  }
  input.closed = (data[0] & 1) != 0;
  std::vector<gkVector<2>>& v = input.points;
  for (std::size_t at = 1; at + 5 <= size && v.size() < kMaxVertices; at += 5) {
    const std::uint8_t mode = data[at] & 3;
    const double a = static_cast<std::int16_t>(word(data + at + 1));
    const double b = static_cast<std::int16_t>(word(data + at + 3));
    const std::uint16_t ua = word(data + at + 1);
    if (mode == 0 || v.empty()) {
      v.emplace_back(a / 64.0, b / 64.0);
    } else if (mode == 1) {
      v.push_back(v.back() + gkVector<2>(a, b) * 1e-7);
    } else if (mode == 2 && v.size() >= 2) {
      const gkVector<2>& p = v[ua % v.size()];
      const gkVector<2>& q = v[(ua / v.size() + 1) % v.size()];
      const gkVector<2> along = q - p;
      const double length = along.len();
      const double t = static_cast<double>(word(data + at + 3) & 0xFF) / 255.0;
      const double off = static_cast<double>(static_cast<std::int8_t>(data[at + 4])) * 1e-7;
      const gkVector<2> normal =
          length > 0 ? gkVector<2>(-along.y(), along.x()) / length : gkVector<2>(0, 0);
      v.push_back(p + along * t + normal * off);
    } else {
      v.push_back(v[ua % v.size()]);
    }
  }
  return input;
}

bool gkClearanceFuzzCheck(const std::uint8_t* data, std::size_t size) {
  const gkClearanceFuzzInput input = gkClearanceFuzzDecode(data, size);
  const std::vector<gkVector<2>>& v = input.points;
  const std::size_t n = v.size();
  // The one-pass test for star-shaped outlines makes the same promise for the closed polygon
  // and the open walk at once, about either centre.
  if (!v.empty()) {
    for (const gkVector<2>& centre : {gk::detail::sampledCentre(v), gk::detail::vertexCentre(v)}) {
      if (gk::detail::starShapedKeepsClear(v, centre, kReach, 0.0) &&
          !(gk::test::plainClearance(v, true) > static_cast<long double>(kReach) &&
            gk::test::plainClearance(v, false) > static_cast<long double>(kReach))) {
        return false;
      }
    }
  }
  std::pair<std::size_t, std::size_t> pair;
  const bool clear = gk::detail::segmentsKeepClear(v, input.closed, kReach, &pair);
  // The walk's segments: closed, k runs from k - 1 (n - 1 for k = 0) to k; open, k to k + 1.
  const std::size_t count = input.closed ? n : (n > 0 ? n - 1 : 0);
  const auto from = [&](std::size_t k) { return input.closed ? (k == 0 ? n - 1 : k - 1) : k; };
  const auto to = [&](std::size_t k) { return input.closed ? k : k + 1; };
  const auto shareVertex = [&](std::size_t a, std::size_t b) {
    return from(a) == from(b) || from(a) == to(b) || to(a) == from(b) || to(a) == to(b);
  };
  if (!clear) {
    if (pair.first == gk::detail::kNoSegment) {
      return pair.second == gk::detail::kNoSegment;
    }
    return pair.first < pair.second && pair.second < count && !shareVertex(pair.first, pair.second);
  }
  // Every pair of segments sharing no vertex, measured in extended precision.
  return gk::test::plainClearance(v, input.closed) > static_cast<long double>(kReach);
}
