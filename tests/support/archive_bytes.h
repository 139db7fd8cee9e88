#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gk/base/vector.h>

namespace gk::test {

/// Builds archive bytes by hand, for forms that no class writes any more or never should, and
/// for hostile inputs. Values are little-endian, as the format has them.
class ArchiveBytes {
 public:
  ArchiveBytes& header() { return raw("GKAR").u8(1); }
  ArchiveBytes& u8(unsigned v) {
    s_.push_back(static_cast<char>(v));
    return *this;
  }
  ArchiveBytes& u64(std::uint64_t v) {
    for (int i = 0; i < 8; ++i) {
      u8(static_cast<unsigned>((v >> (8 * i)) & 0xFF));
    }
    return *this;
  }
  ArchiveBytes& i64(std::int64_t v) { return u64(static_cast<std::uint64_t>(v)); }
  ArchiveBytes& f64(double v) {
    std::uint64_t u = 0;
    std::memcpy(&u, &v, 8);
    return u64(u);
  }
  ArchiveBytes& raw(const std::string& r) {
    s_ += r;
    return *this;
  }
  /// Handle tag 01 and the type name.
  ArchiveBytes& newObject(const std::string& type) { return u8(1).u64(type.size()).raw(type); }
  /// A gk2XformLinear's layers: version, persistent version, three vectors.
  ArchiveBytes& xformLayers(double m00, double m01, double m10, double m11, double tx, double ty) {
    return u8(0).u8(0).f64(m00).f64(m01).f64(m10).f64(m11).f64(tx).f64(ty);
  }
  /// A version-1 gkContour layer with the given vertices.
  ArchiveBytes& contourLayer(std::uint64_t label, bool closed, const std::vector<gkVector<2>>& pts,
                             std::int64_t bound) {
    u8(1).u8(0).u64(label).u8(closed ? 1 : 0).u8(0).u64(pts.size());
    for (const gkVector<2>& p : pts) {
      f64(p.x()).f64(p.y());
    }
    return i64(bound);
  }
  const std::string& str() const { return s_; }

 private:
  std::string s_;
};

/// The bytes as spaced upper-case hex, for readable failure messages.
inline std::string hex(const std::string& s) {
  static const char* digits = "0123456789ABCDEF";
  std::string out;
  for (const char c : s) {
    const auto b = static_cast<unsigned char>(c);
    out += digits[b >> 4];
    out += digits[b & 15];
    out += ' ';
  }
  return out;
}

}  // namespace gk::test
