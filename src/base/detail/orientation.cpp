#include "base/detail/orientation.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace gk::detail {

namespace {

/// The six products of (a - o) x (b - o) = a x b + o x a + b x o, the sign folded into the
/// first factor of each.
struct Products {
  double factors[6][2];
};

Products productsOf(const gkVector<2>& o, const gkVector<2>& a, const gkVector<2>& b) {
  return {{{a.x(), b.y()},
           {-a.y(), b.x()},
           {o.x(), a.y()},
           {-o.y(), a.x()},
           {b.x(), o.y()},
           {-b.y(), o.x()}}};
}

/// Zero, or a magnitude in [2^-480, 2^480): then every product of two such numbers is a normal
/// double whose rounding error is a double too (both are multiples of 2^-1064), and sums of a
/// dozen of them are far from overflow.
bool inExpansionRange(double c) {
  std::uint64_t bits;
  std::memcpy(&bits, &c, sizeof bits);
  const std::uint64_t exponent = (bits >> 52) & 0x7ffu;
  // Biased exponents 1023 - 480 … 1023 + 479 hold every magnitude in [2^-480, 2^480); a zero
  // of either sign has all exponent and fraction bits clear.
  return exponent - (1023u - 480u) < 960u || (bits << 1) == 0;
}

/// s + e == a + b exactly, with s the rounded sum (Knuth's two-sum).
void twoSum(double a, double b, double& s, double& e) {
  s = a + b;
  const double bVirtual = s - a;
  const double aVirtual = s - bVirtual;
  e = (a - aVirtual) + (b - bVirtual);
}

int signByExpansion(const Products& p) {
  // A non-overlapping expansion in increasing magnitude, zeros left out: its sign is the sign
  // of its largest (last) component.
  double expansion[12];
  int size = 0;
  const auto grow = [&](double term) {
    int kept = 0;
    for (int i = 0; i < size; ++i) {
      double sum;
      double error;
      twoSum(term, expansion[i], sum, error);
      if (error != 0.0) {
        expansion[kept++] = error;
      }
      term = sum;
    }
    if (term != 0.0) {
      expansion[kept++] = term;
    }
    size = kept;
  };
  for (const auto& f : p.factors) {
    const double product = f[0] * f[1];
    grow(product);
    grow(std::fma(f[0], f[1], -product));
  }
  if (size == 0) {
    return 0;
  }
  return expansion[size - 1] > 0.0 ? 1 : -1;
}

/// A finite double as mantissa * 2^exponent with an integer mantissa below 2^53.
struct Scaled {
  std::uint64_t mantissa;
  int exponent;
  bool negative;
};

Scaled scaledOf(double d) {
  std::uint64_t bits;
  std::memcpy(&bits, &d, sizeof bits);
  const int biased = static_cast<int>((bits >> 52) & 0x7ffu);
  const std::uint64_t fraction = bits & ((std::uint64_t{1} << 52) - 1);
  Scaled s;
  s.negative = (bits >> 63) != 0;
  if (biased == 0) {
    // Zero or subnormal: fraction * 2^-1074.
    s.mantissa = fraction;
    s.exponent = -1074;
  } else {
    s.mantissa = fraction | (std::uint64_t{1} << 52);
    s.exponent = biased - 1075;
  }
  return s;
}

/// Fixed-point integers with bit 0 worth 2^-2148 (the smallest product of two subnormals):
/// products reach 2^2048, and six of them add at most three bits, so 68 limbs of 64 bits hold
/// any sum of magnitudes.
constexpr int kLimbs = 68;
constexpr int kLowestExponent = -2148;
using Wide = std::array<std::uint64_t, kLimbs>;

/// value += m * 2^shift, m = high * 2^64 + low.
void addShifted(Wide& value, std::uint64_t high, std::uint64_t low, int shift) {
  const int limb = shift / 64;
  const int bit = shift % 64;
  std::uint64_t parts[3];
  parts[0] = low << bit;
  parts[1] = bit == 0 ? high : (high << bit) | (low >> (64 - bit));
  parts[2] = bit == 0 ? 0 : high >> (64 - bit);
  std::uint64_t carry = 0;
  for (int i = limb; i < kLimbs; ++i) {
    const std::uint64_t add = i - limb < 3 ? parts[i - limb] : 0;
    if (add == 0 && carry == 0 && i - limb >= 3) {
      break;
    }
    const std::uint64_t sum = value[static_cast<std::size_t>(i)] + add;
    const std::uint64_t carryOut = sum < add ? 1 : 0;
    const std::uint64_t total = sum + carry;
    value[static_cast<std::size_t>(i)] = total;
    carry = carryOut + (total < carry ? 1 : 0);
  }
}

/// The 128-bit product of two 64-bit integers, as high and low halves, from 32-bit pieces.
void multiply(std::uint64_t a, std::uint64_t b, std::uint64_t& high, std::uint64_t& low) {
  const std::uint64_t mask = 0xffffffffu;
  const std::uint64_t aLow = a & mask;
  const std::uint64_t aHigh = a >> 32;
  const std::uint64_t bLow = b & mask;
  const std::uint64_t bHigh = b >> 32;
  const std::uint64_t ll = aLow * bLow;
  const std::uint64_t lh = aLow * bHigh;
  const std::uint64_t hl = aHigh * bLow;
  const std::uint64_t hh = aHigh * bHigh;
  const std::uint64_t middle = (ll >> 32) + (lh & mask) + (hl & mask);
  low = (ll & mask) | (middle << 32);
  high = hh + (lh >> 32) + (hl >> 32) + (middle >> 32);
}

int signByIntegers(const Products& p) {
  // The positive and the negative products are summed apart and compared at the end.
  Wide positive{};
  Wide negative{};
  for (const auto& f : p.factors) {
    const Scaled u = scaledOf(f[0]);
    const Scaled v = scaledOf(f[1]);
    if (u.mantissa == 0 || v.mantissa == 0) {
      continue;
    }
    std::uint64_t high;
    std::uint64_t low;
    multiply(u.mantissa, v.mantissa, high, low);
    addShifted(u.negative != v.negative ? negative : positive, high, low,
               u.exponent + v.exponent - kLowestExponent);
  }
  for (int i = kLimbs - 1; i >= 0; --i) {
    const std::size_t k = static_cast<std::size_t>(i);
    if (positive[k] != negative[k]) {
      return positive[k] > negative[k] ? 1 : -1;
    }
  }
  return 0;
}

}  // namespace

int orientationByExpansion(const gkVector<2>& o, const gkVector<2>& a, const gkVector<2>& b) {
  return signByExpansion(productsOf(o, a, b));
}

int orientationByIntegers(const gkVector<2>& o, const gkVector<2>& a, const gkVector<2>& b) {
  return signByIntegers(productsOf(o, a, b));
}

int exactOrientation(const gkVector<2>& o, const gkVector<2>& a, const gkVector<2>& b) {
  const Products p = productsOf(o, a, b);
  for (const gkVector<2>* v : {&o, &a, &b}) {
    if (!inExpansionRange(v->x()) || !inExpansionRange(v->y())) {
      return signByIntegers(p);
    }
  }
  return signByExpansion(p);
}

}  // namespace gk::detail
