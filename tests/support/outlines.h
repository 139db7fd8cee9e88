#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

#include <gk/base/vector.h>

/// The outlines the fast-path tests draw from, defined once: each takes its randomness from
/// unit(), a uniform draw from [0, 1), one draw per vertex in vertex order.
namespace gk::test {

/// Vertex k at angle 2 pi k / n and radius 100 (1 + spread u): spiky, and at large n (or large
/// spread) dense radial spikes whose boxes crowd any grid.
template <typename Unit>
std::vector<gkVector<2>> starOutline(std::size_t n, double spread, Unit&& unit) {
  std::vector<gkVector<2>> v;
  for (std::size_t k = 0; k < n; ++k) {
    const double angle = 6.283185307179586 * static_cast<double>(k) / static_cast<double>(n);
    const double radius = 100.0 * (1.0 + spread * unit());
    v.emplace_back(radius * std::cos(angle), radius * std::sin(angle));
  }
  return v;
}

/// Radius 100 (1 + 0.2 sin 3t + 0.1 cos 7t) plus noise uniform in +-noise: a smooth outline
/// like a traced blob boundary.
template <typename Unit>
std::vector<gkVector<2>> blobOutline(std::size_t n, double noise, Unit&& unit) {
  std::vector<gkVector<2>> v;
  for (std::size_t k = 0; k < n; ++k) {
    const double t = 6.283185307179586 * static_cast<double>(k) / static_cast<double>(n);
    const double r = 100.0 * (1.0 + 0.2 * std::sin(3.0 * t) + 0.1 * std::cos(7.0 * t)) +
                     noise * (2.0 * unit() - 1.0);
    v.emplace_back(r * std::cos(t), r * std::sin(t));
  }
  return v;
}

/// Every point times scale, plus shift.
inline std::vector<gkVector<2>> scaled(const std::vector<gkVector<2>>& points, double scale,
                                       const gkVector<2>& shift) {
  std::vector<gkVector<2>> s;
  for (const gkVector<2>& p : points) {
    s.push_back(p * scale + shift);
  }
  return s;
}

}  // namespace gk::test
