#include <gk/base/bounded_cache.h>

#include <gk/base/numeric.h>
#include <gk/base/random_uniform.h>
#include <gk/base/thread_local.h>

namespace {

void destroyGenerator(void* p) {
  delete static_cast<gkRandomUniform*>(p);
}

/// The calling thread's eviction generator, created on first use with seed 1.
gkRandomUniform& evictionGenerator() {
  static gk_ThreadLocal slot(&destroyGenerator);
  auto* generator = static_cast<gkRandomUniform*>(slot.get());
  if (generator == nullptr) {
    generator = new gkRandomUniform(1);
    slot.set(generator);
  }
  return *generator;
}

}  // namespace

std::size_t gk::detail::boundedCacheVictim(std::size_t size) {
  const double u = evictionGenerator().next(0.0, static_cast<double>(size));
  const long r = gwIFloor(u);
  // u < size, so r < size; the clamp only guards the conversion of a size beyond 2^53.
  return r < 0 ? 0 : (static_cast<std::size_t>(r) < size ? static_cast<std::size_t>(r) : size - 1);
}
