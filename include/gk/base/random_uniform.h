#pragma once

#include <cstdint>
#include <random>

#include <gk/gk_export.h>

/// A seeded generator of uniform doubles. The sequence for a seed is the same on every platform
/// and compiler: the engine is the standard's exactly specified 64-bit Mersenne twister and the
/// conversion to double is our own (53 random bits), not a library distribution.
class GK_EXPORT gkRandomUniform {
 public:
  explicit gkRandomUniform(long seed);

  /// The next value, uniform in [lo, hi). When hi <= lo, lo is returned (and the generator still
  /// advances), so a caller never sees a value outside its range.
  double next(double lo, double hi);

 private:
  std::mt19937_64 engine_;
};
