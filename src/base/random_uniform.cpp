#include <gk/base/random_uniform.h>

gkRandomUniform::gkRandomUniform(long seed)
    : engine_(static_cast<std::mt19937_64::result_type>(seed)) {}

double gkRandomUniform::next(double lo, double hi) {
  // The top 53 bits make a double in [0, 1) exactly, the same on every platform.
  const double u = static_cast<double>(engine_() >> 11) * 0x1.0p-53;
  if (!(hi > lo)) {
    return lo;
  }
  const double v = lo + u * (hi - lo);
  // lo + u * (hi - lo) can round up to hi when u is just below 1; keep the range half-open.
  return v < hi ? v : lo;
}
